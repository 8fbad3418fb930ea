/// The colours by which people are told apart, on pictures, swatches and charts alike.
#pragma once

#include <array>
#include <string>

namespace tool {

/// "#rrggbb". Each stands out on photographs, on white and on near black, and is none of the labels' colours.
/// The ninth person has the first one's again.
inline const std::array<std::string, 8> kPersonColors = {"#e5532d", "#3b7de0", "#9a5fe0", "#0d9488",
                                                         "#d63f9c", "#8f8a00", "#a8672d", "#64789b"};

}  // namespace tool
