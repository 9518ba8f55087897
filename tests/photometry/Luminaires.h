#pragma once

/// @file  Luminaires made up for tests: lists of angles, and smooth or random candela values.

#include "RenderingBase/KVRRbaModel.m/src/kernels/CandelaLookup.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace rb::test {

using Floats = std::vector<float>;

struct Luminaire {
    std::string name;
    std::int32_t type = 1;
    Floats vertical, horizontal, candela;
    float scale = 1;

    kernels::CandelaGrid grid() const { return {type, vertical, horizontal, candela, scale}; }
};

/// From @p first on, @p step apart, up to @p last.
inline Floats angles(float first, float step, float last) {
    Floats list;
    for (int i = 0; first + static_cast<float>(i) * step <= last; ++i)
        list.push_back(first + static_cast<float>(i) * step);
    return list;
}

/// Values from 100 to 1100 that differ everywhere.
inline Floats randomCandela(std::size_t count, std::uint32_t seed) {
    std::mt19937 random(seed);
    Floats values(count);
    for (float& value : values) value = 100 + static_cast<float>(random() % 100000) / 100;
    return values;
}

inline Luminaire randomLuminaire(const char* name, std::int32_t type, Floats vertical,
                                 Floats horizontal) {
    const std::size_t count = vertical.size() * horizontal.size();
    return {name,
            type,
            std::move(vertical),
            std::move(horizontal),
            randomCandela(count, static_cast<std::uint32_t>(count)),
            1.5F};
}

/// Every symmetry, lists with steps of one width, of several, and odd ones.
inline std::vector<Luminaire> luminairesOfEveryKind() {
    const Floats whole = angles(0, 10, 180), lower = angles(0, 2.5F, 90),
                 upper = angles(90, 5, 180);
    const Floats uneven{0, 1, 2, 5, 10, 30, 31.5F, 60, 85, 89, 90, 91, 120, 179, 180};
    return {
        randomLuminaire("axial", 1, whole, {0}),
        randomLuminaire("axial, lower half, uneven", 1, {0, 1, 2, 5, 10, 60, 85, 89, 90}, {0}),
        randomLuminaire("axial, several runs", 1, whole, {-90, 0}),
        randomLuminaire("axial, one vertical angle", 1, {90}, {0}),
        randomLuminaire("quadrant", 1, lower, angles(0, 22.5F, 90)),
        randomLuminaire("quadrant, up to 45", 1, upper, angles(0, 5, 45)),
        randomLuminaire("bilateral", 1, uneven, angles(0, 5, 180)),
        randomLuminaire("bilateral, up to 135", 1, lower, {0, 1, 90, 135}),
        randomLuminaire("90 to 270", 1, whole, angles(90, 15, 270)),
        randomLuminaire("full circle", 1, uneven, angles(0, 7.5F, 360)),
        randomLuminaire("full circle, last angle before 360", 1, whole, {0, 50, 200, 340}),
        randomLuminaire("full circle, first angle behind 0", 1, whole, {100, 200, 300}),
        randomLuminaire("full circle, one angle", 1, whole, {300}),
        randomLuminaire("type B", 2, angles(-90, 10, 90), angles(-90, 10, 90)),
        // Just above 0 the quotient of the way from the first angle and the step is rounded down.
        randomLuminaire("type B, from far off", 2, angles(-90, 45, 90),
                        angles(-1006.5F, 30.5F, 1006.5F)),
        randomLuminaire("type B, right half", 2, angles(-90, 10, 90), angles(0, 10, 90)),
        randomLuminaire("type A, upper half", 3, angles(0, 2.5F, 90), {-180, -7, 0, 33, 180}),
        randomLuminaire("type A, quadrant", 3, angles(0, 5, 90), angles(0, 5, 90)),
        randomLuminaire("other type", 4, whole, angles(0, 5, 360)),
        randomLuminaire("out of order", 1, {0, 60, 30, 90, 180}, {0, 200, 100, 360}),
        randomLuminaire("equal angles", 1, {0, 45, 45, 45, 90, 180}, {0, 90, 90, 360}),
        randomLuminaire("all angles equal", 1, {90, 90, 90}, {0, 100, 360}),
        randomLuminaire("a crowd of angles", 1, angles(0, 0.0078125F, 1), angles(0, 30, 360)),
        randomLuminaire("a crowd beside a wide step", 1,
                        {0, 1e-6F, 2e-6F, 3e-6F, 4e-6F, 5e-6F, 6e-6F, 7e-6F, 8e-6F, 9e-6F, 180},
                        {0, 180, 360}),
        randomLuminaire("no vertical angle", 1, {}, {0, 360}),
        randomLuminaire("no horizontal angle", 1, {0, 180}, {}),
    };
}

/// The bits of numbers; those that are none are alike.
inline std::uint32_t bitsOf(float value) {
    return std::isnan(value) ? 0x7FC00000U : std::bit_cast<std::uint32_t>(value);
}

}  // namespace rb::test
