#pragma once

/// @file  Images with colour profiles, and what becomes of their colours.

#include "tests/image/DerivedImages.h"
#include "tests/texture/TextureFiles.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace rb::test {

inline KVRVar<KVRMMColorProfile> profileOfSample(const std::string& name) {
    const Image image = loadFile(sampleFile(name));
    auto profile = KVRVar<KVRMMColorProfile>::Adopt(image->GetColorProfile());
    EXPECT_TRUE(profile) << name;
    return profile;
}

/// Writes one pixel with a profile, which may be null.
inline std::string writeTagged(const std::string& path, const std::array<std::uint8_t, 3>& color,
                               const KVRVar<KVRMMColorProfile>& profile) {
    const Image image = imageOf<std::uint8_t>(1, 1, Format::RGB, {color[0], color[1], color[2]});
    if (profile) image->AssignColorProfile(profile.Get(), 0);
    EXPECT_EQ(image->WriteToFile(path, "PNG"), S_OK) << KVRLastImageError().Message();
    return path;
}

/// An sRGB byte of an Adobe RGB (1998) colour, by the matrices and curves of the two standards.
inline std::array<double, 3> sRgbOfAdobeRgb(const std::array<std::uint8_t, 3>& color) {
    using Row = std::array<double, 3>;
    constexpr std::array<Row, 3> toXyz{
        {{0.57667, 0.18556, 0.18823}, {0.29734, 0.62736, 0.07529}, {0.02703, 0.07069, 0.99134}}};
    constexpr std::array<Row, 3> toRgb{{{3.2404542, -1.5371385, -0.4985314},
                                        {-0.9692660, 1.8760108, 0.0415560},
                                        {0.0556434, -0.2040259, 1.0572252}}};
    const auto times = [](const std::array<Row, 3>& matrix, const Row& vector) {
        Row product{};
        for (std::size_t i = 0; i < 3; ++i)
            for (std::size_t j = 0; j < 3; ++j) product[i] += matrix[i][j] * vector[j];
        return product;
    };
    Row linear{};
    for (std::size_t i = 0; i < 3; ++i) linear[i] = std::pow(color[i] / 255.0, 563.0 / 256);
    Row out = times(toRgb, times(toXyz, linear));
    for (double& channel : out) {
        channel = std::clamp(channel, 0.0, 1.0);
        channel =
            channel <= 0.0031308 ? 12.92 * channel : 1.055 * std::pow(channel, 1 / 2.4) - 0.055;
        channel *= 255;
    }
    return out;
}

}  // namespace rb::test
