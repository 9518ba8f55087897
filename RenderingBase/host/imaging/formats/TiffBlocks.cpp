#include "RenderingBase/host/imaging/formats/TiffBlocks.h"

#include "RenderingBase/host/imaging/formats/SaturatedMath.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <exception>
#include <functional>
#include <limits>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace rb::imaging {
namespace {

constexpr std::uint64_t kMiB = 1 << 20;

/// What the library may allocate in one piece while it decodes: stored bytes, and a few times what
/// they decode to (the log codecs keep intermediate values).
std::uint64_t decoderAllowance(const SharedSource& source, std::uint64_t blockBytes) {
    const std::uint64_t most = std::uint64_t{1} << 62;
    return std::min(most, 16 * kMiB + std::min(most / 4, source.size()) * 2 +
                              std::min(most / 16, blockBytes) * 4);
}

/// Decodes blocks with a handle of its own.
class BlockDecoder {
public:
    BlockDecoder(SharedSource& source, const TiffDirectory& directory, const TiffPixels& pixels,
                 std::byte* out)
        : m_directory(directory),
          m_pixels(pixels),
          m_out(out),
          m_source(source),
          m_handle(source, decoderAllowance(source, saturatedProduct(directory.rowBytes(),
                                                                     directory.blockHeight))),
          m_pixelBytes(static_cast<std::size_t>(layoutOf(pixels.format()).bytesPerPixel())) {
        if (m_handle.get()) setDecodedForm(m_handle);
    }

    /// Decodes the block at place @p index of every wanted plane.
    ReadResult decode(std::uint32_t index);

private:
    struct Area {
        std::uint32_t x, y, width, height;
    };

    std::string where(std::uint32_t block) const {
        return (m_directory.tiled ? "tile " : "strip ") + std::to_string(block);
    }
    ReadResult fault(std::uint32_t block, const char* found) const {
        const std::string& complaint = m_handle.complaint();
        return refuse("a block that decodes", complaint.empty() ? found : complaint, where(block));
    }
    std::byte* pixelAt(std::uint32_t x, std::uint32_t y) const {
        return m_out + (std::size_t{y} * m_directory.width + x) * m_pixelBytes;
    }
    ReadResult checkStored(std::uint32_t block, std::uint64_t bytes, std::uint32_t rows);
    ReadResult decodeInto(std::uint32_t block, std::byte* to, std::size_t bytes);
    ReadResult decodeByRows(std::uint32_t block, const Area& area);
    ReadResult decodeWhole(std::uint32_t index, const Area& area, std::size_t bytes);

    const TiffDirectory& m_directory;
    const TiffPixels& m_pixels;
    std::byte* const m_out;
    SharedSource& m_source;
    TiffHandle m_handle;
    const std::size_t m_pixelBytes;
    std::vector<std::byte> m_decoded;
    TiffPixels::Scratch m_scratch;
};

/// Compares what the file says about a block with the bytes that are there.
ReadResult BlockDecoder::checkStored(std::uint32_t block, std::uint64_t bytes, std::uint32_t rows) {
    const std::uint64_t offset = TIFFGetStrileOffset(m_handle.get(), block);
    const std::uint64_t count = TIFFGetStrileByteCount(m_handle.get(), block);
    const std::uint64_t size = m_source.size();
    if (offset > size || count > size - offset)
        return refuse(std::to_string(count) + " bytes at byte " + std::to_string(offset),
                      "a file of " + std::to_string(size) + " bytes", where(block));
    const std::uint64_t least =
        std::max<std::uint64_t>(1, m_directory.compression->leastBytes(bytes, rows));
    if (count < least)
        return refuse("at least " + std::to_string(least) + " bytes",
                      std::to_string(count) + " bytes", where(block));
    return {};
}

ReadResult BlockDecoder::decodeInto(std::uint32_t block, std::byte* to, std::size_t bytes) {
    m_handle.clearComplaint();
    const auto room = static_cast<tmsize_t>(bytes);
    const tmsize_t got = m_directory.tiled ? TIFFReadEncodedTile(m_handle.get(), block, to, room)
                                           : TIFFReadEncodedStrip(m_handle.get(), block, to, room);
    if (got == room && m_handle.complaint().empty()) return {};
    return fault(block, "less than that");
}

/// For strips of which a copy would take much memory: pictures often are one strip.
ReadResult BlockDecoder::decodeByRows(std::uint32_t block, const Area& area) {
    m_decoded.resize(static_cast<std::size_t>(m_directory.rowBytes()));
    m_handle.clearComplaint();
    const std::byte* const row = m_decoded.data();
    for (std::uint32_t y = area.y; y < area.y + area.height; ++y) {
        if (TIFFReadScanline(m_handle.get(), m_decoded.data(), y, 0) != 1 ||
            !m_handle.complaint().empty())
            return fault(block, "fewer rows");
        m_pixels.convert({&row, 1}, area.width, pixelAt(0, y), m_scratch);
    }
    return {};
}

ReadResult BlockDecoder::decodeWhole(std::uint32_t index, const Area& area, std::size_t bytes) {
    const std::size_t planes = m_directory.planar ? m_pixels.wanted().size() : 1;
    m_decoded.resize(std::max(m_decoded.size(), planes * bytes));
    std::vector<const std::byte*> rows(planes);
    for (std::size_t i = 0; i < planes; ++i) {
        const auto plane =
            m_directory.planar ? static_cast<std::uint32_t>(m_pixels.wanted()[i]) : 0;
        const std::uint32_t block = plane * m_directory.across() * m_directory.down() + index;
        if (ReadResult refusal =
                checkStored(block, bytes, m_directory.rowsInBlock(index / m_directory.across())))
            return refusal;
        std::byte* const to = m_decoded.data() + i * bytes;
        if (ReadResult refusal = decodeInto(block, to, bytes)) return refusal;
        rows[i] = to;
    }
    const auto rowBytes = static_cast<std::size_t>(m_directory.rowBytes());
    for (std::uint32_t y = 0; y < area.height; ++y) {
        std::byte* const to = pixelAt(area.x, area.y + y);
        if (m_pixels.keepsRows())
            std::memcpy(to, rows[0], area.width * m_pixelBytes);
        else
            m_pixels.convert(rows, area.width, to, m_scratch);
        for (const std::byte*& row : rows) row += rowBytes;
    }
    return {};
}

ReadResult BlockDecoder::decode(std::uint32_t index) {
    constexpr std::size_t kMostStripCopy = 16 * kMiB;
    const TiffDirectory& d = m_directory;
    if (!m_handle.get()) return fault(index, "a file that can no longer be opened");
    const std::uint32_t row = index / d.across(), column = index % d.across();
    const Area area{column * d.blockWidth, row * d.blockHeight,
                    std::min(d.blockWidth, d.width - column * d.blockWidth),
                    std::min(d.blockHeight, d.height - row * d.blockHeight)};
    const auto bytes = static_cast<std::size_t>(d.rowBytes() * d.rowsInBlock(row));
    const bool inPlace = !d.tiled && m_pixels.keepsRows();
    const bool byRows = !d.tiled && !d.planar && bytes > kMostStripCopy;
    if (!inPlace && !byRows) return decodeWhole(index, area, bytes);
    if (ReadResult refusal = checkStored(index, bytes, d.rowsInBlock(row))) return refusal;
    return inPlace ? decodeInto(index, pixelAt(0, area.y), bytes) : decodeByRows(index, area);
}

/// The first block that failed, and why.
class FirstFault {
public:
    void note(std::uint32_t index, const ReadResult& refusal, const std::exception_ptr& thrown) {
        const std::lock_guard lock(m_mutex);
        if (index >= m_index) return;
        m_index = index;
        m_refusal = refusal;
        m_thrown = thrown;
    }
    ReadResult result() const {
        if (m_thrown) std::rethrow_exception(m_thrown);
        return m_refusal;
    }

private:
    std::mutex m_mutex;
    std::uint64_t m_index = std::numeric_limits<std::uint64_t>::max();
    ReadResult m_refusal;
    std::exception_ptr m_thrown;
};

/// Hands out blocks in rising order, so that all before the first fault get decoded.
class BlockQueue {
public:
    BlockQueue(std::uint32_t blocks, FirstFault& fault) : m_blocks(blocks), m_fault(fault) {}

    void work(SharedSource& source, const TiffDirectory& directory, const TiffPixels& pixels,
              std::byte* out) {
        std::uint64_t index = 0;
        try {
            BlockDecoder decoder(source, directory, pixels, out);
            while (!m_stop && (index = m_next++) < m_blocks)
                if (ReadResult refusal = decoder.decode(static_cast<std::uint32_t>(index)))
                    stop(index, refusal, nullptr);
        } catch (...) {
            stop(index, {}, std::current_exception());
        }
    }

private:
    void stop(std::uint64_t index, const ReadResult& refusal, const std::exception_ptr& thrown) {
        m_fault.note(static_cast<std::uint32_t>(index), refusal, thrown);
        m_stop = true;
    }

    const std::uint64_t m_blocks;
    FirstFault& m_fault;
    std::atomic<std::uint64_t> m_next = 0;
    std::atomic<bool> m_stop = false;
};

/// Tiles may reach over the edges, but not be much larger than the picture.
ReadResult checkTiles(const TiffDirectory& d, const TiffPixels& pixels) {
    const std::uint64_t planes = d.planar ? pixels.wanted().size() : 1;
    const std::uint64_t tile = saturatedProduct(d.rowBytes(), d.blockHeight, planes);
    const std::uint64_t pixelBits =
        static_cast<std::uint64_t>(d.samplesInBlock()) * static_cast<std::uint64_t>(d.type.bits);
    const std::uint64_t picture =
        saturatedProduct(saturatedProduct(d.width, d.height), planes * pixelBits) / 8;
    const std::uint64_t most = std::max(16 * kMiB, saturatedProduct(4, picture));
    return !d.tiled || tile <= most ? ReadResult{}
                                    : refuse("tiles of at most " + std::to_string(most) + " bytes",
                                             std::to_string(tile) + " bytes");
}

std::size_t threadsFor(std::uint64_t bytes, std::uint32_t blocks) {
    constexpr std::uint64_t kMostThreads = 16;
    const std::uint64_t processors = std::max(1U, std::thread::hardware_concurrency());
    return static_cast<std::size_t>(std::max<std::uint64_t>(
        1, std::min({processors, kMostThreads, bytes / kMiB, std::uint64_t{blocks}})));
}

}  // namespace

ReadResult decodeTiffBlocks(SharedSource& source, const TiffDirectory& directory,
                            const TiffPixels& pixels, std::byte* out) {
    if (ReadResult refusal = checkTiles(directory, pixels)) return refusal;
    const std::uint32_t blocks = directory.across() * directory.down();
    FirstFault fault;
    BlockQueue queue(blocks, fault);
    const std::uint64_t bytes =
        std::uint64_t{directory.width} * directory.height *
        static_cast<std::uint64_t>(layoutOf(pixels.format()).bytesPerPixel());
    std::vector<std::thread> others(threadsFor(bytes, blocks) - 1);
    const auto work = [&] { queue.work(source, directory, pixels, out); };
    for (std::thread& other : others) {
        try {
            other = std::thread(work);
        } catch (const std::system_error&) {
            break;  // those that there are will do
        }
    }
    work();
    for (std::thread& other : others)
        if (other.joinable()) other.join();
    return fault.result();
}

ReadResult decodeTiffThroughRgba(SharedSource& source, const TiffDirectory& d, std::byte* out) {
    TiffHandle handle(source,
                      decoderAllowance(source, saturatedProduct(d.width, d.blockHeight, 4)));
    const auto said = [&handle](const char* otherwise) {
        return handle.complaint().empty() ? std::string(otherwise) : handle.complaint();
    };
    if (!handle.get()) return refuse("a TIFF directory", said("none that can be read"));
    setDecodedForm(handle);
    TIFFRGBAImage image{};
    char message[1024] = "";
    constexpr int kStopAtFaults = 1;
    if (!TIFFRGBAImageOK(handle.get(), message) ||
        !TIFFRGBAImageBegin(&image, handle.get(), kStopAtFaults, message))
        return refuse("colours that can be converted to RGB", message);
    const std::unique_ptr<TIFFRGBAImage, decltype(&TIFFRGBAImageEnd)> ending(&image,
                                                                             TIFFRGBAImageEnd);
    image.req_orientation = ORIENTATION_TOPLEFT;
    handle.clearComplaint();
    std::vector<std::uint32_t> raster(std::size_t{d.width} * std::min(d.height, d.blockHeight));
    for (std::uint32_t y = 0; y < d.height; y += std::min(d.height - y, d.blockHeight)) {
        const std::uint32_t rows = std::min(d.height - y, d.blockHeight);
        image.row_offset = static_cast<int>(y);
        if (!TIFFRGBAImageGet(&image, raster.data(), d.width, rows) || !handle.complaint().empty())
            return refuse("pixels that decode", said("others"), "row " + std::to_string(y));
        for (std::size_t i = 0; i < std::size_t{d.width} * rows; ++i)
            for (unsigned shift = 0; shift < 24; shift += 8)
                *out++ = static_cast<std::byte>(raster[i] >> shift & 0xFF);
    }
    return {};
}

}  // namespace rb::imaging
