#pragma once

/// @file  Access to the bits of blocks and to the bytes of pixels, which have no alignment.
/// Blocks are little endian, and pixels lie in memory in the order of their channels.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace rb::imaging {

static_assert(std::endian::native == std::endian::little);

template <typename Word>
inline Word loadWord(const std::byte* from) {
    Word word;
    std::memcpy(&word, from, sizeof word);
    return word;
}

template <typename Word>
inline void storeWord(std::byte* to, Word word) {
    std::memcpy(to, &word, sizeof word);
}

/// The 128 bits of a block, taken from the lowest one on.
class BlockBits {
public:
    explicit BlockBits(const std::byte* block)
        : m_low(loadWord<std::uint64_t>(block)), m_high(loadWord<std::uint64_t>(block + 8)) {}

    /// Takes the next @p count bits, 0 to 32.
    std::uint32_t take(unsigned count) {
        const auto taken = static_cast<std::uint32_t>(m_low & ((std::uint64_t{1} << count) - 1));
        // Two steps: a shift by 64, for a count of 0, has no meaning.
        m_low = m_low >> count | m_high << 1 << (63 - count);
        m_high >>= count;
        return taken;
    }
    /// The next 64 bits; zeros after the end.
    std::uint64_t next() const { return m_low; }

private:
    std::uint64_t m_low, m_high;
};

/// Puts a 0 into @p bits at @p place, which moves what is there and above up.
constexpr std::uint64_t withZeroAt(std::uint64_t bits, unsigned place) {
    const std::uint64_t below = bits & ((std::uint64_t{1} << place) - 1);
    return below | (bits ^ below) << 1;
}

}  // namespace rb::imaging
