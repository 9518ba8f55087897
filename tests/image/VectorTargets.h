#pragma once

/// @file  What tests of kernels in vectors share: every kind of processor that this machine can
///        stand for, and targets whose surroundings are watched.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <hwy/highway.h>
#include <random>
#include <span>
#include <vector>

namespace rb::test {

/// Lets kernels choose the code for one kind of processor; the best one again in the end.
class ChosenTarget {
public:
    explicit ChosenTarget(std::int64_t target) { choose(target); }
    ~ChosenTarget() { choose(0); }
    ChosenTarget(const ChosenTarget&) = delete;
    ChosenTarget& operator=(const ChosenTarget&) = delete;

private:
    static void choose(std::int64_t targets) {
        hwy::SetSupportedTargetsForTest(targets);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    }
};

/// Calls @p check for every kind of processor; stops at the first failure.
template <class Check>
void forEachTarget(Check check) {
    for (const auto target : hwy::SupportedAndGeneratedTargets()) {
        SCOPED_TRACE(hwy::TargetName(target));
        const ChosenTarget chosen(target);
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
