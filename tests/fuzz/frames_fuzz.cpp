/// A camera service that makes any call at any time, with any record and any runtime: nothing outside the
/// named planes is touched, and every set of kernels leaves the same words.
#include "fuzz/any_session.h"
#include "kernels/kernel_set.h"

namespace {

[[maybe_unused]] const bool silent = std::freopen("/dev/null", "w", stdout) != nullptr;

constexpr size_t kMapBytes = 64 * 64 * 5, kSlotBytes = 327'680;
uint8_t* const kSlots[] = {
    N_segResult_Front, N_segResult_Front + kSlotBytes, N_segResult_Front + 2 * kSlotBytes,
    N_segResult_Back,  N_segResult_Back + kSlotBytes,  N_segResult_Back + 2 * kSlotBytes};

/// What the session leaves, if that is to be compared.
std::vector<uint8_t> words_of(Draws draws, const morvale::KernelSet& set, bool compared) {
  morvale::use_kernels(set.name);
  fakes::platform() = {};
  fakes::platform().logits.assign(kMapBytes, -10.0f);
  for (uint8_t* slot : kSlots) std::memset(slot, 0, kMapBytes);
  any_session::Session session;
  session.frame.draw(draws);
  session.core->Morvale_core_init(&session.frame.record);
  session.core->Morvale_core_setModel(session.frame.record.cameraType);
  for (int calls = 0; calls < 6 && !draws.done(); ++calls) session.call(draws);
  session.core->Morvale_core_deinit();
  if (!compared) return {};
  for (const auto& plane : {session.frame.luma, session.frame.chroma})
    session.note(plane.data(), plane.size());
  for (const uint8_t* slot : kSlots) session.note(slot, kMapBytes);
  return session.words;
}

}  // namespace

/// The slower sets take their turn in one of 32 inputs each.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto sets = morvale::runnable_kernels();
  Draws draws(data, size);
  const size_t other = draws.byte() % 32;
  const bool compared = other + 1 < sets.size();
  const std::vector<uint8_t> words = words_of(draws, *sets.back(), compared);
  HOLDS(!compared || words_of(draws, *sets[other], true) == words);
  return 0;
}
