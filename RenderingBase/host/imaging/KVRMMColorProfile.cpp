#include "RenderingBase/host/imaging/KVRMMColorProfile.h"

#include "RenderingBase/host/files/KVRPath.h"
#include "RenderingBase/host/imaging/ColorEngine.h"
#include "RenderingBase/host/imaging/formats/ByteSource.h"
#include "RenderingBase/host/modeler/KVRVar.h"

#include <cstddef>
#include <new>
#include <string>
#include <utility>
#include <vector>

using rb::imaging::IccProfile;

KVRMMColorProfile::KVRMMColorProfile(std::unique_ptr<const IccProfile> icc)
    : m_icc(std::move(icc)) {}

KVRMMColorProfile::~KVRMMColorProfile() = default;

KVRMMColorProfile* KVRMMColorProfile::CreateFromMemory(std::span<const std::byte> icc) {
    auto opened = IccProfile::open(icc);
    return opened ? new KVRMMColorProfile(std::move(opened)) : nullptr;
}

KVRMMColorProfile* KVRMMColorProfile::CreateSRGB() {
    // Never released: code that runs at exit may still convert colours.
    static KVRMMColorProfile* const profile = CreateFromMemory(IccProfile::sRGB().bytes());
    return KVRVar<KVRMMColorProfile>(profile).Detach();
}

KVRUnicodeString KVRMMColorProfile::getProfileName() const {
    return KVRUnicodeString(m_icc->description().c_str());
}

KVRUnicodeString KVRMMColorProfile::getProfileCreationDate() const {
    return KVRUnicodeString(m_icc->creationDate().c_str());
}

KVRUnicodeString KVRMMColorProfile::getProfileModel() const {
    return KVRUnicodeString(m_icc->model().c_str());
}

std::span<const std::byte> KVRMMColorProfile::GetData() const { return m_icc->bytes(); }

KVRMMColorProfile* KVRMMColorProfileFactory::CreateColorProfileFromFile(
    const KVRUnicodeString& path) try {
    constexpr std::uint64_t kLongest = std::uint64_t{64} << 20;  // real ones stay below 4 MiB
    std::string reason;
    const auto file = rb::imaging::FileSource::open(NativePath(path), reason);
    if (!file || file->size() > kLongest) return nullptr;
    std::vector<std::byte> bytes(static_cast<std::size_t>(file->size()));
    bytes.resize(file->read(0, bytes.data(), bytes.size()));
    return KVRMMColorProfile::CreateFromMemory(bytes);
} catch (const std::bad_alloc&) {
    return nullptr;
}
