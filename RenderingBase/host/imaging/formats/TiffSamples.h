#pragma once

/// @file  Samples of TIFF rows: unpacked from any number of bits and brought to the delivered
/// range. Pure computation; nothing here knows the codec library.

#include <cstddef>
#include <cstdint>

namespace rb::imaging {

enum class SampleKind : std::uint8_t {
    Unsigned,
    Signed,  ///< Two's complement.
    Float,
};

/// The type of a stored sample. Integers have 1 to 32 bits, floats 16, 24, 32 or 64.
/// Samples of 8, 16, 24, 32 and 64 bits are whole numbers of the machine in memory, the others are
/// packed without gaps, most significant bit first (TIFF 6.0, section 2, "Bits and bytes").
struct SampleType {
    SampleKind kind = SampleKind::Unsigned;
    int bits = 8;
};

/// One channel of a row: sample number `first`, and then every `step`-th.
struct SampleRun {
    const std::byte* row = nullptr;
    std::size_t first = 0;
    std::size_t step = 1;
    std::size_t count = 0;
};

/// Integers scaled from their range to 0..255, rounded. Of signed ones the positive half is the
/// range and negative ones become 0.
void readBytes(SampleType type, const SampleRun& run, unsigned char* out, std::size_t outStep);
/// The same, to 0..65535.
void readWords(SampleType type, const SampleRun& run, std::uint16_t* out, std::size_t outStep);
/// The bits of integers of up to 16 bits as they are.
void readIndices(SampleType type, const SampleRun& run, std::uint16_t* out, std::size_t outStep);
/// The bits of 16-bit floats as they are.
void readHalves(const SampleRun& run, std::uint16_t* out, std::size_t outStep);
/// Floats of any size as 32-bit floats; 64-bit ones are rounded, too large ones become infinite.
void readFloats(SampleType type, const SampleRun& run, float* out, std::size_t outStep);

}  // namespace rb::imaging
