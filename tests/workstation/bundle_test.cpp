/// Session bundles: what is written comes back bit for bit, and what a crash or a careless copy left is
/// named.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <fstream>
#include <functional>
#include <limits>
#include <tuple>

#include "fakes/peak_memory.h"
#include "session/json.h"
#include "session/npy.h"
#include "session/printable.h"
#include "workstation/bundle_frames.h"

namespace {

using namespace bundle_frames;

TEST_F(BundleTest, EverythingComesBackBitForBit) {
  std::vector<FrameInput> inputs;
  std::vector<FrameOutput> outputs;
  for (int i = 0; i < 3; ++i) {
    inputs.push_back(frame_input(i));
    outputs.push_back(frame_output(i));
  }
  for (const float gate : {std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(),
                           std::numeric_limits<float>::quiet_NaN(), -0.0f,
                           std::numeric_limits<float>::denorm_min(), std::numeric_limits<float>::max()}) {
    inputs.emplace_back().record.gateLevel = gate;
    inputs.back().has_planes = false;
    outputs.emplace_back().process_result = -1;
  }
  outputs.back().execute_result = 7;
  inputs[4].record.faceCount = -1;
  inputs[1].later = LaterRecord{0, -1, std::numeric_limits<int32_t>::max(), 7, false};

  {
    BundleWriter writer(folder_ / "new" / "bundle", kInfo);
    for (size_t i = 0; i < inputs.size(); ++i) writer.add(inputs[i], outputs[i]);
  }
  const BundleReader bundle(folder_ / "new" / "bundle");
  EXPECT_EQ(bundle.warning(), "");
  EXPECT_EQ(bundle.info().camera_type, kInfo.camera_type);
  EXPECT_EQ(bundle.info().pad_size, 16);
  EXPECT_EQ(bundle.info().net_size, 4);
  EXPECT_EQ(bundle.info().open_result, 2);
  EXPECT_EQ(bundle.info().made_by, "bundle_test \"quoted\" \xef\xbf\xbd");  // the replacement character
  ASSERT_EQ(bundle.frame_count(), static_cast<int>(inputs.size()));
  for (size_t i = 0; i < inputs.size(); ++i) expect_frame(bundle, static_cast<int>(i), inputs[i], outputs[i]);
  EXPECT_THROW(bundle.input(-1), BundleError);
  EXPECT_THROW(bundle.output(bundle.frame_count()), BundleError);
}

TEST_F(BundleTest, TheWriterRefusesWhatWouldNotReadAndGoesOn) {
  const fs::path bundle = folder_ / "bundle";
  {
    BundleWriter writer(bundle, kInfo);
    FrameInput input = frame_input(0);
    input.nv21.pop_back();
    EXPECT_THROW(writer.add(input, frame_output(0)), BundleError);
    FrameOutput output = frame_output(0);
    output.logits.resize(kScores + 5);
    EXPECT_THROW(writer.add(frame_input(0), output), BundleError);
    writer.add(frame_input(0), frame_output(0));
  }
  EXPECT_EQ(complaint(bundle), "");
  expect_frame(BundleReader(bundle), 0, frame_input(0), frame_output(0));
  EXPECT_THROW(BundleWriter(bundle, kInfo), BundleError) << "a bundle must not be written over";
}

/// Each file of a bundle cut at every length that could matter: the text names the file and the frame.
TEST_F(BundleTest, EachTruncatedFileIsNamedWithItsFrame) {
  struct Cut {
    const char* file;
    uintmax_t size;
    std::vector<std::string> says;
  };
  const uintmax_t line = [&] {
    std::ifstream file(three_frames("measured") / "metadata.jsonl");
    std::string first;
    std::getline(file, first);
    return first.size() + 1;
  }();
  const Cut cuts[] = {
      {"session.json", 20, {"session.json", "is not JSON"}},
      {"session.json", 0, {"session.json", "is not JSON"}},
      {"records.bin", 2 * 288, {"records.bin: frame 2"}},
      {"records.bin", 288 + 287, {"records.bin: frame 1"}},
      {"records.bin", 0, {"records.bin: frame 0"}},
      {"metadata.jsonl", 0, {"metadata.jsonl: frame 0"}},
      {"metadata.jsonl", line, {"metadata.jsonl: frame 1"}},
      {"metadata.jsonl", line + 5, {"metadata.jsonl: frame 1"}},
      {"frames/000001_6x5_s8.nv21", 55, {"frames/000001_6x5_s8.nv21: frame 1", "55 bytes, not 56"}},
      {"logits/000002.npy",
       128 + kScores * 4 - 1,
       {"logits/000002.npy", "79 values, not (4, 4, 5)", "frame 2"}},
      {"logits/000002.npy", 100, {"logits/000002.npy", "within the head", "frame 2"}},
      {"logits/000002.npy", 0, {"logits/000002.npy", "within the head", "frame 2"}},
      {"labels/000000_4x3x5.bin", 59, {"labels/000000_4x3x5.bin: frame 0", "59 bytes"}},
  };
  int number = 0;
  for (const Cut& cut : cuts) {
    const fs::path bundle = three_frames("cut" + std::to_string(number++));
    fs::resize_file(bundle / cut.file, cut.size);
    for (const std::string& part : cut.says) {
      EXPECT_NE(complaint(bundle).find(part), std::string::npos) << part << " in: " << complaint(bundle);
    }
    fs::remove(bundle / cut.file);
    EXPECT_NE(complaint(bundle).find(cut.file), std::string::npos) << complaint(bundle);
  }
}

/// What was recorded before the format grew stays readable as it is.
TEST_F(BundleTest, ABundleOfTheFirstVersionIsRead) {
  std::ofstream(folder_ / "session.json") << R"({
  "format": "morvale-session",
  "version": 1,
  "camera_type": 0,
  "pad_size": 128,
  "net_size": 32,
  "open_result": 2,
  "made_by": "libvexa_record 1.0.0"
}
)";
  std::ofstream(folder_ / "metadata.jsonl")
      << R"({"frame":0,"camera_type":0,"width":2,"height":3,"stride":0,"gate_level":0.10000000149011612,)"
      << R"("face_count":1,"faces":[[1,2,3,4]],"qerm_hint":5,"is_udc":1,"has_planes":true,)"
      << R"("chroma_follows":false,"after_process":true,"process":-1,"network_ms":0.25,)"
      << R"("nv21":"frames/000000_2x3_s2.nv21"})"
      << "\n";
  fs::create_directory(folder_ / "frames");
  std::ofstream(folder_ / "frames" / "000000_2x3_s2.nv21") << "lumaVUVU";
  std::ofstream(folder_ / "records.bin") << std::string(288, '\1');
  FrameInput input;
  input.record.width = 2;
  input.record.height = 3;
  input.record.gateLevel = 0.1f;
  input.record.faceCount = 1;
  input.record.faces[0] = {1, 2, 3, 4};
  input.record.qermHint = 5;
  input.record.isUDC = 1;
  input.chroma = ChromaPlace::kApart;
  input.nv21 = {'l', 'u', 'm', 'a', 'V', 'U', 'V', 'U'};
  FrameOutput output;
  output.process_result = -1;
  output.network_ms = 0.25;
  std::memset(&output.result, 1, sizeof output.result);
  const BundleReader bundle(folder_);
  EXPECT_EQ(bundle.info().open_result, 2);
  expect_frame(bundle, 0, input, output);
}

/// The states that a crash within add() leaves, in the order in which the files are written.
TEST_F(BundleTest, AHalfWrittenLastFrameIsLeftOutAndToldOf) {
  const std::string told = "frame 2 was still being written";
  const auto lose_line = [](const fs::path& bundle, uintmax_t keep) {
    const fs::path file = bundle / "metadata.jsonl";
    std::ifstream stream(file);
    std::string a, b;
    std::getline(stream, a);
    std::getline(stream, b);
    fs::resize_file(file, a.size() + b.size() + 2 + keep);
  };
  const std::vector<std::function<void(const fs::path&)>> crashes{
      [&](const fs::path& b) { lose_line(b, 30); },
      [&](const fs::path& b) { lose_line(b, 0); },
      [&](const fs::path& b) { lose_line(b, 0), fs::resize_file(b / "records.bin", 2 * 288 + 100); },
      [&](const fs::path& b) { lose_line(b, 0), fs::resize_file(b / "records.bin", 2 * 288); },
  };
  for (size_t i = 0; i < crashes.size(); ++i) {
    const fs::path path = three_frames("crash" + std::to_string(i));
    crashes[i](path);
    const BundleReader bundle(path);
    EXPECT_NE(bundle.warning().find(told), std::string::npos) << bundle.warning();
    ASSERT_EQ(bundle.frame_count(), 2);
    expect_frame(bundle, 1, frame_input(1), frame_output(1));
  }
  const fs::path path = three_frames("empty_line");
  std::ofstream(path / "metadata.jsonl", std::ios::app) << '\n';
  EXPECT_THROW(BundleReader{path}, BundleError) << "a whole line, and no frame";
}

TEST_F(BundleTest, LinesFromElsewhereAreRefusedByFrame) {
  const std::pair<const char*, const char*> edits[] = {
      {"\"width\":6", "\"width\":6.5"},
      {"\"width\":6", "\"width\":4294967302"},
      {"\"width\":6", "\"width\":null"},
      {"\"width\":6,", ""},
      {"\"height\":5", "\"height\":2147483647"},
      {"\"face_count\":1", "\"face_count\":3"},
      {"\"frame\":1", "\"frame\":2"},
      {"logits/000001.npy", "logits/../../../secret"},
      {"logits/000001.npy", "/etc/passwd"},
      {"\"execute\":0", "\"execute\":1"},
      {"{\"frame\":1", "[{\"frame\":1"},
      {"\"width\":6", "\"width\":6,\"width\":6"},
  };
  int number = 0;
  for (const auto& [from, to] : edits) {
    const fs::path bundle = three_frames("edit" + std::to_string(number++));
    forget_hashes(bundle);
    std::string text = content(bundle / "metadata.jsonl");
    const size_t at = text.find(from, text.find('\n'));
    ASSERT_NE(at, std::string::npos) << from;
    std::ofstream(bundle / "metadata.jsonl") << text.replace(at, std::strlen(from), to);
    EXPECT_NE(complaint(bundle).find("frame 1"), std::string::npos) << to << ": " << complaint(bundle);
  }
}

/// A changed byte anywhere is told of with its frame, and only with that.
TEST_F(BundleTest, AChangedByteIsNamedWithItsFrame) {
  const fs::path path = three_frames("bundle");
  const std::string lines = content(path / "metadata.jsonl");
  const std::tuple<const char*, size_t, int> changes[] = {
      {"frames/000000_6x5_s6.nv21", 3, 0},
      {"logits/000001.npy", 300, 1},
      {"labels/000002_4x3x5.bin", 59, 2},
      {"records.bin", 288 + 7, 1},
      {"metadata.jsonl", lines.find("\"width\":6") + 8, 0},
      {"metadata.jsonl", lines.rfind("0"), 2}};
  for (const auto& [file, at, frame] : changes) {
    SCOPED_TRACE(file);
    const std::string whole = content(path / file);
    std::string changed = whole;
    changed[at] ^= 1;
    std::ofstream(path / file, std::ios::binary) << changed;
    const BundleReader bundle(path, Damage::kTell);
    ASSERT_EQ(bundle.frame_count(), 3);
    for (int i = 0; i < 3; ++i) {
      const std::string damage = bundle.damage(i).value_or("none");
      EXPECT_EQ(damage.find("frame " + std::to_string(i)) != std::string::npos, i == frame) << i << damage;
    }
    const auto read_strictly = [&, refused = frame] {
      const BundleReader strict(path);
      strict.input(refused);
      strict.output(refused);
    };
    EXPECT_THROW(read_strictly(), BundleError);
    std::ofstream(path / file, std::ios::binary) << whole;
  }
  EXPECT_EQ(BundleReader(path).damage(1), std::nullopt);
  std::string session = content(path / "session.json");
  session[session.find("16")] = '9';
  std::ofstream(path / "session.json") << session;
  EXPECT_NE(complaint(path).find("session.json: is not as it was written"), std::string::npos)
      << complaint(path);
}

TEST_F(BundleTest, TextsHaveAStatedLength) {
  const std::tuple<const char*, uintmax_t, const char*> files[] = {
      {"session.json", 6ull << 30, "at most 4194304 are read"},
      {"metadata.jsonl", 6ull << 30, "a line of more than 65536 bytes"},
      {"metadata.jsonl", 60000, "frame 3 was still being written"},
  };
  int number = 0;
  for (const auto& [file, size, words] : files) {
    const fs::path bundle = three_frames("long" + std::to_string(number++));
    fs::resize_file(bundle / file, size);  // sparse: it takes no room
    EXPECT_NE(complaint(bundle).find(words), std::string::npos) << complaint(bundle);
    EXPECT_LT(testing_memory::peak_mib([&] { complaint(bundle); }), 48) << file;
  }
}

TEST_F(BundleTest, LinksThatLeadOutOfTheBundleAreNotFollowed) {
  const fs::path other = three_frames("other");
  for (const char* name : {"session.json", "metadata.jsonl", "records.bin", "frames", "logits/000001.npy",
                           "labels/000002_4x3x5.bin"}) {
    const fs::path bundle = folder_ / "links";
    fs::copy(other, bundle, fs::copy_options::recursive);
    fs::remove_all(bundle / name);
    fs::create_symlink(other / name, bundle / name);
    EXPECT_NE(complaint(bundle).find("leads out of the bundle"), std::string::npos)
        << name << complaint(bundle);
    fs::remove_all(bundle);
  }
  const fs::path inner = three_frames("inner"), link = folder_ / "link";
  fs::rename(inner / "records.bin", inner / "kept.bin");
  fs::create_symlink("kept.bin", inner / "records.bin");
  fs::create_directory_symlink(inner, link);
  EXPECT_EQ(complaint(inner), "") << "a link that stays inside";
  EXPECT_EQ(complaint(link), "") << "a bundle's folder may itself be a link";
  EXPECT_EQ(complaint(link / ""), "");
  EXPECT_NE(complaint(folder_ / "missing" / "").find("no such file"), std::string::npos);
}

/// Kills a writer that has just reported its frame number `frames`: that frame and all before it are there.
TEST_F(BundleTest, AKilledWriterLosesAtMostTheFrameInHand) {
  for (const int frames : {1, 5, 40}) {
    const fs::path path = folder_ / std::to_string(frames);
    int pipe_ends[2];
    ASSERT_EQ(pipe(pipe_ends), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      BundleWriter writer(path, kInfo);
      for (int i = 0;; ++i) {
        writer.add(frame_input(i), frame_output(i));
        if (write(pipe_ends[1], "x", 1) != 1) _exit(1);
      }
    }
    char byte;
    for (int i = 0; i < frames; ++i) ASSERT_EQ(read(pipe_ends[0], &byte, 1), 1);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(pipe_ends[1]);
    int reported = frames;
    while (read(pipe_ends[0], &byte, 1) == 1) ++reported;
    close(pipe_ends[0]);

    const BundleReader bundle(path);
    EXPECT_GE(bundle.frame_count(), reported);
    EXPECT_LE(bundle.frame_count(), reported + 1);
    for (int i = 0; i < bundle.frame_count(); ++i) expect_frame(bundle, i, frame_input(i), frame_output(i));
  }
}

TEST(Printable, NothingThatSteersATerminalComesThrough) {
  const std::pair<std::string_view, const char*> cases[] = {
      {"plain, \u00e9, \u20ac, \U0001f600", "plain, \u00e9, \u20ac, \U0001f600"},
      {"\u00a0\u00bf\u00c0\u07ff\u0800\uffff\U00010000\U0010ffff",
       "\u00a0\u00bf\u00c0\u07ff\u0800\uffff\U00010000\U0010ffff"},
      {"\xc1\xbf \xc2\x7f \xc2\xc0 \xf5\x80\x80\x80",
       "\\xc1\\xbf \\xc2\\x7f \\xc2\\xc0 \\xf5\\x80\\x80\\x80"},
      {"\x1b[31mred\x1b]0;title\x07", "\\x1b[31mred\\x1b]0;title\\x07"},
      {"two\nlines\r\t\x7f", "two\\x0alines\\x0d\\x09\\x7f"},
      {"\xc2\x9b"
       "31m",
       "\\xc2\\x9b31m"},
      {"\xff\xe2\x82 \xc0\x9b \xe2\x82", "\\xff\\xe2\\x82 \\xc0\\x9b \\xe2\\x82"},
      {std::string_view("\0", 1), "\\x00"},
  };
  for (const auto& [text, shown] : cases) EXPECT_EQ(printable(text), shown);
  EXPECT_EQ(Json("\x1b \x7f \xc2\x9b \u00a0 \u00e9").dump(), "\"\\u001b \\u007f \\u009b \u00a0 \u00e9\"");
}

/// However long its sides are, and wherever among them the empty one stands.
TEST_F(BundleTest, AnArrayWithoutValuesIsReadAsItWasWritten) {
  for (const std::vector<int32_t>& shape : {std::vector<int32_t>{0}, {1000, 1000, 0}, {0, 1000}}) {
    const NpyArray array = parse_npy("empty", npy_bytes(shape, {}));
    EXPECT_EQ(array.shape, shape);
    EXPECT_TRUE(array.values.empty());
    EXPECT_EQ(npy_bytes(shape, {}).size() % 64, 0u) << "the values begin where NumPy wants them";
  }
}

TEST_F(BundleTest, NpyHeadsOfOtherWriters) {
  const auto with_head = [&](std::string head) {
    const fs::path file = folder_ / "array.npy";
    std::string text{"\x93NUMPY\x01\x00", 8};
    text += {static_cast<char>(head.size()), '\0'};
    std::ofstream(file, std::ios::binary) << text + head << std::string("\0\0\x80\x3f\0\0\0\x40", 8);
    return file;
  };
  const NpyArray array = read_npy(with_head("{'shape':(2,),'fortran_order':False,'descr':'<f4'}\n"));
  EXPECT_EQ(array.shape, std::vector<int32_t>{2});
  EXPECT_EQ(array.values, (std::vector<float>{1, 2}));
  for (const char* head : {"{'descr': '<f8', 'fortran_order': False, 'shape': (1,), }\n",
                           "{'descr': '<f4', 'fortran_order': True, 'shape': (1, 2), }\n",
                           "{'descr': '<f4', 'fortran_order': False, 'shape': (2147483647, 2147483647), }\n",
                           "{'descr': '<f4', 'fortran_order': False, 'shape': (-2,), }\n",
                           "{'descr': '<f4', 'fortran_order': False, 'shape': (2,", "{}"}) {
    EXPECT_THROW(read_npy(with_head(head)), BundleError) << head;
  }
}

}  // namespace
