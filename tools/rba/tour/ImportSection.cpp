#include "RenderingBase/host/imaging/KVRMMRasterAdministrator.h"
#include "RenderingBase/public/KVRRbaTextureLoader.h"
#include "tools/rba/Context.h"
#include "tools/rba/Images.h"
#include "tools/rba/Interrupt.h"
#include "tools/rba/Paths.h"
#include "tools/rba/Profile.h"
#include "tools/rba/tour/Files.h"
#include "tools/rba/tour/ImageFiles.h"
#include "tools/rba/tour/Picture.h"
#include "tools/rba/tour/Timing.h"
#include "tools/rba/tour/Tour.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace rb::cli::tour {
namespace {

namespace fs = std::filesystem;
using Image = KVRVar<KVRPixelImage>;

constexpr const char* kPreferred = "images/studio.bmp";
constexpr unsigned kLongestSide = 480;  // texels of the largest level that is shown

/// What became of one sample file; its pixels would be much for some folders.
struct Import {
    fs::path path;
    std::string name;     // below the folder of samples
    std::string refusal;  // empty when it was imported
    const char* formatName = "";
    bool isDisplayable = false;
    IVisTexture::Description texture;
    std::string stated;  // the resolution in the header; empty without one
    double dpi = 0;
    double milliseconds = 0;
};

std::string statedResolution(const std::string& path) {
    KVRMMImageProp prop;
    KVRMMImageSize size;
    if (!readHeader(path, prop, size) || size.GetXResolution() == 0) return {};
    constexpr const char* kUnits[] = {"", "", " per inch", " per cm"};
    return numberText(static_cast<float>(size.GetXResolution())) + kUnits[size.GetResolutionUnit()];
}

TextureResult importTexture(const fs::path& path) {
    TextureResult result;
    measured("KVRRbaTextureLoader", "ImportTexture", [&] {
        return KVRRbaTextureLoader::GetInstance().ImportTexture(frameworkPath(path.string()),
                                                                result);
    });
    return result;
}

void read(Import& import) {
    const auto [result, milliseconds] = timed([&] { return importTexture(import.path); });
    import.milliseconds = milliseconds;
    const Image image = Image::Adopt(result.GetPixelImage());
    if (!image) {
        import.refusal = imageErrorReason();
        return;
    }
    import.formatName = formatName(*image.Get());
    import.isDisplayable = isDisplayable(*image.Get());
    import.dpi = result.GetMetadata().xResolution;
    import.stated = statedResolution(import.path.string());
    if (const IVisTexturePtr texture = result.CreateVisuTexture())
        import.texture = texture->GetDescription();
}

/// Images and texture files, in the order of their names.
std::vector<Import> importedFiles(const fs::path& folder) {
    std::vector<fs::path> files = imageFiles(folder);
    const std::vector<fs::path> textures = textureFiles(folder);
    files.insert(files.end(), textures.begin(), textures.end());
    std::ranges::sort(files);
    std::vector<Import> imports;
    for (const fs::path& path : files) {
        Import& import = imports.emplace_back();
        import.path = path;
        import.name = path.lexically_relative(folder).generic_string();
    }
    return imports;
}

void writeRow(Html& page, const Import& import) {
    page << "<tr><th scope=\"row\"><code>"_html << import.name << "</code></th>"_html;
    if (!import.refusal.empty()) {
        page << "<td colspan=\"6\">"_html << import.refusal << "</td></tr>\n"_html;
        return;
    }
    const IVisTexture::Description& texture = import.texture;
    page << "<td>"_html << import.formatName << "</td><td class=\"number\">"_html
         << sizeText(texture.width, texture.height) << "</td><td class=\"number\">"_html
         << texture.faces << " × "_html << texture.levels << "</td><td class=\"number\">"_html
         << (import.stated.empty() ? "–" : import.stated) << "</td><td class=\"number\">"_html
         << (import.dpi == KVRRbaTextureLoader::kDefaultResolution ? "assumed " : "")
         << numberText(import.dpi, 4) << "</td><td class=\"number\">"_html
         << millisecondsText(import.milliseconds) << "</td></tr>\n"_html;
}

void writeTable(Html& page, const std::vector<Import>& imports) {
    page << R"(<div class="scroll"><table><thead><tr><th scope="col">File</th>
<th scope="col">Pixels</th><th scope="col" class="number">Size</th>
<th scope="col" class="number">Faces × levels</th><th scope="col" class="number">Header</th>
<th scope="col" class="number">dpi</th><th scope="col" class="number">Imported in</th></tr></thead><tbody>
)"_html;
    for (const Import& import : imports) writeRow(page, import);
    page << "</tbody></table></div>\n"_html;
}

/// A level of the first face as an image; null for texels that are not of 8 bits.
Image levelOf(const IVisTexture& texture, KVRPixelImageFormat format, unsigned level) {
    const IVisTexture::Description size = texture.GetDescription();
    const auto side = [level](unsigned full) {
        return static_cast<int>(std::max(1U, full >> level));
    };
    std::unique_ptr<unsigned char[]> texels(texture.ReadPixels(0, level));
    if (!texels) return {};
    return Image::Adopt(new KVRPixelImage(side(size.width), side(size.height), format,
                                          texels.release(), KVRPixelDealloc::Adopted));
}

/// The picture whose levels are shown; null when there is none.
const Import* pictureOf(const std::vector<Import>& imports) {
    const auto preferred = std::ranges::find(imports, kPreferred, &Import::name);
    if (preferred != imports.end() && preferred->isDisplayable) return &*preferred;
    const auto found = std::ranges::find_if(imports, &Import::isDisplayable);
    return found == imports.end() ? nullptr : &*found;
}

void writeLevels(const TourInput& input, Html& page, const Import& import) {
    const TextureResult result = importTexture(import.path);
    const Image image = Image::Adopt(result.GetPixelImage());
    const IVisTexturePtr texture = result.CreateVisuTexture();
    page
        << R"(<h3 class="sub">Levels to draw with</h3>
<figure><figcaption><b>)"_html
        << import.name
        << R"(</b>, read back from its texture, texel by texel; levels of more than 480 texels are left out.</figcaption>
<div class="levels">)"_html;
    const IVisTexture::Description size = texture->GetDescription();
    unsigned level = 0;
    while (std::max(size.width, size.height) >> level > kLongestSide) ++level;
    for (; level < size.levels; ++level) {
        const Image texels = levelOf(*texture.Get(), image->GetFormat(), level);
        if (!texels) break;
        const Picture picture = makeExactPicture(*texels.Get(), input.scratch);
        page << "<img class=\""_html << (picture.hasAlpha ? "alpha" : "opaque") << "\" src=\""_html
             << picture.dataUri << "\" width=\""_html << picture.width << "\" height=\""_html
             << picture.height << "\" alt=\"Level "_html << level << "\">"_html;
    }
    page << "</div></figure>\n"_html;
}

}  // namespace

void writeImportSection(const TourInput& input, Html& page) {
    std::vector<Import> imports = importedFiles(input.samples);
    page
        << R"(<p class="lead">What a renderer gets. <code>KVRRbaTextureLoader</code> takes pictures and
texture files alike: an image to compute with, in the pixels of the file, its resolution in dots to the
inch, and a texture to draw with, whose missing levels are made. The time is the fastest of three imports,
without the texture of a picture.</p>
)"_html;
    if (imports.empty()) {
        page << "<p>There are no pictures or texture files among the samples.</p>\n"_html;
        return;
    }
    Progress progress(input.quiet, imports.size());
    for (Import& import : imports) {
        InterruptGuard::check();
        progress.step(import.path.filename().string());
        read(import);
    }
    writeTable(page, imports);
    if (const Import* const picture = pictureOf(imports)) writeLevels(input, page, *picture);
}

}  // namespace rb::cli::tour
