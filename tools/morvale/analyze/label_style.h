#pragma once

#include <array>
#include <cstdint>

#include <morvale/core/globals.h>

namespace tool {

struct LabelStyle {
  const char* name;
  uint8_t blue, green, red;
};

/// Names and colours of the labels. Background has no colour. The others are told apart by colour-blind
/// people too.
constexpr std::array<LabelStyle, morvale::kLabels> kLabelStyles = {{
    {"background", 0, 0, 0},
    {"hair", 0, 159, 230},
    {"face skin", 233, 180, 86},
    {"other face parts", 167, 121, 204},
    {"body", 115, 158, 0},
}};

}  // namespace tool
