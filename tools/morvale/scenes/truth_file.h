/// truth.jsonl: what is true of a made-up scene, one JSON object a frame. docs/scenes.md describes the
/// fields.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "scene/scene.h"

namespace tool {

/// The file's place in a bundle.
std::filesystem::path truth_path(const std::filesystem::path& bundle);

/// One line of it, with its end. Shares and colours are rounded to hundredths.
std::string truth_line(int frame, const morvale::scene::SceneTruth& truth);

/// All of it. Throws UsageError that names file and line.
std::vector<morvale::scene::SceneTruth> read_truth(const std::filesystem::path& bundle);

}  // namespace tool
