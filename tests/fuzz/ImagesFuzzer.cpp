// Any bytes as an image file and as a texture file: all formats of the loaders, those of later days
// included.
//
// The formats are found by the loaders themselves, from the first bytes; the name ends in ".tga" so
// that a format that goes by its extension is tried as well. Every input is read twice, with
// different values in fresh memory: a pixel of a small picture that nobody wrote, or that depends
// on anything but the file, comes out differently.

#include "RenderingBase/host/imaging/KVRLastImageError.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/imaging/KVRTexturePixelImage.h"

#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sanitizer/allocator_interface.h>
#include <span>
#include <vector>

namespace {

using Bytes = std::span<const std::byte>;
using Image = KVRVar<KVRPixelImage>;
/// What a file delivers; nothing when it is refused.
using Images = std::vector<Image>;

constexpr std::uint64_t kMostPixels = std::uint64_t{1} << 20;
constexpr const char* kMostPixelsText = "1048576";
constexpr const char* kName = "fuzz.tga";

/// Ends the run when what is promised does not hold; the fuzzer keeps the input.
void promise(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "broken promise: %s\n", what);
    std::abort();
}

/// What fresh memory holds.
std::atomic<int> s_fill{0};

void onMalloc(const volatile void* memory, std::size_t bytes) {
    // Larger blocks may be known to be zero by whoever asked for them (calloc).
    constexpr std::size_t kMostFilled = 64 * 1024;
    if (memory && bytes <= kMostFilled) std::memset(const_cast<void*>(memory), s_fill, bytes);
}

void onFree(const volatile void*) {}

void checkRefusal() {
    const KVRImageError& error = KVRLastImageError();
    promise(error.file == KVRUnicodeString(kName), "a refusal names the file");
    promise(!error.expected.empty(), "a refusal says what was expected");
    promise(!error.found.empty(), "a refusal says what was found");
}

void checkImage(const Image& image) {
    int width = 0, height = 0;
    image->GetSize(width, height);
    promise(width >= 1 && height >= 1, "sides are 1 or more");
    const auto pixels = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
    promise(pixels <= kMostPixels, "the limit of pixels holds");
    const auto& layout = rb::imaging::layoutOf(image->GetFormat());
    promise(layout.channels >= 1, "an image has a format");
    promise(
        image->GetRawPixels().size() == pixels * static_cast<std::uint64_t>(layout.bytesPerPixel()),
        "all pixels are there");
    const int unit = image->GetResolutionUnit();
    promise(unit >= 1 && unit <= 3, "a unit of resolution is none, inch or centimetre");
    for (const double resolution : {image->GetXResolution(), image->GetYResolution()})
        promise(std::isfinite(resolution) && resolution >= 0, "a resolution is a number");
}

/// What every host does with a picture that brings a profile along.
void useProfile(const Image& image) {
    const auto profile = KVRVar<KVRMMColorProfile>::Adopt(image->GetColorProfile());
    if (!profile) return;
    static_cast<void>(profile->getProfileName());
    static_cast<void>(profile->getProfileModel());
    static_cast<void>(image->ApplyColorProfile(nullptr, 0));
}

Images readImage(Bytes file) {
    const Image image = Image::Adopt(KVRPixelImage::CreateFromMemory(file, kName));
    return image ? Images{image} : Images{};
}

/// Adds all levels of a texture or of a face.
void addLevels(const KVRVar<KVRTexturePixelImage>& texture, Images& images) {
    auto* const levels = dynamic_cast<KVRVizTextureWithMipMap*>(texture.Get());
    if (!levels) return images.push_back(texture);
    for (int level = 0; Image image = Image::Adopt(levels->GetMipMap(level)); ++level)
        images.push_back(image);
}

template <class Cube>
bool addFaces(KVRTexturePixelImage* texture, Images& images) {
    auto* const cube = dynamic_cast<Cube*>(texture);
    if (!cube) return false;
    for (int face = 0; face < 6; ++face) {
        const auto adopted = KVRVar<KVRTexturePixelImage>::Adopt(cube->GetFace(face));
        promise(static_cast<bool>(adopted), "a cube has six faces");
        addLevels(adopted, images);
    }
    return true;
}

Images readTexture(Bytes file) {
    Images images;
    const auto texture = KVRVar<KVRTexturePixelImage>::Adopt(CreateTextureFromMemory(file, kName));
    if (texture && !addFaces<KVRVizCubicEnvMap>(texture.Get(), images) &&
        !addFaces<KVRVizCubicEnvMapWithMipMap>(texture.Get(), images))
        addLevels(texture, images);
    promise(static_cast<bool>(texture) == !images.empty(), "a texture has pictures");
    return images;
}

/// Whether pixels may hold what was in a codec library's own memory: OpenEXR takes a block that
/// unpacks to less than its rows, or to nothing, for a whole one.
bool showsMemoryOfCodec(Bytes file) {
    constexpr unsigned char kExrMagic[] = {0x76, 0x2F, 0x31, 0x01};
    return file.size() >= sizeof kExrMagic &&
           std::memcmp(file.data(), kExrMagic, sizeof kExrMagic) == 0;
}

/// All ways by which the bytes of strangers come in.
constexpr Images (*kEntries[])(Bytes) = {readImage, readTexture};

void tryEntry(Images (*read)(Bytes), Bytes file) {
    s_fill = 0x00;
    const Images first = read(file);
    s_fill = 0xA5;
    const Images second = read(file);
    promise(first.size() == second.size(), "a file is read or refused whatever is in memory");
    if (first.empty()) return checkRefusal();
    promise(KVRLastImageError().found.empty(), "a delivered image leaves no error");
    for (std::size_t i = 0; i < first.size(); ++i) {
        checkImage(first[i]);
        const Bytes one = first[i]->GetRawPixels(), other = second[i]->GetRawPixels();
        promise(one.size() == other.size(), "a picture has one size");
        promise(showsMemoryOfCodec(file) || std::memcmp(one.data(), other.data(), one.size()) == 0,
                "every pixel comes from the file");
        useProfile(first[i]);
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Small pictures keep the runs fast; what is out of proportion shows against the fuzzer's own
    // limits of memory and time.
    setenv("KVRImagePixelLimit", kMostPixelsText, 1);
    promise(__sanitizer_install_malloc_and_free_hooks(onMalloc, onFree) > 0,
            "the sanitizer calls back");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    for (const auto entry : kEntries) tryEntry(entry, std::as_bytes(std::span(data, size)));
    return 0;
}
