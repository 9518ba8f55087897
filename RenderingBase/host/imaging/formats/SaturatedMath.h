#pragma once

/// @file  Products and sums of sizes that files declare.

#include <cstdint>
#include <limits>

namespace rb::imaging {

/// a * b, or the largest number when that is too small: a size that no file and no memory has.
constexpr std::uint64_t saturatedProduct(std::uint64_t a, std::uint64_t b) {
    std::uint64_t product = 0;
    return __builtin_mul_overflow(a, b, &product) ? std::numeric_limits<std::uint64_t>::max()
                                                  : product;
}

constexpr std::uint64_t saturatedProduct(std::uint64_t a, std::uint64_t b, std::uint64_t c) {
    return saturatedProduct(saturatedProduct(a, b), c);
}

constexpr std::uint64_t saturatedSum(std::uint64_t a, std::uint64_t b) {
    std::uint64_t sum = 0;
    return __builtin_add_overflow(a, b, &sum) ? std::numeric_limits<std::uint64_t>::max() : sum;
}

}  // namespace rb::imaging
