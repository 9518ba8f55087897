#include "RenderingBase/host/imaging/KVRLastImageError.h"

#include "RenderingBase/host/imaging/LastImageError.h"

#include <new>

namespace {
thread_local KVRImageError lastError;
}

const KVRImageError& KVRLastImageError() { return lastError; }

void KVRSetLastImageError(const KVRUnicodeString& file, const char* expected,
                          const char* found) noexcept try {
    lastError = KVRImageError{file, expected, found, {}};
} catch (const std::bad_alloc&) {
    rb::imaging::noteLackOfMemory();
}

KVRUnicodeString KVRImageError::Message() const {
    std::string text = file.CastToCharPtr();
    if (expected.empty()) return KVRUnicodeString(text.c_str());
    if (!where.empty()) text += ": " + where;
    text += ": expected " + expected + ", found " + found;
    return KVRUnicodeString(text.c_str());
}

namespace rb::imaging {

void noteImageResult(const KVRUnicodeString& file, const ReadResult& result) {
    lastError = result ? KVRImageError{file, result->expected, result->found, result->where}
                       : KVRImageError{};
}

void noteLackOfMemory() noexcept {
    lastError = KVRImageError{};
    lastError.expected = "enough memory";  // both fit into the strings themselves
    lastError.found = "none left";
}

}  // namespace rb::imaging
