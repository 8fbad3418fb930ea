#include "scenes/scene_options.h"

#include <algorithm>

#include "common/command.h"
#include "common/options.h"

namespace tool {
namespace {

constexpr const char* kIntroduction =
    "Makes a scene up: people with hair and clothes in front of a textured background, as a session bundle "
    "with\n"
    "the truth beside it. Needs no network and no photograph; the same flags give the same bytes "
    "everywhere.\n";

constexpr const char* kExamples = R"(Examples:
  morvale scene --out portrait
      One person, 60 frames of 640x480, front camera.
  morvale scene --out street --seed 7 --people 3 --camera back --motion walk --light backlit
  morvale score portrait street
      How near the library comes to the truth.
  VEXA_ENGINE=recorded VEXA_BUNDLE=portrait some-program
      Whatever runs the library gets the scene's scores in place of a network's.

DIR holds what every session bundle holds (the network's scores are made from the true label map), and
truth.jsonl: one JSON object a frame with the person share of the picture, boxes of faces, heads and persons,
the mean skin colour of each face and the 19 x 15 grid of heads. Frames are 30 a second.

Ctrl-C ends it and leaves nothing: the same command makes the same bytes again.

Exit status: 0 done, 1 a frame failed or cannot be written, 2 the command line or DIR cannot be used, 130 stopped by
Ctrl-C.
)";

/// A flag's word and what it stands for. The first one is the default.
template <class T>
struct Word {
  const char* text;
  T value;
};

using morvale::scene::Lighting;
using morvale::scene::Motion;
constexpr Word<Lighting> kLights[] = {{"day", Lighting::kDay},
                                      {"dim", Lighting::kDim},
                                      {"warm", Lighting::kWarm},
                                      {"backlit", Lighting::kBacklit}};
constexpr Word<Motion> kMotions[] = {
    {"sway", Motion::kSway}, {"still", Motion::kStill}, {"walk", Motion::kWalk}};
constexpr Word<Camera> kCameras[] = {{"front", Camera::kFront}, {"back", Camera::kBack}};

template <class T, size_t N>
T value_of(const Word<T> (&words)[N], const std::string& text) {
  for (const Word<T>& word : words)
    if (word.text == text) return word.value;
  return words[0].value;
}

/// What the options say, before it is looked at closer.
struct Texts {
  std::string size = "640x480", camera = kCameras[0].text, light = kLights[0].text, motion = kMotions[0].text;
};

template <class T, size_t N>
Option word_option(const char* name, std::string& text, const Word<T> (&words)[N], const std::string& help) {
  std::string names;
  for (const Word<T>& word : words) names += (names.empty() ? "" : "|") + std::string(word.text);
  return {name, &text, help + " (default: " + words[0].text + ")", names};
}

CommandLine command_line(SceneCommand& command, Texts& texts) {
  constexpr Range kPeople{1, morvale::scene::kMostPeople}, kFrames{1, 100000};
  return {
      "morvale scene",
      kIntroduction,
      kExamples,
      {{"--out", &command.out, "The folder to make; it must not exist or be empty", "DIR", Required()},
       {"--seed", &command.scene.seed, "Which people and which background (default: 1)", "N"},
       {"--size", &texts.size, "Size of a frame, both sides even (default: 640x480)", "WxH"},
       {"--people", &command.scene.people, "How many, 1 to 3 (default: 1)", "N", kPeople},
       {"--frames", &command.frames, "How many (default: 60)", "N", kFrames},
       word_option("--camera", texts.camera, kCameras, "Whose frames; the back camera stands further off"),
       word_option("--light", texts.light, kLights, "The light"),
       word_option("--motion", texts.motion, kMotions, "How the people move")}};
}

}  // namespace

std::optional<SceneCommand> parse_scene_options(int argc, char** argv) {
  SceneCommand command;
  Texts texts;
  if (!parse_options(command_line(command, texts), argc, argv)) return std::nullopt;
  if (command.out.empty()) throw UsageError("--out: the folder's name is empty.");
  constexpr int kSmallestSide = 64, kLargestSceneSide = 4096;
  const FrameSize size = parse_size(texts.size);
  if (std::min(size.width, size.height) < kSmallestSide ||
      std::max(size.width, size.height) > kLargestSceneSide)
    throw UsageError("--size: a scene's sides are 64 to 4096 pixels long; '" + texts.size + "' is not.");
  command.camera = value_of(kCameras, texts.camera);
  command.scene.width = size.width;
  command.scene.height = size.height;
  command.scene.near = command.camera == Camera::kFront;
  command.scene.lighting = value_of(kLights, texts.light);
  command.scene.motion = value_of(kMotions, texts.motion);
  // Every flag but --out: the folder's name says nothing about what is in it.
  command.made_by = "morvale " MORVALE_VERSION " scene --seed " + std::to_string(command.scene.seed) +
                    " --size " + text_of(size) + " --people " + std::to_string(command.scene.people) +
                    " --frames " + std::to_string(command.frames) + " --camera " + texts.camera +
                    " --light " + texts.light + " --motion " + texts.motion;
  return command;
}

}  // namespace tool
