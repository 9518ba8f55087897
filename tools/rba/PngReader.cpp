#include "RenderingBase/host/imaging/formats/ImageReader.h"
namespace rb::imaging {
extern const ImageFormat kPngFormat{"Png", [](std::span<const std::byte>) { return false; },
                                    nullptr};
}
