// The filters of PNG rows. Every byte was replaced by its difference to a prediction from the bytes
// a (the same channel of the pixel to the left), b (above) and c (left above):
//
//   0 none 0      1 sub a      2 up b      3 average (a + b) / 2      4 Paeth: see below
//
// Source: W3C, Portable Network Graphics, 2nd edition (ISO/IEC 15948), clause 9.

#include "RenderingBase/host/imaging/formats/PngUnfilter.h"

#include <cstring>

namespace rb::imaging {
namespace {

using Byte = unsigned char;

void addRows(const Byte* in, const Byte* above, Byte* out, std::size_t bytes) {
    using Lanes = Byte __attribute__((vector_size(16)));
    std::size_t i = 0;
    for (; i + sizeof(Lanes) <= bytes; i += sizeof(Lanes)) {
        Lanes x, b;
        std::memcpy(&x, in + i, sizeof x);
        std::memcpy(&b, above + i, sizeof b);
        x += b;
        std::memcpy(out + i, &x, sizeof x);
    }
    for (; i < bytes; ++i) out[i] = static_cast<Byte>(in[i] + above[i]);
}

template <int kPixel>
void unfilterSub(const Byte* in, Byte* out, std::size_t bytes) {
    unsigned left[kPixel] = {};
    for (std::size_t i = 0; i < bytes; i += kPixel) {
#pragma GCC unroll 8
        for (std::size_t c = 0; c < kPixel; ++c) {
            left[c] += in[i + c];
            out[i + c] = static_cast<Byte>(left[c]);
        }
    }
}

template <int kPixel>
void unfilterAverage(const Byte* in, const Byte* above, Byte* out, std::size_t bytes) {
    unsigned left[kPixel] = {};
    for (std::size_t i = 0; i < bytes; i += kPixel) {
#pragma GCC unroll 8
        for (std::size_t c = 0; c < kPixel; ++c) {
            left[c] = (in[i + c] + ((left[c] + above[i + c]) >> 1)) & 0xFF;
            out[i + c] = static_cast<Byte>(left[c]);
        }
    }
}

using Bytes = Byte __attribute__((vector_size(8)));
using Words = short __attribute__((vector_size(16)));

/// One pixel, a channel to a lane. @p kCopied is how many bytes are copied: a fixed size that the
/// machine moves in one go is faster than just the bytes of the pixel.
template <std::size_t kCopied>
Words loadPixel(const Byte* from) {
    Bytes bytes = {};
    std::memcpy(&bytes, from, kCopied);
    return __builtin_convertvector(bytes, Words);
}

/// The neighbour nearest to a + b - c; ties go to a, then b, then c. With lo and hi the smaller and
/// the larger of a and b, that is lo when hi <= 3c - (a + b), hi when 3c - (a + b) <= lo, else c:
/// few steps depend on a, the pixel just decoded, and these decide the speed.
Words paethPredictor(Words a, Words b, Words c) {
    const Words threshold = c + c + c - b - a;
    const Words aIsLess = a < b;
    const Words lo = aIsLess ? a : b;
    const Words hi = aIsLess ? b : a;
    const Words notLo = hi > threshold;
    const Words notHi = threshold > lo;
    return (~notLo & lo) | (~notHi & hi) | (notLo & notHi & c);
}

template <int kPixel>
void unfilterPaeth(const Byte* in, const Byte* above, Byte* out, std::size_t bytes) {
    Words a = {}, c = {};
    const auto pixel = [&]<std::size_t kCopied>(std::size_t i) {
        const Words b = loadPixel<kCopied>(above + i);
        a = (loadPixel<kCopied>(in + i) + paethPredictor(a, b, c)) & 0xFF;
        c = b;
        const Bytes done = __builtin_convertvector(a, Bytes);
        std::memcpy(out + i, &done, kCopied);
    };
    // A wide copy also writes into the next pixels of the row, which are decoded afterwards.
    constexpr std::size_t kWide = kPixel <= 4 ? 4 : 8;
    std::size_t i = 0;
    for (; i + kWide <= bytes; i += kPixel) pixel.template operator()<kWide>(i);
    for (; i < bytes; i += kPixel) pixel.template operator()<kPixel>(i);
}

template <int kPixel>
void unfilter(int filter, const Byte* in, const Byte* above, Byte* out, std::size_t bytes) {
    switch (filter) {
        case 1:
            return unfilterSub<kPixel>(in, out, bytes);
        case 3:
            return unfilterAverage<kPixel>(in, above, out, bytes);
        default:
            return unfilterPaeth<kPixel>(in, above, out, bytes);
    }
}

}  // namespace

bool unfilterPngRow(int filter, int bytesPerPixel, const Byte* in, const Byte* above, Byte* out,
                    std::size_t bytes) {
    if (filter < 0 || filter > 4) return false;
    if (filter == 0) {
        std::memcpy(out, in, bytes);
        return true;
    }
    if (filter == 2) {
        addRows(in, above, out, bytes);
        return true;
    }
    switch (bytesPerPixel) {
        case 1:
            unfilter<1>(filter, in, above, out, bytes);
            break;
        case 2:
            unfilter<2>(filter, in, above, out, bytes);
            break;
        case 3:
            unfilter<3>(filter, in, above, out, bytes);
            break;
        case 4:
            unfilter<4>(filter, in, above, out, bytes);
            break;
        case 6:
            unfilter<6>(filter, in, above, out, bytes);
            break;
        case 8:
            unfilter<8>(filter, in, above, out, bytes);
            break;
        default:
            return false;
    }
    return true;
}

}  // namespace rb::imaging
