/// The boundary to the closed runtime, seen from its side without our header's help: which place of the
/// session's table the library calls, with what in the argument registers, and where the fields of the
/// records lie. The table is made by hand as the C++ ABI of our targets lays it out: two words (offset to the
/// top, type), then one function a place; a record passed by value arrives as the address of a copy.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "fakes/core_fixture.h"

namespace {

using vexa::DataBuffer;

/// What the hand-made session saw.
struct Seen {
  std::vector<int> places;
  const void* self = nullptr;
  std::string model, input_name, output_name;
  std::vector<int32_t> option_words, input_words;
  std::vector<uint8_t> option_flags, option_tail;
  const void* input_data = nullptr;
};
Seen seen;

template <typename T>
T read(const void* record, std::ptrdiff_t offset) {
  T value;
  std::memcpy(&value, static_cast<const uint8_t*>(record) + offset, sizeof value);
  return value;
}
template <typename T>
const T& at(const void* record, std::ptrdiff_t offset) {
  return *reinterpret_cast<const T*>(static_cast<const uint8_t*>(record) + offset);
}

// The offsets of the records. A string has no size of its own in the C++ ABI: 32 bytes on a workstation, 24
// on a device.
constexpr std::ptrdiff_t kString = sizeof(std::string);
static_assert(sizeof(void*) == 8 && sizeof(std::vector<int32_t>) == 24);
constexpr std::ptrdiff_t kInputNames = 16, kOutputNames = 40, kModelPath = 136;
constexpr std::ptrdiff_t kField11 = 136 + 2 * kString, kField12 = kField11 + 4, kField13 = kField11 + 8;
constexpr std::ptrdiff_t kField14 = kField13 + 24, kField15 = kField14 + 8, kField16 = kField14 + 16;
constexpr std::ptrdiff_t kField17 = kField14 + 24, kField18 = kField17 + kString, kField19 = kField18 + 24;
constexpr std::ptrdiff_t kField21 = kField19 + 8;

template <int kPlace>
void other(void*) {
  seen.places.push_back(kPlace);
}

int32_t execute(void* self, void* inputs_address, std::vector<DataBuffer>* results) {
  seen.places.push_back(4);
  seen.self = self;
  const uint8_t* first = read<const uint8_t*>(inputs_address, 0);
  const uint8_t* end = read<const uint8_t*>(inputs_address, 8);
  if (end - first != 40) return -1;  // one descriptor
  seen.input_data = read<const void*>(first, 0);
  const int32_t* shape = read<const int32_t*>(first, 8);
  seen.input_words.assign(shape, read<const int32_t*>(first, 16));
  seen.input_words.push_back(read<int32_t>(first, 32));
  seen.input_words.push_back(read<int32_t>(first, 36));
  results->push_back({fakes::platform().logits.data(), {1, NETSIZE, NETSIZE, 5}, 0, 0});
  return 0;
}

int32_t open(void* self, const void* options) {
  seen.places.push_back(8);
  seen.self = self;
  seen.model = at<std::string>(options, kModelPath);
  seen.input_name = at<std::vector<std::string>>(options, kInputNames).at(0);
  seen.output_name = at<std::vector<std::string>>(options, kOutputNames).at(0);
  for (const std::ptrdiff_t offset :
       {std::ptrdiff_t{0}, std::ptrdiff_t{4}, std::ptrdiff_t{8}, kField11, kField16, kField19, kField19 + 4})
    seen.option_words.push_back(read<int32_t>(options, offset));
  seen.option_flags = {read<uint8_t>(options, kField12), read<uint8_t>(options, kField14)};
  for (std::ptrdiff_t i = 0; i < 24; ++i) seen.option_tail.push_back(read<uint8_t>(options, kField21 + i));
  return 0;
}

template <typename Function>
const void* place(Function* function) {
  return reinterpret_cast<const void*>(function);
}

/// Gives the one session of the doubles the hand-made table, and its own one back at the end.
class VexaRuntime : public CoreFixture {
 protected:
  VexaRuntime() : session_of_doubles_(CreateVexaSession()) {
    seen = Seen();
    std::memcpy(&own_table_, static_cast<const void*>(session_of_doubles_), sizeof own_table_);
    table_ = {own_table_[-2], own_table_[-1],  place(other<1>), place(other<2>), place(other<3>),
              place(execute), place(other<5>), place(other<6>), place(other<7>), place(open)};
    set_table(table_.data() + 2);
  }
  ~VexaRuntime() override { set_table(own_table_); }

 private:
  void set_table(const void* const* table) {
    std::memcpy(static_cast<void*>(session_of_doubles_), &table, sizeof table);
  }

 protected:
  vexa::VexaSession* session_of_doubles_;

 private:
  const void* const* own_table_ = nullptr;
  std::array<const void*, 10> table_{};
};

TEST_F(VexaRuntime, TheFourthFifthAndEighthPlaceAreCalled) {
  start(16);
  EXPECT_EQ(seen.places, std::vector<int>{8});
  EXPECT_EQ(seen.self, session_of_doubles_);
  seen.self = nullptr;
  set_frame(256, 256, 100);
  EXPECT_EQ(run_frame(), 0);
  EXPECT_EQ(seen.self, session_of_doubles_);
  EXPECT_EQ(run_frame(), 0);
  core_.Morvale_core_deinit();
  EXPECT_EQ(seen.places, (std::vector<int>{8, 4, 4, 5}));
  EXPECT_EQ(fakes::platform().calls.back(), "destroy");
}

TEST_F(VexaRuntime, TheRecordsArriveWithTheirValuesInPlace) {
  start(0);
  EXPECT_NE(seen.model.find("_FACE_128_"), std::string::npos) << seen.model;
  EXPECT_EQ(seen.input_name, "MobilenetV2/MobilenetV2/input:0");
  EXPECT_EQ(seen.output_name, "logits/semantic/BiasAdd:0");
  EXPECT_EQ(seen.option_words, (std::vector<int32_t>{2, 3, 1, -1, 1, 2, 3}));
  EXPECT_EQ(seen.option_flags, (std::vector<uint8_t>{0, 0}));
  EXPECT_EQ(seen.option_tail, std::vector<uint8_t>(24, 0));
  set_frame(256, 256, 100);
  ASSERT_EQ(run_frame(), 0);
  EXPECT_EQ(seen.input_data, core_.netInput);
  EXPECT_EQ(seen.input_words, (std::vector<int32_t>{1, 128, 128, 3, 0, 1}));
}

TEST(VexaRecords, FieldsLieInTheRuntimesOrder) {
  const vexa::VexaOptionsV2 o;
  const auto offset = [](const auto& record, const auto& field) {
    return reinterpret_cast<const char*>(&field) - reinterpret_cast<const char*>(&record);
  };
  const std::vector<std::ptrdiff_t> expected = {0,        4,        8,        kInputNames, kOutputNames,
                                                64,       88,       112,      kModelPath,  136 + kString,
                                                kField11, kField12, kField13, kField14,    kField15,
                                                kField16, kField17, kField18, kField19,    kField19 + 4,
                                                kField21};
  EXPECT_EQ((std::vector<std::ptrdiff_t>{
                offset(o, o.field1),      offset(o, o.field2),  offset(o, o.field3),  offset(o, o.inputNames),
                offset(o, o.outputNames), offset(o, o.field6),  offset(o, o.field7),  offset(o, o.field8),
                offset(o, o.modelPath),   offset(o, o.field10), offset(o, o.field11), offset(o, o.field12),
                offset(o, o.field13),     offset(o, o.field14), offset(o, o.field15), offset(o, o.field16),
                offset(o, o.field17),     offset(o, o.field18), offset(o, o.field19), offset(o, o.field20),
                offset(o, o.field21)}),
            expected);
  EXPECT_EQ(std::ptrdiff_t{sizeof(vexa::VexaOptions)}, kField13);
  EXPECT_EQ(std::ptrdiff_t{sizeof o}, kField21 + 24);

  const DataBuffer tensor;
  EXPECT_EQ((std::vector<std::ptrdiff_t>{offset(tensor, tensor.data), offset(tensor, tensor.shape),
                                         offset(tensor, tensor.tail0), offset(tensor, tensor.tail1)}),
            (std::vector<std::ptrdiff_t>{0, 8, 32, 36}));
  EXPECT_EQ(sizeof tensor, 40u);
  EXPECT_EQ(sizeof(vexa::VexaSession), sizeof(void*));
}

}  // namespace
