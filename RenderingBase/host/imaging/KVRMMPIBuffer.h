#pragma once

/// @file  The raw pixel buffer of half-float images.

#include <cstddef>

/// A half-float value. Declared only: the application's rendering library defines it, as a class
/// that holds the 16 bits and nothing else.
class openexr_half;

/// The pixels of a half-float image as one array of half values, row after row, top row first.
/// Lifetime: belongs to its image and ends with it, or when the image changes its format.
class KVRMMPIBuffer {
public:
    KVRMMPIBuffer() = default;
    KVRMMPIBuffer(openexr_half* first, std::size_t count) : m_first(first), m_count(count) {}

    openexr_half* GetBufferForModify() { return m_first; }
    const openexr_half* GetBufferForRead() const { return m_first; }
    /// Number of half values: width x height x channels.
    std::size_t GetNbElem() const { return m_count; }

private:
    openexr_half* m_first = nullptr;
    std::size_t m_count = 0;
};
