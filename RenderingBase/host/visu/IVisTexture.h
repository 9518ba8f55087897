#pragma once

/// @file  Textures of the visualisation: what is drawn with, as apart from an image, which is
/// computed with.
///
///     IVisTexturePtr texture = VisTextureFactory::CreateTextureFromFile("sky.dds", true, true, 0);
///     if (texture == IVisTexturePtr::kNullPtr) return;
///     const IVisTexture::Description size = texture->GetDescription();

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/modeler/KVRClass.h"
#include "RenderingBase/host/modeler/KVRVar.h"
#include "RenderingBase/host/visu/IVisTextureFormat.h"

/// A texture: pictures of one format by face and level, which never change.
///
/// Levels and faces are those of image textures: level 0 is the full size, each further one half
/// of it, rounded down, 1 at least; a cube has the faces +X -X +Y -Y +Z -Z, all else face 0.
/// Threads: handles may be copied and dropped, size and format asked anywhere; texels are read on
/// the interactive thread. Lifetime: counted.
class KVR_EXPORT IVisTexture : public KVRClass<"IVisTexture"> {
public:
    struct Description {
        unsigned width = 0, height = 0;  ///< Texels of level 0.
        unsigned levels = 0;             ///< Of each face, level 0 included.
        unsigned faces = 0;              ///< 1, or 6 of a cube.
    };

    virtual Description GetDescription() const = 0;
    virtual IVisTextureFormat::Type GetFormat() const = 0;

    /// Reads texels back: rows top first, no padding, channels as the format has them.
    /// @return  A new block, the caller's, to be freed with `delete[]`; null for a face or level
    ///          that there is not, without memory, on another thread than the interactive one (with
    ///          an error in the host trace "IVisTexture"), and for formats of floats. A level that
    ///          is not in the file is filtered from the one before when it is first read, if no
    ///          side of that one is longer than `KVRPixelImage::kLongestFilteredSide`.
    virtual unsigned char* ReadPixels(unsigned face, unsigned level) const = 0;
    /// The same for formats of floats (`L_f`, `RGB_f`, `RGBA_f`); null for all others.
    virtual float* ReadFloatPixels(unsigned face, unsigned level) const = 0;
};

/// A counted handle of a texture, as every `KVRVar`.
class KVR_EXPORT IVisTexturePtr : public KVRVar<IVisTexture> {
public:
    static const IVisTexturePtr kNullPtr;  ///< No texture.

    using KVRVar::KVRVar;
    /// Takes over a reference that the caller holds.
    static IVisTexturePtr Adopt(IVisTexture* texture);
};
