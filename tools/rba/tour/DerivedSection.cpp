#include "RenderingBase/host/imaging/KVRMMRasterAdministrator.h"
#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tools/rba/Context.h"
#include "tools/rba/Images.h"
#include "tools/rba/Interrupt.h"
#include "tools/rba/Paths.h"
#include "tools/rba/Profile.h"
#include "tools/rba/tour/ImageFiles.h"
#include "tools/rba/tour/Picture.h"
#include "tools/rba/tour/Tour.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>
#include <vector>

namespace rb::cli::tour {
namespace {

namespace fs = std::filesystem;
using Format = KVRPixelImageFormat;
using Image = KVRVar<KVRPixelImage>;
using Services = KVRRbaImageServices;

constexpr int kIconSize = 128;

/// One operation and the rule that it follows.
struct Derivation {
    const char* title;
    const char* service;
    const char* command;  // of `rba image`
    const char* rule;
    KVRPixelImage* (*derive)(KVRPixelImage* source);
};

KVRPixelImage* iconOf(KVRPixelImage* source) {
    KVRPixelImage* icon = nullptr;
    Services::ComputeIconImage(source, kIconSize, icon);
    return icon;
}

constexpr Derivation kOfColors[] = {
    {"Grey scale", "ComputeGreyScaleImage", "grey",
     "HSL lightness: half way between the greatest and the smallest colour of a pixel.",
     [](KVRPixelImage* source) { return Services::ComputeGreyScaleImage(source); }},
    {"Black and white", "ComputeMonochromaImage", "mono",
     "White where red, green and blue add up to 383 or more.",
     [](KVRPixelImage* source) { return Services::ComputeMonochromaImage(source); }},
    {"Icon of 128 px", "ComputeIconImage", "icon --size 128",
     "As large as it goes into a square, in the middle of the grey 125.", iconOf},
};
constexpr Derivation kOfAlpha[] = {
    {"Negative", "ComputeNegativeImage", "negative", "255 minus each colour; alpha stays.",
     [](KVRPixelImage* source) { return Services::ComputeNegativeImage(source); }},
    {"Inverted alpha", "ComputeAlphaInvertImage", "alpha-invert",
     "255 minus alpha; colours stay, also those that could not be seen.",
     [](KVRPixelImage* source) { return Services::ComputeAlphaInvertImage(source); }},
    {"Mask", "GenerateMaskFromAlpha", "mask",
     "255 minus alpha as an opaque grey: white is what lets through.",
     [](KVRPixelImage* source) { return Services::GenerateMaskFromAlpha(source); }},
};
constexpr Derivation kOfHeights[] = {
    {"Normal map", "GenerateBumpMap", "bump",
     "A Sobel filter takes brightness for height; what is level is (127, 127, 255).",
     Services::GenerateBumpMap},
};
constexpr Derivation kOfFloats[] = {
    {"Displayable", "ConvertFloatTextureToRGBA", "convert",
     "Cut at 0 and 1, then brightened: the darkest by three, white not at all.",
     Services::ConvertFloatTextureToRGBA},
};
constexpr Derivation kOfHalves[] = {
    {"Displayable", "ConvertHalfFloatTextureToRGBA", "convert",
     "Cut at 0 and 1; then each colour times 0.85 s² − 0.1083 s³ − 2.2417 s + 3, where s is the "
     "sum "
     "of the three.",
     Services::ConvertHalfFloatTextureToRGBA},
};

/// Operations on one source, which stands before them.
struct Group {
    const char* kind;       // what the source has to be
    const char* preferred;  // the sample that shows it best
    std::array<Format, 3> formats;
    int width, height;       // pixels of it that are shown, from its middle
    const char* groupStyle;  // "full" for a row of its own
    const char* stepsStyle;
    std::span<const Derivation> derivations;
};

constexpr Group kGroups[] = {
    {"colours",
     "images/studio.png",
     {Format::RGB, Format::RGB, Format::RGB},
     256,
     192,
     "full",
     "steps",
     kOfColors},
    {"transparency",
     "images/alpha.png",
     {Format::RGBA, Format::RGBA, Format::RGBA},
     256,
     256,
     "full",
     "steps",
     kOfAlpha},
    {"grey pixels",
     "images/grey.tif",
     {Format::L, Format::L, Format::L},
     256,
     256,
     "",
     "steps",
     kOfHeights},
    {"float pixels",
     "images/depth-float.exr",
     {Format::L_f, Format::RGB_f, Format::RGBA_f},
     256,
     256,
     "",
     "steps",
     kOfFloats},
    {"half pixels",
     "images/sky-half.exr",
     {Format::L_f16, Format::RGB_f16, Format::RGBA_f16},
     512,
     256,
     "full",
     "steps wide",
     kOfHalves},
};

/// What a group begins with.
struct Source {
    std::string name;  // below the folder of samples
    Image image;
    bool isCut = false;  // whether it is the middle of the sample
};

bool fits(const Group& group, const fs::path& path) {
    KVRMMImageProp prop;
    KVRMMImageSize size;
    return readHeader(path.string(), prop, size) &&
           std::ranges::count(group.formats, prop.format) > 0;
}

/// The middle of an image when it is larger than @p width x @p height; else itself.
Image middleOf(const Image& image, int width, int height) {
    int fullWidth = 0, fullHeight = 0;
    image->GetSize(fullWidth, fullHeight);
    width = std::min(width, fullWidth);
    height = std::min(height, fullHeight);
    if (width == fullWidth && height == fullHeight) return image;
    Image middle = Image::Adopt(new KVRPixelImage(width, height, image->GetFormat()));
    middle->InsertPixelImage(image.Get(), (width - fullWidth) / 2, (height - fullHeight) / 2);
    return middle;
}

/// The preferred sample, else the first one that can be read; without an image when there is none.
Source sourceOf(const Group& group, const TourInput& input, std::vector<fs::path> paths) {
    std::stable_partition(paths.begin(), paths.end(), [&](const fs::path& path) {
        return path == input.samples / group.preferred;
    });
    for (const fs::path& path : paths) {
        InterruptGuard::check();
        if (!fits(group, path)) continue;
        try {
            const Image whole = loadImage(path.string());
            Source source;
            source.name = path.lexically_relative(input.samples).generic_string();
            source.image = middleOf(whole, group.width, group.height);
            source.isCut = source.image.Get() != whole.Get();
            return source;
        } catch (const Failure&) {
            continue;  // it is among the refused ones of the section before
        }
    }
    return {};
}

void writeFrame(Html& page, const Picture& picture, std::string_view alt) {
    page << R"(<div class="frame real"><img class=")"_html
         << (picture.hasAlpha ? "alpha" : "opaque") << "\" src=\""_html << picture.dataUri
         << "\" width=\""_html << picture.width << "\" height=\""_html << picture.height
         << "\" alt=\""_html << alt << "\"></div>"_html;
}

void writeSource(const TourInput& input, Html& page, const Source& source) {
    const Picture picture = makeExactPicture(*source.image.Get(), input.scratch);
    page << R"(<article class="card step source">)"_html;
    writeFrame(page, picture, "Source: " + source.name);
    page << "<h3>"_html << source.name << "</h3><p>"_html << (source.isCut ? "the middle " : "")
         << picture.width << " × " << picture.height << " px, " << formatName(*source.image.Get())
         << (picture.clamped ? ", here clamped to 0–1" : "") << "</p></article>\n"_html;
}

void writeStep(const TourInput& input, Html& page, const Source& source,
               const Derivation& derivation) {
    const Image copy = Image::Adopt(new KVRPixelImage(*source.image.Get()));  // some change it
    const Image result = Image::Adopt(measured("KVRRbaImageServices", derivation.service,
                                               [&] { return derivation.derive(copy.Get()); }));
    if (!result) throw Failure(source.name, "expected memory for what is derived, found none");
    page << R"(<article class="card step">)"_html;
    writeFrame(page, makeExactPicture(*result.Get(), input.scratch),
               std::string(derivation.title) + " of " + source.name);
    page << "<h3>"_html << derivation.title << "</h3><p><code>"_html << derivation.service
         << "</code><br><code>rba image "_html << derivation.command << "</code></p><p>"_html
         << derivation.rule << "</p></article>\n"_html;
}

void writeGroup(const TourInput& input, Html& page, const Group& group, const Source& source) {
    page << "<div class=\""_html << group.groupStyle << "\"><div class=\""_html << group.stepsStyle
         << "\">\n"_html;
    writeSource(input, page, source);
    for (const Derivation& derivation : group.derivations)
        writeStep(input, page, source, derivation);
    page << "</div></div>\n"_html;
}

}  // namespace

void writeDerivedSection(const TourInput& input, Html& page) {
    const std::vector<fs::path> paths = imageFiles(input.samples);
    page << R"(<p class="lead">What the services make of an image: a new one each, the source first.
Every pixel of an image is one pixel of the page; the chequers show through where an image is
transparent.</p>
<div class="groups">
)"_html;
    std::string missing;
    for (const Group& group : kGroups) {
        const Source source = sourceOf(group, input, paths);
        if (source.image)
            writeGroup(input, page, group, source);
        else
            missing += (missing.empty() ? "" : ", ") + std::string(group.kind);
    }
    page << "</div>\n"_html;
    if (!missing.empty())
        page << R"(<p class="dim">No sample has )"_html << missing << ".</p>\n"_html;
}

}  // namespace rb::cli::tour
