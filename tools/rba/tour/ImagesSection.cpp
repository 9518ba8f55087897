#include "RenderingBase/host/imaging/KVRMMRasterAdministrator.h"
#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tools/rba/Context.h"
#include "tools/rba/Images.h"
#include "tools/rba/Interrupt.h"
#include "tools/rba/Paths.h"
#include "tools/rba/Profile.h"
#include "tools/rba/tour/DamagedFiles.h"
#include "tools/rba/tour/ImageFiles.h"
#include "tools/rba/tour/Picture.h"
#include "tools/rba/tour/Tour.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>

namespace rb::cli::tour {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kLongestSide = 480;   // pixels of an embedded picture: twice those of its frame
constexpr int kSmallPicture = 160;  // pixels; smaller pictures are shown enlarged, pixel by pixel
constexpr int kReadings = 3;        // of which the fastest counts

/// What became of one sample file.
struct Sample {
    std::string name;     // below the folder of samples
    std::string refusal;  // empty for an image
    KVRMMImageProp stored;
    KVRMMImageSize size;
    int width = 0, height = 0;        // pixels
    float dpi = 0;                    // 0 without resolution
    float widthMm = 0, heightMm = 0;  // meaningful with a resolution only
    int format = 0;
    std::string formatName;
    double milliseconds = 0;
    Picture picture;

    double megapixels() const { return 1e-6 * width * height; }
};

KVRVar<KVRPixelImage> readTimed(const std::string& path, double& milliseconds) {
    KVRVar<KVRPixelImage> image;
    for (int i = 0; i < kReadings; ++i) {
        image.Reset();
        const Clock::time_point start = Clock::now();
        image = loadImage(path);
        const std::chrono::duration<double, std::milli> taken = Clock::now() - start;
        milliseconds = i == 0 ? taken.count() : std::min(milliseconds, taken.count());
    }
    return image;
}

Sample visit(const fs::path& path, const TourInput& input) {
    Sample sample;
    sample.name = path.lexically_relative(input.samples).generic_string();
    try {
        const KVRVar<KVRPixelImage> image = readTimed(path.string(), sample.milliseconds);
        measured("KVRRbaImageServices", "GiveImageInfos", [&] {
            KVRRbaImageServices::GiveImageInfos(image.Get(), sample.width, sample.height,
                                                sample.dpi, sample.widthMm, sample.heightMm);
        });
        sample.format = static_cast<int>(image->GetFormat());
        sample.formatName = formatName(*image.Get());
        readHeader(path.string(), sample.stored, sample.size);
        sample.picture = makePicture(*image.Get(), kLongestSide, input.scratch);
    } catch (const Failure& failure) {
        sample.refusal = failure.reason();
    }
    return sample;
}

std::string resolutionText(const Sample& sample) {
    if (!(sample.dpi > 0)) return "not stated";
    const bool metric = sample.size.GetResolutionUnit() == rb::imaging::kPerCentimetre;
    std::string text = numberText(static_cast<float>(sample.size.GetXResolution()));
    if (sample.size.GetXResolution() != sample.size.GetYResolution())
        text += " × " + numberText(static_cast<float>(sample.size.GetYResolution()));
    text += metric ? "/cm" : "/inch";
    if (!metric) return text;
    const float rounded = std::round(sample.dpi * 10) / 10;
    return text + " (" + numberText(rounded) + " dpi)";
}

std::string printSizeText(const Sample& sample) {
    if (!(sample.dpi > 0)) return "–";
    return numberText(sample.widthMm, 1) + " × " + numberText(sample.heightMm, 1) + " mm";
}

std::string speedText(const Sample& sample) {
    const double perSecond = sample.megapixels() / (1e-3 * std::max(sample.milliseconds, 1e-6));
    return numberText(sample.milliseconds, sample.milliseconds < 10 ? 2 : 0) + " ms, " +
           numberText(perSecond, perSecond < 10 ? 1 : 0) + " Mpx/s";
}

void writeFact(Html& page, std::string_view term, const Html& value) {
    page << "<div><dt>"_html << term << "</dt><dd>"_html << value << "</dd></div>"_html;
}

void writeFact(Html& page, std::string_view term, std::string_view value) {
    writeFact(page, term, Html() << value);
}

void writeFrame(Html& page, const Sample& sample) {
    const Picture& picture = sample.picture;
    const bool small = std::max(picture.width, picture.height) < kSmallPicture;
    page << "<div class=\"frame"_html << (picture.hasAlpha ? " alpha" : "") << "\"><img"_html;
    if (small) page << " class=\"small\""_html;
    page << " src=\""_html << picture.dataUri << "\" width=\""_html << picture.width
         << "\" height=\""_html << picture.height << "\" alt=\"The picture in "_html << sample.name
         << ", "_html << sample.width << " by "_html << sample.height << " pixels\">"_html;
    if (picture.clamped)
        page
            << R"(<span class="badge" title="Values below 0 and above 1 are cut off">clamped to 0–1</span>)"_html;
    page << "</div>"_html;
}

void writeCard(Html& page, const Sample& sample) {
    page << R"(<article class="card">)"_html;
    writeFrame(page, sample);
    page << "<h3>"_html << sample.name << "</h3><dl>"_html;
    writeFact(page, "Size",
              std::to_string(sample.width) + " × " + std::to_string(sample.height) + " px");
    writeFact(page, "Stored",
              std::string(sample.stored.fileFormat.View()) + ", " +
                  std::to_string(sample.stored.channels) + " × " +
                  std::to_string(sample.stored.bitsPerChannel) + " bit");
    writeFact(page, "Delivered",
              Html() << sample.formatName << " <span class=\"dim\">("_html << sample.format
                     << ")</span>"_html);
    writeFact(page, "Resolution", resolutionText(sample));
    writeFact(page, "Print size", printSizeText(sample));
    writeFact(page, "Profile",
              sample.stored.hasProfile ? sample.stored.profileName.View() : "none");
    writeFact(page, "Read in", speedText(sample));
    page << "</dl></article>\n"_html;
}

void writeRefusals(Html& page, std::span<const Sample> samples) {
    page << R"(<h3 class="sub">Samples that were refused</h3>
<div class="scroll"><table><thead><tr><th scope="col">File</th><th scope="col">Reason</th></tr></thead><tbody>
)"_html;
    for (const Sample& sample : samples)
        if (!sample.refusal.empty())
            page << "<tr><th scope=\"row\"><code>"_html << sample.name << "</code></th><td>"_html
                 << sample.refusal << "</td></tr>\n"_html;
    page << "</tbody></table></div>\n"_html;
}

void writeFigure(Html& page, const std::string& number, std::string_view what) {
    page << "<div><b>"_html << number << "</b> "_html << what << "</div>"_html;
}

void writeSummary(Html& page, std::span<const Sample> samples, std::size_t refused) {
    double megapixels = 0, milliseconds = 0;
    for (const Sample& sample : samples) {
        if (!sample.refusal.empty()) continue;
        megapixels += sample.megapixels();
        milliseconds += sample.milliseconds;
    }
    page << R"(<div class="figures">)"_html;
    writeFigure(page, std::to_string(samples.size() - refused), "images read");
    writeFigure(page, std::to_string(refused), "files refused");
    writeFigure(page, numberText(megapixels, 1), "megapixels");
    writeFigure(page, numberText(milliseconds, 0) + " ms", "to read them all");
    page << "</div>\n"_html;
}

}  // namespace

void writeImagesSection(const TourInput& input, Html& page) {
    const std::vector<fs::path> paths = imageFiles(input.samples);
    if (paths.empty()) throw Failure("expected image files among the samples, found none");
    Progress progress(input.quiet, paths.size());
    std::vector<Sample> samples;
    for (const fs::path& path : paths) {
        InterruptGuard::check();
        progress.step(path.filename().string());
        samples.push_back(visit(path, input));
    }
    const auto refused = static_cast<std::size_t>(
        std::ranges::count_if(samples, [](const Sample& s) { return !s.refusal.empty(); }));

    page << R"(<p class="lead"><code>CreatePixelImageFromFullPath</code> reads a file into a pixel
image: palettes expanded, 16 bits rounded to 8, an embedded colour profile applied, floating-point
pixels as they are. <code>GiveImageInfos</code> measures it. The time is the fastest of three
readings.</p>
)"_html;
    writeSummary(page, samples, refused);
    page << R"(<div class="cards">
)"_html;
    for (const Sample& sample : samples)
        if (sample.refusal.empty()) writeCard(page, sample);
    page << "</div>\n"_html;
    if (refused > 0) writeRefusals(page, samples);
    writeDamagedFiles(input, paths, page);
}

}  // namespace rb::cli::tour
