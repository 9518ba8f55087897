// DDS textures: which kind a file is of, and the one picture that it is loaded as.

#include "RenderingBase/KVRRbaModel.m/src/DdsImage.h"
#include "RenderingBase/host/imaging/KVRLastImageError.h"
#include "RenderingBase/host/imaging/KVRTexturePixelImage.h"
#include "RenderingBase/host/modeler/KVRVar.h"
#include "RenderingBase/public/KVRRbaImageServices.h"

#include <array>
#include <cstring>
#include <string_view>

namespace {

using Image = KVRVar<KVRPixelImage>;
using Texture = KVRVar<KVRTexturePixelImage>;

constexpr int kDecodeOnProcessor = 1;

// What CheckDDSFormat answers.
constexpr int kOther = 0;
constexpr int kWithMipMaps = 1;
constexpr int kCube = 2;
constexpr int kCubeWithMipMaps = 3;

Texture readTexture(const KVRUnicodeString& path) {
    return Texture::Adopt(CreateTextureFromDDSFile(path, kDecodeOnProcessor));
}

int kindOf(const KVRTexturePixelImage& texture) {
    if (texture.IsA() == std::string_view("KVRVizTextureWithMipMap")) return kWithMipMaps;
    if (texture.IsA() == std::string_view("KVRVizCubicEnvMap")) return kCube;
    if (texture.IsA() == std::string_view("KVRVizCubicEnvMapWithMipMap")) return kCubeWithMipMaps;
    return kOther;
}

KVRPixelImage* duplicate(const KVRPixelImage& image) { return image.Duplicate(image.GetFormat()); }

KVRPixelImage* loadWithMipMaps(KVRVizTextureWithMipMap& texture) {
    const auto half = Image::Adopt(texture.HasMipMap() ? texture.GetMipMap(1) : nullptr);
    return half ? duplicate(*half.Get()) : duplicate(texture);
}

KVRPixelImage* mirrorBall(const std::array<Image, 6>& faces) {
    return KVRRbaImageServices::BuildPixelImageFromAllFaces(faces[0].Get(), faces[1].Get(),
                                                            faces[2].Get(), faces[3].Get(),
                                                            faces[4].Get(), faces[5].Get());
}

KVRPixelImage* loadCube(const KVRVizCubicEnvMap& cube) {
    const auto face = [&](int index) { return Image::Adopt(cube.GetFace(index)); };
    return mirrorBall({face(2), face(3), face(5), face(4), face(0), face(1)});
}

/// Not the order of a cube without mip-maps: what lies left and right there lies before and behind
/// here. Kept for compatibility.
KVRPixelImage* loadCubeWithMipMaps(const KVRVizCubicEnvMapWithMipMap& cube) {
    const auto half = [&](int index) -> Image {
        const auto face = KVRVar<KVRVizTextureWithMipMap>::Adopt(cube.GetFace(index));
        return Image::Adopt(face && face->HasMipMap() ? face->GetMipMap(1) : nullptr);
    };
    return mirrorBall({half(2), half(3), half(0), half(1), half(5), half(4)});
}

KVRPixelImage* pictureOf(KVRTexturePixelImage& texture) {
    switch (kindOf(texture)) {
        case kWithMipMaps:
            return loadWithMipMaps(dynamic_cast<KVRVizTextureWithMipMap&>(texture));
        case kCube:
            return loadCube(dynamic_cast<KVRVizCubicEnvMap&>(texture));
        case kCubeWithMipMaps:
            return loadCubeWithMipMaps(dynamic_cast<KVRVizCubicEnvMapWithMipMap&>(texture));
        default:
            return duplicate(texture);
    }
}

}  // namespace

int KVRRbaImageServices::CheckDDSFormat(const KVRUnicodeString& path) {
    if (std::strcmp(ReadExtension(path).CastToCharPtr(), "dds") != 0) return kOther;
    const Texture texture = readTexture(path);
    return texture ? kindOf(*texture.Get()) : kOther;
}

KVRPixelImage* rb::loadDdsImage(const KVRUnicodeString& path) {
    const Texture texture = readTexture(path);
    if (!texture) return nullptr;
    KVRPixelImage* const picture = pictureOf(*texture.Get());
    // The texture has all that a picture needs: only memory can be missing.
    if (!picture)
        KVRSetLastImageError(path, "enough memory for a picture of the texture", "none left");
    return picture;
}
