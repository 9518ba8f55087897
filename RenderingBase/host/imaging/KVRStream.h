#pragma once

#include <cstddef>

/// Where an object writes itself to and reads itself from, byte after byte.
class KVRStream {
public:
    virtual ~KVRStream() = default;
    /// Writes all of @p size bytes or returns false.
    virtual bool Write(const void* data, std::size_t size) = 0;
    /// Reads all of @p size bytes or returns false.
    virtual bool Read(void* data, std::size_t size) = 0;
};
