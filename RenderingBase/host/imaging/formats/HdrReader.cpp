// Reading of Radiance pictures.
//
//   #?RADIANCE                   text lines up to an empty one
//   FORMAT=32-bit_rle_rgbe       or 32-bit_rle_xyze
//   EXPOSURE=0.5
//
//   -Y 480 +X 640                480 scanlines of 640 pixels
//   02 02 02 80 ...              the scanlines, each stored in one of three ways
//
// A pixel is four bytes: three mantissas and a common exponent. Source: "The RADIANCE Picture File
// Format" (G. Ward), and G. Ward, "Real Pixels", Graphics Gems II (1991).
//
// A mantissa m with exponent e is m * 2^(e - 136), without the half step that some programs add:
// zero stays zero and whole numbers stay whole. EXPOSURE and COLORCORR tell how to get back to
// physical units; pixels are delivered as they are stored. So are scanlines: one after the other as
// rows, from the left, whatever way the picture is turned (of the eight possible ones, "-Y h +X w"
// is upright; "+X w -Y h" has its columns as scanlines and is delivered h wide and w high).

#include "RenderingBase/host/imaging/formats/Endian.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"
#include "RenderingBase/host/imaging/formats/SaturatedMath.h"
#include "RenderingBase/host/imaging/formats/SourceWindow.h"
#include "RenderingBase/host/imaging/formats/XyzColor.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace rb::imaging {
namespace {

/// One line of the header without its end; false when it is longer than any sensible one.
bool readLine(SourceWindow& window, std::string& line) {
    constexpr std::size_t kLongestLine = 64 * 1024;
    window.has(kLongestLine);
    const std::size_t searched = std::min(window.size(), kLongestLine);
    const auto* const end =
        static_cast<const unsigned char*>(std::memchr(window.data(), '\n', searched));
    if (!end) return false;
    line.assign(window.data(), end);
    window.skip(line.size() + 1);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
}

/// An axis of the resolution line: sign, letter, number. Moves @p text behind it.
bool parseAxis(std::string_view& text, char& letter, std::int64_t& length) {
    if (text.size() < 4 || (text[0] != '-' && text[0] != '+') || text[2] != ' ') return false;
    letter = text[1];
    const auto [end, error] = std::from_chars(text.data() + 3, text.data() + text.size(), length);
    if (error != std::errc() || length < 1 || length > 0x7FFFFFFF) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

bool parseResolution(std::string_view text, std::int64_t& rows, std::int64_t& columns) {
    char first = 0, second = 0;
    if (!parseAxis(text, first, rows) || text.empty() || text[0] != ' ') return false;
    text.remove_prefix(1);
    if (!parseAxis(text, second, columns)) return false;
    return text.find_first_not_of(' ') == std::string_view::npos &&
           ((first == 'X' && second == 'Y') || (first == 'Y' && second == 'X'));
}

/// What one unit of mantissa is worth; exponent 0 is black.
const std::array<float, 256>& unitOfExponent() {
    static const std::array<float, 256> table = [] {
        std::array<float, 256> units{};
        for (int e = 1; e < 256; ++e)
            units[static_cast<std::size_t>(e)] = std::ldexp(1.0F, e - 136);
        return units;
    }();
    return table;
}

class HdrReader final : public ImageReader {
public:
    explicit HdrReader(ByteSource& source) : m_window(source) {}
    ReadResult readHeader(ImageHeader& header) override;
    ReadResult readPixels(std::span<std::byte> pixels) override;

private:
    std::string place() const { return placeText(m_window.place()); }
    std::string remaining() const { return bytesText(m_window.size()) + " more"; }
    ReadResult readText();
    ReadResult readScanline();
    ReadResult readComponents();
    ReadResult readPixelByPixel();
    void emit(float* out) const;

    SourceWindow m_window;
    std::int64_t m_rows = 0, m_columns = 0;
    bool m_xyz = false;
    std::vector<unsigned char> m_scanline;  // all first mantissas, all second, all third, exponents
};

ReadResult HdrReader::readText() {
    constexpr int kMostLines = 10000;
    std::string line;
    for (int lines = 0; lines < kMostLines; ++lines) {
        if (!readLine(m_window, line)) return refuse("a line of text", remaining(), place());
        if (line.empty()) return {};
        if (line.rfind("FORMAT=", 0) != 0) continue;
        const std::size_t begin = std::min(line.find_first_not_of(' ', 7), line.size());
        const std::string format = line.substr(begin, line.find_last_not_of(' ') + 1 - begin);
        if (format != "32-bit_rle_rgbe" && format != "32-bit_rle_xyze")
            return refuse("FORMAT=32-bit_rle_rgbe or 32-bit_rle_xyze", inQuotes(format));
        m_xyz = format == "32-bit_rle_xyze";
    }
    return refuse("an empty line after the header", "ever more lines");
}

ReadResult HdrReader::readHeader(ImageHeader& header) {
    if (ReadResult refusal = readText()) return refusal;
    const std::string where = place();
    std::string line;
    if (!readLine(m_window, line)) return refuse("a line of text", remaining(), where);
    if (!parseResolution(line, m_rows, m_columns))
        return refuse("a resolution such as \"-Y 480 +X 640\"", inQuotes(line), where);
    header.width = m_columns;
    header.height = m_rows;
    header.format = KVRPixelImageFormat::RGB_f;
    header.storedChannels = 4;
    header.storedBits = 8;
    // The shortest scanline is a pixel and repetitions of it: the n-th in a row for up to
    // 255 * 256^(n-1) pixels more.
    std::uint64_t least = 4;
    for (std::int64_t covered = 1; covered < m_columns; covered *= 256) least += 4;
    header.leastFileBytes =
        m_window.place() + saturatedProduct(least, static_cast<std::uint64_t>(m_rows));
    return {};
}

ReadResult HdrReader::readPixels(std::span<std::byte> pixels) {
    m_scanline.resize(4 * static_cast<std::size_t>(m_columns));
    auto* out = reinterpret_cast<float*>(pixels.data());
    for (std::int64_t row = 0; row < m_rows; ++row, out += 3 * m_columns) {
        if (ReadResult refusal = readScanline()) {
            refusal->where += ", row " + std::to_string(row);
            return refusal;
        }
        emit(out);
    }
    return {};
}

ReadResult HdrReader::readScanline() {
    if (!m_window.has(4)) return refuse("a scanline", remaining(), place());
    const unsigned char* const head = m_window.data();
    const bool runLengths =
        m_columns >= 8 && m_columns <= 32767 && head[0] == 2 && head[1] == 2 && head[2] < 128;
    if (!runLengths) return readPixelByPixel();
    const std::uint32_t length = big16(head + 2);
    if (length != m_columns)
        return refuse("a scanline of " + std::to_string(m_columns) + " pixels",
                      std::to_string(length), place());
    m_window.skip(4);
    return readComponents();
}

/// Each component for itself: a count above 128 repeats a byte, up to 128 copies bytes.
ReadResult HdrReader::readComponents() {
    const auto columns = static_cast<std::size_t>(m_columns);
    m_window.has(8 * columns);
    const unsigned char* in = m_window.data();
    const unsigned char* const end = in + m_window.size();
    const auto placeOf = [&](const unsigned char* at) {
        return placeText(m_window.place() + static_cast<std::uint64_t>(at - m_window.data()));
    };
    for (std::size_t component = 0; component < 4; ++component) {
        unsigned char* out = m_scanline.data() + component * columns;
        for (std::size_t left = columns; left > 0;) {
            if (end - in < 2) return refuse("a run", "the end of the file", placeOf(in));
            const bool repeats = *in > 128;
            const std::size_t count = repeats ? *in - 128U : *in;
            const std::size_t bytes = repeats ? 1 : count;
            if (count == 0 || count > left)
                return refuse("a run of 1 to " + bytesText(left), std::to_string(count),
                              placeOf(in));
            ++in;
            if (static_cast<std::size_t>(end - in) < bytes)
                return refuse("a run of " + bytesText(count), "the end of the file", placeOf(in));
            if (repeats)
                std::memset(out, *in, count);
            else
                std::memcpy(out, in, count);
            in += bytes;
            out += count;
            left -= count;
        }
    }
    m_window.skip(static_cast<std::size_t>(in - m_window.data()));
    return {};
}

/// Plain pixels, among them mantissas 1 1 1, which repeat the pixel before: the exponent is the
/// count, or the next eight bits of it after another repetition.
ReadResult HdrReader::readPixelByPixel() {
    const auto columns = static_cast<std::size_t>(m_columns);
    unsigned char* const out = m_scanline.data();
    unsigned shift = 0;
    for (std::size_t done = 0; done < columns;) {
        if (!m_window.has(4)) return refuse("a pixel", remaining(), place());
        const unsigned char* const in = m_window.data();
        const bool repeats = in[0] == 1 && in[1] == 1 && in[2] == 1;
        const std::size_t count = repeats ? std::size_t{in[3]} << shift : 1;
        if (count > columns - done || (repeats && (done == 0 || shift > 24)))
            return refuse(
                "a repetition of 1 to " + std::to_string(done ? columns - done : 0) + " pixels",
                std::to_string(count), place());
        for (std::size_t component = 0; component < 4; ++component) {
            unsigned char* const plane = out + component * columns + done;
            if (repeats)
                std::memset(plane, plane[-1], count);
            else
                *plane = in[component];
        }
        shift = repeats ? shift + 8 : 0;
        done += count;
        m_window.skip(4);
    }
    return {};
}

void HdrReader::emit(float* out) const {
    const auto columns = static_cast<std::size_t>(m_columns);
    const auto& units = unitOfExponent();
    const unsigned char* const first = m_scanline.data();
    const unsigned char* const second = first + columns;
    const unsigned char* const third = second + columns;
    const unsigned char* const exponents = third + columns;
    // Not a loop over the three: it would stay one, and its speed a matter of where its code lies.
    for (std::size_t x = 0; x < columns; ++x) {
        const float unit = units[exponents[x]];
        out[3 * x] = static_cast<float>(first[x]) * unit;
        out[3 * x + 1] = static_cast<float>(second[x]) * unit;
        out[3 * x + 2] = static_cast<float>(third[x]) * unit;
    }
    static constexpr ColorMatrix kMatrix = rgbFromXyz(kRadianceColors);
    if (m_xyz) convertXyzToRgb(kMatrix, out, columns);
}

bool recognises(std::span<const std::byte> head) { return startsWith(head, "#?"); }

std::unique_ptr<ImageReader> open(ByteSource& source) {
    return std::make_unique<HdrReader>(source);
}

}  // namespace

const ImageFormat kHdrFormat{"hdr", recognises, open};

}  // namespace rb::imaging
