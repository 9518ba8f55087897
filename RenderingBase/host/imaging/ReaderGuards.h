#pragma once

/// @file  What every reader of files is held to, stated once. Private to host/imaging.

#include "RenderingBase/host/imaging/formats/ImageReader.h"

#include <cstdint>
#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace rb::imaging {

/// Runs one step of a reader; what a codec library throws becomes a refusal.
/// @param format  Name of the format, as in "a readable png file".
template <typename Step>
ReadResult guarded(std::string_view format, const Step& step) {
    try {
        return step();
    } catch (const std::bad_alloc&) {
        return refuse("enough memory to read the file", "none left");
    } catch (const std::exception& error) {
        return refuse("a readable " + std::string(format) + " file", error.what());
    } catch (...) {
        return refuse("a readable " + std::string(format) + " file",
                      "an unknown failure of the codec");
    }
}

/// What a reader takes for the end of the file, or for damage, may be a device that fails.
ReadResult afterReading(const ByteSource& source, ReadResult refusal);

/// "the first bytes 89 50 4e 47": what is there instead of a known format.
std::string firstBytes(std::span<const std::byte> head);

/// Refuses sides below 1 or beyond what an int holds.
ReadResult checkSides(std::int64_t width, std::int64_t height);

/// Holds @p pictures pictures of this size against KVRImagePixelLimit of the environment (2^28
/// without it; a value that is not a whole positive number refuses every image), and the bytes that
/// they need at least against those of the file. Sides as `checkSides` accepts them.
ReadResult checkSize(std::int64_t width, std::int64_t height, std::uint64_t pictures,
                     std::uint64_t leastFileBytes, std::uint64_t fileBytes);

}  // namespace rb::imaging
