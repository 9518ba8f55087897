#pragma once

namespace rb::imaging {

/// Resolution units as image files number them.
inline constexpr int kNoUnit = 1, kPerInch = 2, kPerCentimetre = 3;

/// A resolution as a file states it: pixels to the unit, 0 with `kNoUnit` when it states none.
struct Resolution {
    double x = 0;
    double y = 0;
    int unit = kNoUnit;
};

}  // namespace rb::imaging
