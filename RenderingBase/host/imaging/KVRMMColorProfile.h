#pragma once

/// @file  ICC colour profiles.

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRUnicodeString.h"
#include "RenderingBase/host/modeler/KVRBaseUnknown.h"
#include "RenderingBase/host/modeler/KVRClass.h"

#include <cstddef>
#include <memory>
#include <span>

namespace rb::imaging {
class IccProfile;
}

/// A colour profile: the bytes of an ICC profile and what its header says.
///
/// Threads: immutable after creation; any thread may use it.
/// Lifetime: counted; one reference for whoever made it.
class KVR_EXPORT KVRMMColorProfile : public KVRClass<"KVRMMColorProfile"> {
public:
    /// A profile from the bytes of an ICC profile; null when they are not one.
    static KVRMMColorProfile* CreateFromMemory(std::span<const std::byte> icc);
    /// The built-in sRGB profile: the same object and the same bytes in every process, so that
    /// what is computed from it can be cached under its name and date. One reference.
    static KVRMMColorProfile* CreateSRGB();
    ~KVRMMColorProfile() override;

    /// The profile's description text, in English where it has several; may be empty.
    KVRUnicodeString getProfileName() const;
    /// The creation date of the header as "YYYY-MM-DD hh:mm:ss".
    KVRUnicodeString getProfileCreationDate() const;
    /// "sRGB" when the header's device model says so, or when the profile is a matrix profile whose
    /// D50 colorants lie within 0.004 and whose curves lie within 0.01 of sRGB's (texts alone
    /// are unreliable); else the header's device model, else the device-model text.
    KVRUnicodeString getProfileModel() const;
    /// The bytes of the profile, as they were given.
    std::span<const std::byte> GetData() const;

    /// For the colour conversions of this folder.
    const rb::imaging::IccProfile& icc() const { return *m_icc; }

private:
    explicit KVRMMColorProfile(std::unique_ptr<const rb::imaging::IccProfile> icc);
    std::unique_ptr<const rb::imaging::IccProfile> m_icc;
};

/// Makes colour profiles from files.
class KVR_EXPORT KVRMMColorProfileFactory {
public:
    /// @return  The profile in the file at @p path, one reference for the caller; null when the
    ///          file cannot be read or is not an ICC profile.
    static KVRMMColorProfile* CreateColorProfileFromFile(const KVRUnicodeString& path);
};
