#include "RenderingBase/host/visu/ProcessorTexture.h"

#include "RenderingBase/host/base/KVRInteractiveThread.h"
#include "RenderingBase/host/base/ZWTSysTrace.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace rb::visu {
namespace {

void sizeOf(const KVRPixelImage& image, unsigned& width, unsigned& height) {
    int columns = 0, rows = 0;
    image.GetSize(columns, rows);
    width = static_cast<unsigned>(columns);
    height = static_cast<unsigned>(rows);
}

int half(unsigned side) { return static_cast<int>(std::max(1U, side / 2)); }

/// The next level; null without memory.
KVRVar<KVRPixelImage> halved(const KVRPixelImage& image) {
    unsigned width = 0, height = 0;
    sizeOf(image, width, height);
    return KVRVar<KVRPixelImage>::Adopt(image.CreateZoomedImage(
        half(width), half(height), static_cast<int>(KVRPixelZoom::Filtered)));
}

/// A copy of all bytes; null without memory.
template <class Value>
Value* copyOf(std::span<const std::byte> bytes) {
    auto* const copy = new (std::nothrow) Value[bytes.size() / sizeof(Value)];
    if (copy && !bytes.empty()) std::memcpy(copy, bytes.data(), bytes.size());
    return copy;
}

bool isOfFloats(const KVRPixelImage& image) { return image.GetFloatingPixelsToRead() != nullptr; }

}  // namespace

bool isOnInteractiveThread(const char* traceName, const char* file, int line) {
    if (KVRIsInteractiveThread()) return true;
    if (const auto trace = ZWTSysTraceCreate(traceName))
        trace->Error(file, line, "expected the interactive thread, found another one");
    return false;
}

ProcessorTexture::ProcessorTexture(std::vector<Surface> surfaces, unsigned faces, unsigned levels,
                                   IVisTextureFormat::Type format)
    : m_surfaces(std::move(surfaces)), m_faces(faces), m_levels(levels), m_format(format) {
    if (m_surfaces.size() == m_faces) {  // one level to a face: make room for the others
        std::vector<Surface> all(std::size_t{m_faces} * m_levels);
        for (std::size_t face = 0; face < m_faces; ++face)
            all[face * m_levels] = std::move(m_surfaces[face]);
        m_surfaces = std::move(all);
    }
}

IVisTexture::Description ProcessorTexture::GetDescription() const {
    Description description;
    sizeOf(*m_surfaces.front().Get(), description.width, description.height);
    description.levels = m_levels;
    description.faces = m_faces;
    return description;
}

ProcessorTexture::Surface& ProcessorTexture::surfaceAt(unsigned face, unsigned level) const {
    return m_surfaces[std::size_t{face} * m_levels + level];
}

/// Null for those that there are not, and without memory.
const KVRPixelImage* ProcessorTexture::surface(unsigned face, unsigned level) const {
    if (face >= m_faces || level >= m_levels) return nullptr;
    for (unsigned next = 1; next <= level; ++next) {
        Surface& made = surfaceAt(face, next);
        if (!made) made = halved(*surfaceAt(face, next - 1).Get());
        if (!made) return nullptr;
    }
    return surfaceAt(face, level).Get();
}

unsigned char* ProcessorTexture::ReadPixels(unsigned face, unsigned level) const {
    if (!isOnInteractiveThread("IVisTexture", __FILE__, __LINE__)) return nullptr;
    const KVRPixelImage* const image = surface(face, level);
    if (!image || isOfFloats(*image)) return nullptr;
    return copyOf<unsigned char>(image->GetRawPixels());
}

float* ProcessorTexture::ReadFloatPixels(unsigned face, unsigned level) const {
    if (!isOnInteractiveThread("IVisTexture", __FILE__, __LINE__)) return nullptr;
    const KVRPixelImage* const image = surface(face, level);
    if (!image || !isOfFloats(*image)) return nullptr;
    return copyOf<float>(image->GetRawPixels());
}

}  // namespace rb::visu
