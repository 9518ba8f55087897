#include "RenderingBase/host/imaging/KVRColorConversions.h"

#include <algorithm>
#include <cmath>

namespace {

int rounded(double value) { return std::clamp(static_cast<int>(std::lround(value)), 0, 255); }

/// Hue in sixths of the circle, 0..6, of a colour that is not grey.
double hueInSixths(int red, int green, int blue, int high, int range) {
    const double span = range;
    if (high == red) return std::fmod((green - blue) / span + 6.0, 6.0);
    if (high == green) return (blue - red) / span + 2.0;
    return (red - green) / span + 4.0;
}

/// One channel of an HSL colour: @p hue in sixths relative to the channel's own.
double channel(double hue, double low, double high) {
    hue = std::fmod(hue + 6.0, 6.0);
    if (hue < 1) return low + (high - low) * hue;
    if (hue < 3) return high;
    if (hue < 4) return low + (high - low) * (4 - hue);
    return low;
}

}  // namespace

void ConvertIntRGBToIntHSL(int red, int green, int blue, int& hue, int& saturation,
                           int& lightness) {
    red = std::clamp(red, 0, 255);
    green = std::clamp(green, 0, 255);
    blue = std::clamp(blue, 0, 255);
    const int high = std::max({red, green, blue}), low = std::min({red, green, blue});
    const int sum = high + low, range = high - low;
    lightness = sum / 2;
    hue = saturation = 0;
    if (range == 0) return;
    saturation = rounded(255.0 * range / (sum <= 255 ? sum : 510 - sum));
    hue = rounded(hueInSixths(red, green, blue, high, range) * 255.0 / 6.0);
}

void ConvertIntHSLToIntRGB(int hue, int saturation, int lightness, int& red, int& green,
                           int& blue) {
    hue = std::clamp(hue, 0, 255);
    saturation = std::clamp(saturation, 0, 255);
    lightness = std::clamp(lightness, 0, 255);
    if (saturation == 0) {
        red = green = blue = lightness;
        return;
    }
    const double l = lightness, s = saturation / 255.0;
    const double high = l < 127.5 ? l * (1 + s) : l + s * (255.0 - l);
    const double low = 2 * l - high;
    const double sixths = hue * 6.0 / 255.0;
    red = rounded(channel(sixths + 2, low, high));
    green = rounded(channel(sixths, low, high));
    blue = rounded(channel(sixths - 2, low, high));
}
