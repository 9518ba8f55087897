#pragma once

/// @file  What the host knows about the graphics adapter.

#include "RenderingBase/host/base/KVRExport.h"

/// Returns the PCI vendor id of the adapter that drives the screen, as in 0x10DE; 0 when the
/// machine has none, or one that is not on a PCI bus.
///
/// With several adapters it is the one that the firmware started with, else the first.
/// Threads: any. Cost: reads a few small files of the system at each call.
KVR_EXPORT unsigned KVRGetGraphicCardVendorID();
