// Reading of JPEG files: segments (a sample stands in JpegMarkers.cpp), among them the frame
//
//   FF C0 00 11 08 00 20 00 20 03  01 22 00  02 11 01  03 11 01
//         8 bits a sample, 32 x 32, three components, the first one with 2 x 2 samples where the
//         others have one; FF C2 is a progressive frame
//   FF EE 00 0E "Adobe" 00 64 ... 02        the colours: 0 RGB or CMYK, 1 YCbCr, 2 YCCK
//   FF DA ...  compressed data  FF D9
//
// Sources: ITU-T T.81 annexes B, F, G; T.871 (JFIF); T.872 clause 6.5 (the Adobe segment, and that
// with it CMYK samples count from full ink, 0, to none, 255).
//
// Arithmetic coding is read; lossless frames and samples of 12 bits are refused by the codec, in
// its words. No orientation is applied.

#include "RenderingBase/host/imaging/ColorEngine.h"
#include "RenderingBase/host/imaging/ParallelRows.h"
#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/JpegErrors.h"
#include "RenderingBase/host/imaging/formats/JpegInput.h"
#include "RenderingBase/host/imaging/formats/JpegMarkers.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <jerror.h>
#include <jpeglib.h>
#include <memory>
#include <string>
#include <vector>

namespace rb::imaging {
namespace {

bool recognises(std::span<const std::byte> head) { return startsWith(head, "\xFF\xD8\xFF"); }

/// Four samples of ink to RGB: red is what cyan and black leave of the light.
void inkToRgb(const JSAMPLE* ink, std::byte* rgb, std::size_t pixels, bool zeroIsFullInk) {
    for (std::size_t i = 0; i < pixels; ++i, ink += 4, rgb += 3) {
        for (int c = 0; c < 3; ++c) {
            const int light = zeroIsFullInk ? ink[c] : 255 - ink[c];
            const int most = zeroIsFullInk ? ink[3] : 255 - ink[3];
            rgb[c] = static_cast<std::byte>((light * most + 127) / 255);
        }
    }
}

/// Blocks of 8 x 8 samples.
std::uint64_t blocksOf(const jpeg_component_info& component) {
    return std::uint64_t{component.width_in_blocks} * component.height_in_blocks;
}

class JpegReader final : public ImageReader {
public:
    explicit JpegReader(ByteSource& source) : m_source(source), m_input(source) {
        m_errors.emit_message = onMessage;
        m_progress.progress_monitor = onProgress;
        m_codec.err = &m_errors;
    }
    ~JpegReader() override { jpeg_destroy_decompress(&m_codec); }
    JpegReader(const JpegReader&) = delete;
    JpegReader& operator=(const JpegReader&) = delete;

    ReadResult readHeader(ImageHeader& header) override;
    ReadResult readPixels(std::span<std::byte> pixels) override;

private:
    bool attempt(void (JpegReader::*step)()) {
        if (setjmp(m_errors.giveUp)) return false;
        (this->*step)();
        return true;
    }
    void open();
    void start() { jpeg_start_decompress(&m_codec); }
    void readBand();
    void finish() { jpeg_finish_decompress(&m_codec); }

    bool hasInk() const { return m_codec.num_components == 4; }
    std::uint64_t leastFileBytes() const;
    bool readInkBands(std::byte* pixels);
    Refusal complaint() const;

    static void onMessage(j_common_ptr codec, int level);
    static void onProgress(j_common_ptr codec);

    ByteSource& m_source;
    JpegInput m_input;
    JpegErrors m_errors;
    jpeg_progress_mgr m_progress{};
    jpeg_decompress_struct m_codec{};
    std::unique_ptr<const ColorTransform> m_inkTransform;

    JSAMPLE* m_band = nullptr;  // where the rows from m_bandFirst up to m_bandEnd go
    JDIMENSION m_bandFirst = 0, m_bandEnd = 0;
};

/// Of the codec's warnings, those that mean damaged or missing pixels end the reading. The others
/// are harmless: bytes between segments, an unknown minor variant, scans in an unusual order.
void JpegReader::onMessage(j_common_ptr codec, int level) {
    constexpr int kWarning = -1;
    if (level != kWarning) return;
    switch (codec->err->msg_code) {
        case JWRN_HIT_MARKER:     // a scan ends early
        case JWRN_JPEG_EOF:       // the file does
        case JWRN_HUFF_BAD_CODE:  // bits that mean nothing
        case JWRN_ARITH_BAD_CODE:
        case JWRN_MUST_RESYNC:  // a restart marker is missing
            JpegErrors::onError(codec);
        default:
            break;
    }
}

/// A progressive file may have any number of scans that cost a few bytes each, and a pass over a
/// component each. Known writers make up to about twenty. How many are read depends on the size of
/// the picture, so that the largest one still takes seconds.
void JpegReader::onProgress(j_common_ptr common) {
    constexpr std::uint64_t kFewest = 50, kMost = 500, kBlocksVisited = 200'000'000;
    const auto* const codec = reinterpret_cast<j_decompress_ptr>(common);
    std::uint64_t blocks = 1;
    for (int i = 0; i < codec->num_components; ++i)
        blocks = std::max(blocks, blocksOf(codec->comp_info[i]));
    const std::uint64_t limit = std::clamp(kBlocksVisited / blocks, kFewest, kMost);
    if (static_cast<std::uint64_t>(codec->input_scan_number) <= limit) return;
    auto* const errors = static_cast<JpegErrors*>(common->err);
    std::snprintf(errors->complaint.data(), errors->complaint.size(), "more than %d scans",
                  static_cast<int>(limit));
    std::longjmp(errors->giveUp, 1);
}

Refusal JpegReader::complaint() const {
    const bool inRows = m_codec.output_scanline > 0;
    return refuse(
        "a whole JPEG image", m_errors.complaint.data(),
        inRows ? "row " + std::to_string(m_codec.output_scanline) : placeText(m_input.position()));
}

void JpegReader::open() {
    jpeg_create_decompress(&m_codec);
    m_codec.src = &m_input;
    m_codec.progress = &m_progress;
    jpeg_read_header(&m_codec, TRUE);
}

std::uint64_t JpegReader::leastFileBytes() const {
    // With Huffman codes every block of 64 samples takes at least a bit in the first scan of a
    // progressive file, and two, one for its end, in a sequential one. Arithmetic codes have no
    // such bound: a blank picture of any size fits a few bytes.
    if (m_codec.arith_code) return 0;
    std::uint64_t blocks = 0;
    for (int i = 0; i < m_codec.num_components; ++i) blocks += blocksOf(m_codec.comp_info[i]);
    return blocks * (m_codec.progressive_mode ? 1 : 2) / 8;
}

ReadResult JpegReader::readHeader(ImageHeader& header) {
    JpegSegments segments = readJpegSegments(m_source);
    if (!attempt(&JpegReader::open)) return complaint();
    const int components = m_codec.num_components;
    if (components != 1 && components != 3 && components != 4)
        return refuse("1, 3 or 4 components", std::to_string(components));
    header.width = m_codec.image_width;
    header.height = m_codec.image_height;
    header.format = components == 1 ? KVRPixelImageFormat::L : KVRPixelImageFormat::RGB;
    header.storedChannels = components;
    header.storedBits = m_codec.data_precision;
    header.resolution = segments.resolution;
    header.leastFileBytes = leastFileBytes();
    header.deliversSRGB = hasInk();
    if (hasInk() && !segments.profile.empty()) {
        if (const auto profile = IccProfile::open(segments.profile)) {
            const ColorLayout ink{.space = ColorSpace::Cmyk,
                                  .inverted = m_codec.saw_Adobe_marker != FALSE};
            m_inkTransform = ColorTransform::create(*profile, ink, IccProfile::sRGB(), {});
        }
    }
    header.profile = std::move(segments.profile);
    return {};
}

void JpegReader::readBand() {
    const std::size_t stride =
        std::size_t{m_codec.output_width} * static_cast<unsigned>(m_codec.output_components);
    while (m_codec.output_scanline < m_bandEnd) {
        std::array<JSAMPROW, 16> rows;
        const JDIMENSION first = m_codec.output_scanline;
        const auto count = std::min<JDIMENSION>(rows.size(), m_bandEnd - first);
        for (JDIMENSION i = 0; i < count; ++i)
            rows[i] = m_band + (first - m_bandFirst + i) * stride;
        jpeg_read_scanlines(&m_codec, rows.data(), count);
    }
}

/// Reads ink samples a band at a time and converts them.
bool JpegReader::readInkBands(std::byte* pixels) {
    constexpr std::size_t kBandPixels = 1 << 20;
    const std::size_t width = m_codec.output_width;
    const auto bandRows = static_cast<JDIMENSION>(
        std::clamp<std::size_t>(kBandPixels / width, 1, m_codec.output_height));
    std::vector<JSAMPLE> ink(width * bandRows * 4);
    const bool zeroIsFullInk = m_codec.saw_Adobe_marker != FALSE;
    for (JDIMENSION first = 0; first < m_codec.output_height; first = m_bandEnd) {
        m_band = ink.data();
        m_bandFirst = first;
        m_bandEnd = std::min(first + bandRows, m_codec.output_height);
        if (!attempt(&JpegReader::readBand)) return false;
        const auto convert = [&](std::int64_t begin, std::int64_t end) {
            const auto start = static_cast<std::size_t>(begin) * width;
            const auto count = static_cast<std::size_t>(end - begin) * width;
            std::byte* const rgb = pixels + (first * width + start) * 3;
            if (m_inkTransform)
                m_inkTransform->apply(ink.data() + start * 4, rgb, count);
            else
                inkToRgb(ink.data() + start * 4, rgb, count, zeroIsFullInk);
        };
        forRowSlices(static_cast<std::int64_t>(width), m_bandEnd - first, convert);
    }
    return true;
}

ReadResult JpegReader::readPixels(std::span<std::byte> pixels) {
    m_codec.out_color_space = hasInk()                      ? JCS_CMYK
                              : m_codec.num_components == 1 ? JCS_GRAYSCALE
                                                            : JCS_RGB;
    if (!attempt(&JpegReader::start)) return complaint();
    const std::uint64_t bytesPerPixel = m_codec.num_components == 1 ? 1 : 3;
    if (std::uint64_t{m_codec.output_width} * m_codec.output_height * bytesPerPixel !=
        pixels.size())
        return refuse("the size of the header", "another size");
    bool done = false;
    if (hasInk()) {
        done = readInkBands(pixels.data());
    } else {
        m_band = reinterpret_cast<JSAMPLE*>(pixels.data());
        m_bandEnd = m_codec.output_height;
        done = attempt(&JpegReader::readBand);
    }
    if (!done || !attempt(&JpegReader::finish)) return complaint();
    return {};
}

}  // namespace

const ImageFormat kJpegFormat{"jpg", recognises,
                              [](ByteSource& source) -> std::unique_ptr<ImageReader> {
                                  return std::make_unique<JpegReader>(source);
                              }};

}  // namespace rb::imaging
