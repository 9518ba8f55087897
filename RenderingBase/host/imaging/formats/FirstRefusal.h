#pragma once

/// @file  What becomes of the refusals of threads that decode a picture together.

#include "RenderingBase/host/imaging/formats/ImageReader.h"

#include <cstdint>
#include <mutex>
#include <utility>

namespace rb::imaging {

/// Keeps the refusal of the uppermost row, whichever thread comes first. Threads: any number.
class FirstRefusal {
public:
    void note(std::uint64_t row, ReadResult refusal) {
        const std::lock_guard lock(m_mutex);
        if (m_refusal && m_row <= row) return;
        m_row = row;
        m_refusal = std::move(refusal);
    }
    /// Nothing when there was none. For when all threads have ended.
    ReadResult result() const { return m_refusal; }

private:
    std::mutex m_mutex;
    std::uint64_t m_row = 0;
    ReadResult m_refusal;
};

}  // namespace rb::imaging
