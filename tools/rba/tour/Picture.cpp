#include "tools/rba/tour/Picture.h"

#include "RenderingBase/host/modeler/KVRVar.h"
#include "tools/rba/Context.h"
#include "tools/rba/Images.h"
#include "tools/rba/Paths.h"
#include "tools/rba/tour/Files.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

namespace rb::cli::tour {
namespace {

using Image = KVRVar<KVRPixelImage>;

constexpr std::size_t kSmallFile = 32768;  // bytes, up to which exact pixels cost nothing

KVRPixelImageFormat displayedFormat(const rb::imaging::PixelLayout& layout) {
    if (layout.isGrey())
        return layout.hasAlpha() ? KVRPixelImageFormat::LA : KVRPixelImageFormat::L;
    return layout.hasAlpha() ? KVRPixelImageFormat::RGBA : KVRPixelImageFormat::RGB;
}

/// A new image without profile, resolution and metadata, which a page has no use for.
Image displayable(const KVRPixelImage& image, int longestSide) {
    int width = 0, height = 0;
    image.GetSize(width, height);
    const KVRPixelImageFormat format = displayedFormat(rb::imaging::layoutOf(image.GetFormat()));
    Image plain = Image::Adopt(new KVRPixelImage(width, height, format));
    plain->InsertPixelImage(&image, 0, 0);
    const double scale = static_cast<double>(longestSide) / std::max({width, height, 1});
    if (scale >= 1) return plain;
    const auto scaled = [scale](int side) {
        return std::max(1, static_cast<int>(std::lround(side * scale)));
    };
    return Image::Adopt(plain->CreateZoomedImage(scaled(width), scaled(height),
                                                 static_cast<int>(KVRPixelZoom::Filtered)));
}

std::string encode(const KVRPixelImage& image, const char* writer,
                   const std::filesystem::path& scratch) {
    const std::filesystem::path path = scratch / "picture";
    writeImage(image, path.string(), writer);
    return readFile(path);
}

std::string dataUri(const char* type, const std::string& file) {
    return std::string("data:") + type + ";base64," + base64(std::as_bytes(std::span(file)));
}

/// What is to be said of a picture that is shown as @p shown.
Picture describe(const KVRPixelImage& image, const KVRPixelImage& shown) {
    Picture picture;
    shown.GetSize(picture.width, picture.height);
    picture.hasAlpha = rb::imaging::layoutOf(shown.GetFormat()).hasAlpha();
    picture.clamped = !isDisplayable(image);
    return picture;
}

}  // namespace

Picture makePicture(const KVRPixelImage& image, int longestSide,
                    const std::filesystem::path& scratch) {
    const Image shown = displayable(image, longestSide);
    if (!shown) throw Failure("expected a picture that can be shown, found one without pixels");
    Picture picture = describe(image, *shown.Get());
    std::string file = encode(*shown.Get(), "PNG", scratch);
    const char* type = "image/png";
    if (!picture.hasAlpha && file.size() > kSmallFile) {
        std::string jpeg = encode(*shown.Get(), "JPG_HIGH", scratch);
        if (jpeg.size() < file.size()) {
            file = std::move(jpeg);
            type = "image/jpeg";
        }
    }
    picture.dataUri = dataUri(type, file);
    return picture;
}

Picture makeExactPicture(const KVRPixelImage& image, const std::filesystem::path& scratch) {
    const Image shown = displayable(image, std::numeric_limits<int>::max());
    Picture picture = describe(image, *shown.Get());
    picture.dataUri = dataUri("image/png", encode(*shown.Get(), "PNG", scratch));
    return picture;
}

}  // namespace rb::cli::tour
