// The segments of JPEG files: marker, length (its own two bytes included), content, big endian.
//
//   FF D8                                                       start of image
//   FF E0 00 10 "JFIF" 00 01 01  01 01 2C 01 2C  00 00          300 x 300 pixels an inch
//   FF E1 xx xx "Exif" 00 00  "II" 2A 00 08 00 00 00 ...        a TIFF structure
//   FF E2 xx xx "ICC_PROFILE" 00  01 02 ...                     piece 1 of 2 of the profile
//   FF DB ... FF C0 ... FF C4 ... FF DA                         tables, frame, first scan
//
// Sources: ITU-T T.81 annex B; T.871 clause 10 (JFIF); Exif 2.32 (CIPA DC-008) clauses 4.5 and 4.6;
// ICC.1:2010 annex B.4.

#include "RenderingBase/host/imaging/formats/JpegMarkers.h"

#include "RenderingBase/host/imaging/formats/BufferedSource.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace rb::imaging {
namespace {

using namespace std::string_view_literals;
using Bytes = std::span<const std::byte>;

unsigned byteAt(Bytes bytes, std::size_t at) { return std::to_integer<unsigned>(bytes[at]); }

constexpr auto kJfif = "JFIF\0"sv, kExif = "Exif\0\0"sv, kIcc = "ICC_PROFILE\0"sv;

Resolution jfifResolution(Bytes segment) {
    if (segment.size() < 12) return {};
    const unsigned unit = byteAt(segment, 7);
    const double x = byteAt(segment, 8) << 8 | byteAt(segment, 9);
    const double y = byteAt(segment, 10) << 8 | byteAt(segment, 11);
    // Unit 0 makes the two an aspect ratio.
    if ((unit != 1 && unit != 2) || x == 0 || y == 0) return {};
    return {x, y, unit == 1 ? kPerInch : kPerCentimetre};
}

/// The TIFF structure of an Exif segment, in either byte order. What lies beyond its end reads 0.
class ExifStructure {
public:
    explicit ExifStructure(Bytes tiff)
        : m_tiff(tiff),
          m_littleEndian(startsWith(tiff, "II*\0"sv)),
          m_known(m_littleEndian || startsWith(tiff, "MM\0*"sv)) {}

    Resolution resolution() const {
        if (!m_known) return {};
        const std::size_t directory = number(4, 4);
        const std::size_t count = number(directory, 2);
        double x = 0, y = 0;
        double unit = kPerInch;  // the default of the field
        for (std::size_t i = 0; i < count; ++i) {
            const std::size_t field = directory + 2 + 12 * i;
            const std::size_t tag = number(field, 2);
            if (tag == 0x011A) x = value(field);
            if (tag == 0x011B) y = value(field);
            if (tag == 0x0128) unit = value(field);
        }
        if ((unit != kPerInch && unit != kPerCentimetre) || !(x > 0) || !(y > 0)) return {};
        return {x, y, static_cast<int>(unit)};
    }

private:
    std::size_t number(std::size_t at, std::size_t size) const {
        if (at > m_tiff.size() || size > m_tiff.size() - at) return 0;
        std::size_t result = 0;
        for (std::size_t i = 0; i < size; ++i)
            result = result << 8 | byteAt(m_tiff, m_littleEndian ? at + size - 1 - i : at + i);
        return result;
    }

    /// The first value of a field: a rational, or an integer as some writers have it.
    double value(std::size_t field) const {
        constexpr std::size_t kShort = 3, kLong = 4, kRational = 5, kSignedLong = 9;
        const std::size_t type = number(field + 2, 2);
        if (type == kShort) return static_cast<double>(number(field + 8, 2));
        if (type == kLong) return static_cast<double>(number(field + 8, 4));
        if (type == kSignedLong)
            return static_cast<std::int32_t>(static_cast<std::uint32_t>(number(field + 8, 4)));
        if (type != kRational) return 0;
        const std::size_t at = number(field + 8, 4);
        const auto numerator = static_cast<double>(number(at, 4));
        const auto denominator = static_cast<double>(number(at + 4, 4));
        return denominator > 0 ? numerator / denominator : 0;
    }

    Bytes m_tiff;
    bool m_littleEndian;
    bool m_known;
};

/// Puts the pieces of a profile together. They are numbered from 1 and may come in any order.
class ProfilePieces {
public:
    void add(Bytes segment) {
        constexpr std::size_t kHead = kIcc.size() + 2;
        if (m_broken) return;
        if (segment.size() < kHead) return fail();
        const std::size_t number = byteAt(segment, kHead - 2), count = byteAt(segment, kHead - 1);
        if (m_pieces.empty()) m_pieces.resize(count);
        if (count != m_pieces.size() || number < 1 || number > count || m_pieces[number - 1])
            return fail();
        const Bytes content = segment.subspan(kHead);
        m_pieces[number - 1].emplace(content.begin(), content.end());
    }

    /// Empty unless all pieces came.
    std::vector<std::byte> profile() const {
        std::vector<std::byte> whole;
        for (const auto& piece : m_pieces) {
            if (!piece) return {};
            whole.insert(whole.end(), piece->begin(), piece->end());
        }
        return whole;
    }

private:
    void fail() {
        m_broken = true;
        m_pieces.clear();
    }

    std::vector<std::optional<std::vector<std::byte>>> m_pieces;
    bool m_broken = false;
};

/// The next marker, past whatever stands before it; -1 at the end of the file.
int nextMarker(BufferedSource& input) {
    for (int byte = input.get(); byte >= 0;) {
        if (byte != 0xFF) {
            byte = input.get();
            continue;
        }
        while (byte == 0xFF) byte = input.get();  // any number of fill bytes
        if (byte != 0) return byte;
    }
    return -1;
}

/// The length of a segment's content; -1 for none.
int contentLength(BufferedSource& input) {
    const int high = input.get(), low = input.get();
    if (high < 0 || low < 0) return -1;
    return (high << 8 | low) - 2;
}

bool standsAlone(int marker) { return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8); }

}  // namespace

JpegSegments readJpegSegments(ByteSource& source) {
    constexpr int kEndOfImage = 0xD9, kStartOfScan = 0xDA, kApp0 = 0xE0, kApp1 = 0xE1, kApp2 = 0xE2;
    BufferedSource input(source);
    Resolution jfif, exif;
    ProfilePieces pieces;
    std::vector<std::byte> content;
    for (int marker = nextMarker(input);
         marker >= 0 && marker != kStartOfScan && marker != kEndOfImage;
         marker = nextMarker(input)) {
        if (standsAlone(marker)) continue;
        const int length = contentLength(input);
        if (length < 0) break;
        if (marker != kApp0 && marker != kApp1 && marker != kApp2) {
            input.skip(static_cast<std::uint64_t>(length));
            continue;
        }
        content.resize(static_cast<std::size_t>(length));
        content.resize(input.read(content.data(), content.size()));
        if (marker == kApp0 && startsWith(content, kJfif) && jfif.unit == kNoUnit)
            jfif = jfifResolution(content);
        if (marker == kApp1 && startsWith(content, kExif) && exif.unit == kNoUnit)
            exif = ExifStructure(Bytes(content).subspan(kExif.size())).resolution();
        if (marker == kApp2 && startsWith(content, kIcc)) pieces.add(content);
    }
    return {jfif.unit != kNoUnit ? jfif : exif, pieces.profile()};
}

}  // namespace rb::imaging
