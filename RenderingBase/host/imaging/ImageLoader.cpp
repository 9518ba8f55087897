#include "RenderingBase/host/imaging/ImageLoader.h"

#include "RenderingBase/host/imaging/ReaderGuards.h"
#include "RenderingBase/host/imaging/formats/TextureReader.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

namespace rb::imaging {
namespace {

/// What is there instead of a known format, in words.
std::string describeHead(std::span<const std::byte> head) {
    if (startsWith(head, "DDS ") || startsWith(head, "\xABKTX 20\xBB"))
        return "a texture container, which the texture functions open";
    return firstBytes(head);
}

/// Holds what a header says against what can be delivered and what the file has.
ReadResult checkHeader(const ImageHeader& header, bool whole, std::uint64_t fileBytes) {
    if (ReadResult refusal = checkSides(header.width, header.height)) return refusal;
    if (layoutOf(header.format).channels == 0)
        return refuse("a pixel format that can be delivered", "another one");
    if (!whole) return {};
    return checkSize(header.width, header.height, 1, header.leastFileBytes, fileBytes);
}

}  // namespace

std::span<const ImageFormat> imageFormats() {
    // clang-format off
    static const std::array formats{
        kPngFormat,
        kJpegFormat,
        kTiffFormat,
        kExrFormat,
        kHdrFormat,
        kBmpFormat,
        kPsdFormat,
        kSgiFormat,
        kPicFormat,
        kTgaFormat,  // last: it has no magic number
    };
    // clang-format on
    return formats;
}

std::string imageExtension(std::string_view name) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    std::size_t dot = name.rfind('.');
    if (dot != name.npos && dot > 0 && dot + 1 < name.size() &&
        std::all_of(name.begin() + dot + 1, name.end(), isDigit)) {
        name = name.substr(0, dot);
        dot = name.rfind('.');
    }
    if (dot == name.npos) return {};
    std::string extension(name.substr(dot + 1));
    for (char& c : extension)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return extension;
}

std::string expectedFile(bool textureToo) {
    std::vector<std::string_view> names;
    for (const ImageFormat& format : imageFormats()) names.push_back(format.name);
    if (textureToo)
        for (const TextureFormat& format : textureFormats()) names.push_back(format.name);
    std::string text = "a ";
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (i) text += i + 1 == names.size() ? " or " : ", ";
        text += names[i];
    }
    return text + " file";
}

ReadResult openImage(ByteSource& source, std::string_view extension, bool whole, OpenImage& image) {
    std::array<std::byte, kHeadBytes> buffer;
    const std::span<const std::byte> head(buffer.data(),
                                          source.read(0, buffer.data(), buffer.size()));
    for (const ImageFormat& format : imageFormats())
        if ((format.requiredExtension.empty() || format.requiredExtension == extension) &&
            format.recognises(head)) {
            image.format = &format;
            break;
        }
    image.source = &source;
    if (!image.format) return afterReading(source, refuse(expectedFile(false), describeHead(head)));
    ReadResult refusal = guarded(image.format->name, [&] {
        image.reader = image.format->open(source);
        return image.reader->readHeader(image.header);
    });
    if (!refusal) refusal = checkHeader(image.header, whole, source.size());
    return afterReading(source, std::move(refusal));
}

ReadResult decodeImage(OpenImage& image, PixelStorage& pixels) {
    ReadResult refusal = guarded(image.format->name, [&] {
        const auto bytes = static_cast<std::size_t>(image.header.width) *
                           static_cast<std::size_t>(image.header.height) *
                           static_cast<std::size_t>(layoutOf(image.header.format).bytesPerPixel());
        pixels = PixelStorage(bytes, PixelStorage::Fill::None);
        return image.reader->readPixels(pixels.bytes());
    });
    return afterReading(*image.source, std::move(refusal));
}

}  // namespace rb::imaging
