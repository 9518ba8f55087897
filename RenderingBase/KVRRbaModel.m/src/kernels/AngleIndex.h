#pragma once

/// @file  Finding an angle between those of a rising list without starting anew for each. Pure
/// computation.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace rb::kernels {

/// A rising list of angles cut into buckets of equal width.
///
/// The bucket of an angle tells how many of the list are in lower ones, all of them less; those of
/// the same bucket, few, are left to compare with. So the result is exactly that of a search.
struct AngleIndex {
    /// Whether the list rises, has two numbers or more, and no crowd of angles in one place.
    bool isUsable = false;
    float first = 0, last = 0;
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
