// Reading of TIFF files. The first directory is the picture:
//
//   II 2A 00          little endian (MM 00 2A: big); 2B for BigTIFF
//   08 00 00 00       where the first directory stands
//   0A 00             ten fields of 12 bytes, for example
//   00 01 03 00 01 00 00 00 20 00 00 00    tag 256 ImageWidth, type 3 (short), one value: 32
//   ...
//   11 01 04 00 ...   tag 273 StripOffsets: where the pixels stand
//
// Sources: TIFF Revision 6.0 (1992); Adobe Photoshop TIFF Technical Notes (2002: ICC L*a*b*, ZIP;
// 2005: floating point); the BigTIFF design of the codec library. Rows are delivered as they are
// stored, whatever the orientation field says.

#include "RenderingBase/host/imaging/formats/ImageReader.h"
#include "RenderingBase/host/imaging/formats/TiffBlocks.h"
#include "RenderingBase/host/imaging/formats/TiffDirectory.h"
#include "RenderingBase/host/imaging/formats/TiffDirectoryCheck.h"
#include "RenderingBase/host/imaging/formats/TiffPixels.h"
#include "RenderingBase/host/imaging/formats/TiffRgba.h"

#include <array>
#include <cstring>
#include <memory>
#include <optional>

namespace rb::imaging {
namespace {

bool recognises(std::span<const std::byte> head) {
    static constexpr std::array<std::array<unsigned char, 4>, 4> kMagics{
        {{'I', 'I', 42, 0}, {'M', 'M', 0, 42}, {'I', 'I', 43, 0}, {'M', 'M', 0, 43}}};
    for (const auto& magic : kMagics)
        if (head.size() >= magic.size() &&
            std::memcmp(head.data(), magic.data(), magic.size()) == 0)
            return true;
    return false;
}

class TiffReader final : public ImageReader {
public:
    explicit TiffReader(ByteSource& source) : m_source(source) {}

    ReadResult readHeader(ImageHeader& header) override {
        if (ReadResult refusal = checkTiffDirectory(m_source)) return refusal;
        // Lists of a directory take up to eight times their bytes in the file once they are read.
        constexpr std::uint64_t kLeastAllowance = 1 << 20;
        const std::uint64_t size = std::min(m_source.size(), std::uint64_t{1} << 56);
        const TiffHandle handle(m_source, kLeastAllowance + 8 * size);
        if (!handle.get())
            return refuse("a TIFF directory", handle.complaint().empty() ? "none that can be read"
                                                                         : handle.complaint());
        if (ReadResult refusal = readTiffDirectory(handle, m_directory)) return refusal;
        m_pixels.emplace(m_directory);
        header.width = m_directory.width;
        header.height = m_directory.height;
        header.format = m_pixels->format();
        header.storedChannels = m_directory.storedSamples;
        header.storedBits = m_directory.storedBits;
        header.resolution = m_directory.resolution;
        header.profile = m_directory.profile;
        header.deliversSRGB = m_pixels->deliversSRGB();
        header.leastFileBytes = leastTiffBytes(m_directory);
        return {};
    }

    ReadResult readPixels(std::span<std::byte> pixels) override {
        if (m_directory.throughRgba)
            return decodeTiffThroughRgba(m_source, m_directory, pixels.data());
        if (ReadResult refusal = m_pixels->prepare()) return refusal;
        return decodeTiffBlocks(m_source, m_directory, *m_pixels, pixels.data());
    }

private:
    SharedSource m_source;
    TiffDirectory m_directory;
    std::optional<TiffPixels> m_pixels;
};

std::unique_ptr<ImageReader> open(ByteSource& source) {
    return std::make_unique<TiffReader>(source);
}

}  // namespace

const ImageFormat kTiffFormat{"tif", recognises, open};

}  // namespace rb::imaging
