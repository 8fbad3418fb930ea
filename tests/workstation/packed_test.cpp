/// Recordings in one file: any tar makes and reads them, and what is none is refused in a sentence.
#include <cstdlib>
#include <fstream>
#include <string>
#include <tuple>
#include <utility>

#include "session/compression.h"
#include "workstation/bundle_frames.h"

namespace {

using namespace bundle_frames;

class PackedTest : public BundleTest {
 protected:
  fs::path packed(const std::string& name) {
    BundleWriter writer(folder_ / name, kInfo);
    for (int i = 0; i < 3; ++i) writer.add(frame_input(i), frame_output(i));
    EXPECT_FALSE(fs::exists(folder_ / name)) << "half of a file under the good name";
    writer.finish();
    return folder_ / name;
  }

  fs::path with(const std::string& name, const std::string& bytes) {
    std::ofstream(folder_ / name, std::ios::binary) << bytes;
    return folder_ / name;
  }

  static void expect_three_frames(const fs::path& path) {
    const BundleReader bundle(path);
    EXPECT_EQ(bundle.warning(), "");
    ASSERT_EQ(bundle.frame_count(), 3);
    for (int i = 0; i < 3; ++i) expect_frame(bundle, i, frame_input(i), frame_output(i));
  }

  void run(const std::string& command) {
    ASSERT_EQ(std::system(("cd '" + folder_.string() + "' && " + command).c_str()), 0) << command;
  }
};

TEST_F(PackedTest, AnyTarMakesAndUnpacksOne) {
  expect_three_frames(packed("ours.morvale"));
  run("mkdir unpacked && tar xf ours.morvale -C unpacked");
  expect_three_frames(folder_ / "unpacked");
  for (const char* format : {"ustar", "gnu", "pax"}) {
    const std::string name = std::string(format) + ".morvale";
    run("tar cf " + name + " --format=" + format + " -C unpacked .");
    expect_three_frames(folder_ / name);
  }
  EXPECT_EQ(content(packed("again.morvale")), content(folder_ / "ours.morvale"));
}

TEST_F(PackedTest, WhatIsNotFinishedLeavesNothing) {
  { BundleWriter(folder_ / "a.morvale", kInfo).add(frame_input(0), frame_output(0)); }
  EXPECT_TRUE(fs::is_empty(folder_));
  packed("b.morvale");
  EXPECT_THROW(BundleWriter(folder_ / "b.morvale", kInfo), BundleError) << "must not be written over";
  expect_three_frames(folder_ / "b.morvale");
  EXPECT_THROW(BundleWriter(folder_ / "missing" / "c.morvale", kInfo), BundleError);
}

TEST_F(PackedTest, WhatIsCutOffAnywhereIsRefused) {
  const std::string whole = content(packed("whole.morvale"));
  for (size_t size = 0; size < whole.size() - 512; size += 37) {
    const std::string told = complaint(with("cut.morvale", whole.substr(0, size)));
    EXPECT_NE(told.find(size < 512 ? "is no packed recording" : "is cut off"), std::string::npos)
        << size << " of " << whole.size() << " bytes: " << told;
  }
}

/// Heads as nobody's tar of a recording has them; their sums are right.
TEST_F(PackedTest, WhatNoRecordingHoldsIsRefused) {
  run("mkdir made && echo x > made/x && ln -s /etc/passwd made/link");
  const std::pair<const char*, const char*> tars[] = {
      {"tar cf bad.morvale -P made/../made/x", "leads out of a recording"},
      {"tar cf bad.morvale -P \"$PWD/made/x\"", "leads out of a recording"},
      {"tar cf bad.morvale made/link", "which is no plain file"},
      {"tar cf bad.morvale made/x && tar rf bad.morvale made/x", "holds made/x twice"},
      {"tar cf bad.morvale made/x", "session.json: there is no such file"},
      {"tar czf bad.morvale made/x", "is no packed recording"},
  };
  for (const auto& [command, says] : tars) {
    run(command);
    EXPECT_NE(complaint(folder_ / "bad.morvale").find(says), std::string::npos)
        << command << ": " << complaint(folder_ / "bad.morvale");
  }
  std::string whole = content(packed("whole.morvale"));
  whole[512 * 2 + 124] ^= 1;  // within the second head's size
  EXPECT_NE(complaint(with("sum.morvale", whole)).find("is damaged at byte"), std::string::npos);
  std::fill_n(whole.begin() + 512 * 2, 512, '\0');  // no end where more follows
  EXPECT_NE(complaint(with("lost.morvale", whole)).find("is damaged at byte 1024"), std::string::npos);
}

/// The two in one: files that Debian's zstd reads, in a tar.
TEST_F(PackedTest, CompressedFilesAreZstandards) {
  if (!Compressor::available()) GTEST_SKIP() << "built without Zstandard";
  {
    BundleWriter writer(folder_ / "c.morvale", kInfo, 3);
    for (int i = 0; i < 3; ++i) writer.add(frame_input(i), frame_output(i));
    writer.finish();
  }
  expect_three_frames(folder_ / "c.morvale");
  run("mkdir c && tar xf c.morvale -C c");
  EXPECT_TRUE(fs::exists(folder_ / "c/frames/000001_6x5_s8.nv21.zst"));
  if (std::system("zstd --version >/dev/null 2>&1") == 0)
    run("zstd -dqc c/labels/000002_4x3x5.bin.zst | wc -c | grep -qx 60");
}

TEST_F(PackedTest, ACompressedFileIsHeldToItsSize) {
  if (!Compressor::available() || std::system("zstd --version >/dev/null 2>&1") != 0)
    GTEST_SKIP() << "no zstd";
  const std::tuple<const char*, const char*, const char*> files[] = {
      {"head -c 1000000 /dev/zero | zstd -q --stream-size=1000000", "labels/000001_4x3x5.bin.zst",
       "holds 1000000 bytes, more than the 80 that it may"},
      {"truncate -s 3G /dev/stdout", "frames/000001_6x5_s8.nv21.zst", "bytes, which no such file needs"},
      {"head -c 55 /dev/zero | zstd -q --stream-size=55", "frames/000001_6x5_s8.nv21.zst",
       "holds 55 bytes, not 56"},
      {"head -c 56 /dev/zero | zstd -q --no-content-size", "frames/000001_6x5_s8.nv21.zst", "names its size"},
      {"head -c 56 /dev/zero", "frames/000001_6x5_s8.nv21.zst", "is no compressed file"},
      {"head -c 56 /dev/urandom | zstd -q --stream-size=56 | head -c 40", "frames/000001_6x5_s8.nv21.zst",
       "is damaged"},
      {"head -c 400 /dev/zero | zstd -q --stream-size=400", "logits/000001.npy.zst", "is no .npy file"}};
  for (const auto& [command, file, says] : files) {
    const fs::path path = folder_ / "bundle";
    {
      BundleWriter writer(path, kInfo, 3);
      for (int i = 0; i < 3; ++i) writer.add(frame_input(i), frame_output(i));
    }
    run(std::string(command) + " >bundle/" + file);
    forget_hashes(path);
    std::string told;
    try {
      const BundleReader bundle(path);
      bundle.input(1), bundle.output(1);
    } catch (const BundleError& error) {
      told = error.what();
    }
    EXPECT_NE(told.find(says), std::string::npos) << command << ": " << told;
    EXPECT_NE(told.find("frame 1"), std::string::npos) << told;
    fs::remove_all(path);
  }
}

}  // namespace
