#include "tools/rba/tour/ChildProcess.h"
#include "tools/rba/tour/Tour.h"

#include <array>
#include <fstream>

namespace rb::cli::tour {
namespace {

namespace fs = std::filesystem;

constexpr const char* kFileName = "oak.png";

/// The places in the order in which they are tried, below the folder of the example.
struct Place {
    const char* folder;
    const char* why;
};
constexpr std::array<Place, 7> kPlaces{{
    {"project", "the path itself"},
    {"catalogue", "a folder of the setting CatalagPath"},
    {"install/materials", "KVRStartupPath, materials"},
    {"install/materials/shaders", "KVRStartupPath, materials/shaders"},
    {"install/materials/shaders/textures", "KVRStartupPath, materials/shaders/textures"},
    {"install/materials/shaders/metaSL/textures",
     "KVRStartupPath, materials/shaders/metaSL/textures"},
    {"install/stickers", "KVRStartupPath, stickers"},
}};

struct Answer {
    int status = 0;
    std::string found;  // below the folder of the example; empty when not found
};

/// A folder of its own with a copy of the file in every place, and the settings that name them.
/// These are read when the program starts, hence another process for each question.
class Example {
public:
    explicit Example(const TourInput& input)
        : m_program(input.program),
          m_root(fs::canonical(input.scratch) / "search"),
          m_environment{"XDG_CONFIG_HOME=" + (m_root / "config").string(),
                        "KVRStartupPath=" + (m_root / "install").string()} {
        for (const Place& place : kPlaces) {
            fs::create_directories(m_root / place.folder);
            std::ofstream(m_root / place.folder / kFileName) << "a picture\n";
        }
        outputOf(m_program,
                 {"settings", "set", "MaterialOptionsSettings", "CatalagPath",
                  (m_root / "catalogue").string()},
                 m_environment);
    }

    Answer ask(int kind) const {
        const std::string path = (m_root / kPlaces[0].folder / kFileName).string();
        const Json json = answerOf(
            m_program, {"image", "find", path, "--kind", std::to_string(kind)}, m_environment);
        Answer answer{json.value("status", -2), ""};
        if (json["found"].is_string())
            answer.found =
                fs::path(json["found"].get<std::string>()).lexically_relative(m_root).string();
        return answer;
    }

    void removeCopy(const Place& place) const { fs::remove(m_root / place.folder / kFileName); }

private:
    fs::path m_program;
    fs::path m_root;
    std::vector<std::string> m_environment;
};

const char* meaningOf(int status) {
    return status == 0 ? "found" : status == -1 ? "extension not accepted" : "not found";
}

/// One row: the places that hold a copy as dots, then the answer.
void writeRow(Html& page, const std::string& call, std::size_t removed, const Answer& answer) {
    page << "<tr><th scope=\"row\">"_html << call << "</th><td class=\"dots\">"_html;
    for (std::size_t i = 0; i < kPlaces.size(); ++i) {
        const std::string place = std::to_string(i + 1);
        const bool wins = answer.found == std::string(kPlaces[i].folder) + "/" + kFileName;
        page << "<span class=\"dot"_html
             << (i < removed ? " gone"
                 : wins      ? " wins"
                             : "")
             << "\" role=\"img\" aria-label=\"place "_html << place
             << (i < removed ? ": no copy"
                 : wins      ? ": found here"
                             : ": a copy")
             << "\">"_html << place << "</span>"_html;
    }
    page << "</td><td class=\"number\">"_html << answer.status << "</td><td>"_html;
    if (answer.found.empty())
        page << "<em>"_html << meaningOf(answer.status) << "</em>"_html;
    else
        page << "<code>"_html << answer.found << "</code>"_html;
    page << "</td></tr>\n"_html;
}

void writePlaces(Html& page) {
    page << R"(<ol class="places">)"_html;
    for (const Place& place : kPlaces)
        page << "<li><code>"_html << place.folder << "/</code> <span>"_html << place.why
             << "</span></li>"_html;
    page << "</ol>\n"_html;
}

}  // namespace

void writeSearchSection(const TourInput& input, Html& page) {
    page << R"(<p class="lead">A material remembers the path of its picture as it was when somebody
stored it. <code>FindImageInPaths</code> looks there first, then for the file name alone in seven
places altogether. Here is one file with a copy in each of them. The same question is asked again and
again, and after each answer the copy that won is taken away.</p>
<p>Asked for: <code>project/)"_html
         << kFileName << R"(</code>, kind 1 (images). The places, first one first:</p>)"_html;
    writePlaces(page);

    const Example example(input);
    page << R"(<div class="scroll"><table><thead><tr><th scope="col">Call</th>
<th scope="col">Places that hold a copy</th><th scope="col" class="number">Status</th>
<th scope="col">Answer</th></tr></thead><tbody>
)"_html;
    writeRow(page, "kind 4, photometric tables", 0, example.ask(4));
    for (std::size_t removed = 0; removed <= kPlaces.size(); ++removed) {
        writeRow(page, "kind 1, call " + std::to_string(removed + 1), removed, example.ask(1));
        if (removed < kPlaces.size()) example.removeCopy(kPlaces[removed]);
    }
    page << "</tbody></table></div>\n"_html;
}

}  // namespace rb::cli::tour
