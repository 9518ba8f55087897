#include "tools/rba/tour/DamagedFiles.h"

#include "tools/rba/Context.h"
#include "tools/rba/Images.h"
#include "tools/rba/Textures.h"
#include "tools/rba/tour/Files.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <set>

namespace rb::cli::tour {
namespace {

namespace fs = std::filesystem;

struct Damage {
    const char* what;
    void (*inflict)(std::string& file);
};

constexpr std::array<Damage, 2> kDamages{{
    {"cut in the middle", [](std::string& file) { file.resize(file.size() / 2); }},
    {"cut after 20 bytes",
     [](std::string& file) { file.resize(std::min<std::size_t>(file.size(), 20)); }},
}};

/// What reading gives: the reason of the refusal, or that there was none.
std::string outcomeOf(const fs::path& path) {
    try {
        const std::string kind = kindOf(path);
        if (kind == "dds" || kind == "ktx2")
            Texture::load(path.string());
        else
            loadImage(path.string());
        return "read all the same";
    } catch (const Failure& failure) {
        return failure.reason();
    }
}

}  // namespace

void writeDamagedFiles(const TourInput& input, std::span<const fs::path> samples, Html& page) {
    page << R"(<h3 class="sub">Damaged on purpose</h3>
<p>The first sample of each kind, damaged. A damaged file gives no picture, and a reason: where the
trouble is, what was expected and what was found.</p>
<div class="scroll"><table><thead><tr><th scope="col">File</th><th scope="col">Damage</th>
<th scope="col">Outcome</th></tr></thead><tbody>
)"_html;
    std::set<std::string> seen;
    for (const fs::path& sample : samples) {
        if (!seen.insert(kindOf(sample)).second) continue;
        for (const Damage& damage : kDamages) {
            std::string content = readFile(sample);
            damage.inflict(content);
            const fs::path copy = input.scratch / ("damaged" + sample.extension().string());
            std::ofstream(copy, std::ios::binary) << content;
            page << "<tr><th scope=\"row\"><code>"_html << sample.filename().string()
                 << "</code></th><td>"_html << damage.what << "</td><td>"_html << outcomeOf(copy)
                 << "</td></tr>\n"_html;
        }
    }
    page << "</tbody></table></div>\n"_html;
}

}  // namespace rb::cli::tour
