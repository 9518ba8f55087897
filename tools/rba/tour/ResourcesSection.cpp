#include "RenderingBase/host/app/KVRParmDictionary.h"
#include "RenderingBase/public/KVRRbaMaterialFittingController.h"
#include "RenderingBase/public/KVRRbaVisuServices.h"
#include "tools/rba/Profile.h"
#include "tools/rba/tour/ChildProcess.h"
#include "tools/rba/tour/Tour.h"

#include <array>
#include <fstream>

namespace rb::cli::tour {
namespace {

namespace fs = std::filesystem;
using Fitting = KVRRbaMaterialFittingController;

/// A folder with a small installation, and the settings that name its parts. These are read when a
/// program starts, hence another process.
class Installation {
public:
    explicit Installation(const TourInput& input)
        : m_program(input.program), m_root(fs::canonical(input.scratch) / "resources") {
        for (const char* file :
             {"graphic/icons/lamp.png", "startup/hdri/sky.hdr", "startup/icons/lamp.png",
              "install/hdri/sky.hdr", "install/hdri/night.hdr", "project/night.hdr"}) {
            fs::create_directories((m_root / file).parent_path());
            std::ofstream(m_root / file) << "a resource\n";
        }
    }
    std::string here(const char* path) const { return (m_root / path).string(); }
    std::string below(const std::string& path) const {
        const std::string relative = fs::path(path).lexically_relative(m_root).string();
        return path.starts_with('/') ? relative : path;
    }
    Json resolve(const std::string& path) const {
        return answerOf(m_program, {"resolve", path},
                        {"KVRGraphicPath=" + here("graphic"), "KVRStartupPath=" + here("startup"),
                         "KVRInstallPath=" + here("install")})
            .at(0);
    }

private:
    fs::path m_program;
    fs::path m_root;
};

void writeResolved(Html& page, const Installation& installation) {
    page << R"(<div class="scroll"><table><thead><tr><th scope="col">Stored path</th>
<th scope="col">Means</th></tr></thead><tbody>
)"_html;
    for (const std::string& path :
         {std::string("icons/lamp.png"), std::string("hdri/sky.hdr"), std::string("hdri/night.hdr"),
          installation.here("project/night.hdr"), std::string("hdri/dawn.hdr")}) {
        const Json answer = installation.resolve(path);
        page << "<tr><th scope=\"row\"><code>"_html << installation.below(path)
             << "</code></th><td>"_html;
        if (answer.value("exists", false))
            page << "<code>"_html << installation.below(answer.value("resolved", ""))
                 << "</code></td></tr>\n"_html;
        else
            page << "<em>nothing; the path stays as it was</em></td></tr>\n"_html;
    }
    page << "</tbody></table></div>\n"_html;
}

/// The units of one magnitude.
struct Magnitude {
    std::string name, symbols;
    bool isLength = false;
};

std::vector<Magnitude> magnitudes() {
    std::vector<Magnitude> list;
    for (const KVRVar<KVRICkeUnit>& unit : KVRParmDictionary::ListUnits()) {
        const auto magnitude = KVRVar<KVRICkeMagnitude>::Adopt(unit->GetMagnitude());
        const std::string name(magnitude->GetName().View());
        if (list.empty() || list.back().name != name) {
            const bool isLength = measured("KVRRbaVisuServices", "IsMetricUnit", [&] {
                return KVRRbaVisuServices::IsMetricUnit(*unit.Get());
            });
            list.push_back({name, "", isLength});
        }
        list.back().symbols += std::string(unit->GetSymbol().View()) + " ";
    }
    return list;
}

void writeUnits(Html& page) {
    page << R"(<h3 class="sub">Units</h3>
<p><code>IsMetricUnit</code> tells whether a unit measures lengths, inches as well as millimetres. The
host's dictionary has these magnitudes and units:</p>
<div class="scroll"><table><thead><tr><th scope="col">Magnitude</th><th scope="col">Units</th>
<th scope="col">Length</th></tr></thead><tbody>
)"_html;
    for (const Magnitude& magnitude : magnitudes())
        page << "<tr><th scope=\"row\"><code>"_html << magnitude.name << "</code></th><td>"_html
             << magnitude.symbols << "</td><td>"_html << (magnitude.isLength ? "yes" : "")
             << "</td></tr>\n"_html;
    page << "</tbody></table></div>\n"_html;
}

void writeVendor(Html& page) {
    KVRString vendor;
    measured("KVRRbaVisuServices", "GetGraphicCardVendor",
             [&] { return KVRRbaVisuServices::GetGraphicCardVendor(vendor); });
    page << R"(<h3 class="sub">Display and materials</h3>
)"_html;
    page << "<p>The graphics adapter of this machine is by: <code>"_html << vendor.CastToCharPtr()
         << "</code> (<code>rba display vendor</code>). "_html;
}

void writeFitting(Html& page) {
    measured("KVRRbaMaterialFittingController", "GetMaterialFittingController",
             &Fitting::GetMaterialFittingController);
    page << "Fitting of materials (<code>rba fitting</code>): glossiness "_html
         << onOrOff(Fitting::getMaterialGlossFittingActiveState()) << ", Fresnel "_html
         << onOrOff(Fitting::getMaterialFresnelFittingState()) << ".</p>\n"_html;
}

}  // namespace

void writeResourcesSection(const TourInput& input, Html& page) {
    page
        << R"(<p class="lead">A resource that does not exist where its path says is looked for in three
lists of folders, <code>KVRGraphicPath</code>, <code>KVRStartupPath</code> and
<code>KVRInstallPath</code>, in this order: <code>KVRRbaPathResolver::Resolve</code>. Here the lists have
the folders <code>graphic</code>, <code>startup</code> and <code>install</code>.</p>
)"_html;
    writeResolved(page, Installation(input));
    writeUnits(page);
    writeVendor(page);
    writeFitting(page);
}

}  // namespace rb::cli::tour
