#pragma once

/// @file  What KVRRbaVisuServices concludes from the answers of the host.

#include "RenderingBase/host/app/KVRParmDictionary.h"

namespace rb {

/// The word for a PCI vendor id; the numbers are those of the PCI-SIG's list of members.
constexpr const char* vendorWord(unsigned pciVendorId) {
    switch (pciVendorId) {
        case 0x10DE:
            return "nvidia";
        case 0x1002:
            return "amd";
        case 0x8086:
            return "intel";
        default:
            return "other";
    }
}

/// Whether a unit has the magnitude that is named as a type of parameters.
/// @throws KVRNullHandleError when @p type is empty.
inline bool measures(const KVRICkeUnit& unit, const KVRParmType& type) {
    const auto wanted =
        KVRVar<KVRICkeMagnitude>::Adopt(KVRParmDictionary::FindMagnitude(type->Name()));
    const auto magnitude = KVRVar<KVRICkeMagnitude>::Adopt(unit.GetMagnitude());
    return magnitude && magnitude->IsEqual(wanted.Get()) != 0;
}

}  // namespace rb
