#pragma once

/// @file  Where BC6H keeps the ends of its lines: scattered over the block, differently in each
/// mode.
///
/// Source of all numbers: Khronos Data Format Standard, "BPTC Compressed Texture Image
/// Formats"; Microsoft, "BC6H Format". Modes have the value of their lowest five bits as number;
/// those with a number of which the lowest two bits are 0 or 1 take only these two.

#include <array>
#include <cstddef>
#include <cstdint>

namespace rb::imaging {

/// Where a bit run belongs: channel (red, green, blue) of an end (0 and 1 of the first line, 2 and
/// 3 of the second), as index of an array with four places an end.
enum HalfValue : std::uint8_t {
    R0 = 0,
    G0,
    B0,
    R1 = 4,
    G1,
    B1,
    R2 = 8,
    G2,
    B2,
    R3 = 12,
    G3,
    B3,
};

/// Bits that lie together in the block and in the value that they are a part of.
struct HalfRun {
    HalfValue value;
    std::uint8_t lowest;  ///< The bit of the value where the run begins.
    std::uint8_t count;   ///< 0 after the last run.
};

struct HalfLayout {
    std::uint8_t number;
    std::uint8_t bits;                   ///< Of a channel of end 0, and of the results.
    std::array<std::uint8_t, 3> others;  ///< Bits of red, green and blue of the other ends.
    bool differences;                    ///< The other ends are differences to end 0.
    bool twoLines;
    HalfRun runs[24];  ///< In the order of the block, after the mode.
};

// clang-format off
inline constexpr std::array<HalfLayout, 14> kHalfLayouts = {{
    {0, 10, {5, 5, 5}, true, true,
     {{G2, 4, 1}, {B2, 4, 1}, {B3, 4, 1}, {R0, 0, 10}, {G0, 0, 10}, {B0, 0, 10}, {R1, 0, 5},
      {G3, 4, 1}, {G2, 0, 4}, {G1, 0, 5}, {B3, 0, 1}, {G3, 0, 4}, {B1, 0, 5}, {B3, 1, 1},
      {B2, 0, 4}, {R2, 0, 5}, {B3, 2, 1}, {R3, 0, 5}, {B3, 3, 1}}},
    {1, 7, {6, 6, 6}, true, true,
     {{G2, 5, 1}, {G3, 4, 1}, {G3, 5, 1}, {R0, 0, 7}, {B3, 0, 1}, {B3, 1, 1}, {B2, 4, 1},
      {G0, 0, 7}, {B2, 5, 1}, {B3, 2, 1}, {G2, 4, 1}, {B0, 0, 7}, {B3, 3, 1}, {B3, 5, 1},
      {B3, 4, 1}, {R1, 0, 6}, {G2, 0, 4}, {G1, 0, 6}, {G3, 0, 4}, {B1, 0, 6}, {B2, 0, 4},
      {R2, 0, 6}, {R3, 0, 6}}},
    {2, 11, {5, 4, 4}, true, true,
     {{R0, 0, 10}, {G0, 0, 10}, {B0, 0, 10}, {R1, 0, 5}, {R0, 10, 1}, {G2, 0, 4}, {G1, 0, 4},
      {G0, 10, 1}, {B3, 0, 1}, {G3, 0, 4}, {B1, 0, 4}, {B0, 10, 1}, {B3, 1, 1}, {B2, 0, 4},
      {R2, 0, 5}, {B3, 2, 1}, {R3, 0, 5}, {B3, 3, 1}}},
    {6, 11, {4, 5, 4}, true, true,
     {{R0, 0, 10}, {G0, 0, 10}, {B0, 0, 10}, {R1, 0, 4}, {R0, 10, 1}, {G3, 4, 1}, {G2, 0, 4},
      {G1, 0, 5}, {G0, 10, 1}, {G3, 0, 4}, {B1, 0, 4}, {B0, 10, 1}, {B3, 1, 1}, {B2, 0, 4},
      {R2, 0, 4}, {B3, 0, 1}, {B3, 2, 1}, {R3, 0, 4}, {G2, 4, 1}, {B3, 3, 1}}},
    {10, 11, {4, 4, 5}, true, true,
     {{R0, 0, 10}, {G0, 0, 10}, {B0, 0, 10}, {R1, 0, 4}, {R0, 10, 1}, {B2, 4, 1}, {G2, 0, 4},
      {G1, 0, 4}, {G0, 10, 1}, {B3, 0, 1}, {G3, 0, 4}, {B1, 0, 5}, {B0, 10, 1}, {B2, 0, 4},
      {R2, 0, 4}, {B3, 1, 1}, {B3, 2, 1}, {R3, 0, 4}, {B3, 4, 1}, {B3, 3, 1}}},
    {14, 9, {5, 5, 5}, true, true,
     {{R0, 0, 9}, {B2, 4, 1}, {G0, 0, 9}, {G2, 4, 1}, {B0, 0, 9}, {B3, 4, 1}, {R1, 0, 5},
      {G3, 4, 1}, {G2, 0, 4}, {G1, 0, 5}, {B3, 0, 1}, {G3, 0, 4}, {B1, 0, 5}, {B3, 1, 1},
      {B2, 0, 4}, {R2, 0, 5}, {B3, 2, 1}, {R3, 0, 5}, {B3, 3, 1}}},
    {18, 8, {6, 5, 5}, true, true,
     {{R0, 0, 8}, {G3, 4, 1}, {B2, 4, 1}, {G0, 0, 8}, {B3, 2, 1}, {G2, 4, 1}, {B0, 0, 8},
      {B3, 3, 1}, {B3, 4, 1}, {R1, 0, 6}, {G2, 0, 4}, {G1, 0, 5}, {B3, 0, 1}, {G3, 0, 4},
      {B1, 0, 5}, {B3, 1, 1}, {B2, 0, 4}, {R2, 0, 6}, {R3, 0, 6}}},
    {22, 8, {5, 6, 5}, true, true,
     {{R0, 0, 8}, {B3, 0, 1}, {B2, 4, 1}, {G0, 0, 8}, {G2, 5, 1}, {G2, 4, 1}, {B0, 0, 8},
      {G3, 5, 1}, {B3, 4, 1}, {R1, 0, 5}, {G3, 4, 1}, {G2, 0, 4}, {G1, 0, 6}, {G3, 0, 4},
      {B1, 0, 5}, {B3, 1, 1}, {B2, 0, 4}, {R2, 0, 5}, {B3, 2, 1}, {R3, 0, 5}, {B3, 3, 1}}},
    {26, 8, {5, 5, 6}, true, true,
     {{R0, 0, 8}, {B3, 1, 1}, {B2, 4, 1}, {G0, 0, 8}, {B2, 5, 1}, {G2, 4, 1}, {B0, 0, 8},
      {B3, 5, 1}, {B3, 4, 1}, {R1, 0, 5}, {G3, 4, 1}, {G2, 0, 4}, {G1, 0, 5}, {B3, 0, 1},
      {G3, 0, 4}, {B1, 0, 6}, {B2, 0, 4}, {R2, 0, 5}, {B3, 2, 1}, {R3, 0, 5}, {B3, 3, 1}}},
    {30, 6, {6, 6, 6}, false, true,
     {{R0, 0, 6}, {G3, 4, 1}, {B3, 0, 1}, {B3, 1, 1}, {B2, 4, 1}, {G0, 0, 6}, {G2, 5, 1},
      {B2, 5, 1}, {B3, 2, 1}, {G2, 4, 1}, {B0, 0, 6}, {G3, 5, 1}, {B3, 3, 1}, {B3, 5, 1},
      {B3, 4, 1}, {R1, 0, 6}, {G2, 0, 4}, {G1, 0, 6}, {G3, 0, 4}, {B1, 0, 6}, {B2, 0, 4},
      {R2, 0, 6}, {R3, 0, 6}}},
    {3, 10, {10, 10, 10}, false, false,
     {{R0, 0, 10}, {G0, 0, 10}, {B0, 0, 10}, {R1, 0, 10}, {G1, 0, 10}, {B1, 0, 10}}},
    {7, 11, {9, 9, 9}, true, false,
     {{R0, 0, 10}, {G0, 0, 10}, {B0, 0, 10}, {R1, 0, 9}, {R0, 10, 1}, {G1, 0, 9}, {G0, 10, 1},
      {B1, 0, 9}, {B0, 10, 1}}},
    {11, 12, {8, 8, 8}, true, false,
     {{R0, 0, 10}, {G0, 0, 10}, {B0, 0, 10}, {R1, 0, 8}, {R0, 11, 1}, {R0, 10, 1}, {G1, 0, 8},
      {G0, 11, 1}, {G0, 10, 1}, {B1, 0, 8}, {B0, 11, 1}, {B0, 10, 1}}},
    {15, 16, {4, 4, 4}, true, false,
     {{R0, 0, 10}, {G0, 0, 10}, {B0, 0, 10}, {R1, 0, 4}, {R0, 15, 1}, {R0, 14, 1}, {R0, 13, 1},
      {R0, 12, 1}, {R0, 11, 1}, {R0, 10, 1}, {G1, 0, 4}, {G0, 15, 1}, {G0, 14, 1}, {G0, 13, 1},
      {G0, 12, 1}, {G0, 11, 1}, {G0, 10, 1}, {B1, 0, 4}, {B0, 15, 1}, {B0, 14, 1}, {B0, 13, 1},
      {B0, 12, 1}, {B0, 11, 1}, {B0, 10, 1}}},
}};
// clang-format on

inline constexpr std::uint8_t kNoHalfLayout = 0xFF;

/// The place in kHalfLayouts for the lowest five bits of a block; kNoHalfLayout for reserved modes.
inline constexpr std::array<std::uint8_t, 32> kHalfLayoutPlaces = [] {
    std::array<std::uint8_t, 32> places{};
    for (std::size_t bits = 0; bits < 32; ++bits) {
        places[bits] = kNoHalfLayout;
        const std::size_t number = (bits & 2) == 0 ? bits & 3 : bits;
        for (std::size_t i = 0; i < kHalfLayouts.size(); ++i)
            if (kHalfLayouts[i].number == number) places[bits] = static_cast<std::uint8_t>(i);
    }
    return places;
}();

}  // namespace rb::imaging
