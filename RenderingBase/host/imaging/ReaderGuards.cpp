#include "RenderingBase/host/imaging/ReaderGuards.h"

#include "RenderingBase/host/base/KVREnvironment.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"
#include "RenderingBase/host/imaging/formats/SaturatedMath.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace rb::imaging {
namespace {

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

std::string dimensions(std::int64_t width, std::int64_t height, std::uint64_t pictures = 1) {
    const std::string times = pictures > 1 ? std::to_string(pictures) + " times " : "";
    return times + std::to_string(width) + " x " + std::to_string(height) + " pixels";
}

}  // namespace

ReadResult afterReading(const ByteSource& source, ReadResult refusal) {
    std::string failure = source.failure();
    return failure.empty() ? std::move(refusal)
                           : refuse("a file that can be read", std::move(failure));
}

std::string firstBytes(std::span<const std::byte> head) {
    if (head.empty()) return "an empty file";
    std::string text = "the first bytes";
    for (const std::byte byte : head.first(std::min<std::size_t>(head.size(), 8)))
        text += ' ' + hexText(std::to_integer<std::uint32_t>(byte), 2);
    return text;
}

ReadResult checkSides(std::int64_t width, std::int64_t height) {
    constexpr std::int64_t kLongestSide = 0x7FFFFFFF;
    if (width < 1 || height < 1 || width > kLongestSide || height > kLongestSide)
        return refuse("sides of 1 to 2147483647 pixels", dimensions(width, height));
    return {};
}

ReadResult checkSize(std::int64_t width, std::int64_t height, std::uint64_t pictures,
                     std::uint64_t leastFileBytes, std::uint64_t fileBytes) {
    std::uint64_t limit = 0;
    if (ReadResult refusal = readPixelLimit(limit)) return refusal;
    if (saturatedProduct(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height),
                         pictures) > limit)
        return refuse("at most " + std::to_string(limit) + " pixels (KVRImagePixelLimit)",
                      dimensions(width, height, pictures));
    if (fileBytes < leastFileBytes)
        return refuse(
            "at least " + bytesText(leastFileBytes) + " for " + dimensions(width, height, pictures),
            "a file of " + bytesText(fileBytes));
    return {};
}

}  // namespace rb::imaging
