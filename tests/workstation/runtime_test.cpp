/// The workstation's stand-ins: the neural runtime (with tiny models of its own), the log, the properties.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <morvale/core/vexa_runtime.h>
#include "platform/log.h"
#include "platform/properties.h"

namespace {

/// Sets or unsets an environment variable for one scope.
class ScopedVariable {
 public:
  ScopedVariable(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    value == nullptr ? unsetenv(name) : setenv(name, value, 1);
  }
  ~ScopedVariable() { old_ ? setenv(name_, old_->c_str(), 1) : unsetenv(name_); }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;

 private:
  const char* name_;
  std::optional<std::string> old_;
};

struct SessionDeleter {
  void operator()(vexa::VexaSession* session) const {
    session->close();
    DestroyVexaSession(session);
  }
};
using SessionPtr = std::unique_ptr<vexa::VexaSession, SessionDeleter>;

vexa::VexaOptionsV2 options_for(const std::string& model) {
  vexa::VexaOptionsV2 options;
  options.inputNames = {"MobilenetV2/MobilenetV2/input:0"};
  options.outputNames = {"logits/semantic/BiasAdd:0"};
  options.modelPath = "/vendor/etc/models/" + model + ".dlc";
  return options;
}

/// What standard error got while `action` ran.
template <typename Action>
std::string errors_of(Action action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

/// Expects exactly one line on standard error that holds every part.
void expect_one_line(const std::string& errors, const std::vector<std::string>& parts) {
  EXPECT_EQ(errors.find('\n') + 1, errors.size()) << errors;
  for (const std::string& part : parts)
    EXPECT_NE(errors.find(part), std::string::npos) << part << " in: " << errors;
}

class RuntimeTest : public testing::Test {
 protected:
  ScopedVariable folder_{"VEXA_MODEL_DIR", TINY_MODELS};
  SessionPtr session_{CreateVexaSession()};

  int32_t open(const std::string& model) {
    int32_t result = -1;
    errors_ = errors_of([&] { result = session_->open(options_for(model)); });
    return result;
  }
  int32_t execute(std::vector<vexa::DataBuffer> inputs) {
    int32_t result = -1;
    outputs_.clear();
    errors_ = errors_of([&] { result = session_->execute(inputs, outputs_); });
    return result;
  }

  std::vector<vexa::DataBuffer> outputs_;
  std::string errors_;
};

constexpr size_t kSide = 128;
using Picture = std::vector<float>;
const Picture kBlack(kSide* kSide * 3);

/// Red is `left` in the left half and `right` in the right one; green and blue would show in any mix-up of
/// axes.
Picture two_halves(float left, float right) {
  Picture picture(kBlack.size());
  for (size_t i = 0; i < picture.size(); ++i) {
    picture[i] = i % 3 != 0 ? 100.0f : i / 3 % kSide < kSide / 2 ? left : right;
  }
  return picture;
}

TEST_F(RuntimeTest, RunsAModelCellByCellWithLabelsInnermost) {
  ASSERT_EQ(open("good"), 0) << errors_;
  EXPECT_EQ(errors_, "");
  Picture picture = two_halves(1, -1);
  ASSERT_EQ(execute({{picture.data(), {1, 128, 128, 3}, 0, 1}}), 0) << errors_;
  ASSERT_EQ(outputs_.size(), 1u);
  EXPECT_EQ(outputs_[0].shape, (std::vector<int32_t>{1, 32, 32, 5}));
  const float* scores = static_cast<const float*>(outputs_[0].data);
  const std::vector<float> seam{1,  3,  5,  7,  9,
                                -1, -1, -1, -1, -1};  // (k + 1) * red + k for k = 0..4, two cells
  for (const int row : {0, 31}) {
    const float* cells = scores + (row * 32 + 15) * 5;
    EXPECT_EQ(std::vector<float>(cells, cells + 10), seam) << row;
  }
}

TEST_F(RuntimeTest, OutputLivesUntilTheNextRunAndASecondRunSeesItsOwnInput) {
  ASSERT_EQ(open("good"), 0) << errors_;
  Picture first = two_halves(1, -1), second = two_halves(2, 0);
  ASSERT_EQ(execute({{first.data(), {1, 128, 128, 3}}}), 0);
  first = kBlack;
  EXPECT_EQ(static_cast<const float*>(outputs_[0].data)[4], 9.0f);
  ASSERT_EQ(execute({{second.data(), {1, 128, 128, 3}}}), 0);
  EXPECT_EQ(static_cast<const float*>(outputs_[0].data)[4], 14.0f);
}

TEST_F(RuntimeTest, OpenRefusesModelsThatDoNotFit) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"absent", "no model file"},         {"garbage", "not an ONNX model"},
      {"longest", "larger than 256 MiB"},  {"oblong_input", "1x128x256x3"},
      {"batch_of_two", "2x128x128x3"},     {"small", "1x8x8x3, not 1x256x256x3 or"},
      {"giant", "1x33920x33920x3"},        {"coarse_output", "1x16x16x5"},
      {"six_labels", "1x32x32x6"},         {"untrue_output", "1x16x16x5"},
      {"cut_off", "not an ONNX model"},    {"input_name", "no tensor MobilenetV2"},
      {"output_name", "no tensor logits"}, {"named_256_wrongly", "takes 1x128x128x3 and not"}};
  for (const auto& [model, reason] : cases) {
    EXPECT_EQ(open(model), 1) << model;
    expect_one_line(errors_, {TINY_MODELS "/" + model + ".onnx", reason, "./dev network"});
  }
  {
    const ScopedVariable unset("VEXA_MODEL_DIR", nullptr);
    EXPECT_EQ(open("good"), 1);
    expect_one_line(errors_, {"good.onnx", "VEXA_MODEL_DIR", "./dev network"});
  }
  Picture picture = kBlack;
  EXPECT_NE(execute({{picture.data(), {1, 128, 128, 3}}}), 0) << "a session that never opened must not run";
  EXPECT_EQ(open("good"), 0) << "an earlier failure must not stick: " << errors_;
}

/// Newer versions of the format may have fields of any kind: 64 bits, bytes and 32 bits of field 99.
TEST_F(RuntimeTest, FieldsThatNobodyKnowsArePassedOver) {
  const std::filesystem::path folder = testing::TempDir();
  std::filesystem::copy_file(TINY_MODELS "/good.onnx", folder / "newer.onnx",
                             std::filesystem::copy_options::overwrite_existing);
  std::ofstream(folder / "newer.onnx", std::ios::binary | std::ios::app)
      << "\x99\x06" << std::string(8, '\xff') << "\x9a\x06\x02"
      << "\xff\xff"
      << "\x9d\x06" << std::string(4, '\xff') << "\x98\x06\x01";
  const ScopedVariable newer("VEXA_MODEL_DIR", folder.c_str());
  EXPECT_EQ(open("newer"), 0) << errors_;
  std::filesystem::remove(folder / "newer.onnx");
}

TEST_F(RuntimeTest, ExecuteRefusesInputsThatDoNotFit) {
  ASSERT_EQ(open("good"), 0) << errors_;
  Picture picture = kBlack;
  const std::vector<std::pair<std::string, std::vector<vexa::DataBuffer>>> cases{
      {"no input", {}},
      {"two inputs", {{picture.data(), {1, 128, 128, 3}}, {picture.data(), {1, 128, 128, 3}}}},
      {"null data", {{nullptr, {1, 128, 128, 3}}}},
      {"no shape", {{picture.data(), {}}}},
      {"a larger picture than the buffer", {{picture.data(), {1, 256, 256, 3}}}},
      {"a smaller picture", {{picture.data(), {1, 64, 64, 3}}}}};
  for (const auto& [what, inputs] : cases) {
    EXPECT_NE(execute(inputs), 0) << what;
    EXPECT_TRUE(outputs_.empty()) << what;
    expect_one_line(errors_, {"the run failed"});
  }
  EXPECT_EQ(execute({{picture.data(), {1, 128, 128, 3}}}), 0) << "a refused run must not break the session";
}

/// The made-up portrait row by row, as the label that each cell shows: hair, face, body.
TEST_F(RuntimeTest, TheFixedEngineAnswersWithItsPortrait) {
  const ScopedVariable fixed("VEXA_ENGINE", "fixed");
  ASSERT_EQ(open("absent"), 0) << errors_;
  std::vector<float> picture(256 * 256 * 3);
  ASSERT_EQ(execute({{picture.data(), {1, 256, 256, 3}}}), 0) << errors_;
  ASSERT_EQ(outputs_.at(0).shape, (std::vector<int32_t>{1, 64, 64, 5}));
  const auto* scores = static_cast<const float*>(outputs_[0].data);
  const auto row = [&](int y) {
    std::string labels;
    for (int x = 0; x < 64; ++x) {
      const float* cell = scores + (y * 64 + x) * 5;
      labels += static_cast<char>('0' + (std::max_element(cell, cell + 5) - cell));
    }
    return labels;
  };
  const auto run = [](size_t count, char label) { return std::string(count, label); };
  EXPECT_EQ(row(6), run(64, '0'));
  EXPECT_EQ(row(7), run(29, '0') + run(6, '1') + run(29, '0'));
  EXPECT_EQ(row(23), run(21, '0') + run(3, '1') + run(16, '2') + run(3, '1') + run(21, '0'));
  EXPECT_EQ(row(60), run(12, '0') + run(40, '4') + run(12, '0'));
  std::map<char, int> cells;
  for (int y = 0; y < 64; ++y)
    for (const char label : row(y)) ++cells[label];
  EXPECT_EQ(cells, (std::map<char, int>{{'0', 2546}, {'1', 204}, {'2', 280}, {'4', 1066}}));
  EXPECT_EQ(std::vector<float>(scores, scores + 5), (std::vector<float>{8, -6, -6, -9, -6}));
  const float* face = scores + (23 * 64 + 32) * 5;
  EXPECT_EQ(std::vector<float>(face, face + 5), (std::vector<float>{-6, -6, 8, -9, -6}));

  ASSERT_EQ(execute({{picture.data(), {1, 128, 128, 3}}}), 0) << errors_;
  EXPECT_EQ(outputs_.at(0).shape, (std::vector<int32_t>{1, 32, 32, 5}));
  EXPECT_EQ(static_cast<const float*>(outputs_[0].data)[(30 * 32 + 16) * 5 + 4], 8) << "the body";
  EXPECT_NE(execute({{picture.data(), {1, 64, 64, 3}}}), 0);
  expect_one_line(errors_, {"fits neither model"});
}

TEST(Runtime, DestroyingNoSessionIsHarmless) { DestroyVexaSession(nullptr); }

TEST(HostLog, ShowsPriorityTagAndTextOnALineOfItsOwn) {
  const ScopedVariable all("MORVALE_LOG", "V");
  EXPECT_EQ(errors_of([] { MORVALE_ERROR("width %d", 640); }), "E Morvale_capture: width 640\n");
  EXPECT_EQ(errors_of([] { MORVALE_DEBUG("%s", "ends itself\n"); }), "D Morvale_capture: ends itself\n");
  EXPECT_EQ(errors_of([] { MORVALE_INFO("%s", ""); }), "I Morvale_capture: \n");
  const std::string lengthy(5000, 'x');
  EXPECT_EQ(errors_of([&] { MORVALE_INFO("%s", lengthy.c_str()); }), "I Morvale_capture: " + lengthy + "\n");
}

TEST(HostLog, FilterIsReadAtEveryCall) {
  const std::vector<std::pair<const char*, std::string>> cases{
      {"V", "VDIWEF"}, {"D", "DIWEF"},  {"W", "WEF"},      {"E", "EF"},
      {"S", ""},       {nullptr, "EF"}, {"verbose", "EF"}, {"", "EF"}};
  for (const auto& [setting, shown] : cases) {
    const ScopedVariable filter("MORVALE_LOG", setting);
    const std::string lines = errors_of([] {
      for (int priority = 2; priority <= 7; ++priority) __android_log_print(priority, "t", "m");
    });
    std::string letters;
    for (size_t at = 0; at < lines.size(); at = lines.find('\n', at) + 1) letters += lines[at];
    EXPECT_EQ(letters, shown) << (setting == nullptr ? "unset" : setting);
  }
}

TEST(HostProperties, ComeFromTheEnvironmentInUpperCase) {
  std::array<char, kPropertyValueMax + 1> value;
  value.fill('#');
  const auto get = [&](const char* name) { return __system_property_get(name, value.data()); };
  const ScopedVariable debug("PERSIST_MORVALE_CAPTURE_DEBUG", "2");
  EXPECT_EQ(get("persist.morvale.capture.debug"), 1);
  EXPECT_STREQ(value.data(), "2");
  const ScopedVariable odd("RO_9_AZ_", "x");
  EXPECT_EQ(get("ro-9.aZ~"), 1) << "digits stay, every other sign becomes an underscore";
  EXPECT_EQ(get("persist.morvale.unset"), 0);
  EXPECT_STREQ(value.data(), "");
  const ScopedVariable lengthy("PERSIST_LENGTHY", std::string(200, 'y').c_str());
  EXPECT_EQ(get("persist.lengthy"), kPropertyValueMax - 1);
  EXPECT_EQ(std::string(value.data()), std::string(kPropertyValueMax - 1, 'y'));
  EXPECT_EQ(value.back(), '#') << "nothing is written behind the longest value";
}

}  // namespace
