#pragma once

#include "RenderingBase/host/base/KVRExport.h"

#include <stdexcept>

/// Thrown when a handle that holds nothing is used as if it held an object: the only exception of
/// the host.
class KVR_EXPORT KVRNullHandleError : public std::logic_error {
public:
    KVRNullHandleError() : std::logic_error("a null handle was dereferenced") {}
};
