#pragma once

/// @file  Questions about the display and its units.

#include "RenderingBase/host/app/KVRParmDictionary.h"
#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRResult.h"
#include "RenderingBase/host/base/KVRString.h"

/// A class of static operations; there are no objects of it. Threads: any.
class KVR_EXPORT KVRRbaVisuServices {
public:
    KVRRbaVisuServices() = delete;

    /// Tells who made the graphics adapter that drives the screen.
    /// @param vendor  Replaced: "nvidia", "amd", "intel" or "other", also when there is none.
    /// @return  Always 0.
    /// Cost: reads a few small files of the system.
    static HRESULT GetGraphicCardVendor(KVRString& vendor);

    /// Tells whether a unit measures lengths, in whatever system; false for one without magnitude.
    /// @throws KVRNullHandleError when the host has no parameter type for lengths.
    static bool IsMetricUnit(KVRICkeUnit& unit);
};
