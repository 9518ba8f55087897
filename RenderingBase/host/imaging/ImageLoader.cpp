#include "RenderingBase/host/imaging/ImageLoader.h"

#include "RenderingBase/host/base/KVREnvironment.h"
#include "RenderingBase/host/imaging/formats/QuotedText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <utility>

namespace rb::imaging {
namespace {

/// Runs one step of a reader; what a codec library throws becomes a refusal.
template <typename Step>
ReadResult guarded(const ImageFormat& format, const Step& step) {
    const std::string what = "a readable " + std::string(format.name) + " file";
    try {
        return step();
    } catch (const std::bad_alloc&) {
        return refuse("enough memory to read the file", "none left");
    } catch (const std::exception& error) {
        return refuse(what, error.what());
    } catch (...) {
        return refuse(what, "an unknown failure of the codec");
    }
}

/// What a reader takes for the end of the file, or for damage, may be a device that fails.
ReadResult afterReading(const ByteSource& source, ReadResult refusal) {
    std::string failure = source.failure();
    return failure.empty() ? std::move(refusal)
                           : refuse("a file that can be read", std::move(failure));
}

std::string listOfNames() {
    std::string names;
    const auto formats = imageFormats();
    for (std::size_t i = 0; i < formats.size(); ++i) {
        if (i) names += i + 1 == formats.size() ? " or " : ", ";
        names += formats[i].name;
    }
    return names;
}

/// What is there instead of a known format, in words.
std::string describeHead(std::span<const std::byte> head) {
    if (head.empty()) return "an empty file";
    if (startsWith(head, "DDS ") || startsWith(head, "\xABKTX 20\xBB"))
        return "a texture container, which the texture functions open";
    std::string text = "the first bytes";
    for (std::size_t i = 0; i < std::min<std::size_t>(head.size(), 8); ++i) {
        std::array<char, 8> hex{};
        std::snprintf(hex.data(), hex.size(), " %02x", std::to_integer<unsigned>(head[i]));
        text += hex.data();
    }
    return text;
}

std::string dimensions(const ImageHeader& header) {
    return std::to_string(header.width) + " x " + std::to_string(header.height) + " pixels";
}

ReadResult checkSides(const ImageHeader& header) {
    constexpr std::int64_t kLongestSide = 0x7FFFFFFF;
    if (header.width < 1 || header.height < 1 || header.width > kLongestSide ||
        header.height > kLongestSide)
        return refuse("sides of 1 to 2147483647 pixels", dimensions(header));
    if (layoutOf(header.format).channels == 0)
        return refuse("a pixel format that can be delivered", "another one");
    return {};
}

/// The number of pixels that an image may have.
ReadResult readPixelLimit(std::uint64_t& limit) {
    limit = std::uint64_t{1} << 28;
    const char* const text = KVRGetEnv("KVRImagePixelLimit");
    if (!text) return {};
    const char* const end = text + std::strlen(text);
    const auto [stop, error] = std::from_chars(text, end, limit);
    if (error == std::errc() && stop == end && limit > 0) return {};
    return refuse(
        "KVRImagePixelLimit to be a whole number of pixels from 1 to 18446744073709551615",
        inQuotes(text));
}

ReadResult checkSize(const ImageHeader& header, std::uint64_t fileBytes) {
    std::uint64_t limit = 0;
    if (ReadResult refusal = readPixelLimit(limit)) return refusal;
    // Each side fits 31 bits, so the product fits 62.
    if (static_cast<std::uint64_t>(header.width) * static_cast<std::uint64_t>(header.height) >
        limit)
        return refuse("at most " + std::to_string(limit) + " pixels (KVRImagePixelLimit)",
                      dimensions(header));
    if (fileBytes < header.leastFileBytes)
        return refuse("at least " + std::to_string(header.leastFileBytes) + " bytes for " +
                          dimensions(header),
                      "a file of " + std::to_string(fileBytes) + " bytes");
    return {};
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
        kPsdFormat,
    };
    // clang-format on
    return formats;
}

std::string imageExtension(std::string_view name) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    std::size_t dot = name.rfind('.');
    if (dot != name.npos && dot > 0 && std::all_of(name.begin() + dot + 1, name.end(), isDigit)) {
        name = name.substr(0, dot);
        dot = name.rfind('.');
    }
    if (dot == name.npos) return {};
    std::string extension(name.substr(dot + 1));
    for (char& c : extension)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return extension;
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
    if (!image.format)
        return afterReading(source, refuse("a " + listOfNames() + " file", describeHead(head)));
    ReadResult refusal = guarded(*image.format, [&] {
        image.reader = image.format->open(source);
        return image.reader->readHeader(image.header);
    });
    if (!refusal) refusal = checkSides(image.header);
    if (!refusal && whole) refusal = checkSize(image.header, source.size());
    return afterReading(source, std::move(refusal));
}

ReadResult decodeImage(OpenImage& image, PixelStorage& pixels) {
    ReadResult refusal = guarded(*image.format, [&] {
        const auto bytes = static_cast<std::size_t>(image.header.width) *
                           static_cast<std::size_t>(image.header.height) *
                           static_cast<std::size_t>(layoutOf(image.header.format).bytesPerPixel());
        pixels = PixelStorage(bytes, PixelStorage::Fill::None);
        return image.reader->readPixels(pixels.bytes());
    });
    return afterReading(*image.source, std::move(refusal));
}

}  // namespace rb::imaging
