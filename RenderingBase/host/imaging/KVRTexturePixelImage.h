#pragma once

/// @file  Images that are textures: one picture, or several as levels and faces.
///
/// Levels: 0 is the full size, each further one has half the sides of the one before, rounded down,
/// 1 at least. Faces: 0 to 5 are +X -X +Y -Y +Z -Z, the order of the file.
///
/// Example:
///     auto texture = KVRVar<KVRTexturePixelImage>::Adopt(CreateTextureFromDDSFile(path, 1));
///     if (texture && texture->IsA("KVRVizCubicEnvMap")) ...

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRUnicodeString.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/modeler/KVRClass.h"
#include "RenderingBase/host/modeler/KVRVar.h"

#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

/// One picture of a texture: what there is when a file has neither levels nor faces.
/// Threads, lifetime: as `KVRPixelImage`.
class KVR_EXPORT KVRTexturePixelImage : public KVRClass<"KVRTexturePixelImage", KVRPixelImage> {
public:
    using KVRClass::KVRClass;
    KVRTexturePixelImage(int width, int height, KVRPixelImageFormat format,
                         rb::imaging::PixelStorage pixels);

    /// Reads any image file that `KVRPixelImage::CreateFromFileEx` reads, with its resolution and
    /// profile. Its path is @p path.
    /// @param writable  1 when the pixels will be changed. Kept for compatibility: they may be
    ///                  changed whatever it is, and the file is never written back.
    /// @return  A new texture, one reference for the caller; null when the file cannot be read, and
    ///          `KVRLastImageError` tells why.
    static KVRTexturePixelImage* GetImage(const KVRUnicodeString& path, int writable);

    /// The file that the texture stands for; empty when it was not read from one.
    const KVRUnicodeString& GetPath() const { return m_path; }
    void SetPath(const KVRUnicodeString& path) { m_path = path; }

    virtual int GetFaceCount() const { return 1; }   ///< 1, or 6 of a cube.
    virtual int GetLevelCount() const { return 1; }  ///< Of each face, level 0 included.
    /// Any picture of any texture; a texture that is no cube is face 0 itself. One reference for
    /// the caller; null for a face or level that there is not.
    virtual KVRPixelImage* GetSurface(int face, int level);

private:
    KVRUnicodeString m_path;
};

/// A picture with further levels; the object itself is level 0.
class KVR_EXPORT KVRVizTextureWithMipMap
    : public KVRClass<"KVRVizTextureWithMipMap", KVRTexturePixelImage> {
public:
    using Level = KVRVar<KVRPixelImage>;
    /// @param pixels   Of level 0.
    /// @param smaller  The levels from 1 on.
    KVRVizTextureWithMipMap(int width, int height, KVRPixelImageFormat format,
                            rb::imaging::PixelStorage pixels, std::vector<Level> smaller);

    /// Whether there is more than level 0.
    bool HasMipMap() const { return !m_smaller.empty(); }
    /// One reference for the caller; null for a level that there is not.
    KVRPixelImage* GetMipMap(int level);

    int GetLevelCount() const override { return 1 + static_cast<int>(m_smaller.size()); }
    KVRPixelImage* GetSurface(int face, int level) override;

private:
    std::vector<Level> m_smaller;
};

/// A cube of square faces without further levels. Its own pixels are a copy of those of face 0.
class KVR_EXPORT KVRVizCubicEnvMap : public KVRClass<"KVRVizCubicEnvMap", KVRTexturePixelImage> {
public:
    using Face = KVRVar<KVRTexturePixelImage>;
    explicit KVRVizCubicEnvMap(const std::array<Face, 6>& faces);

    /// One reference for the caller; null beyond 5.
    KVRTexturePixelImage* GetFace(int face) const;

    int GetFaceCount() const override { return 6; }
    int GetLevelCount() const override { return m_faces[0]->GetLevelCount(); }
    KVRPixelImage* GetSurface(int face, int level) override;

private:
    std::array<Face, 6> m_faces;
};

/// A cube of square faces with further levels. Its own pixels are a copy of those of face 0 at
/// level 0.
class KVR_EXPORT KVRVizCubicEnvMapWithMipMap
    : public KVRClass<"KVRVizCubicEnvMapWithMipMap", KVRTexturePixelImage> {
public:
    using Face = KVRVar<KVRVizTextureWithMipMap>;
    explicit KVRVizCubicEnvMapWithMipMap(const std::array<Face, 6>& faces);

    /// One reference for the caller; null beyond 5.
    KVRVizTextureWithMipMap* GetFace(int face) const;

    int GetFaceCount() const override { return 6; }
    int GetLevelCount() const override { return m_faces[0]->GetLevelCount(); }
    KVRPixelImage* GetSurface(int face, int level) override;

private:
    std::array<Face, 6> m_faces;
};

/// Reads a DDS file: uncompressed texels with masks, of 8 and 16 bits, half and float, packed
/// floats, BC1 to BC7; levels and cubes. Of an array the first element.
///
/// Delivered are L, RGB, RGBA (BGR, BGRA, ARGB and ABGR when stored so) of 8 bits, LA for grey or
/// nothing with alpha, half formats for halves, packed floats and BC6H, float formats for floats.
/// Two channels come as RGB with blue 0. Colours are as stored: sRGB ones are not made linear.
/// @param flag  1: decode on the processor. Kept for compatibility.
/// @return  A `KVRTexturePixelImage`, `KVRVizTextureWithMipMap`, `KVRVizCubicEnvMap` or
///          `KVRVizCubicEnvMapWithMipMap` by what the file holds, one reference for the caller;
///          null when it cannot be read, and for volumes, cubes that lack a face, video and ASTC
///          texels; `KVRLastImageError` tells why.
KVR_EXPORT KVRTexturePixelImage* CreateTextureFromDDSFile(const KVRUnicodeString& path, int flag);

/// The same for a KTX file of version 2: uncompressed texels and BC1 to BC7, in it none, zstd or
/// zlib compression. Basis Universal texels are refused.
KVR_EXPORT KVRTexturePixelImage* CreateTextureFromKTX2File(const KVRUnicodeString& path, int flag);

/// The same for a file of either format, told apart by their first bytes.
KVR_EXPORT KVRTexturePixelImage* CreateTextureFromFile(const KVRUnicodeString& path, int flag);

/// Reads a texture file as CreateTextureFromFile does, and any other file as
/// `KVRPixelImage::CreateFromFile` does. The result of a texture file is a `KVRTexturePixelImage`.
KVR_EXPORT KVRPixelImage* CreateTextureOrImageFromFile(const KVRUnicodeString& path);

/// "dds" or "ktx2", by the first bytes of the file at @p path; empty for every other file and for
/// one that cannot be read. Leaves `KVRLastImageError` as it was.
KVR_EXPORT std::string_view KVRTextureContainerOf(const KVRUnicodeString& path);

/// The same as CreateTextureFromFile from the bytes of a file; @p name stands for the path.
KVR_EXPORT KVRTexturePixelImage* CreateTextureFromMemory(std::span<const std::byte> file,
                                                         const KVRUnicodeString& name);
