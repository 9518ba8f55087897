#pragma once

#include "RenderingBase/host/base/KVRResult.h"

#include <new>

namespace rb {

/// Runs the work of a public operation and turns exceptions into result codes, since none may leave
/// one.
/// @param work  returns an HRESULT.
template <class Work>
HRESULT guarded(Work&& work) noexcept {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

}  // namespace rb
