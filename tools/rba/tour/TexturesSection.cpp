#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tools/rba/Context.h"
#include "tools/rba/Images.h"
#include "tools/rba/Interrupt.h"
#include "tools/rba/Paths.h"
#include "tools/rba/Profile.h"
#include "tools/rba/Sheet.h"
#include "tools/rba/Textures.h"
#include "tools/rba/tour/DamagedFiles.h"
#include "tools/rba/tour/Files.h"
#include "tools/rba/tour/ImageFiles.h"
#include "tools/rba/tour/Picture.h"
#include "tools/rba/tour/Timing.h"
#include "tools/rba/tour/Tour.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>
#include <vector>

namespace rb::cli::tour {
namespace {

namespace fs = std::filesystem;
using Image = KVRVar<KVRPixelImage>;

constexpr int kWholeSheet = 1 << 20;  // pixels to a side: never made smaller
constexpr int kLongestSide = 480;     // pixels of another picture: twice those of its frame
constexpr int kSmallPicture = 160;    // pixels; smaller pictures are shown enlarged

/// What there is to say about one texture file; its pixels would be much for some folders.
struct Sample {
    fs::path path;
    std::string name;     // below the folder of samples
    std::string refusal;  // empty for a texture
    int kind = 0;
    const char* description = "";
    const char* className = "";
    const char* formatName = "";
    int width = 0, height = 0, faces = 0, levels = 0;
    double milliseconds = 0;

    bool isDdsCube() const { return faces > 1 && kindOf(path) == "dds"; }
};

std::vector<Sample> findSamples(const TourInput& input) {
    std::vector<Sample> found;
    for (const fs::path& path : textureFiles(input.samples)) {
        Sample& sample = found.emplace_back();
        sample.path = path;
        sample.name = path.lexically_relative(input.samples).generic_string();
    }
    return found;
}

void read(Sample& sample) {
    const std::string path = sample.path.string();
    try {
        const auto [texture, milliseconds] = timed([&] { return Texture::load(path); });
        sample.milliseconds = milliseconds;
        sample.description = texture.description();
        sample.className = texture.className();
        sample.formatName = formatName(texture.image());
        texture.image().GetSize(sample.width, sample.height);
        sample.faces = texture.faces();
        sample.levels = texture.levels();
        sample.kind = measured("KVRRbaImageServices", "CheckDDSFormat", [&] {
            return KVRRbaImageServices::CheckDDSFormat(frameworkPath(path));
        });
    } catch (const Failure& failure) {
        sample.refusal = failure.reason();
    }
}

void writeRow(Html& page, const Sample& sample) {
    page << "<tr><th scope=\"row\"><code>"_html << sample.name << "</code></th>"_html;
    if (!sample.refusal.empty()) {
        page << "<td colspan=\"7\">"_html << sample.refusal << "</td></tr>\n"_html;
        return;
    }
    page << "<td>"_html << sample.description << "<br><code>"_html << sample.className
         << "</code></td><td class=\"number\">"_html << sample.kind
         << "</td><td class=\"number\">"_html << sizeText(sample.width, sample.height)
         << "</td><td class=\"number\">"_html << sample.faces << "</td><td class=\"number\">"_html
         << sample.levels << "</td><td>"_html << sample.formatName
         << "</td><td class=\"number\">"_html << millisecondsText(sample.milliseconds)
         << "</td></tr>\n"_html;
}

void writeTable(Html& page, const std::vector<Sample>& samples) {
    page << R"(<div class="scroll"><table><thead><tr><th scope="col">File</th>
<th scope="col">Texture and its class</th><th scope="col" class="number">Kind</th>
<th scope="col" class="number">Size</th><th scope="col" class="number">Faces</th>
<th scope="col" class="number">Levels</th><th scope="col">Delivered</th>
<th scope="col" class="number">Read in</th></tr></thead><tbody>
)"_html;
    for (const Sample& sample : samples) writeRow(page, sample);
    page << R"(</tbody></table></div>
<p class="dim">The kind is the number that <code>CheckDDSFormat</code> has for a dds file: 1 a picture
with mip-maps, 2 a cube map, 3 a cube map with mip-maps, 0 everything else, ktx2 files among it.</p>
)"_html;
}

void writePicture(Html& page, const Picture& picture, std::string_view alt) {
    page << "<img src=\""_html << picture.dataUri << "\" width=\""_html << picture.width
         << "\" height=\""_html << picture.height << "\" alt=\""_html << alt << "\""_html;
    if (std::max(picture.width, picture.height) < kSmallPicture) page << " class=\"small\""_html;
    page << ">"_html;
}

void writeSheet(const TourInput& input, Html& page, const Sample& sample) {
    const Image sheet = makeSheet(Texture::load(sample.path.string()));
    const Picture picture = makePicture(*sheet.Get(), kWholeSheet, input.scratch);
    page << R"(<h3 class="sub">Faces and levels</h3>
<figure><figcaption><b>)"_html
         << sample.name
         << R"(</b>, texel by texel. A face a row, in the order of the file, seen from
inside the cube and with its top up; a level a column, each half as wide and high as the one before.
Made by <code>rba image dds --sheet</code>.</figcaption><div class="scroll sheet">)"_html;
    writePicture(page, picture, "All faces and levels of " + sample.name);
    page << "</div></figure>\n"_html;
}

void writeFact(Html& page, std::string_view term, std::string_view value) {
    page << "<div><dt>"_html << term << "</dt><dd>"_html << value << "</dd></div>"_html;
}

struct Ball {
    std::string title;
    std::string source;  // what it was made from
    std::string faces;   // which faces are the arguments F1 to F6
    Image image;
    double milliseconds = 0;
};

void writeBall(const TourInput& input, Html& page, const Ball& ball) {
    const Picture picture = makePicture(*ball.image.Get(), kLongestSide, input.scratch);
    page << R"(<article class="card"><div class="frame alpha">)"_html;
    writePicture(page, picture, "Mirror ball: " + ball.title);
    page << "</div><h3>"_html << ball.title << "</h3><dl>"_html;
    writeFact(page, "From", ball.source);
    writeFact(page, "F1 to F6", ball.faces);
    writeFact(page, "Size", sizeText(picture.width, picture.height) + " px");
    writeFact(page, "Made in", millisecondsText(ball.milliseconds));
    page << "</dl></article>\n"_html;
}

Ball ballOfFile(const Sample& sample) {
    const bool hasLevels = sample.levels > 1;
    Ball ball{sample.name,
              hasLevels ? "level 1 of the faces" : "the faces",
              hasLevels ? "+Y −Y +X −X −Z +Z" : "+Y −Y −Z +Z +X −X",
              {},
              0};
    std::tie(ball.image, ball.milliseconds) =
        timed([&] { return loadImage(sample.path.string()); });
    return ball;
}

/// The faces as pictures, in the order in which they fit together in the ball.
Ball ballOfFaces(const Sample& sample) {
    Ball ball{"Six pictures", "level 0 of the faces of " + sample.name, "−Y +Y +X −X −Z +Z", {}, 0};
    const Texture texture = Texture::load(sample.path.string());
    std::array<Image, 6> faces;
    std::ranges::transform(std::array{3, 2, 0, 1, 5, 4}, faces.begin(),
                           [&](int face) { return texture.surface(face, 0); });
    std::tie(ball.image, ball.milliseconds) = timed([&] { return mirrorBallOf(faces); });
    if (!ball.image) throw Failure(sample.name, "expected a mirror ball, found none");
    return ball;
}

void writeBalls(const TourInput& input, Html& page, const std::vector<Sample>& samples,
                const Sample* pictures) {
    page << R"(<h3 class="sub">Mirror balls</h3>
<p>Of a cube map in a dds file <code>CreatePixelImageFromFullPath</code> makes the picture of a
mirroring ball in the middle of the cube. It shows what lies behind the eye, F6, in its middle; F2
above, F1 below, F4 to the left, F3 to the right; and F5, behind the ball, along its rim.</p>
<p>The two kinds of cubes hand their faces over in different orders, kept for compatibility: a cube
without mip-maps shows −X in the middle, one with mip-maps +Z. In both the sky, +Y, lies below and
the floor above. Whoever hands over six pictures chooses the order: with the floor as F1 and the sky
as F2 the ball stands upright.</p>
<div class="cards">
)"_html;
    for (const Sample& sample : samples) {
        InterruptGuard::check();
        if (sample.isDdsCube()) writeBall(input, page, ballOfFile(sample));
    }
    if (pictures) writeBall(input, page, ballOfFaces(*pictures));
    page << "</div>\n"_html;
}

/// The first of the samples for which @p wanted says yes; null when there is none.
template <class Wanted>
const Sample* firstOf(const std::vector<Sample>& samples, Wanted wanted) {
    const auto found = std::ranges::find_if(samples, wanted);
    return found == samples.end() ? nullptr : &*found;
}

}  // namespace

void writeTexturesSection(const TourInput& input, Html& page) {
    std::vector<Sample> samples = findSamples(input);
    page << R"(<p class="lead">Texture files hold more than one picture: the same one at smaller and
smaller sizes (levels, or mip-maps), the six sides of a cube (faces), or both.
<code>CreateTextureFromDDSFile</code> and <code>CreateTextureFromKTX2File</code> deliver them all. The
time is the fastest of three readings.</p>
)"_html;
    if (samples.empty()) {
        page << "<p>There are no dds or ktx2 files among the samples.</p>\n"_html;
        return;
    }
    Progress progress(input.quiet, samples.size());
    for (Sample& sample : samples) {
        InterruptGuard::check();
        progress.step(sample.path.filename().string());
        read(sample);
    }
    writeTable(page, samples);

    const Sample* const cube = firstOf(
        samples, [](const Sample& sample) { return sample.faces > 1 && sample.levels > 1; });
    if (cube) writeSheet(input, page, *cube);
    if (cube || firstOf(samples, &Sample::isDdsCube)) writeBalls(input, page, samples, cube);

    std::vector<fs::path> paths;
    for (const Sample& sample : samples)
        if (sample.refusal.empty()) paths.push_back(sample.path);
    writeDamagedFiles(input, paths, page);
}

}  // namespace rb::cli::tour
