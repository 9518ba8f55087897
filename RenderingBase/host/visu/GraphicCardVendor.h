#pragma once

/// @file  The search behind KVRGetGraphicCardVendorID. For sources of the host, and for tests.

#include "RenderingBase/host/base/KVRExport.h"

#include <filesystem>

namespace rb::visu {

/// Returns the PCI vendor id of the graphics adapter that a tree like /sys describes; 0 when it
/// describes none.
///
/// First the cards that a graphics driver of the kernel serves (class/drm/card0, card1, ...
/// card10); when there is none of a PCI vendor, the PCI devices of the display class
/// (bus/pci/devices). Among each, the one whose file boot_vga says 1, else the first whose file
/// vendor can be read.
/// @param sysfs  The root of the tree.
KVR_EXPORT unsigned graphicCardVendor(const std::filesystem::path& sysfs) noexcept;

}  // namespace rb::visu
