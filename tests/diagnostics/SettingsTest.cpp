#include "RenderingBase/public/KVRRbaSettings.h"
#include "tests/diagnostics/Probe.h"
#include "tests/support/TempFolder.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using rb::test::probed;

const std::vector<std::string> kReadAtLoad = {
    "KVRCommandPath",
    "KVRGraphicPath",
    "KVRInstallPath",
    "KVRStartupPath",
    "KVRTemp",
    "KVRRdgAppName",
    "KVRRdgApplyIrradianceLUT",
    "KVRRdgBatchUseCustomGamma",
    "KVRRdgDebug",
    "KVRRdgDenoiser",
    "KVRRdgDumpAnimationFile",
    "KVRRdgEnableBatchColorSpace",
    "KVRRdgIntermediateImages",
    "KVRRdgNoArgumentOverride",
    "KVRRdgNoMemoryCheckSkip",
    "KVRRdgNoPostEffectsHDR",
    "KVRRdgNormalizeDepthHDR",
    "KVRRdgPerfoMonitoring",
    "KVRRdgTranslationStrategy",
    "KVRRdgUsePLMChooser",
    "QLT_TRACE_SEVERITY",
    "QLT_TRACE_FILES",
};

const std::vector<std::string> kReadWhereNeeded = {
    "KVRRdgOldTC",
    "KVR_TEXTURE_NO_COLOR_PROFILE",
    "ZPQ_AC_TEXTURE_LOADER_DISABLE",
    "AC_USE_REP_LIFE_CYCLE",
    "KVRRbaProfilerActiveGroups",
    "KVRRbaProfilerKeepAllSamples",
    "RND_MATERIAL_NOT_FITTED",
};

std::vector<std::string> linesOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

/// What the probe must print, given what it says of a variable by its accessor and by `All`.
template <class AccessorText, class AllText>
std::vector<std::string> expectedLines(AccessorText accessorText, AllText allText) {
    std::vector<std::string> lines;
    for (const auto& name : kReadAtLoad) lines.push_back("accessor " + name + accessorText(name));
    for (const auto& name : kReadAtLoad) lines.push_back("all " + name + allText(name));
    for (const auto& name : kReadWhereNeeded) lines.push_back("all " + name + "=changed");
    return lines;
}

TEST(Settings, lists_all_variables_in_the_order_of_declaration) {
    std::vector<std::string> names;
    for (const auto& setting : KVRRbaSettings::All()) names.emplace_back(setting.name);
    std::vector<std::string> expected = kReadAtLoad;
    expected.insert(expected.end(), kReadWhereNeeded.begin(), kReadWhereNeeded.end());
    EXPECT_EQ(names, expected);
}

TEST(Settings, keep_the_values_of_load_time_when_the_environment_changes_later) {
    const auto valueOf = [](const std::string& name) { return "value of;" + name; };
    std::map<std::string, std::string> environment;
    for (const auto& name : kReadAtLoad) environment[name] = valueOf(name);
    const auto text = [&](const std::string& name) { return "=" + valueOf(name); };
    EXPECT_EQ(linesOf(probed("settings", environment)), expectedLines(text, text));
}

TEST(Settings, are_null_when_not_defined_and_the_temporary_directory_falls_back) {
    const rb::test::TempFolder temp;
    const auto accessorText = [&](const std::string& name) {
        if (name == "KVRTemp") return "=" + temp.path().string();
        return std::string(name.starts_with("QLT_") ? "=" : " undefined");
    };
    const auto allText = [&](const std::string& name) {
        return name == "KVRTemp" ? "=" + temp.path().string() : std::string(" undefined");
    };
    EXPECT_EQ(linesOf(probed("settings", {{"TMPDIR", temp.path().string()}})),
              expectedLines(accessorText, allText));
}

TEST(Settings, are_defined_when_empty) {
    std::map<std::string, std::string> environment;
    for (const auto& name : kReadAtLoad) environment[name] = "";
    const auto text = [](const std::string&) { return std::string("="); };
    EXPECT_EQ(linesOf(probed("settings", environment)), expectedLines(text, text));
}

TEST(Settings, read_switches_at_the_call_where_they_are_needed_late) {
    const auto presentValue = [](const std::string& name) -> const char* {
        for (const auto& setting : KVRRbaSettings::All()) {
            if (setting.name == name) return setting.value;
        }
        return "not listed";
    };
    for (const auto& name : kReadWhereNeeded) {
        unsetenv(name.c_str());
        EXPECT_EQ(presentValue(name), nullptr) << name;
        setenv(name.c_str(), "", 1);
        EXPECT_STREQ(presentValue(name), "") << name;
        setenv(name.c_str(), "1 2", 1);
        EXPECT_STREQ(presentValue(name), "1 2") << name;
        unsetenv(name.c_str());
    }
}

TEST(Settings, give_each_thread_a_list_of_its_own) {
    const auto* mine = KVRRbaSettings::All().data();
    const KVRRbaSettings::Setting* others = nullptr;
    std::thread([&] { others = KVRRbaSettings::All().data(); }).join();
    EXPECT_NE(mine, others);
    EXPECT_STREQ(mine[0].name, "KVRCommandPath");
}

TEST(Settings, name_the_renderers_local_ones_first) {
    std::vector<std::string> names;
    for (const char* name : KVRRbaSettings::RendererNames()) names.emplace_back(name);
    EXPECT_EQ(names, (std::vector<std::string>{"iray", "vessant", "irt", "iray_cloud",
                                               "nitro_cloud", "irt_cloud", "vessant_cloud"}));
}

}  // namespace
