#pragma once

/// @file  What tests of kernels in vectors share: every kind of processor that this machine can
///        stand for, and targets whose surroundings are watched.

#include "RenderingBase/KVRRbaModel.m/src/kernels/Processor.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <optional>
#include <random>
#include <span>
#include <vector>

namespace rb::test {

/// Has kernels take the code for one kind of processor; the best one again in the end.
class ForcedProcessor {
public:
    explicit ForcedProcessor(kernels::Processor processor) { kernels::forceProcessor(processor); }
    ~ForcedProcessor() { kernels::forceProcessor(std::nullopt); }
    ForcedProcessor(const ForcedProcessor&) = delete;
    ForcedProcessor& operator=(const ForcedProcessor&) = delete;
};

/// Calls @p check for every kind of processor; stops at the first failure.
template <class Check>
void forEachTarget(Check check) {
    for (int kind = 0; kind < kernels::kProcessors; ++kind) {
        const auto processor = static_cast<kernels::Processor>(kind);
        if (!kernels::isAvailable(processor)) continue;
        SCOPED_TRACE(testing::Message() << "processor " << kind);
        const ForcedProcessor forced(processor);
        check();
        if (testing::Test::HasFatalFailure()) return;
    }
}

/// Bytes at any distance from an aligned address, between others that must stay.
class WatchedBytes {
public:
    WatchedBytes(std::size_t size, std::size_t distance)
        : m_all(kBefore + distance + size + kBehind, kWatch),
          m_begin(kBefore + distance),
          m_size(size) {}

    std::span<std::uint8_t> bytes() { return std::span(m_all).subspan(m_begin, m_size); }
    void fill(std::span<const std::uint8_t> values) {
        std::copy(values.begin(), values.end(), bytes().begin());
    }
    std::vector<std::uint8_t> values() {
        const auto now = bytes();
        return {now.begin(), now.end()};
    }
    bool surroundingsStayed() const {
        const auto end = m_all.begin() + static_cast<std::ptrdiff_t>(m_begin + m_size);
        const auto isWatch = [](std::uint8_t byte) { return byte == kWatch; };
        return std::all_of(m_all.begin(), m_all.begin() + static_cast<std::ptrdiff_t>(m_begin),
                           isWatch) &&
               std::all_of(end, m_all.end(), isWatch);
    }

private:
    static constexpr std::size_t kBefore = 64, kBehind = 256;
    static constexpr std::uint8_t kWatch = 0xA5;
    std::vector<std::uint8_t> m_all;
    std::size_t m_begin, m_size;
};

inline std::vector<std::uint8_t> randomBytes(std::size_t count, std::mt19937& random) {
    std::vector<std::uint8_t> bytes(count);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
}

}  // namespace rb::test
