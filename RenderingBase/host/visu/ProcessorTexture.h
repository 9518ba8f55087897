#pragma once

/// @file  Textures whose texels lie in the memory of the processor. Private to host/visu.

#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/visu/IVisTexture.h"

#include <span>
#include <vector>

namespace rb::visu {

/// Writes an error to the host trace of that name and gives false on another thread than the
/// interactive one.
bool isOnInteractiveThread(const char* traceName, const char* file, int line);

class ProcessorTexture : public KVRClass<"VisProcessorTexture", IVisTexture> {
public:
    using Surface = KVRVar<KVRPixelImage>;

    /// @param surfaces  Not empty, of one format, which nobody else changes: face by face, of each
    ///                  all levels that there are.
    /// @param faces     1 or 6.
    /// @param levels    As many as there are surfaces to a face; a texture of one may have more,
    ///                  which are made when they are read.
    ProcessorTexture(std::vector<Surface> surfaces, unsigned faces, unsigned levels,
                     IVisTextureFormat::Type format);

    Description GetDescription() const override;
    IVisTextureFormat::Type GetFormat() const override { return m_format; }
    unsigned char* ReadPixels(unsigned face, unsigned level) const override;
    float* ReadFloatPixels(unsigned face, unsigned level) const override;

private:
    Surface& surfaceAt(unsigned face, unsigned level) const;
    const KVRPixelImage* surface(unsigned face, unsigned level) const;

    mutable std::vector<Surface> m_surfaces;  // a place for each; empty those not made yet
    unsigned m_faces, m_levels;
    IVisTextureFormat::Type m_format;
};

}  // namespace rb::visu
