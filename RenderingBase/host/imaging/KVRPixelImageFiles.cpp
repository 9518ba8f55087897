#include "RenderingBase/host/files/AtomicFile.h"
#include "RenderingBase/host/files/KVRPath.h"
#include "RenderingBase/host/imaging/ColorEngine.h"
#include "RenderingBase/host/imaging/ImageLoader.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/imaging/LastImageError.h"
#include "RenderingBase/host/imaging/ReaderGuards.h"
#include "RenderingBase/host/imaging/formats/ImageWriter.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <system_error>
#include <utility>

using rb::imaging::ByteSource;
using rb::imaging::ColorSpace;
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
    ColorSpace ofGrey;         // which profiles are for the grey that is stored
    bool takesFloats = false;  // and nothing else
};

constexpr std::array<WritableFormat, 8> kWritableFormats{{
    {"PNG", rb::imaging::writePng, true, ColorSpace::Grey},
    {"TIFF", rb::imaging::writeTiff, true, ColorSpace::Grey},
    {"BMP", rb::imaging::writeBmp, true, ColorSpace::Rgb},  // grey is a palette of colours
    {"JPG_FAIR", rb::imaging::writeJpegFair, false, ColorSpace::Grey},
    {"JPG", rb::imaging::writeJpeg, false, ColorSpace::Grey},
    {"JPG_HIGH", rb::imaging::writeJpegHigh, false, ColorSpace::Grey},
    {"EXR", rb::imaging::writeExr, true, ColorSpace::Grey, true},
    {"HDR", rb::imaging::writeHdr, true, ColorSpace::Grey, true},
}};

const WritableFormat* writableFormat(const char* name) {
    for (const WritableFormat& format : kWritableFormats)
        if (name && std::strcmp(name, format.name) == 0) return &format;
    return nullptr;
}

/// The format with the same channels, in the order that files have them. There is no other order
/// of floats.
KVRPixelImageFormat fileOrder(const PixelLayout& layout, KVRPixelImageFormat format,
                              bool keepsAlpha) {
    if (layout.type == rb::imaging::ChannelType::Float) return format;
    const bool alpha = layout.hasAlpha() && keepsAlpha;
    if (layout.isGrey()) return alpha ? KVRPixelImageFormat::LA : KVRPixelImageFormat::L;
    return alpha ? KVRPixelImageFormat::RGBA : KVRPixelImageFormat::RGB;
}

/// The profile of a picture in a file; none when it is for other channels than are stored: readers
/// complain about such a profile, or convert with it.
std::span<const std::byte> profileToWrite(const KVRMMColorProfile* profile, bool grey,
                                          const WritableFormat& format) {
    const ColorSpace space = grey ? format.ofGrey : ColorSpace::Rgb;
    return profile && profile->icc().space() == space ? profile->GetData()
                                                      : std::span<const std::byte>();
}

/// Writes a picture to an open file. The system's word on a write that failed comes before
/// whatever the codec makes of it.
ReadResult writeTo(std::FILE* file, const WritableFormat& format,
                   const rb::imaging::WritablePicture& picture) {
    errno = 0;
    ReadResult refusal = format.write(picture, file);
    if (!std::ferror(file)) return refusal;
    return refuse("the whole file to be written",
                  std::generic_category().message(errno ? errno : EIO));
}

KVRVar<KVRMMColorProfile> profileOf(const ImageHeader& header) {
    if (header.deliversSRGB)
        return KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateSRGB());
    if (header.profile.empty()) return {};
    return KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateFromMemory(header.profile));
}

}  // namespace

KVRPixelImage* rb::imaging::loadImage(ByteSource& source, const KVRUnicodeString& name,
                                      ReadResult& refusal) {
    OpenImage open;
    PixelStorage pixels;
    refusal = openImage(source, imageExtension(name.CastToCharPtr()), true, open);
    if (!refusal) refusal = decodeImage(open, pixels);
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

bool KVRPixelImage::IsWithinPixelLimit(int width, int height) {
    return !rb::imaging::checkSides(width, height) &&
           !rb::imaging::checkSize(width, height, 1, 0, 0);
}

KVRPixelImage* KVRPixelImage::CreateFromFileEx(const KVRUnicodeString& path, int, int) try {
    std::string reason;
    ReadResult refusal;
    KVRPixelImage* image = nullptr;
    if (const auto file = FileSource::open(NativePath(path), reason))
        image = rb::imaging::loadImage(*file, path, refusal);
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
    KVRPixelImage* const image = rb::imaging::loadImage(source, name, refusal);
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
            return refuse("PNG, TIFF, BMP, JPG_FAIR, JPG, JPG_HIGH, EXR or HDR to write",
                          formatName ? formatName : "no format name");
        const bool isTaken = format->takesFloats ? GetFloatingPixelsToRead() != nullptr
                                                 : GetPixelsToRead() != nullptr;
        if (!isTaken || m_pixels.size() == 0)
            return refuse(format->takesFloats ? "float pixels to write" : "8-bit pixels to write",
                          std::string(layout().name) + " pixels");
        const KVRPixelImageFormat order = fileOrder(layout(), m_format, format->keepsAlpha);
        KVRVar<KVRPixelImage> arranged;
        if (order != m_format) {
            arranged = KVRVar<KVRPixelImage>::Adopt(Duplicate(order));
            if (!arranged) return refuse("memory for a copy of the image", "none left");
        }
        const KVRPixelImage& picture = arranged ? *arranged.Get() : *this;
        rb::imaging::WritablePicture writable;
        writable.width = m_width;
        writable.height = m_height;
        writable.channels = picture.layout().channels;
        writable.sampleBytes = picture.layout().bytesPerChannel();
        writable.pixels = picture.m_pixels.data();
        writable.resolution = m_resolution;
        writable.profile = profileToWrite(m_profile.Get(), layout().isGrey(), *format);

        rb::files::AtomicFile file(NativePath(path));
        if (!file.stream()) return refuse("a place to write to", file.reason());
        if (ReadResult refusal = writeTo(file.stream(), *format, writable)) return refusal;
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
