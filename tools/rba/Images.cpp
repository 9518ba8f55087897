#include "tools/rba/Images.h"

#include "RenderingBase/host/imaging/KVRLastImageError.h"
#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tools/rba/Context.h"
#include "tools/rba/Output.h"
#include "tools/rba/Paths.h"
#include "tools/rba/Profile.h"

#include <array>
#include <string_view>
#include <utility>

namespace rb::cli {
namespace {

/// A service that makes 8 bits of a format.
struct Converter {
    const char* name = "";
    KVRPixelImage* (*convert)(KVRPixelImage* source) = nullptr;
};

/// Null when there is none.
Converter converterOf(KVRPixelImageFormat format) {
    switch (format) {
        case KVRPixelImageFormat::L_f:
        case KVRPixelImageFormat::RGB_f:
        case KVRPixelImageFormat::RGBA_f:
            return {"ConvertFloatTextureToRGBA", KVRRbaImageServices::ConvertFloatTextureToRGBA};
        case KVRPixelImageFormat::L_f16:
        case KVRPixelImageFormat::RGB_f16:
        case KVRPixelImageFormat::RGBA_f16:
            return {"ConvertHalfFloatTextureToRGBA",
                    KVRRbaImageServices::ConvertHalfFloatTextureToRGBA};
        default:
            return {};
    }
}

}  // namespace

std::string imageErrorReason() {
    KVRImageError error = KVRLastImageError();
    if (error.expected.empty()) return "expected an image, found one that could not be read";
    error.file = KVRUnicodeString();
    // The line begins with the file, which is empty here, and what separates it.
    return std::string(error.Message().View().substr(std::string_view(": ").size()));
}

KVRVar<KVRPixelImage> loadImage(const std::string& typedPath, int dpi,
                                const KVRListValKVRUnicodeString& groups) {
    auto image = KVRVar<KVRPixelImage>::Adopt(
        measured("KVRRbaImageServices", "CreatePixelImageFromFullPath", [&] {
            return KVRRbaImageServices::CreatePixelImageFromFullPath(frameworkPath(typedPath),
                                                                     groups, dpi);
        }));
    if (!image) throw Failure(typedPath, imageErrorReason());
    return image;
}

bool isDisplayable(const KVRPixelImage& image) { return image.GetPixelsToRead() != nullptr; }

void checkDisplayable(const std::string& path, const KVRPixelImage& image) {
    if (!isDisplayable(image))
        throw Failure(path, std::string("expected an image with 8-bit pixels, found ") +
                                formatName(image) +
                                " pixels; convert it to 8 bits first with: rba image convert");
}

KVRVar<KVRPixelImage> displayableImage(const std::string& path, KVRPixelImage& image) {
    if (isDisplayable(image)) return KVRVar<KVRPixelImage>(&image);
    const Converter converter = converterOf(image.GetFormat());
    if (!converter.convert)
        throw Failure(path,
                      std::string("expected an image with 8-bit pixels, or with half or float "
                                  "pixels in the order of red, green and blue, found ") +
                          formatName(image) + " pixels");
    auto converted = KVRVar<KVRPixelImage>::Adopt(
        measured("KVRRbaImageServices", converter.name, [&] { return converter.convert(&image); }));
    if (!converted) throw Failure(path, "expected memory for a copy with 8 bits, found none");
    converted->SetResolution(image.GetXResolution(), image.GetYResolution(),
                             image.GetResolutionUnit());
    return converted;
}

const char* formatName(const KVRPixelImage& image) {
    return rb::imaging::layoutOf(image.GetFormat()).name;
}

const char* writerFor(const std::string& extension) {
    static constexpr std::array<std::pair<std::string_view, const char*>, 6> kWriters{{
        {"png", "PNG"},
        {"tif", "TIFF"},
        {"tiff", "TIFF"},
        {"bmp", "BMP"},
        {"jpg", "JPG_HIGH"},
        {"jpeg", "JPG_HIGH"},
    }};
    for (const auto& [known, writer] : kWriters)
        if (known == extension) return writer;
    return nullptr;
}

const char* writerOf(const std::string& typedPath) {
    const std::string extension = lowerExtension(typedPath);
    const char* const writer = writerFor(extension);
    if (!writer)
        throw UsageError(named(typedPath) + ": expected a name that ends in " + kWrittenExtensions +
                         ", found '" + extension + "'");
    return writer;
}

bool readHeader(const std::string& typedPath, KVRMMImageProp& prop, KVRMMImageSize& size) {
    return Succeeded(measured("KVRMMRasterAdministrator", "GetImageInfo", [&] {
        return KVRMMRasterAdministrator::GetInstance()->GetImageInfo(frameworkPath(typedPath), prop,
                                                                     size, 0);
    }));
}

KVRVar<KVRPixelImage> mirrorBallOf(const std::array<KVRVar<KVRPixelImage>, 6>& faces) {
    return KVRVar<KVRPixelImage>::Adopt(
        measured("KVRRbaImageServices", "BuildPixelImageFromAllFaces", [&] {
            return KVRRbaImageServices::BuildPixelImageFromAllFaces(faces[0].Get(), faces[1].Get(),
                                                                    faces[2].Get(), faces[3].Get(),
                                                                    faces[4].Get(), faces[5].Get());
        }));
}

void writeImage(const KVRPixelImage& image, const std::string& typedPath, const char* writer) {
    const HRESULT status = measured("KVRPixelImage", "WriteToFile", [&] {
        return image.WriteToFile(frameworkPath(typedPath), writer);
    });
    if (Failed(status)) throw Failure(typedPath, imageErrorReason());
}

namespace {

KVRPixelImageFormat writtenFormat(const KVRPixelImage& image, const std::string& typedPath) {
    const auto& layout = rb::imaging::layoutOf(image.GetFormat());
    if (!layout.hasAlpha() || std::string_view(writerOf(typedPath)) != "JPG_HIGH")
        return image.GetFormat();
    return layout.isGrey() ? KVRPixelImageFormat::L : KVRPixelImageFormat::RGB;
}

}  // namespace

void printImage(Context& context, const std::string& path, const KVRPixelImage& image) {
    int width = 0, height = 0;
    image.GetSize(width, height);
    const KVRPixelImageFormat format = writtenFormat(image, path);
    if (context.json)
        printJson(*context.out, {{"path", path},
                                 {"width", width},
                                 {"height", height},
                                 {"format", static_cast<int>(format)}});
    else if (!context.quiet)
        *context.out << onOneLine(path) << ": " << width << " x " << height << " px, "
                     << rb::imaging::layoutOf(format).name << '\n';
}

}  // namespace rb::cli
