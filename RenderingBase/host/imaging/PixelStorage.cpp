#include "RenderingBase/host/imaging/PixelStorage.h"

#include <cstdint>
#include <cstdlib>
#include <new>
#include <sys/mman.h>
#include <utility>

namespace rb::imaging {
namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;

std::size_t roundedToHugePages(std::size_t bytes) {
    return (bytes + kHugePage - 1) / kHugePage * kHugePage;
}

/// Maps @p bytes (rounded up) on a huge-page boundary: maps one page too many, gives back the ends.
void* mapPages(std::size_t bytes) {
    const std::size_t wanted = roundedToHugePages(bytes);
    const std::size_t mapped = wanted + kHugePage;
    if (mapped < bytes) throw std::bad_alloc();
    void* const start =
        mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (start == MAP_FAILED) throw std::bad_alloc();
    auto* const first = static_cast<std::byte*>(start);
    const std::size_t head =
        (kHugePage - reinterpret_cast<std::uintptr_t>(start) % kHugePage) % kHugePage;
    if (head) munmap(first, head);
    munmap(first + head + wanted, kHugePage - head);
    // A refusal only costs speed.
    static_cast<void>(madvise(first + head, wanted, MADV_HUGEPAGE));
    return first + head;
}

}  // namespace

PixelStorage::PixelStorage(void* data, std::size_t size, Owner owner)
    : m_data(static_cast<std::byte*>(data)), m_size(size), m_owner(owner) {}

PixelStorage::PixelStorage(std::size_t bytes, Fill fill) : m_size(bytes) {
    if (bytes == 0) return;
    if (bytes >= kHugePage) {  // fresh pages are zero already
        m_data = static_cast<std::byte*>(mapPages(bytes));
        m_owner = Owner::Pages;
        return;
    }
    m_data =
        static_cast<std::byte*>(fill == Fill::Zero ? std::calloc(bytes, 1) : std::malloc(bytes));
    if (!m_data) throw std::bad_alloc();
    m_owner = Owner::Heap;
}

PixelStorage PixelStorage::adopt(unsigned char* pixels, std::size_t bytes) {
    return {pixels, bytes, Owner::ByteArray};
}

PixelStorage PixelStorage::adopt(float* pixels, std::size_t bytes) {
    return {pixels, bytes, Owner::FloatArray};
}

PixelStorage PixelStorage::view(void* pixels, std::size_t bytes) {
    return {pixels, bytes, Owner::Nobody};
}

PixelStorage::~PixelStorage() {
    switch (m_owner) {
        case Owner::Nobody:
            break;
        case Owner::Heap:
            std::free(m_data);
            break;
        case Owner::Pages:
            munmap(m_data, roundedToHugePages(m_size));
            break;
        case Owner::ByteArray:
            delete[] reinterpret_cast<unsigned char*>(m_data);
            break;
        case Owner::FloatArray:
            delete[] reinterpret_cast<float*>(m_data);
            break;
    }
}

void PixelStorage::swap(PixelStorage& other) noexcept {
    std::swap(m_data, other.m_data);
    std::swap(m_size, other.m_size);
    std::swap(m_owner, other.m_owner);
}

}  // namespace rb::imaging
