#include "tests/diagnostics/CountedMemory.h"

#include <cstdlib>
#include <malloc.h>
#include <new>

namespace {

bool g_hasMemory = true;
std::size_t g_allocations = 0;
std::size_t g_liveBytes = 0;

void* allocate(std::size_t size) {
    void* const block = g_hasMemory ? std::malloc(size) : nullptr;
    if (!block) return nullptr;
    ++g_allocations;
    g_liveBytes += malloc_usable_size(block);
    return block;
}

}  // namespace

void* operator new(std::size_t size) {
    void* const block = allocate(size);
    if (!block) throw std::bad_alloc();
    return block;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }

void operator delete(void* block) noexcept {
    g_liveBytes -= malloc_usable_size(block);
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

namespace rb::test {

std::size_t allocationCount() { return g_allocations; }
std::size_t liveBytes() { return g_liveBytes; }

NoMemory::NoMemory() { g_hasMemory = false; }
NoMemory::~NoMemory() { g_hasMemory = true; }

}  // namespace rb::test
