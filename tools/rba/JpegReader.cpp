#include "RenderingBase/host/imaging/formats/ImageReader.h"
namespace rb::imaging {
extern const ImageFormat kJpegFormat{"Jpeg", [](std::span<const std::byte>) { return false; },
                                     nullptr};
}
