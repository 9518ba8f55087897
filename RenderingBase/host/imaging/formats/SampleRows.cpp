#include "RenderingBase/host/imaging/formats/SampleRows.h"

#include "RenderingBase/host/imaging/formats/Endian.h"

#include <array>
#include <cstring>
#include <utility>

namespace rb::imaging {
namespace {

template <std::size_t... Channel>
void interleave(const unsigned char* const* rows, unsigned char* out, std::size_t pixels,
                std::index_sequence<Channel...>) {
    // Copies of the pointers, which a write to the pixels cannot have changed.
    const std::array<const unsigned char*, sizeof...(Channel)> from{rows[Channel]...};
    for (std::size_t i = 0; i < pixels; ++i, out += sizeof...(Channel))
        ((out[Channel] = std::get<Channel>(from)[i]), ...);
}

}  // namespace

void narrowSamples(const unsigned char* __restrict in, unsigned char* __restrict out,
                   std::size_t samples) {
    // Equal to the rounded quotient for every value.
    const auto one = [in, out](std::size_t i) {
        out[i] = static_cast<unsigned char>((big16(in + 2 * i) * 255 + 32895) >> 16);
    };
    // Blocks of a fixed size are what compilers turn into vectors.
    constexpr std::size_t kBlock = 16;
    std::size_t i = 0;
    for (; i + kBlock <= samples; i += kBlock)
        for (std::size_t k = 0; k < kBlock; ++k) one(i + k);
    for (; i < samples; ++i) one(i);
}

void interleaveRows(std::size_t channels, const unsigned char* const* rows, unsigned char* out,
                    std::size_t pixels) {
    switch (channels) {
        case 1:
            std::memcpy(out, rows[0], pixels);
            return;
        case 2:
            return interleave(rows, out, pixels, std::make_index_sequence<2>());
        case 3:
            return interleave(rows, out, pixels, std::make_index_sequence<3>());
        default:
            return interleave(rows, out, pixels, std::make_index_sequence<4>());
    }
}

}  // namespace rb::imaging
