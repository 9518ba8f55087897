#pragma once

/// @file  Finding an angle between those of a rising list without starting anew for each. Pure
/// computation.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace rb::kernels {

/// A rising list of angles, and how the place of an angle in it is found.
///
/// Most lists have steps of one width: there the place is a quotient, at most one step off. Others
/// are cut into buckets of equal width. The bucket of an angle tells how many of the list are in
/// lower ones, all of them less; those of the same bucket, few, are left to compare with. Either
/// way the result is exactly that of a search.
struct AngleIndex {
    /// Whether the list rises, has two numbers or more, and no crowd of angles in one place.
    bool isUsable = false;
    std::int32_t count = 0;
    float first = 0, last = 0;
    /// Angle i is exactly first + i step, in single precision; 0 for a list without such a step.
    float step = 0;
    /// Or of steps, when there is such a step.
    float bucketsPerDegree = 0;
    std::int32_t lastBucket = 0;
    std::int32_t mostInBucket = 0;
    std::vector<std::int32_t> before;  ///< By bucket: how many angles are in lower ones.
    /// The list and an infinity behind it; and the angle behind each, behind the last the first.
    std::vector<float> angles, next;
};

/// Errors: throws std::bad_alloc.
AngleIndex indexOf(std::span<const float> angles);

}  // namespace rb::kernels
