#pragma once

/// @file  The thread that user and display belong to.

#include "RenderingBase/host/base/KVRExport.h"

/// Whether the calling thread is the interactive one: the one that loaded the host, as a rule that
/// of `main`. What works on textures of the display may be used there only.
/// Threads: any.
KVR_EXPORT bool KVRIsInteractiveThread() noexcept;
