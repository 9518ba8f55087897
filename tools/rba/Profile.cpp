#include "tools/rba/Profile.h"

#include "tools/rba/Output.h"

#include <algorithm>
#include <iomanip>
#include <string_view>

namespace rb::cli {
namespace {

/// The profiler keeps no names.
struct Section {
    const char* group;
    const char* timer;
};

bool g_isStarted = false;
std::vector<Section> g_sections;

constexpr int kMicroseconds = 3;  // digits behind the point of milliseconds

Json toJson(const ProfileRow& row) {
    Json json = {{"group", row.group},
                 {"timer", row.timer},
                 {"hitCount", row.hitCount},
                 {"accumulatedMs", row.accumulatedMs}};
    if (!row.measuresMs.empty()) json["measuresMs"] = row.measuresMs;
    return json;
}

void printTable(std::ostream& out, const std::vector<ProfileRow>& rows) {
    std::size_t groupWidth = std::string_view("group").size();
    std::size_t timerWidth = std::string_view("timer").size();
    for (const ProfileRow& row : rows) {
        groupWidth = std::max(groupWidth, std::string_view(row.group).size());
        timerWidth = std::max(timerWidth, std::string_view(row.timer).size());
    }
    const auto line = [&](const auto& group, const auto& timer, const auto& hits, const auto& total,
                          const auto& mean) {
        out << std::left << std::setw(static_cast<int>(groupWidth)) << group << "  "
            << std::setw(static_cast<int>(timerWidth)) << timer << std::right << std::setw(7)
            << hits << std::setw(12) << total << std::setw(12) << mean << '\n';
    };
    line("group", "timer", "hits", "total ms", "mean ms");
    for (const ProfileRow& row : rows)
        line(row.group, row.timer, row.hitCount, numberText(row.accumulatedMs, kMicroseconds),
             numberText(row.meanMs(), kMicroseconds));
}

}  // namespace

void startProfile() { g_isStarted = true; }

const char* enlisted(const char* group, const char* timer) {
    if (!g_isStarted) return group;
    const auto isSame = [&](const Section& section) {
        return std::string_view(section.group) == group && std::string_view(section.timer) == timer;
    };
    if (std::ranges::none_of(g_sections, isSame)) {
        g_sections.push_back({group, timer});
        KVRRbaProfiler::GetInstance().SetActive(group, true);
    }
    return group;
}

std::vector<ProfileRow> profile() {
    const KVRRbaProfiler& profiler = KVRRbaProfiler::GetInstance();
    std::vector<ProfileRow> rows;
    for (const auto& [group, timer] : g_sections) {
        // Without memory the profiler loses a measure.
        const int hitCount = profiler.GetHitCount(group, timer);
        if (hitCount == 0) continue;
        rows.push_back({group, timer, hitCount, profiler.GetAccumulatedMS(group, timer),
                        profiler.GetAllMeasuresMS(group, timer)});
    }
    std::ranges::stable_sort(rows, std::ranges::greater(), &ProfileRow::accumulatedMs);
    return rows;
}

void printProfile(std::ostream& out, bool json) {
    const std::vector<ProfileRow> rows = profile();
    if (json) {
        Json list = Json::array();
        for (const ProfileRow& row : rows) list.push_back(toJson(row));
        printJson(out, list);
    } else if (rows.empty()) {
        out << "No call of the library was measured.\n";
    } else {
        printTable(out, rows);
    }
}

}  // namespace rb::cli
