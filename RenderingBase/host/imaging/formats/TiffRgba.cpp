#include "RenderingBase/host/imaging/formats/TiffRgba.h"

#include "RenderingBase/host/imaging/formats/TiffStorage.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

namespace rb::imaging {

ReadResult decodeTiffThroughRgba(SharedSource& source, const TiffDirectory& d, std::byte* out) {
    std::vector<std::uint32_t> planes(d.planar ? static_cast<std::size_t>(d.samples) : 1);
    std::iota(planes.begin(), planes.end(), 0U);
    if (ReadResult refusal = checkTileSize(d, planes.size())) return refusal;
    TiffHandle handle(source, decoderAllowance(source.size(), d));
    const auto said = [&handle](const char* otherwise) {
        return handle.complaint().empty() ? std::string(otherwise) : handle.complaint();
    };
    if (!handle.get()) return refuse("a TIFF directory", said("none that can be read"));
    if (ReadResult refusal = checkStoredBlocks(handle, source.size(), d, planes)) return refusal;
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
