#include "RenderingBase/KVRRbaModel.m/src/kernels/AngleIndex.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace rb::kernels {
namespace {

/// Few enough to stay in the cache beside the candela values.
constexpr std::size_t kMostBuckets = 4096;
/// Comparing with more takes longer than the search does.
constexpr std::int32_t kMostInBucket = 8;

/// As the vectors compute it: monotone, whatever is rounded.
std::int32_t bucketOf(const AngleIndex& index, float angle) {
    const auto bucket = static_cast<std::int32_t>((angle - index.first) * index.bucketsPerDegree);
    return std::min(bucket, index.lastBucket);
}

}  // namespace

AngleIndex indexOf(std::span<const float> angles) {
    AngleIndex index;
    const std::size_t count = angles.size();
    const auto isNumber = [](float angle) { return std::isfinite(angle); };
    if (count < 2 || !std::all_of(angles.begin(), angles.end(), isNumber) ||
        !std::is_sorted(angles.begin(), angles.end()))
        return index;
    index.first = angles.front();
    index.last = angles.back();
    const std::size_t buckets = std::clamp<std::size_t>(4 * count, 16, kMostBuckets);
    index.bucketsPerDegree = static_cast<float>(buckets) / (index.last - index.first);
    if (!std::isnormal(index.bucketsPerDegree) || count > kMostBuckets * kMostInBucket)
        return index;
    index.lastBucket = static_cast<std::int32_t>(buckets) - 1;

    std::vector<std::int32_t> inBucket(buckets);
    for (const float angle : angles) ++inBucket[static_cast<std::size_t>(bucketOf(index, angle))];
    index.mostInBucket = *std::max_element(inBucket.begin(), inBucket.end());
    index.isUsable = index.mostInBucket <= kMostInBucket;

    index.before.reserve(buckets);
    std::int32_t before = 0;
    for (const std::int32_t here : inBucket) {
        index.before.push_back(before);
        before += here;
    }
    index.angles.assign(angles.begin(), angles.end());
    index.angles.push_back(std::numeric_limits<float>::infinity());
    index.next.assign(angles.begin() + 1, angles.end());
    index.next.push_back(index.first);
    return index;
}

}  // namespace rb::kernels
