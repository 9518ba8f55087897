#include "RenderingBase/host/imaging/HalfArrays.h"
#include "RenderingBase/public/openexr_half.h"
#include "tests/image/ReferenceHalf.h"

#include <algorithm>
#include <atomic>
#include <cfenv>
#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <span>
#include <thread>
#include <vector>

namespace {

using rb::tests::floatOf;
using rb::tests::kFirstOverflow;
using rb::tests::kFloatInfinity;
using rb::tests::kFloatSign;
using rb::tests::ReferenceHalf;

// Floats at a time. The first float that overflows and infinity are first of their block, so that
// within a block either all finite floats overflow or none does.
constexpr std::uint32_t kBlock = 4096;
static_assert(kFirstOverflow % kBlock == 0 && kFloatInfinity % kBlock == 0);
constexpr std::uint32_t kBlockCount = static_cast<std::uint32_t>((std::uint64_t{1} << 32) / kBlock);

void convertOneByOne(std::span<const float> floats, std::span<std::uint16_t> halves) noexcept {
    for (std::size_t i = 0; i < floats.size(); ++i) halves[i] = float_to_half(floats[i]).bits();
}

// One thread's buffers.
class Sweep {
public:
    explicit Sweep(const ReferenceHalf& reference) : m_reference(reference) {}

    // Whether the floats with the bits from `first` on are converted as they should be.
    bool passes(std::uint32_t first) {
        for (std::uint32_t i = 0; i < kBlock; ++i) m_floats[i] = floatOf(first + i);
        expect(first);
        const std::uint32_t magnitude = first % kFloatSign;
        const bool overflows = magnitude >= kFirstOverflow && magnitude < kFloatInfinity;
        std::feclearexcept(FE_ALL_EXCEPT);
        if (!passes(convertOneByOne)) return false;
        if ((std::fetestexcept(FE_OVERFLOW) != 0) != overflows) return false;
        std::feclearexcept(FE_ALL_EXCEPT);
        return passes(rb::imaging::halvesFromFloats) &&
               passes(rb::imaging::detail::halvesFromFloatsPortable) &&
               std::fetestexcept(FE_ALL_EXCEPT) == 0;
    }

private:
    using Convert = void(std::span<const float>, std::span<std::uint16_t>) noexcept;

    // No float wraps to the other sign within a block, and those of one sign rise with their bits,
    // so one search a block finds all its halves.
    void expect(std::uint32_t first) {
        const std::uint32_t magnitude = first % kFloatSign;
        const bool ordered = magnitude + (kBlock - 1) <= kFloatInfinity;
        std::uint16_t half = m_reference.halfBits(magnitude);
        for (std::uint32_t i = 0; i < kBlock; ++i) {
            if (ordered) {
                while (m_reference.lastFloatBits(half) < magnitude + i) ++half;
            } else {
                half = m_reference.halfBits(magnitude + i);
            }
            const int sign = first >= kFloatSign ? rb::tests::kHalfSign : 0;
            m_expected[i] = static_cast<std::uint16_t>(sign + half);
        }
    }

    bool passes(Convert& convert) {
        // What another version left must not pass for an answer.
        for (std::uint32_t i = 0; i < kBlock; ++i) {
            m_halves[i] = static_cast<std::uint16_t>(~m_expected[i]);
        }
        convert(m_floats, m_halves);
        return m_halves == m_expected;
    }

    const ReferenceHalf& m_reference;
    std::vector<float> m_floats = std::vector<float>(kBlock);
    std::vector<std::uint16_t> m_expected = std::vector<std::uint16_t>(kBlock);
    std::vector<std::uint16_t> m_halves = std::vector<std::uint16_t>(kBlock);
};

TEST(FloatToHalf, matches_the_reference_for_every_float) {
    const ReferenceHalf reference;
    std::atomic<std::uint32_t> nextBlock{0};
    std::atomic<std::uint64_t> checkedFloats{0};
    const auto work = [&] {
        Sweep sweep(reference);
        for (std::uint32_t block = nextBlock++; block < kBlockCount; block = nextBlock++) {
            if (!sweep.passes(block * kBlock)) {
                ADD_FAILURE() << "from float bits 0x" << std::hex << block * kBlock;
                return;
            }
            checkedFloats += kBlock;
        }
    };
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i) {
        threads.emplace_back(work);
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(checkedFloats, std::uint64_t{1} << 32);
}

}  // namespace
