/// A recording of two frames with everything that a frame may have, as small as it gets.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "fuzz/draws.h"
#include "session/bundle.h"

namespace small_bundle {

namespace fs = std::filesystem;
using namespace morvale::session;

/// Makes it a recording of a version without hashes: what is changed in it is then read, and not refused.
inline void forget_hashes(const fs::path& folder) {
  std::ifstream file(folder / "metadata.jsonl");
  std::string lines;
  for (std::string line; std::getline(file, line);) lines += line.substr(0, line.find(",\"hashes\"")) + "}\n";
  std::ofstream(folder / "metadata.jsonl") << lines;
}

inline void write_bundle(const fs::path& folder) {
  BundleWriter writer(folder, {morvale::kFrontCamera, 16, 4, 0, 0, "bundle_fuzz", ""});
  FrameInput input;
  input.record.cameraType = morvale::kFrontCamera;
  input.record.width = input.record.stride = 4;
  input.record.height = 2;
  input.nv21.assign(12, 7);
  FrameOutput output;
  output.logits.assign(80, 0.5f);
  output.labels.assign(20, 9);
  for (int i = 0; i < 2; ++i) writer.add(input, output);
}

constexpr const char* kFiles[] = {"session.json",      "metadata.jsonl",
                                  "records.bin",       "frames/000001_4x2_s4.nv21",
                                  "logits/000001.npy", "labels/000001_4x1x5.bin"};

/// A folder of its own, in which the recording lies in "sound".
struct Folder {
  fs::path root, sound;
  Folder() {
    std::string pattern = (fs::temp_directory_path() / "bundle_fuzz_XXXXXX").string();
    root = mkdtemp(pattern.data());
    write_bundle(sound = root / "sound");
    forget_hashes(sound);
    for (const char* file : kFiles) HOLDS(fs::exists(sound / file));
  }
  ~Folder() { fs::remove_all(root); }
};

}  // namespace small_bundle
