// Reading of PNG files. A signature, then chunks: length, type, content, CRC.
//
//   89 50 4E 47 0D 0A 1A 0A                             the signature
//   00 00 00 0D "IHDR" 00 00 00 20 00 00 00 20          32 x 32,
//               08 06 00 00 00  CRC                     8 bits a sample, RGBA, not interlaced
//   00 00 00 09 "pHYs" 00 00 2E 23 00 00 2E 23 01 CRC   11811 pixels a metre
//   00 00 20 00 "IDAT" ...                              the pixels: deflated rows
//   00 00 00 00 "IEND" AE 42 60 82
//
// Source: W3C, Portable Network Graphics, 2nd edition (ISO/IEC 15948), clauses 5 and 11. Of the
// ancillary chunks only tRNS, iCCP and pHYs matter here: gamma, background and the like are for
// whoever shows the picture, and the pixels are delivered as they are stored.

#include "RenderingBase/host/imaging/formats/BufferedSource.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/PngInflate.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"
#include "RenderingBase/host/imaging/formats/SaturatedMath.h"

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdio>
#include <memory>
#include <png.h>
#include <string>

namespace rb::imaging {
namespace {

bool recognises(std::span<const std::byte> head) { return startsWith(head, "\x89PNG\r\n\x1A\n"); }

class PngReader final : public ImageReader {
public:
    explicit PngReader(ByteSource& source) : m_source(source), m_input(source) {}
    ~PngReader() override { png_destroy_read_struct(&m_png, &m_info, nullptr); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    ReadResult readHeader(ImageHeader& header) override;
    ReadResult readPixels(std::span<std::byte> pixels) override;

private:
    /// Runs a step in which the codec may give up; false when it did, and m_complaint says why. The
    /// codec leaves a step by a jump, so nothing in a step may need a destructor.
    bool attempt(void (PngReader::*step)()) {
        if (setjmp(m_giveUp)) return false;
        (this->*step)();
        return true;
    }
    void readChunksBeforePixels();
    void readRows();

    std::size_t storedRowBytes() const {
        return (std::size_t{m_width} * static_cast<unsigned>(m_storedChannels * m_bits) + 7) / 8;
    }
    std::uint64_t leastFileBytes() const;
    bool fastWayFits() const;

    [[noreturn]] static void onError(png_structp png, png_const_charp message) {
        auto* const self = static_cast<PngReader*>(png_get_error_ptr(png));
        std::snprintf(self->m_complaint.data(), self->m_complaint.size(), "%s", message);
        std::longjmp(self->m_giveUp, 1);
    }
    static void onWarning(png_structp, png_const_charp) {}
    static void onRead(png_structp png, png_bytep to, std::size_t count) {
        auto* const self = static_cast<PngReader*>(png_get_io_ptr(png));
        if (self->m_input.read(to, count) != count) png_error(png, "the end of the file");
    }

    ByteSource& m_source;
    BufferedSource m_input;
    png_structp m_png = nullptr;
    png_infop m_info = nullptr;
    std::jmp_buf m_giveUp;
    std::array<char, 256> m_complaint{};

    std::uint32_t m_width = 0, m_height = 0;
    int m_bits = 0, m_storedChannels = 0, m_deliveredChannels = 0;
    bool m_indexed = false, m_interlaced = false, m_transparentColor = false;
    std::uint64_t m_firstDataChunk = 0;

    std::uint32_t m_row = 0;  // the row being read
    std::byte* m_pixels = nullptr;
};

void PngReader::readChunksBeforePixels() {
    m_png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, onError, onWarning);
    m_info = m_png ? png_create_info_struct(m_png) : nullptr;
    if (!m_info) {
        std::snprintf(m_complaint.data(), m_complaint.size(), "no memory for the codec");
        std::longjmp(m_giveUp, 1);
    }
    png_set_read_fn(m_png, this, onRead);
    png_set_user_limits(m_png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);  // the caller has its own
    // The only content of which memory is allocated by its declared size is the profile.
    constexpr png_alloc_size_t kLargestProfile = 8 << 20;
    png_set_chunk_malloc_max(m_png, kLargestProfile);
    // A damaged critical chunk ends the reading; a damaged ancillary one counts as missing.
    png_set_crc_action(m_png, PNG_CRC_ERROR_QUIT, PNG_CRC_WARN_DISCARD);
    png_set_benign_errors(m_png, 1);
    static constexpr png_byte kIgnored[] =
        "bKGD\0cHRM\0eXIf\0gAMA\0hIST\0iTXt\0oFFs\0pCAL\0sCAL\0sPLT\0tEXt\0tIME\0zTXt";
    png_set_keep_unknown_chunks(m_png, PNG_HANDLE_CHUNK_NEVER, kIgnored,
                                static_cast<int>(sizeof kIgnored / 5));
    png_read_info(m_png, m_info);
    m_firstDataChunk = m_input.position() - 8;  // its length and type have been read
}

std::uint64_t PngReader::leastFileBytes() const {
    // Deflate makes at best 258 bytes out of two bits, one for the length and one for the distance.
    constexpr std::uint64_t kBestRatio = 1032;
    // Signature, IHDR, IDAT with an empty zlib stream, IEND.
    constexpr std::uint64_t kFrame = 8 + 25 + 12 + 6 + 12;
    // Interlaced rows are shorter; together they have no fewer bits, and no fewer filter bytes.
    const std::uint64_t rowBytes = storedRowBytes() - (m_interlaced && storedRowBytes() ? 1 : 0);
    return kFrame + saturatedProduct(m_height, 1 + rowBytes) / kBestRatio;
}

ReadResult PngReader::readHeader(ImageHeader& header) {
    if (!attempt(&PngReader::readChunksBeforePixels))
        return refuse("a whole PNG header", m_complaint.data(), placeText(m_input.position()));
    m_width = png_get_image_width(m_png, m_info);
    m_height = png_get_image_height(m_png, m_info);
    m_bits = png_get_bit_depth(m_png, m_info);
    m_storedChannels = png_get_channels(m_png, m_info);
    const int type = png_get_color_type(m_png, m_info);
    m_indexed = type == PNG_COLOR_TYPE_PALETTE;
    m_interlaced = png_get_interlace_type(m_png, m_info) != PNG_INTERLACE_NONE;
    m_transparentColor = png_get_valid(m_png, m_info, PNG_INFO_tRNS) != 0;
    m_deliveredChannels = (m_indexed ? 3 : m_storedChannels) + (m_transparentColor ? 1 : 0);

    static constexpr std::array<KVRPixelImageFormat, 5> kFormats{
        KVRPixelImageFormat::None, KVRPixelImageFormat::L, KVRPixelImageFormat::LA,
        KVRPixelImageFormat::RGB, KVRPixelImageFormat::RGBA};
    header.width = m_width;
    header.height = m_height;
    header.format = kFormats[static_cast<std::size_t>(m_deliveredChannels)];
    header.storedChannels = m_storedChannels;
    header.storedBits = m_bits;
    header.leastFileBytes = leastFileBytes();

    png_uint_32 x = 0, y = 0;
    int unit = PNG_RESOLUTION_UNKNOWN;
    if (png_get_pHYs(m_png, m_info, &x, &y, &unit) && unit == PNG_RESOLUTION_METER && x && y)
        header.resolution = {x / 100.0, y / 100.0, kPerCentimetre};

    png_charp name = nullptr;
    png_bytep profile = nullptr;
    png_uint_32 length = 0;
    int method = 0;
    if (png_get_iCCP(m_png, m_info, &name, &method, &profile, &length)) {
        const auto* const bytes = reinterpret_cast<const std::byte*>(profile);
        header.profile.assign(bytes, bytes + length);
    }
    return {};
}

bool PngReader::fastWayFits() const {
    return m_bits >= 8 && !m_indexed && !m_interlaced && !m_transparentColor;
}

void PngReader::readRows() {
    png_set_expand(m_png);  // palettes to colours, 1, 2 and 4 bits to 8, tRNS to alpha
    png_set_scale_16(m_png);
    const int passes = png_set_interlace_handling(m_png);
    png_read_update_info(m_png, m_info);
    const std::size_t rowBytes = std::size_t{m_width} * static_cast<unsigned>(m_deliveredChannels);
    if (png_get_rowbytes(m_png, m_info) != rowBytes) png_error(m_png, "rows of another size");
    for (int pass = 0; pass < passes; ++pass)
        for (m_row = 0; m_row < m_height; ++m_row)
            png_read_row(m_png, reinterpret_cast<png_bytep>(m_pixels + m_row * rowBytes), nullptr);
    png_read_end(m_png, m_info);  // without m_info, it would not look at unknown critical chunks
}

ReadResult PngReader::readPixels(std::span<std::byte> pixels) {
    const PngRows rows{m_height, storedRowBytes(), m_storedChannels * m_bits / 8, m_bits == 16,
                       m_firstDataChunk};
    if (fastWayFits() && decodePngRows(m_source, rows, pixels)) return {};
    m_pixels = pixels.data();
    if (attempt(&PngReader::readRows)) return {};
    if (m_row == m_height)
        return refuse("a whole end of the file", m_complaint.data(), placeText(m_input.position()));
    return refuse("whole PNG pixels", m_complaint.data(), "row " + std::to_string(m_row));
}

}  // namespace

const ImageFormat kPngFormat{"png", recognises,
                             [](ByteSource& source) -> std::unique_ptr<ImageReader> {
                                 return std::make_unique<PngReader>(source);
                             }};

}  // namespace rb::imaging
