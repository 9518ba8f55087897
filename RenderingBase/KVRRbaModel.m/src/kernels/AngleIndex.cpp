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

bool canBeIndexed(std::span<const float> angles) {
    const auto isNumber = [](float angle) { return std::isfinite(angle); };
    return angles.size() >= 2 && angles.size() <= kMostBuckets * kMostInBucket &&
           std::all_of(angles.begin(), angles.end(), isNumber) &&
           std::is_sorted(angles.begin(), angles.end());
}

/// The one width of all steps, or 0.
float stepOf(std::span<const float> angles) {
    const float step = angles[1] - angles[0];
    if (!std::isnormal(step) || !std::isnormal(1 / step)) return 0;
    for (std::size_t i = 0; i < angles.size(); ++i)
        if (angles[0] + static_cast<float>(i) * step != angles[i]) return 0;
    return step;
}

/// As the vectors compute it: monotone, whatever is rounded.
std::int32_t bucketOf(const AngleIndex& index, float angle) {
    const auto bucket = static_cast<std::int32_t>((angle - index.first) * index.bucketsPerDegree);
    return std::min(bucket, index.lastBucket);
}

void cutIntoBuckets(std::span<const float> angles, AngleIndex& index) {
    const std::size_t buckets = std::clamp<std::size_t>(4 * angles.size(), 16, kMostBuckets);
    index.bucketsPerDegree = static_cast<float>(buckets) / (index.last - index.first);
    if (!std::isnormal(index.bucketsPerDegree)) return;
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
}

}  // namespace

AngleIndex indexOf(std::span<const float> angles) {
    AngleIndex index;
    if (!canBeIndexed(angles)) return index;
    index.count = static_cast<std::int32_t>(angles.size());
    index.first = angles.front();
    index.last = angles.back();
    index.step = stepOf(angles);
    if (index.step == 0) {
        cutIntoBuckets(angles, index);
    } else {
        index.bucketsPerDegree = 1 / index.step;
        index.isUsable = true;
    }
    return index;
}

}  // namespace rb::kernels
