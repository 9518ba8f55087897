#include "tests/cli/RunRba.h"
#include "tests/cli/TextureFiles.h"
#include "tests/photometry/IesBuilder.h"

#include <algorithm>
#include <cerrno>
#include <regex>
#include <set>
#include <signal.h>
#include <sys/resource.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace rb::test {
namespace {

namespace fs = std::filesystem;

/// The names of entries in a folder.
std::set<std::string> entriesOf(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename());
    return names;
}

class Tour : public testing::Test {
protected:
    Tour() {
        writePicture(m_folder, "samples/images/oak & <ash>.png", 40, 30);
        writePicture(m_folder, "samples/images/glass.png", 8, 8, KVRPixelImageFormat::RGBA, 254);
        m_folder.write("samples/light.hdr", radianceFile(8, 4));
        const std::string whole = readFile(writePicture(m_folder, "whole.png", 64, 64));
        m_folder.write("samples/images/cut.png", whole.substr(0, whole.size() / 2));
        m_folder.write("samples/README.md", "no picture");
    }
    RbaResult run(const Arguments& more = {}) const {
        Arguments arguments = {"tour", m_folder.file("out/tour"), "--samples",
                               m_folder.file("samples")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runRba(arguments);
    }
    std::string page() const { return readFile(pagePath()); }
    std::string pagePath() const { return m_folder.file("out/tour/index.html"); }
    const TempFolder& folder() const { return m_folder; }

private:
    TempFolder m_folder;
};

/// Pictures in the section of derived images: the samples have a picture of colours and one with
/// transparency, of which three are derived each, and one of floats, of which one is.
constexpr int kDerived = 4 + 4 + 2;

/// Levels of the first sample that can be shown, of 8 x 8 texels, in the section of imports.
constexpr int kLevels = 4;

int countOf(const std::string& text, const std::string& what) {
    int count = 0;
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++count;
    return count;
}

TEST_F(Tour, page_has_every_section_and_none_failed) {
    const RbaResult result = run();
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, pagePath() + "\n");
    const std::string html = page();
    for (const char* id : {"images", "derived", "textures", "import", "photometry", "search",
                           "camera", "resources", "half", "profile"}) {
        EXPECT_EQ(countOf(html, std::string("<section id=\"") + id + "\">"), 1);
        EXPECT_EQ(countOf(html, std::string("href=\"#") + id + "\""), 1);
    }
    EXPECT_EQ(countOf(html, "class=\"trouble\""), 0);
    EXPECT_EQ(countOf(html, "version " RB_VERSION), 1);
}

TEST_F(Tour, json_has_path_and_sections) {
    const Json json = run({"--json"}).json();
    EXPECT_EQ(keysOf(json), (std::vector<std::string>{"path", "sections"}));
    EXPECT_EQ(json["path"], pagePath());
    EXPECT_EQ(json["sections"],
              (Json{"Images from file to pixels", "Derived images",
                    "Texture files: faces, levels, mirror ball", "Textures as a renderer gets them",
                    "Photometry", "Where image files are found", "Cameras",
                    "Resources, units, display", "Half floats", "Where the time went"}));
}

TEST_F(Tour, page_needs_no_other_file) {
    run();
    const std::string html = page();
    EXPECT_EQ(countOf(html, "http"), 0);
    EXPECT_EQ(countOf(html, "url("), 0);
    EXPECT_EQ(countOf(html, "@import"), 0);
    EXPECT_EQ(countOf(html, "<script"), 0);
    EXPECT_EQ(countOf(html, "<link"), 0);
    EXPECT_EQ(countOf(html, " src=\""), countOf(html, " src=\"data:image/"));
    EXPECT_EQ(countOf(html, " href=\""), countOf(html, " href=\"#"));
    // Three images are shown, what was derived from them and the levels of one; each with a text
    // for those who do not see it.
    EXPECT_EQ(countOf(html, "<img "), 3 + kDerived + kLevels);
    EXPECT_EQ(countOf(html, " alt=\""), 3 + kDerived + kLevels);
    EXPECT_EQ(countOf(html, " alt=\"The picture in "), 3);
}

TEST_F(Tour, names_are_escaped) {
    run();
    const std::string html = page();
    EXPECT_EQ(countOf(html, "<ash>"), 0);
    EXPECT_GE(countOf(html, "images/oak &amp; &lt;ash&gt;.png"), 2);
}

TEST_F(Tour, damaged_sample_is_shown_with_its_reason) {
    EXPECT_EQ(run().status, 0);
    const std::regex row(
        "<code>images/cut[.]png</code></th><td>[^<]*expected [^<]+, found [^<]+</td>");
    EXPECT_TRUE(std::regex_search(page(), row));
}

TEST_F(Tour, samples_are_damaged_and_refused) {
    run();
    const std::string html = page();
    // Two kinds of files, each damaged in two ways.
    const std::regex row("<td>cut [^<]+</td><td>[^<]*expected [^<]+, found [^<]+</td>");
    EXPECT_EQ(
        std::distance(std::sregex_iterator(html.begin(), html.end(), row), std::sregex_iterator()),
        4);
}

TEST_F(Tour, floating_point_picture_says_that_it_is_clamped) {
    run();
    EXPECT_EQ(countOf(page(), ">clamped to 0–1<"), 1);
}

std::string fromBase64(const std::string& text) {
    static const std::string digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned bits = 0, count = 0;
    for (const char c : text.substr(0, text.find('='))) {
        bits = bits << 6 | static_cast<unsigned>(digits.find(c));
        count += 6;
        if (count < 8) continue;
        count -= 8;
        bytes += static_cast<char>(bits >> count & 0xFF);
    }
    return bytes;
}

/// The picture that a page shows with this text.
PictureFile shown(const TempFolder& folder, const std::string& html, const std::string& alt) {
    const auto end = html.find(" alt=\"" + alt + "\"");
    const std::string before = html.substr(0, std::min(end, html.size()));
    const std::string png = "data:image/png;base64,";
    const auto begin = before.rfind(png);
    if (end == std::string::npos || begin == std::string::npos) return PictureFile("");
    const auto data = begin + png.size();
    return PictureFile(
        folder.write("shown.png", fromBase64(html.substr(data, html.find('"', data) - data))));
}

TEST_F(Tour, derived_images_are_shown_pixel_by_pixel) {
    ASSERT_EQ(run().status, 0);
    const std::string html = page();
    const PictureFile source(folder().file("samples/images/glass.png"));
    const auto negative = shown(folder(), html, "Negative of images/glass.png");
    const auto inverted = shown(folder(), html, "Inverted alpha of images/glass.png");
    const auto mask = shown(folder(), html, "Mask of images/glass.png");
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            const auto [r, g, b, a] = source.at(x, y);
            EXPECT_EQ(negative.at(x, y), (PictureFile::Pixel{255 - r, 255 - g, 255 - b, a}));
            EXPECT_EQ(inverted.at(x, y), (PictureFile::Pixel{r, g, b, 255 - a}));
            EXPECT_EQ(mask.at(x, y), (PictureFile::Pixel{255 - a, 255 - a, 255 - a, 255}));
        }
    // 40 x 30 pixels become 128 x 96, 16 below the upper edge.
    const auto icon = shown(folder(), html, "Icon of 128 px of images/oak &amp; &lt;ash&gt;.png");
    EXPECT_EQ(icon.width(), 128);
    EXPECT_EQ(icon.at(64, 15), (PictureFile::Pixel{125, 125, 125, 255}));
    EXPECT_NE(icon.at(64, 16), (PictureFile::Pixel{125, 125, 125, 255}));
    // (0.5, 1, 2), cut to (0.5, 1, 1) and brightened by 1.0156.
    EXPECT_EQ(shown(folder(), html, "Displayable of light.hdr").at(7, 3),
              (PictureFile::Pixel{129, 255, 255, 255}));
}

TEST_F(Tour, sources_of_derived_images_are_whole_or_the_middle) {
    writePicture(folder(), "samples/images/studio.png", 301, 200);
    ASSERT_EQ(run().status, 0);
    const std::string html = page();
    // The preferred one, although it is not the first.
    EXPECT_EQ(countOf(html, " alt=\"Source: images/oak "), 0);
    const PictureFile whole(folder().file("samples/images/studio.png"));
    const auto middle = shown(folder(), html, "Source: images/studio.png");
    EXPECT_EQ(middle.width(), 256);
    EXPECT_EQ(middle.height(), 192);
    for (const auto& [x, y] : {std::pair(0, 0), {255, 0}, {0, 191}, {255, 191}, {100, 50}})
        EXPECT_EQ(middle.at(x, y), whole.at(x + 22, y + 4)) << x << ", " << y;
    EXPECT_EQ(countOf(html, "<p>the middle 256 × 192 px, RGB</p>"), 1);
    EXPECT_EQ(countOf(html, "<p>8 × 8 px, RGBA</p>"), 1);
    EXPECT_EQ(countOf(html, "<p>8 × 4 px, RGB_f, here clamped to 0–1</p>"), 1);
}

TEST_F(Tour, what_nothing_can_be_derived_from_is_named) {
    EXPECT_EQ(run().status, 0);
    EXPECT_EQ(countOf(page(), "No sample has grey pixels, half pixels."), 1);
}

TEST_F(Tour, textures_are_listed_drawn_and_damaged) {
    for (const char* name : {"cube.dds", "cube-mips.dds", "cube-mips.ktx2", "grating-mips.dds"})
        folder().write(std::string("samples/images/") + name, readFile(sampleImage(name)));
    folder().write("samples/bad.dds", "no texture");
    EXPECT_EQ(run().status, 0);
    const std::string html = page();
    for (const char* row :
         {"cube.dds</code></th><td>cube map<br><code>KVRVizCubicEnvMap</code>",
          "cube-mips.dds</code></th><td>cube map with mip-maps<br>",
          "cube-mips.ktx2</code></th><td>cube map with mip-maps<br>",
          "grating-mips.dds</code></th><td>picture with mip-maps<br>",
          "<code>bad.dds</code></th><td colspan=\"7\">expected a dds or ktx2 file, found "})
        EXPECT_EQ(countOf(html, row), 1) << row;
    // One sheet, and a mirror ball of each dds cube and of six faces.
    EXPECT_EQ(countOf(html, " alt=\"All faces and levels of images/cube-mips.dds\""), 1);
    EXPECT_EQ(countOf(html, " alt=\"Mirror ball: "), 3);
    // The import shows the eight levels of the first texture, which comes before the pictures.
    EXPECT_EQ(countOf(html, "<img "), 3 + kDerived + 8 + 4);
    // Images and textures have a table of damaged files each.
    EXPECT_EQ(countOf(html, "<code>cube-mips.ktx2</code></th><td>cut "), 2);
}

TEST_F(Tour, samples_without_textures_are_no_failure) {
    EXPECT_EQ(run().status, 0);
    EXPECT_EQ(countOf(page(), "There are no dds or ktx2 files among the samples."), 1);
}

TEST_F(Tour, imports_are_listed_with_the_resolution_that_was_found) {
    run();
    const std::string html = page();
    // 254 dots to the inch are stored as 10000 to the metre, and the inch is one of single
    // precision.
    const std::regex stated(
        "glass[.]png</code></th><td>RGBA</td><td class=\"number\">8 × 8</td>"
        "<td class=\"number\">1 × 4</td><td class=\"number\">100 per cm</td>"
        "<td class=\"number\">254[.]0000</td>");
    EXPECT_TRUE(std::regex_search(html, stated));
    const std::regex assumed(
        "light[.]hdr</code></th><td>RGB_f</td><td class=\"number\">8 × 4</td>"
        "<td class=\"number\">1 × 4</td><td class=\"number\">–</td>"
        "<td class=\"number\">assumed 91[.]3669</td>");
    EXPECT_TRUE(std::regex_search(html, assumed));
    for (int level = 0; level < kLevels; ++level)
        EXPECT_EQ(countOf(html, "alt=\"Level " + std::to_string(level) + "\""), 1);
}

TEST_F(Tour, large_levels_of_imports_are_left_out) {
    fs::remove_all(folder().file("samples"));
    writePicture(folder(), "samples/large.png", 2000, 3);
    EXPECT_EQ(run().status, 0);
    const std::string html = page();
    EXPECT_EQ(countOf(html, "alt=\"Level 2\""), 0);  // 500 x 1
    EXPECT_EQ(countOf(html, "width=\"250\" height=\"1\" alt=\"Level 3\""), 1);
}

TEST_F(Tour, photometric_files_are_drawn_sampled_and_checked) {
    run();
    EXPECT_EQ(countOf(page(), "There are no ies files among the samples."), 1);
    IesBuilder ies;
    ies.keywords = "[LUMINAIRE] Lantern <2>\n";
    folder().write("samples/photometry/lantern.ies", ies.build());
    ies.horizontal = {0, 90, 180};
    ies.candela.assign(9, 5);
    folder().write("samples/photometry/half & half.ies", ies.build());
    folder().write("samples/photometry/cut.ies", ies.build().substr(0, 60));
    EXPECT_EQ(run().status, 0);
    const std::string html = page();
    EXPECT_EQ(countOf(html, "<article class=\"luminaire\">"), 2);
    EXPECT_EQ(countOf(html, "aria-label=\"Polar diagram: Lantern &lt;2&gt;\""), 2);
    for (const char* table :
         {"The table of ",
          "The table of the luminaire turned by 45° about y, against the right-hand rule of "})
        for (const char* name : {"lantern", "half &amp; half"})
            EXPECT_EQ(
                countOf(html, "alt=\"" + std::string(table) + "photometry/" + name + ".ies\""), 1);
    EXPECT_EQ(countOf(html, "<li>nothing unusual</li>"), 1);
    EXPECT_EQ(countOf(html, "<code>black-seam</code>"), 1);
    const std::regex refused(
        "<code>photometry/cut[.]ies</code>: [^<]*expected [^<]+, found [^<]+</p>");
    EXPECT_TRUE(std::regex_search(html, refused));
    EXPECT_EQ(countOf(html, "http"), 0);
    // Constant light is black where half a circle ends, and there alone.
    const PictureFile table = shown(folder(), html, "The table of photometry/half &amp; half.ies");
    ASSERT_EQ(table.width(), 360);
    EXPECT_EQ(table.at(0, 90), (PictureFile::Pixel{0, 0, 0, 255}));
    EXPECT_EQ(table.at(1, 90), (PictureFile::Pixel{255, 255, 255, 255}));
    EXPECT_EQ(table.at(200, 90), (PictureFile::Pixel{255, 255, 255, 255}));
    EXPECT_EQ(table.at(200, 0), (PictureFile::Pixel{0, 0, 0, 255}));
}

TEST_F(Tour, search_section_shows_each_place_winning_once) {
    run();
    const std::string html = page();
    for (const char* place : {"project", "catalogue", "install/materials",
                              "install/materials/shaders", "install/materials/shaders/textures",
                              "install/materials/shaders/metaSL/textures", "install/stickers"})
        EXPECT_EQ(countOf(html, std::string("<td><code>") + place + "/oak.png</code></td>"), 1)
            << place;
    EXPECT_EQ(countOf(html, "<em>not found</em>"), 1);
    EXPECT_EQ(countOf(html, "<em>extension not accepted</em>"), 1);
}

TEST_F(Tour, half_section_counts_every_number_coming_back) {
    run();
    // 65536 patterns less 2 x 1023 that are not numbers.
    EXPECT_EQ(countOf(page(), "<b>63490</b> of 63490 numbers come back"), 1);
}

TEST_F(Tour, elements_are_balanced) {
    run();
    const std::string html = page();
    for (const std::string name :
         {"section", "article", "table", "tr", "td", "div", "figure", "svg", "g", "p", "dl", "dd",
          "ol", "li", "main", "code", "span"}) {
        const std::regex open("<" + name + "[ >]");
        const auto count = std::distance(std::sregex_iterator(html.begin(), html.end(), open),
                                         std::sregex_iterator());
        EXPECT_EQ(count, countOf(html, "</" + name + ">")) << name;
    }
}

TEST_F(Tour, second_run_replaces_the_page) {
    run();
    folder().write("out/tour/index.html", "old");
    EXPECT_EQ(run({"--quiet"}).out, "");
    EXPECT_TRUE(page().starts_with("<!DOCTYPE html>"));
    EXPECT_EQ(entriesOf(folder().file("out/tour")), std::set<std::string>{"index.html"});
}

TEST_F(Tour, failed_section_is_told_and_the_page_is_written) {
    const TempFolder empty;
    const RbaResult result = runRba({"tour", empty.file("out"), "--samples", empty.path()});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, empty.file("out/index.html") + "\n");
    EXPECT_TRUE(isErrorLine(result.err, "Images from file to pixels"));
    const std::string html = readFile(empty.file("out/index.html"));
    EXPECT_EQ(countOf(html, "class=\"trouble\""), 1);
    EXPECT_EQ(countOf(html, "<section id=\"half\">"), 1);
}

TEST_F(Tour, extension_in_capitals_is_the_same_kind) {
    const TempFolder samples;
    const std::string picture = readFile(writePicture(folder(), "picture.png", 8, 8));
    samples.write("a.png", picture);
    samples.write("b.PNG", picture);
    const std::string tiff = folder().file("picture.tif");
    ASSERT_EQ(runRba({"image", "convert", folder().file("picture.png"), tiff}).status, 0);
    samples.write("c.TIFF", readFile(tiff));
    const RbaResult result = runRba({"tour", samples.file("out"), "--samples", samples.path()});
    ASSERT_EQ(result.status, 0) << result.err;
    const std::string html = readFile(samples.file("out/index.html"));
    EXPECT_EQ(countOf(html, "<h3>c.TIFF</h3>"), 1);
    // The first of each kind is damaged in two ways.
    EXPECT_EQ(countOf(html, "<code>a.png</code></th><td>cut "), 2);
    EXPECT_EQ(countOf(html, "<code>b.PNG</code></th><td>cut "), 0);
    EXPECT_EQ(countOf(html, "<code>c.TIFF</code></th><td>cut "), 2);
}

TEST_F(Tour, missing_samples_and_unusable_places_fail) {
    const std::string missing = folder().file("nowhere");
    const RbaResult samples = runRba({"tour", folder().file("out"), "--samples", missing});
    EXPECT_EQ(samples.status, 1);
    EXPECT_TRUE(isErrorLine(samples.err, missing));
    EXPECT_FALSE(fs::exists(folder().file("out")));
    const std::string file = folder().write("file");
    const RbaResult place = runRba({"tour", file, "--samples", folder().file("samples")});
    EXPECT_EQ(place.status, 1);
    EXPECT_TRUE(isErrorLine(place.err, file));
}

/// Lets no process that is started meanwhile write files of more than @p bytes: as on a full disk,
/// writing fails for a reason that the system gives.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : m_handler(signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_former);
        const rlimit limit{bytes, m_former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_former);
        signal(SIGXFSZ, m_handler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_former{};
    sighandler_t m_handler;
};

TEST_F(Tour, page_that_cannot_be_written_is_told_with_the_reason) {
    RbaResult result;
    {
        const FileSizeLimit limit(16384);
        result = run();
    }
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "rba: " + pagePath() + ": expected a file to write to, found " +
                              std::generic_category().message(EFBIG) + "\n");
    EXPECT_FALSE(fs::exists(pagePath()));
}

TEST_F(Tour, ends_with_the_measures_of_its_calls) {
    run();
    const std::string html = page();
    const std::string last = html.substr(html.find("<section id=\"profile\""));
    EXPECT_EQ(countOf(last, "<section "), 1);
    for (const char* call :
         {"KVRRbaImageServices</code></th><td><code>CreatePixelImageFromFullPath",
          "KVRRbaTextureLoader</code></th><td><code>ImportTexture",
          "KVRRbaCameraServices</code></th><td><code>GetFocusDistance"})
        EXPECT_EQ(countOf(last, call), 1) << call;
    // Both projections of one point.
    const std::regex row("GetFocusDistance</code></td><td class=\"number\">2</td>");
    EXPECT_TRUE(std::regex_search(last, row));
}

TEST_F(Tour, camera_section_has_what_the_services_compute) {
    run();
    const std::string html = page();
    // (0.5, -0.25) of 1920 x 1080: 960 + 480, 540 + 135. From the eye: 5 ahead, 2.5 aside.
    for (const char* text : {">1440, 675<", ">outside<", ">conic 5.590 m<", ">parallel 5.000 m<",
                             ">0.122<", ">-1.400<", ">0.6670<"})
        EXPECT_EQ(countOf(html, text), 1) << text;
}

TEST_F(Tour, resources_section_has_what_the_resolver_finds) {
    run();
    const std::string html = page();
    for (const char* row :
         {"<code>icons/lamp.png</code></th><td><code>graphic/icons/lamp.png</code>",
          "<code>hdri/sky.hdr</code></th><td><code>startup/hdri/sky.hdr</code>",
          "<code>hdri/night.hdr</code></th><td><code>install/hdri/night.hdr</code>",
          "<code>project/night.hdr</code></th><td><code>project/night.hdr</code>",
          "<code>hdri/dawn.hdr</code></th><td><em>nothing",
          "<code>LENGTH</code></th><td>m km dm cm mm um nm in ft yd mi nmi </td><td>yes</td>",
          "<code>ANGLE</code></th><td>rad mrad deg arcmin arcsec grad turn </td><td></td>"})
        EXPECT_EQ(countOf(html, row), 1) << row;
}

TEST_F(Tour, own_samples_are_found_without_being_named) {
    const RbaResult result = runRba({"tour", folder().file("own")});
    ASSERT_EQ(result.status, 0) << result.err;
    const std::string html = readFile(folder().file("own/index.html"));
    EXPECT_EQ(countOf(html, "class=\"trouble\""), 0);
    for (const auto& entry : fs::directory_iterator(RB_SOURCE_DIR "/samples/images")) {
        const std::string name = entry.path().filename();
        EXPECT_GE(countOf(html, "images/" + name), 1) << name;
    }
    for (const char* name : {"downlight", "street", "wall-washer"})
        EXPECT_EQ(countOf(html, "<code>photometry/" + std::string(name) + ".ies</code>, read in "),
                  1)
            << name;
    const std::string derived =
        html.substr(html.find("<section id=\"derived\""),
                    html.find("<section id=\"textures\"") - html.find("<section id=\"derived\""));
    for (const char* service :
         {"ComputeGreyScaleImage", "ComputeMonochromaImage", "ComputeIconImage",
          "ComputeNegativeImage", "ComputeAlphaInvertImage", "GenerateMaskFromAlpha",
          "GenerateBumpMap", "ConvertFloatTextureToRGBA", "ConvertHalfFloatTextureToRGBA"})
        EXPECT_EQ(countOf(derived, std::string("<code>") + service + "</code>"), 1) << service;
    for (const char* name :
         {"studio.png", "alpha.png", "grey.tif", "depth-float.exr", "sky-half.exr"})
        EXPECT_EQ(countOf(html, std::string(" alt=\"Source: images/") + name + "\""), 1) << name;
}

/// A tour that is interrupted in the middle.
class InterruptedTour : public Tour {
protected:
    /// @param pictures  Large ones, besides the samples.
    int runAndInterrupt(int pictures) const {
        const std::string large = readFile(writePicture(folder(), "large.png", 2048, 2048));
        for (int i = 0; i < pictures; ++i)
            folder().write("samples/large" + std::to_string(i) + ".png", large);
        fs::create_directory(scratch());
        RbaSettings settings;
        settings.environment = {"TMPDIR=" + scratch().string()};
        const int process =
            startRba({"tour", folder().file("out"), "--samples", folder().file("samples")},
                     settings, folder().file("stdout"), folder().file("stderr"));
        while (entriesOf(scratch()).empty() && isRunning(process)) usleep(1000);
        kill(process, SIGINT);
        return waitForRba(process);
    }
    fs::path scratch() const { return folder().path() / "scratch"; }
    std::string errors() const { return readFile(folder().file("stderr")); }
};

TEST_F(InterruptedTour, leaves_nothing) {
    EXPECT_EQ(runAndInterrupt(40), 128 + SIGINT) << errors();
    EXPECT_TRUE(entriesOf(scratch()).empty());
    EXPECT_FALSE(fs::exists(folder().file("out")));
}

TEST_F(InterruptedTour, goes_on_when_interrupts_are_ignored) {
    const auto handler = signal(SIGINT, SIG_IGN);  // passed on to the program
    const int status = runAndInterrupt(2);
    signal(SIGINT, handler);
    EXPECT_EQ(status, 0) << errors();
    EXPECT_TRUE(entriesOf(scratch()).empty());
    EXPECT_TRUE(fs::exists(folder().file("out/index.html")));
}

}  // namespace
}  // namespace rb::test
