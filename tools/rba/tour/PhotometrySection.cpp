#include "tools/rba/Context.h"
#include "tools/rba/IesFindings.h"
#include "tools/rba/Images.h"
#include "tools/rba/Interrupt.h"
#include "tools/rba/PolarDiagram.h"
#include "tools/rba/tour/ImageFiles.h"
#include "tools/rba/tour/Picture.h"
#include "tools/rba/tour/Timing.h"
#include "tools/rba/tour/Tour.h"

#include <algorithm>
#include <chrono>
#include <span>

namespace rb::cli::tour {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using Image = KVRVar<KVRPixelImage>;

constexpr int kRows = 180, kColumns = 360;

/// Radians: an eighth of a turn about y.
constexpr KVRMathVector kUpright{0, 0, 0}, kTilted{0, 0.7854, 0};

/// A table as a picture, and how long it took.
struct Table {
    Image image;
    double milliseconds = 0;
};

Table tableOf(const Photometry& photometry, const KVRMathVector& orientation) {
    Table table;
    table.image =
        Image::Adopt(KVRPixelImage::CreateUnfilled(kColumns, kRows, KVRPixelImageFormat::L_f));
    float* const values = table.image->GetFloatingPixelsToModify();
    const Clock::time_point start = Clock::now();
    fillTable(photometry.record, kRows, kColumns, 1, orientation, values);
    const std::chrono::duration<double, std::milli> taken = Clock::now() - start;
    table.milliseconds = taken.count();
    return table;
}

/// Makes the peak of the file white.
void scale(KVRPixelImage& image, const Photometry& photometry) {
    const float peak = peakOf(photometry.record).candela;
    float* const values = image.GetFloatingPixelsToModify();
    for (float& value : std::span(values, std::size_t{kRows} * kColumns))
        value = peak > 0 ? value / peak : 0;
}

void writeTable(const Photometry& photometry, const KVRMathVector& orientation,
                const std::string& title, const std::string& name, const TourInput& input,
                Html& page) {
    const Table table = tableOf(photometry, orientation);
    scale(*table.image.Get(), photometry);
    const Picture picture =
        makeExactPicture(*displayableImage(name, *table.image.Get()).Get(), input.scratch);
    page << "<figure><figcaption><b>"_html << title << "</b><br>"_html << kRows
         << " rows from straight up to almost straight down, "_html << kColumns
         << " columns around, in "_html << millisecondsText(table.milliseconds)
         << "</figcaption><img src=\""_html << picture.dataUri << "\" width=\""_html
         << picture.width << "\" height=\""_html << picture.height << "\" alt=\""_html << title
         << " of "_html << name << "\"></figure>\n"_html;
}

void writeFindings(const std::vector<Finding>& findings, Html& page) {
    page
        << R"(<figure class="checked"><figcaption><b>What <code>rba ies check</code> says</b></figcaption>
<ul class="findings">)"_html;
    for (const Finding& finding : findings)
        page << "<li>"_html << finding.message << " <code>"_html << finding.code
             << "</code></li>"_html;
    if (findings.empty()) page << "<li>nothing unusual</li>"_html;
    page << "</ul></figure>\n"_html;
}

void writeLuminaire(const fs::path& path, const TourInput& input, Html& page) try {
    const std::string name = path.lexically_relative(input.samples).generic_string();
    const Clock::time_point start = Clock::now();
    const Photometry photometry = loadPhotometry(path.string());
    const std::chrono::duration<double, std::milli> taken = Clock::now() - start;
    const std::string drawing = polarSvg(polarDiagramOf(path.string(), photometry), SvgUse::Page);
    Html part;
    part << "<article class=\"luminaire\"><div class=\"tables\"><figure><h3><code>"_html << name
         << "</code>, read in "_html << millisecondsText(taken.count()) << "</h3>"_html
         << Markup{drawing} << "</figure>\n"_html;
    writeFindings(findingsOf(photometry), part);
    part << "</div><div class=\"tables\">"_html;
    writeTable(photometry, kUpright, "The table", name, input, part);
    writeTable(photometry, kTilted,
               "The table of the luminaire turned by 45° about y, against the right-hand rule",
               name, input, part);
    part << "</div></article>\n"_html;
    page << part;
} catch (const Failure& failure) {
    page << "<p><code>"_html << path.lexically_relative(input.samples).generic_string()
         << "</code>: "_html << failure.reason() << "</p>\n"_html;
}

}  // namespace

void writePhotometrySection(const TourInput& input, Html& page) {
    page << R"(<p class="lead">How a luminaire shines, out of the files of its maker (IESNA LM-63).
<code>loadIES</code> samples the intensities over all directions, as renderers want them; the polar
diagrams have what the files say. Tables are shown with the brightest value as white, through the
same conversion as other float pictures.</p>
)"_html;
    const std::vector<fs::path> files = photometricFiles(input.samples);
    if (files.empty()) page << "<p>There are no ies files among the samples.</p>\n"_html;
    for (const fs::path& path : files) {
        InterruptGuard::check();
        writeLuminaire(path, input, page);
    }
}

}  // namespace rb::cli::tour
