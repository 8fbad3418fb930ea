/// A recording one of whose files holds anything: it is refused in words, or it is read, written and read
/// again alike. The first byte names the file, the others are its content.
#include <fstream>

#include "fuzz/small_bundle.h"
#include "session/metadata.h"

namespace {

using namespace small_bundle;

/// Everything that the bundle says, as its own texts and bytes.
std::string content(const fs::path& folder) {
  const BundleReader bundle(folder);
  std::string all = session_text(bundle.info());
  for (int i = 0; i < bundle.frame_count(); ++i) {
    FrameLine line = bundle.line(i);
    line.pixels = line.thin = line.logits = line.labels = line.preview = "";
    line.hashes = {};
    all += frame_text(i, line);
    const FrameInput input = bundle.input(i);
    const FrameOutput output = bundle.output(i);
    all.append(input.nv21.begin(), input.nv21.end()).append(output.labels.begin(), output.labels.end());
    all.append(reinterpret_cast<const char*>(&output.result), sizeof output.result);
    all.append(reinterpret_cast<const char*>(output.logits.data()), output.logits.size() * sizeof(float));
  }
  return all;
}

void copy_bundle(const fs::path& from, const fs::path& to) {
  const BundleReader bundle(from);
  BundleWriter writer(to, bundle.info());
  for (int i = 0; i < bundle.frame_count(); ++i) writer.add(bundle.input(i), bundle.output(i));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Folder folder;
  if (size == 0) return 0;
  const fs::path file = folder.sound / kFiles[data[0] % std::size(kFiles)], kept = folder.root / "kept";
  fs::rename(file, kept);
  std::ofstream(file, std::ios::binary)
      .write(reinterpret_cast<const char*>(data + 1), std::streamsize(size - 1));
  try {
    const std::string read = content(folder.sound);
    copy_bundle(folder.sound, folder.root / "copy");
    HOLDS(content(folder.root / "copy") == read);
  } catch (const BundleError&) {
    HOLDS(!fs::exists(folder.root / "copy"));
  }
  fs::remove_all(folder.root / "copy");
  fs::rename(kept, file);
  return 0;
}
