#pragma once

/// @file  The memory block behind an image.

#include "RenderingBase/host/base/KVRExport.h"

#include <cstddef>
#include <span>

namespace rb::imaging {

/// One block of pixel memory: allocated here, adopted from a caller, or viewed.
///
/// Large blocks are anonymous pages on a 2 MiB boundary, backed by huge pages where the system has
/// them: the first touch of fresh memory costs more than most of what is done with it afterwards.
/// Threads: like a pointer. Lifetime: frees what it owns; a view must be outlived by its memory.
class KVR_EXPORT PixelStorage {
public:
    enum class Fill {
        Zero,
        None,  ///< Contents undefined: for code that writes every byte.
    };

    PixelStorage() = default;
    /// Allocates @p bytes. Throws std::bad_alloc.
    PixelStorage(std::size_t bytes, Fill fill);
    /// Takes over @p pixels, which came from `new[]`.
    static PixelStorage adopt(unsigned char* pixels, std::size_t bytes);
    static PixelStorage adopt(float* pixels, std::size_t bytes);
    /// Looks at memory that stays the caller's.
    static PixelStorage view(void* pixels, std::size_t bytes);

    PixelStorage(PixelStorage&& other) noexcept { swap(other); }
    PixelStorage& operator=(PixelStorage&& other) noexcept {
        PixelStorage old(static_cast<PixelStorage&&>(other));
        swap(old);
        return *this;
    }
    PixelStorage(const PixelStorage&) = delete;
    PixelStorage& operator=(const PixelStorage&) = delete;
    ~PixelStorage();

    std::byte* data() { return m_data; }
    const std::byte* data() const { return m_data; }
    std::size_t size() const { return m_size; }  ///< Bytes.
    std::span<std::byte> bytes() { return {m_data, m_size}; }
    std::span<const std::byte> bytes() const { return {m_data, m_size}; }

private:
    enum class Owner {
        Nobody,
        Heap,
        Pages,
        ByteArray,
        FloatArray
    };
    PixelStorage(void* data, std::size_t size, Owner owner);
    void swap(PixelStorage& other) noexcept;

    std::byte* m_data = nullptr;
    std::size_t m_size = 0;
    Owner m_owner = Owner::Nobody;
};

}  // namespace rb::imaging
