#pragma once

/// @file  Open TIFF files of the codec library, over bytes and without a word on standard error.
/// The only header that includes the codec library's.

#include "RenderingBase/host/imaging/formats/SharedSource.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <tiffio.h>

namespace rb::imaging {

/// One handle of the library on the first directory of a file. Threads: one at a time; several
/// handles may share a source.
class TiffHandle {
public:
    /// Opens for reading.
    /// @param mostBytesAtOnce  What the library may allocate in one piece.
    TiffHandle(SharedSource& source, std::uint64_t mostBytesAtOnce);
    /// Opens for writing to @p file, which stays the caller's.
    explicit TiffHandle(std::FILE* file);
    ~TiffHandle();
    TiffHandle(const TiffHandle&) = delete;
    TiffHandle& operator=(const TiffHandle&) = delete;

    /// Null when the library refuses the file.
    TIFF* get() const { return m_tiff; }
    /// The first complaint of the library that means lost data since the last `clearComplaint`.
    const std::string& complaint() const { return m_complaint; }
    void clearComplaint() { m_complaint.clear(); }

private:
    void open(const char* mode, std::uint64_t mostBytesAtOnce, TIFFReadWriteProc reader,
              TIFFReadWriteProc writer, TIFFSeekProc seeker, TIFFSizeProc sizer);
    static int noteError(TIFF*, void* self, const char* module, const char* format, va_list rest);
    static int noteWarning(TIFF*, void* self, const char* module, const char* format, va_list rest);

    SharedSource* m_source = nullptr;
    std::FILE* m_file = nullptr;
    std::uint64_t m_position = 0;
    std::string m_complaint;
    TIFF* m_tiff = nullptr;
};

}  // namespace rb::imaging
