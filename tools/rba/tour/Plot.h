#pragma once

/// @file  Line plots as inline SVG, in the colours of the page. Both axes show powers of two.

#include "tools/rba/tour/Html.h"

#include <span>
#include <vector>

namespace rb::cli::tour {

struct PlotPoint {
    double x = 0, y = 0;  ///< Exponents of 2.
};
using Curve = std::vector<PlotPoint>;

/// A labelled axis from 2^least to 2^most with a line at every step-th power from 0.
struct Axis {
    int least = 0, most = 0, step = 1;
    const char* label = "";
};

/// A range of x that is set off and named.
struct Band {
    double from = 0, to = 0;  ///< Exponents of 2.
    const char* label = "";
};

struct Plot {
    const char* title = "";
    const char* caption = "";  ///< What it shows, for those who see it and those who do not.
    Axis x, y;
    std::span<const Band> bands;
    Curve curve;
};

void writePlot(Html& page, const Plot& plot);

}  // namespace rb::cli::tour
