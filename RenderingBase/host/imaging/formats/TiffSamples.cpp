#include "RenderingBase/host/imaging/formats/TiffSamples.h"

#include <array>
#include <bit>
#include <cstring>
#include <limits>
#include <type_traits>

namespace rb::imaging {
namespace {

/// Samples that are whole numbers of the machine.
template <typename Number>
struct Whole {
    const std::byte* row;
    Number operator()(std::size_t index) const {
        Number value;
        std::memcpy(&value, row + index * sizeof value, sizeof value);
        return value;
    }
};

/// Three bytes in the order of the machine.
struct Whole24 {
    const std::byte* row;
    std::uint32_t operator()(std::size_t index) const {
        constexpr bool kLittle = std::endian::native == std::endian::little;
        const auto at = [&](std::size_t i) {
            return std::to_integer<std::uint32_t>(row[index * 3 + i]);
        };
        return at(kLittle ? 2 : 0) << 16 | at(1) << 8 | at(kLittle ? 0 : 2);
    }
};

/// 1, 2 or 4 bits.
template <unsigned Bits>
struct Small {
    const std::byte* row;
    std::uint32_t operator()(std::size_t index) const {
        constexpr std::size_t kInByte = 8 / Bits;
        const auto shift = (kInByte - 1 - index % kInByte) * Bits;
        return std::to_integer<std::uint32_t>(row[index / kInByte]) >> shift & ((1U << Bits) - 1);
    }
};

/// Samples packed without gaps; touches only bytes that hold some of the sample.
struct Packed {
    const std::byte* row;
    unsigned bits;
    std::uint32_t operator()(std::size_t index) const {
        const std::size_t begin = index * bits, end = begin + bits;
        std::uint64_t value = 0;
        for (std::size_t i = begin / 8; i <= (end - 1) / 8; ++i)
            value = value << 8 | std::to_integer<std::uint64_t>(row[i]);
        value >>= (8 - end % 8) % 8;
        return static_cast<std::uint32_t>(value & ((std::uint64_t{1} << bits) - 1));
    }
};

template <typename Fetch, typename Out, typename Map>
void each(const SampleRun& run, const Fetch& fetch, Out* out, std::size_t outStep, const Map& map) {
    if (run.step == 1 && outStep == 1) {  // a loop that the compiler can vectorise
        for (std::size_t i = 0; i < run.count; ++i) out[i] = map(fetch(run.first + i));
        return;
    }
    std::size_t index = run.first;
    for (std::size_t i = 0; i < run.count; ++i, index += run.step, out += outStep)
        *out = map(fetch(index));
}

/// Calls each() with the way to fetch integers of the given size.
template <typename Out, typename Map>
void eachInteger(int bits, const SampleRun& run, Out* out, std::size_t outStep, const Map& map) {
    switch (bits) {
        case 1:
            return each(run, Small<1>{run.row}, out, outStep, map);
        case 2:
            return each(run, Small<2>{run.row}, out, outStep, map);
        case 4:
            return each(run, Small<4>{run.row}, out, outStep, map);
        case 8:
            return each(run, Whole<std::uint8_t>{run.row}, out, outStep, map);
        case 16:
            return each(run, Whole<std::uint16_t>{run.row}, out, outStep, map);
        case 24:
            return each(run, Whole24{run.row}, out, outStep, map);
        case 32:
            return each(run, Whole<std::uint32_t>{run.row}, out, outStep, map);
        default:
            return each(run, Packed{run.row, static_cast<unsigned>(bits)}, out, outStep, map);
    }
}

template <typename Out>
Out scaled(std::uint32_t value, std::uint32_t most) {
    constexpr std::uint64_t kFull = std::numeric_limits<Out>::max();
    return static_cast<Out>((value * kFull + most / 2) / most);
}

std::uint32_t largest(int bits) {
    return static_cast<std::uint32_t>((std::uint64_t{1} << bits) - 1);
}

/// Integers of up to 8 bits go through a table of all their values.
template <typename Out>
std::array<Out, 256> tableOf(SampleType type) {
    std::array<Out, 256> table{};
    const std::uint32_t values = largest(type.bits) + 1;
    // A single bit has no room for a sign.
    const bool isSigned = type.kind == SampleKind::Signed && type.bits > 1;
    const std::uint32_t most = largest(isSigned ? type.bits - 1 : type.bits);
    for (std::uint32_t value = 0; value < values; ++value)
        table[value] = value > most ? Out{0} : scaled<Out>(value, most);
    return table;
}

template <typename Out>
void readScaled(SampleType type, const SampleRun& run, Out* out, std::size_t outStep) {
    if (type.bits <= 8) {
        const auto table = tableOf<Out>(type);
        eachInteger(type.bits, run, out, outStep,
                    [&table](std::uint32_t value) { return table[value]; });
    } else if (type.kind == SampleKind::Signed) {
        const std::uint32_t most = largest(type.bits - 1);
        eachInteger(type.bits, run, out, outStep, [most](std::uint32_t value) {
            return value > most ? Out{0} : scaled<Out>(value, most);
        });
    } else if (type.bits == 16) {
        // The constant divisor lets the compiler do without a division.
        constexpr std::uint32_t kFull = std::numeric_limits<Out>::max(), kMost = 65535;
        each(run, Whole<std::uint16_t>{run.row}, out, outStep, [](std::uint32_t value) {
            return static_cast<Out>((value * kFull + kMost / 2) / kMost);
        });
    } else {
        const std::uint32_t most = largest(type.bits);
        eachInteger(type.bits, run, out, outStep,
                    [most](std::uint32_t value) { return scaled<Out>(value, most); });
    }
}

/// A 24-bit float: sign, 7 bits of exponent (bias 63), 16 bits of mantissa
/// (Adobe Photoshop TIFF Technical Note 3, 2005).
float floatOf24(std::uint32_t bits) {
    const std::uint32_t sign = (bits & 0x800000U) << 8;
    const std::uint32_t exponent = bits >> 16 & 0x7FU;
    const std::uint32_t mantissa = bits & 0xFFFFU;
    if (exponent == 0x7F) return std::bit_cast<float>(sign | 0x7F800000U | mantissa << 7);
    if (exponent) return std::bit_cast<float>(sign | (exponent + 64) << 23 | mantissa << 7);
    // Subnormal: mantissa * 2^-16 * 2^-62, exact in a 32-bit float.
    const float magnitude = static_cast<float>(mantissa) * 0x1p-78F;
    return sign ? -magnitude : magnitude;
}

}  // namespace

void readBytes(SampleType type, const SampleRun& run, unsigned char* out, std::size_t outStep) {
    if (type.bits == 8 && type.kind == SampleKind::Unsigned)
        each(run, Whole<std::uint8_t>{run.row}, out, outStep, [](std::uint8_t v) { return v; });
    else
        readScaled(type, run, out, outStep);
}

void readWords(SampleType type, const SampleRun& run, std::uint16_t* out, std::size_t outStep) {
    readScaled(type, run, out, outStep);
}

void readIndices(SampleType type, const SampleRun& run, std::uint16_t* out, std::size_t outStep) {
    eachInteger(type.bits, run, out, outStep,
                [](std::uint32_t value) { return static_cast<std::uint16_t>(value); });
}

void readHalves(const SampleRun& run, std::uint16_t* out, std::size_t outStep) {
    each(run, Whole<std::uint16_t>{run.row}, out, outStep, [](std::uint16_t v) { return v; });
}

void readFloats(SampleType type, const SampleRun& run, float* out, std::size_t outStep) {
    if (type.bits == 24)
        each(run, Whole24{run.row}, out, outStep, floatOf24);
    else if (type.bits == 64)
        each(run, Whole<double>{run.row}, out, outStep, [](double value) {
            // Converting a number that no float can hold is undefined.
            constexpr double kBeyond = 0x1.ffffffp127;  // half way from the largest float to 2^128
            constexpr float kInfinity = std::numeric_limits<float>::infinity();
            return value >= kBeyond    ? kInfinity
                   : value <= -kBeyond ? -kInfinity
                                       : static_cast<float>(value);
        });
    else
        each(run, Whole<float>{run.row}, out, outStep, [](float value) { return value; });
}

}  // namespace rb::imaging
