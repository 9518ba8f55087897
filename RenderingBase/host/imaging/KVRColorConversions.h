#pragma once

/// @file  Single colours between RGB and HSL in integers.

#include "RenderingBase/host/base/KVRExport.h"

/// Hue, saturation and lightness of a colour; everything 0..255 (hue 255 stands for 360 degrees).
/// Lightness is (max + min) / 2, truncated. Inputs outside 0..255 are clamped.
KVR_EXPORT void ConvertIntRGBToIntHSL(int red, int green, int blue, int& hue, int& saturation,
                                      int& lightness);
/// The inverse, to rounding; saturation 0 gives exactly red = green = blue = lightness.
KVR_EXPORT void ConvertIntHSLToIntRGB(int hue, int saturation, int lightness, int& red, int& green,
                                      int& blue);
