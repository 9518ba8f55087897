#pragma once

/// @file  Letters made of lines, for drawings that are made without a font.

#include <string_view>
#include <vector>

namespace rb::cli {

struct StrokePoint {
    double x = 0, y = 0;
};
using Stroke = std::vector<StrokePoint>;  ///< Corners of a line; twice the same place is a dot.

/// A line of text from x = 0 on, on the base line y = 0. y grows downwards, capital letters are 1
/// high. Letters of Latin-1 lose their accents, dashes and quotes are the plain ones; what else is
/// beyond ASCII, but for the degree sign, is a box.
/// @param text  UTF-8.
struct StrokeText {
    explicit StrokeText(std::string_view text);

    std::vector<Stroke> strokes;
    double width = 0;
};

}  // namespace rb::cli
