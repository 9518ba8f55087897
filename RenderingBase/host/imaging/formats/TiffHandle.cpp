#include "RenderingBase/host/imaging/formats/TiffHandle.h"

#include <array>
#include <cstdarg>
#include <limits>
#include <memory>
#include <new>
#include <sys/types.h>

namespace rb::imaging {
namespace {

std::string textOf(const char* format, va_list rest) {
    std::array<char, 512> text{};
    std::vsnprintf(text.data(), text.size(), format, rest);
    return text.data();
}

int closeNothing(thandle_t) { return 0; }

/// The place @p offset bytes from where @p whence says; -1 when there is no such place.
std::int64_t placeFrom(std::uint64_t position, std::uint64_t size, std::int64_t offset,
                       int whence) {
    const std::uint64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? position : size;
    std::int64_t place = 0;
    if (base > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()) ||
        __builtin_add_overflow(static_cast<std::int64_t>(base), offset, &place) || place < 0)
        return -1;
    return place;
}

tmsize_t writeNowhere(thandle_t, void*, tmsize_t) { return 0; }

tmsize_t readFile(thandle_t file, void* to, tmsize_t count) {
    return static_cast<tmsize_t>(
        std::fread(to, 1, static_cast<std::size_t>(count), static_cast<std::FILE*>(file)));
}

tmsize_t writeFile(thandle_t file, void* from, tmsize_t count) {
    return static_cast<tmsize_t>(
        std::fwrite(from, 1, static_cast<std::size_t>(count), static_cast<std::FILE*>(file)));
}

toff_t seekFile(thandle_t file, toff_t offset, int whence) {
    auto* const stream = static_cast<std::FILE*>(file);
    if (fseeko(stream, static_cast<off_t>(offset), whence) != 0) return static_cast<toff_t>(-1);
    return static_cast<toff_t>(ftello(stream));
}

toff_t sizeOfFile(thandle_t file) {
    auto* const stream = static_cast<std::FILE*>(file);
    const off_t place = ftello(stream);
    if (fseeko(stream, 0, SEEK_END) != 0) return 0;
    const off_t size = ftello(stream);
    return fseeko(stream, place, SEEK_SET) == 0 && size > 0 ? static_cast<toff_t>(size) : 0;
}

}  // namespace

TiffHandle::TiffHandle(SharedSource& source, std::uint64_t mostBytesAtOnce) : m_source(&source) {
    // r: read; m: no memory mapping; c: strips stay as they are stored.
    open(
        "rmc", mostBytesAtOnce,
        [](thandle_t handle, void* to, tmsize_t count) {
            auto& self = *static_cast<TiffHandle*>(handle);
            const std::size_t got =
                self.m_source->read(self.m_position, to, static_cast<std::size_t>(count));
            self.m_position += got;
            return static_cast<tmsize_t>(got);
        },
        writeNowhere,
        [](thandle_t handle, toff_t offset, int whence) {
            auto& self = *static_cast<TiffHandle*>(handle);
            const std::int64_t place = placeFrom(self.m_position, self.m_source->size(),
                                                 static_cast<std::int64_t>(offset), whence);
            if (place >= 0) self.m_position = static_cast<std::uint64_t>(place);
            return static_cast<toff_t>(place);
        },
        [](thandle_t handle) {
            return static_cast<toff_t>(static_cast<TiffHandle*>(handle)->m_source->size());
        });
}

TiffHandle::TiffHandle(std::FILE* file) : m_file(file) {
    open("wm", 0, readFile, writeFile, seekFile, sizeOfFile);
}

TiffHandle::~TiffHandle() {
    if (m_tiff) TIFFClose(m_tiff);
}

void TiffHandle::open(const char* mode, std::uint64_t mostBytesAtOnce, TIFFReadWriteProc reader,
                      TIFFReadWriteProc writer, TIFFSeekProc seeker, TIFFSizeProc sizer) {
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(
        TIFFOpenOptionsAlloc(), TIFFOpenOptionsFree);
    if (!options) throw std::bad_alloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), noteError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), noteWarning, this);
    if (mostBytesAtOnce)
        TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(mostBytesAtOnce));
    const thandle_t data = m_file ? static_cast<thandle_t>(m_file) : static_cast<thandle_t>(this);
    m_tiff = TIFFClientOpenExt("image", mode, data, reader, writer, seeker, closeNothing, sizer,
                               nullptr, nullptr, options.get());
}

// Both say with 1 that nobody else need be told: otherwise the library's own handlers would print.
int TiffHandle::noteError(TIFF*, void* self, const char*, const char* format, va_list rest) {
    auto& complaint = static_cast<TiffHandle*>(self)->m_complaint;
    if (complaint.empty()) complaint = textOf(format, rest);
    return 1;
}

int TiffHandle::noteWarning(TIFF*, void* self, const char*, const char* format, va_list rest) {
    // Rows that a fax or JPEG strip does not have are invented, with no more than a warning.
    auto& complaint = static_cast<TiffHandle*>(self)->m_complaint;
    if (!complaint.empty()) return 1;
    std::string text = textOf(format, rest);
    if (text.find("Premature") != std::string::npos) complaint = std::move(text);
    return 1;
}

}  // namespace rb::imaging
