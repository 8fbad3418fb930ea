/// The recording shim and the recorded engine together: a session recorded by loading order alone replays
/// from its bundle with the same bytes. Runs record_camera in processes of their own.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>

#include <morvale/core/vexa_runtime.h>
#include "session/bundle.h"

namespace {

namespace fs = std::filesystem;
using morvale::session::BundleReader;
using morvale::session::ChromaPlace;
using morvale::session::LaterRecord;

constexpr int kFrames = 15;  // of record_camera's film

std::string content(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// How often `part` stands in `text`.
int count(const std::string& text, const std::string& part) {
  int found = 0;
  for (size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += part.size()) ++found;
  return found;
}

/// Equal bytes; says where they part instead of printing both.
testing::AssertionResult same(const std::string& got, const std::string& expected) {
  const auto parts = std::mismatch(got.begin(), got.end(), expected.begin(), expected.end());
  if (got == expected) return testing::AssertionSuccess();
  return testing::AssertionFailure() << got.size() << " and " << expected.size() << " bytes part at "
                                     << parts.first - got.begin();
}

class RecordTest : public testing::Test {
 protected:
  RecordTest() {
    std::string pattern = (fs::temp_directory_path() / "record_test_XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
  }
  ~RecordTest() override { fs::remove_all(folder_); }

  /// Runs record_camera and returns the results that it wrote; its standard error is in errors_.
  std::string camera(const std::string& settings, const std::string& what, const std::string& which) {
    const fs::path results = folder_ / "results", errors = folder_ / "errors";
    // The shim stands ahead of a sanitizer's runtime too, which would refuse to start.
    status_ = std::system(("env MORVALE_LOG=F ASAN_OPTIONS=verify_asan_link_order=0 " + settings +
                           " " RECORD_CAMERA " " + what + " " + which + " " + results.string() + " >" +
                           (folder_ / "out").string() + " 2>" + errors.string())
                              .c_str());
    errors_ = content(errors);
    return content(results);
  }
  std::string recorded(const std::string& settings, const std::string& what, const std::string& which) {
    return camera("VEXA_ENGINE=fixed LD_PRELOAD=" RECORD_SHIM " VEXA_RECORD_DIR=" +
                      (folder_ / "to").string() + " " + settings,
                  what, which);
  }
  /// The setting of an engine whose answers differ from run to run: a head and a body that walk to the right.
  std::string walking_engine(int32_t side) {
    const fs::path bundle = folder_ / ("walk" + std::to_string(side));
    morvale::session::BundleWriter writer(bundle, {morvale::kFrontCamera, 4 * side, side, 0, 0, "test", ""});
    for (int frame = 0; frame < kFrames; ++frame) {
      morvale::session::FrameOutput output;
      for (int32_t y = 0; y < side; ++y) {
        for (int32_t x = 0; x < side; ++x) {
          const int32_t from_middle = std::abs(64 * x / side - 24 - frame), row = 64 * y / side;
          const int label = row > 10 && row < 30 && from_middle < 9 ? 2
                            : row >= 30 && from_middle < 15         ? 4
                                                                    : 0;
          for (int k = 0; k < 5; ++k) output.logits.push_back(k == label ? 7.0f : -5.0f);
        }
      }
      writer.add({}, output);
    }
    return "VEXA_ENGINE=recorded VEXA_BUNDLE=" + bundle.string() + " ";
  }
  std::string replayed(const fs::path& bundle) {
    return camera("VEXA_ENGINE=recorded VEXA_BUNDLE=" + bundle.string(), "replay", bundle.string());
  }
  /// The exit status of morvale replay; what it said is in errors_.
  int replayed_by_the_program(const fs::path& bundle) {
    const fs::path errors = folder_ / "errors";
    const int status = std::system(("env MORVALE_LOG=F " MORVALE_PROGRAM " replay --format none " +
                                    bundle.string() + " 2>" + errors.string())
                                       .c_str());
    errors_ = content(errors);
    return WEXITSTATUS(status);
  }
  /// Every label map in the bundle is the one that the analysis read.
  void expect_maps(const BundleReader& bundle, int side) {
    const std::string maps = content(folder_ / "results.maps");
    size_t at = 0;
    for (int frame = 0; frame < kFrames; ++frame) {
      int32_t bytes = 0;
      ASSERT_LE(at + sizeof bytes, maps.size());
      std::memcpy(&bytes, maps.data() + at, sizeof bytes);
      const std::vector<uint8_t> labels = bundle.output(frame).labels;
      EXPECT_TRUE(
          same({labels.begin(), labels.end()}, maps.substr(at + sizeof bytes, static_cast<size_t>(bytes))))
          << frame;
      at += sizeof bytes + static_cast<size_t>(bytes);
      EXPECT_TRUE(frame != 0 || bytes == side * side * 3 / 4 * 5) << bytes;
      EXPECT_TRUE(frame != 4 || bytes == 0) << "gated: no analysis";
    }
  }
  /// Records a film of the back camera on a disk of its own at `disk`; what is on it then is copied to `to`,
  /// since the disk is gone with the last process that sees it.
  std::string on_a_disk(const std::string& options, const std::string& disk, const std::string& to) {
    const std::string service = "mount -t tmpfs -o " + options + " none " + disk +
                                " && env LD_PRELOAD=" RECORD_SHIM " \"$@\"; kept=$?; cp -r " + disk + " " +
                                to + "; exit $kept";
    return camera("VEXA_ENGINE=fixed VEXA_RECORD_DIR=" + disk + " unshare -Urm bash -c '" + service + "' -",
                  "film", "back");
  }
  fs::path session(int number) const { return folder_ / "to" / ("session-000" + std::to_string(number)); }

  fs::path folder_;
  std::string errors_;
  int status_ = 0;
};

TEST_F(RecordTest, ARecordedSessionReplaysByteForByte) {
  int number = 0;
  for (const std::string which : {"front", "back"}) {
    const int side = which == "front" ? 64 : 32;
    const std::string engine = walking_engine(side), plain = camera(engine, "film", which);
    EXPECT_TRUE(same(recorded(engine + "VEXA_RECORD_LABELS=1", "maps", which), plain))
        << "recording changed it";
    EXPECT_EQ(errors_, "");
    EXPECT_TRUE(same(replayed(session(++number)), plain)) << errors_;
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(replayed_by_the_program(session(number)), 0) << errors_;
    EXPECT_NE(errors_.find("15 frames, all records as recorded"), std::string::npos) << errors_;

    const BundleReader bundle(session(number));
    EXPECT_EQ(bundle.warning(), "");
    ASSERT_EQ(bundle.frame_count(), kFrames);
    EXPECT_EQ(bundle.info().net_size, side);
    EXPECT_EQ(bundle.info().library.find("1.0.0, commit "), 0u) << "the library's own note, and all of it";
    EXPECT_NE(bundle.info().library.find(", kernels portable"), std::string::npos);
    expect_maps(bundle, side);
    EXPECT_FALSE(bundle.execute_result(4)) << "gated";
    EXPECT_FALSE(bundle.execute_result(6)) << "no luma plane";
    EXPECT_FALSE(bundle.output(4).network_ms || bundle.output(6).network_ms) << "the time of an earlier run";
    EXPECT_EQ(bundle.output(6).process_result, -1);
    EXPECT_EQ(bundle.metadata(5).chroma, ChromaPlace::kApart);
    EXPECT_EQ(bundle.metadata(13).chroma, ChromaPlace::kBehind);
    EXPECT_FALSE(bundle.has_pixels(4)) << "the library looks at no pixel of a gated frame";
    EXPECT_FALSE(bundle.metadata(8).after_process);
    EXPECT_EQ(bundle.metadata(11).record.faceCount, 1) << "the count that the analysis read";
    EXPECT_EQ(bundle.metadata(9).record.width, 180);
    const int32_t other_camera = which == "front" ? 0 : morvale::kFrontCamera;
    EXPECT_EQ(bundle.metadata(9).later, (LaterRecord{other_camera, 1000, 60, 1008, true}));
    EXPECT_EQ(bundle.metadata(10).later->has_luma, false);
    EXPECT_FALSE(bundle.metadata(11).later) << "nothing that Morvale_process reads has changed";
    EXPECT_EQ(content(session(number) / "records.bin").size(), 15u * 288);
  }
}

TEST_F(RecordTest, DebugDrawingsDoNotReachTheRecordedPixels) {
  recorded("", "film", "front");
  recorded("PERSIST_MORVALE_CAPTURE_DEBUG=2 MORVALE_LOG=F", "film", "front");
  const BundleReader plain(session(1)), drawn(session(2));
  for (int frame = 0; frame < kFrames; ++frame)
    EXPECT_EQ(plain.input(frame).nv21, drawn.input(frame).nv21) << frame;
}

TEST_F(RecordTest, AThinRecordingReplaysAsAWholeOne) {
  for (const std::string which : {"front", "back"}) {
    const std::string engine = walking_engine(which == "front" ? 64 : 32),
                      plain = camera(engine, "film", which);
    EXPECT_TRUE(same(recorded(engine + "VEXA_RECORD_FRAMES=thin", "film", which), plain));
    const fs::path thin = session(which == "front" ? 1 : 2);
    EXPECT_TRUE(same(replayed(thin), plain)) << errors_;
    EXPECT_EQ(replayed_by_the_program(thin), 0) << errors_;
    const BundleReader bundle(thin);
    for (const int frame : {0, 3, 5, 9, 12, 13, 14}) EXPECT_TRUE(bundle.is_thin(frame)) << frame;
    for (const int frame : {4, 6}) EXPECT_FALSE(bundle.has_pixels(frame)) << frame;
  }
}

TEST_F(RecordTest, FramesThatTheLibraryDrawsIntoAreKeptWhole) {
  recorded("VEXA_RECORD_FRAMES=thin PERSIST_MORVALE_CAPTURE_DEBUG=1 MORVALE_LOG=F", "film", "front");
  recorded("", "film", "front");
  const BundleReader drawn(session(1)), whole(session(2));
  EXPECT_EQ(drawn.info().debug_level, 1);
  EXPECT_FALSE(drawn.is_thin(0));
  EXPECT_EQ(drawn.input(0).nv21, whole.input(0).nv21);
}

TEST_F(RecordTest, FramesAndLabelsAreKeptAsAsked) {
  recorded("VEXA_RECORD_FRAMES=0", "film", "back");
  const BundleReader bundle(session(1));
  ASSERT_EQ(bundle.frame_count(), kFrames);
  for (int frame = 0; frame < kFrames; ++frame) {
    EXPECT_FALSE(bundle.has_pixels(frame));
    EXPECT_TRUE(bundle.output(frame).labels.empty());
  }
  EXPECT_TRUE(bundle.metadata(6).has_planes == false && bundle.metadata(7).has_planes);
}

TEST_F(RecordTest, AKilledSessionReplaysUpToItsLastFrame) {
  const std::string before = recorded("", "crash", "front");
  ASSERT_NE(status_, 0);
  const BundleReader bundle(session(1));
  EXPECT_EQ(bundle.frame_count(), 6);
  const std::string again = replayed(session(1));
  EXPECT_EQ(again.size(), 6u * 292);
  EXPECT_TRUE(same(again, camera("VEXA_ENGINE=fixed", "film", "front").substr(0, again.size())));
}

TEST_F(RecordTest, WhereRecordingFailsTheLibraryGoesOnAndOneLineSaysSo) {
  const std::string plain = camera("VEXA_ENGINE=fixed", "film", "front");
  std::ofstream(folder_ / "file") << "in the way";
  const std::string in_the_way = (folder_ / "file").string();
  for (const std::string& target : {std::string(), std::string("/proc/none"), in_the_way}) {
    EXPECT_TRUE(same(recorded("VEXA_RECORD_DIR=" + target, "film", "front"), plain));
    EXPECT_EQ(count(errors_, "vexa_record: "), 1) << errors_;
    EXPECT_EQ(count(errors_, "\n"), 1) << errors_;
  }
  // Nothing is left that a replay of all recordings would stumble over.
  EXPECT_TRUE(same(recorded("VEXA_RECORD_DIR=" + in_the_way, "twice", "front"), plain + plain));
  EXPECT_EQ(count(errors_, "vexa_record: "), 1) << "told once, not once a session: " << errors_;
}

TEST_F(RecordTest, EachSessionHasItsOwnBundle) {
  const std::string both = recorded("", "twice", "front");
  EXPECT_EQ(errors_, "");
  for (const int number : {1, 2}) {
    EXPECT_TRUE(same(replayed(session(number)),
                     both.substr(both.size() / 2 * static_cast<size_t>(number - 1), both.size() / 2)))
        << number;
  }
  EXPECT_FALSE(fs::exists(session(3)));
}

TEST_F(RecordTest, NoPixelIsReadThatTheLibraryDoesNotRead) {
  {
    morvale::session::BundleWriter(folder_ / "sluggish", {morvale::kFrontCamera, 256, 64, 2, 0, "test", ""});
  }
  const std::string sluggish = "VEXA_ENGINE=recorded VEXA_BUNDLE=" + (folder_ / "sluggish").string();
  const std::pair<std::string, std::string> sessions[] = {
      {"", "unloaded"}, {"VEXA_ENGINE=onnx VEXA_MODEL_DIR=/none", "unread"}, {sluggish, "unread"}};
  int number = 0;
  for (const auto& [settings, what] : sessions) {
    recorded(settings, what, "front");
    ASSERT_EQ(status_, 0) << "a plane was read: " << settings;
    const BundleReader bundle(session(++number));
    EXPECT_EQ(bundle.frame_count(), kFrames);
    EXPECT_EQ(replayed_by_the_program(session(number)), 0) << errors_;
    EXPECT_NE(errors_.find("all records as recorded"), std::string::npos) << errors_;
  }
}

/// The shell goes without the shim: clang's sanitizers have their runtime in a sanitized program only.
std::string in_a_shell(const std::string& commands) {
  return " bash -c '" + commands + "; exec env LD_PRELOAD=" RECORD_SHIM " \"$@\"' -";
}

/// The reader's answer for frame 3 of a bundle that could not take all of it.
void expect_cut_before_frame(int frame, const fs::path& folder) {
  const BundleReader bundle(folder);
  EXPECT_EQ(bundle.frame_count(), frame);
  EXPECT_NE(bundle.warning().find("frame " + std::to_string(frame)), std::string::npos) << bundle.warning();
}

/// Frame 3, of 126,720 bytes, is the first that does not fit into files of 120 blocks of 1,024; the signal
/// that comes with it would end the service.
TEST_F(RecordTest, AFileSizeLimitEndsTheRecordingAndNotTheService) {
  const std::string plain = camera("VEXA_ENGINE=fixed", "film", "front");
  EXPECT_TRUE(same(
      camera("VEXA_ENGINE=fixed VEXA_RECORD_DIR=" + (folder_ / "to").string() + in_a_shell("ulimit -f 120"),
             "film", "front"),
      plain));
  EXPECT_EQ(status_, 0);
  EXPECT_EQ(count(errors_, "cannot be written: File too large"), 1) << errors_;
  EXPECT_EQ(count(errors_, "\n"), 1) << errors_;
  expect_cut_before_frame(3, session(1));
  const std::string again = replayed(session(1));
  EXPECT_TRUE(same(again, plain.substr(0, 3u * 292)));
}

/// Whether the service itself hears of a limit that it runs into is its own affair.
TEST_F(RecordTest, TheServicesOwnFileSizeSignalStaysItsOwn) {
  camera("VEXA_ENGINE=fixed VEXA_RECORD_DIR=" + (folder_ / "to").string() + in_a_shell("ulimit -f 1"), "film",
         "front");
  EXPECT_NE(status_, 0) << "the results, too, are more than 1,024 bytes";
}

TEST_F(RecordTest, AFullDiskEndsTheRecordingAndNotTheService) {
  if (std::system("unshare -Urm true 2>/dev/null") != 0)
    GTEST_SKIP() << "no file system of its own can be made";
  const std::string plain = camera("VEXA_ENGINE=fixed", "film", "back");
  const std::string disk = (folder_ / "disk").string(), to = (folder_ / "to").string();
  fs::create_directory(disk);
  EXPECT_TRUE(same(on_a_disk("size=500k", disk, to), plain));
  EXPECT_EQ(status_, 0);
  EXPECT_EQ(count(errors_, "No space left on device"), 1) << errors_;
  EXPECT_EQ(count(errors_, "\n"), 1) << errors_;
  expect_cut_before_frame(3, session(1));
  EXPECT_TRUE(same(replayed(session(1)), plain.substr(0, 3u * 292)));

  // A disk that has no room for the folders either is left without half a bundle.
  fs::remove_all(to);
  EXPECT_TRUE(same(on_a_disk("nr_inodes=4", disk, to), plain));
  EXPECT_EQ(count(errors_, "No space left on device"), 1) << errors_;
  EXPECT_FALSE(fs::exists(session(1)));
}

/// The child goes on with the session and has one of its own: the first bundle is the parent's alone.
TEST_F(RecordTest, AForksChildRecordsNothingOfItsParentsSession) {
  const std::string plain = camera("VEXA_ENGINE=fixed", "film", "front");
  EXPECT_TRUE(same(recorded("", "fork", "front"), plain));
  EXPECT_EQ(errors_, "");
  EXPECT_TRUE(same(replayed(session(1)), plain));
  const BundleReader childs(session(2));
  EXPECT_EQ(childs.frame_count(), kFrames);
  EXPECT_FALSE(fs::exists(session(3)));
}

TEST_F(RecordTest, ThePythonExampleReadsABundle) {
  recorded("", "film", "back");
  const fs::path out = folder_ / "listing";
  if (std::system("/usr/bin/python3 -c 'import numpy' 2>/dev/null") != 0) GTEST_SKIP() << "no NumPy";
  ASSERT_EQ(std::system(
                ("/usr/bin/python3 -B " READ_BUNDLE " " + session(1).string() + " >" + out.string()).c_str()),
            0);
  EXPECT_EQ(count(content(out), "\n"), 1 + kFrames) << content(out);
  EXPECT_EQ(count(content(out), "no scores"), 2) << content(out);
  if (std::system("zstd --version >/dev/null 2>&1") != 0) return;
  recorded("VEXA_RECORD_FRAMES=thin", "film", "back");
  ASSERT_EQ(std::system(
                ("/usr/bin/python3 -B " READ_BUNDLE " " + session(2).string() + " >" + out.string()).c_str()),
            0);
  EXPECT_EQ(count(content(out), "no pixels"), 2) << content(out);
}

/// The engine itself, in this process.
class RecordedEngineTest : public RecordTest {
 protected:
  RecordedEngineTest() {
    setenv("VEXA_ENGINE", "recorded", 1);
    setenv("VEXA_BUNDLE", (folder_ / "bundle").c_str(), 1);
    unsetenv("VEXA_BUNDLE_FRAME");
  }
  ~RecordedEngineTest() override {
    if (runtime_ != nullptr) DestroyVexaSession(runtime_);
    for (const char* name : {"VEXA_ENGINE", "VEXA_BUNDLE", "VEXA_BUNDLE_FRAME"}) unsetenv(name);
  }

  /// Frame i has the score i in every cell; frames 1 and 3 were not run, the run of frame 4 failed.
  void make_bundle(int32_t open_result) {
    morvale::session::SessionInfo info{morvale::kFrontCamera, 16, 4, open_result, 0, "test", ""};
    morvale::session::BundleWriter writer(folder_ / "bundle", info);
    for (int i = 0; i < 6; ++i) {
      morvale::session::FrameOutput output;
      if (i % 2 == 0 && i != 4) output.logits.assign(80, static_cast<float>(i));
      if (i == 4) output.execute_result = 3;
      if (i == 5) output.logits.assign(80, 5.0f);
      writer.add({}, output);
    }
  }

  int32_t open() {
    if (runtime_ == nullptr) runtime_ = CreateVexaSession();
    testing::internal::CaptureStderr();
    const int32_t answer = runtime_->open({});
    errors_ = testing::internal::GetCapturedStderr();
    return answer;
  }

  /// The first score of a run, or -1 for a failed one, which must leave one line.
  float run(int32_t side = 16) {
    std::vector<float> pixels(static_cast<size_t>(side * side * 3));
    std::vector<vexa::DataBuffer> ins{{pixels.data(), {1, side, side, 3}, 0, 1}}, outs;
    testing::internal::CaptureStderr();
    const int32_t answer = runtime_->execute(ins, outs);
    errors_ = testing::internal::GetCapturedStderr();
    EXPECT_EQ(count(errors_, "\n"), answer == 0 ? 0 : 1) << errors_;
    EXPECT_TRUE(answer != 0 || outs.at(0).shape == std::vector<int32_t>({1, 4, 4, 5}));
    return answer == 0 ? *static_cast<float*>(outs.at(0).data) : -1.0f;
  }
  void expect_failure(const std::string& part, int32_t side = 16) {
    EXPECT_EQ(run(side), -1.0f);
    EXPECT_NE(errors_.find(part), std::string::npos) << part << " in: " << errors_;
  }

  vexa::VexaSession* runtime_ = nullptr;
};

TEST_F(RecordedEngineTest, AnswersInOrderAndPassesOverFramesThatWereNotRun) {
  make_bundle(0);
  ASSERT_EQ(open(), 0) << errors_;
  EXPECT_EQ(run(), 0.0f);
  expect_failure("16 pixels", 8);
  EXPECT_EQ(run(), 2.0f) << "a refused input must not use up a frame";
  expect_failure("frame 4: the run failed");
  EXPECT_EQ(run(), 5.0f);
  expect_failure("6 frames are used up");
}

TEST_F(RecordedEngineTest, VexaBundleFrameNamesTheFrame) {
  make_bundle(0);
  ASSERT_EQ(open(), 0) << errors_;
  for (const char* frame : {"5", "2", "2", "0"}) {
    setenv("VEXA_BUNDLE_FRAME", frame, 1);
    EXPECT_EQ(run(), static_cast<float>(std::atoi(frame)));
  }
  unsetenv("VEXA_BUNDLE_FRAME");
  EXPECT_EQ(run(), 2.0f) << "in order again, behind frame 0";
  const std::pair<const char*, const char*> refused[] = {{"3", "frame 3: the network did not run"},
                                                         {"6", "used up"},
                                                         {"-1", "VEXA_BUNDLE_FRAME"},
                                                         {"2x", "VEXA_BUNDLE_FRAME"}};
  for (const auto& [frame, says] : refused) {
    setenv("VEXA_BUNDLE_FRAME", frame, 1);
    expect_failure(says);
  }
}

TEST_F(RecordedEngineTest, OpensAsTheRecordedSessionDid) {
  EXPECT_EQ(open(), 1) << "no bundle";
  EXPECT_NE(errors_.find("session.json"), std::string::npos) << errors_;
  make_bundle(2);
  EXPECT_EQ(open(), 2) << errors_;
  fs::remove_all(folder_ / "bundle");
  make_bundle(1);
  EXPECT_EQ(open(), 1) << errors_;
  unsetenv("VEXA_BUNDLE");
  EXPECT_EQ(open(), 1);
  EXPECT_NE(errors_.find("VEXA_BUNDLE is not set"), std::string::npos) << errors_;
}

}  // namespace
