#include "RenderingBase/host/files/AtomicFile.h"
#include "RenderingBase/host/files/KVRPath.h"
#include "RenderingBase/host/imaging/ImageLoader.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/imaging/LastImageError.h"
#include "RenderingBase/host/imaging/formats/ImageWriter.h"

#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>

using rb::imaging::ByteSource;
using rb::imaging::FileSource;
using rb::imaging::ImageHeader;
using rb::imaging::PixelLayout;
using rb::imaging::ReadResult;
using rb::imaging::refuse;

namespace {

struct WritableFormat {
    const char* name;
    rb::imaging::WriteFunction write;
    bool keepsAlpha;
};

constexpr std::array<WritableFormat, 6> kWritableFormats{{
    {"PNG", rb::imaging::writePng, true},
    {"TIFF", rb::imaging::writeTiff, true},
    {"BMP", rb::imaging::writeBmp, true},
    {"JPG_FAIR", rb::imaging::writeJpegFair, false},
    {"JPG", rb::imaging::writeJpeg, false},
    {"JPG_HIGH", rb::imaging::writeJpegHigh, false},
}};

const WritableFormat* writableFormat(const char* name) {
    for (const WritableFormat& format : kWritableFormats)
        if (name && std::strcmp(name, format.name) == 0) return &format;
    return nullptr;
}

/// The format with the same channels, in the order that files have them.
KVRPixelImageFormat fileOrder(const PixelLayout& layout, bool keepsAlpha) {
    const bool alpha = layout.hasAlpha() && keepsAlpha;
    if (layout.isGrey()) return alpha ? KVRPixelImageFormat::LA : KVRPixelImageFormat::L;
    return alpha ? KVRPixelImageFormat::RGBA : KVRPixelImageFormat::RGB;
}

KVRVar<KVRMMColorProfile> profileOf(const ImageHeader& header) {
    if (header.deliversSRGB)
        return KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateSRGB());
    if (header.profile.empty()) return {};
    return KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateFromMemory(header.profile));
}

/// Reads a whole image; null with a refusal.
KVRPixelImage* load(ByteSource& source, ReadResult& refusal) {
    rb::imaging::OpenImage open;
    rb::imaging::PixelStorage pixels;
    refusal = rb::imaging::openImage(source, true, open);
    if (!refusal) refusal = rb::imaging::decodeImage(open, pixels);
    if (refusal) return nullptr;
    const ImageHeader& header = open.header;
    auto image = KVRVar<KVRPixelImage>::Adopt(
        KVRPixelImage::CreateAround(static_cast<int>(header.width), static_cast<int>(header.height),
                                    header.format, std::move(pixels)));
    const auto& resolution = header.resolution;
    image->SetResolution(resolution.x, resolution.y, resolution.unit);
    if (const auto profile = profileOf(header)) image->AssignColorProfile(profile.Get(), 0);
    return image.Detach();
}

}  // namespace

KVRPixelImage* KVRPixelImage::CreateFromFileEx(const KVRUnicodeString& path, int, int) try {
    std::string reason;
    ReadResult refusal;
    KVRPixelImage* image = nullptr;
    if (const auto file = FileSource::open(NativePath(path), reason))
        image = load(*file, refusal);
    else
        refusal = refuse("a readable file", reason);
    rb::imaging::noteImageResult(path, refusal);
    return image;
} catch (const std::bad_alloc&) {
    rb::imaging::noteLackOfMemory();
    return nullptr;
}

KVRPixelImage* KVRPixelImage::CreateFromFile(const KVRUnicodeString& path, int readOnlyState,
                                             int flag) {
    return CreateFromFileEx(path, readOnlyState, flag);
}

KVRPixelImage* KVRPixelImage::CreateFromMemory(std::span<const std::byte> file,
                                               const KVRUnicodeString& name) try {
    rb::imaging::MemorySource source(file);
    ReadResult refusal;
    KVRPixelImage* const image = load(source, refusal);
    rb::imaging::noteImageResult(name, refusal);
    return image;
} catch (const std::bad_alloc&) {
    rb::imaging::noteLackOfMemory();
    return nullptr;
}

HRESULT KVRPixelImage::WriteToFile(const KVRUnicodeString& path, const char* formatName) const try {
    const auto write = [&]() -> ReadResult {
        const WritableFormat* format = writableFormat(formatName);
        if (!format)
            return refuse("PNG, TIFF, BMP, JPG_FAIR, JPG or JPG_HIGH to write",
                          formatName ? formatName : "no format name");
        if (!GetPixelsToRead() || m_pixels.size() == 0)
            return refuse("8-bit pixels to write", std::string(layout().name) + " pixels");
        const auto picture =
            KVRVar<KVRPixelImage>::Adopt(Duplicate(fileOrder(layout(), format->keepsAlpha)));
        if (!picture) return refuse("memory for a copy of the image", "none left");
        rb::imaging::WritablePicture writable;
        writable.width = m_width;
        writable.height = m_height;
        writable.channels = picture->GetBytesPerPixel();
        writable.pixels = picture->m_pixels.data();
        writable.resolution = m_resolution;
        if (m_profile) writable.profile = m_profile->GetData();

        rb::files::AtomicFile file(NativePath(path));
        if (!file.stream()) return refuse("a place to write to", file.reason());
        if (ReadResult refusal = format->write(writable, file.stream())) return refusal;
        if (!file.commit()) return refuse("the whole file to be written", file.reason());
        return {};
    };
    const ReadResult refusal = write();
    rb::imaging::noteImageResult(path, refusal);
    return refusal ? E_FAIL : S_OK;
} catch (const std::bad_alloc&) {
    rb::imaging::noteLackOfMemory();
    return E_FAIL;
}
