#include "tests/support/ForeignPrograms.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;
using rb::test::shellWord;
using rb::test::TempFolder;

using Environment = std::vector<std::pair<std::string, std::string>>;
using Lines = std::vector<std::string>;

const std::pair<std::string, std::string> kTraced = {"ZWTSysTraces", "KVRRbaPathResolver"};

struct Outcome {
    std::string path;
    Lines trace;  ///< Kind and text of each line, as in "Message KVRRbaPathResolver: ...".
};

/// The lines of GLib's log without process and time; anything else on standard error is told whole.
Lines logLines(const std::string& errors) {
    static const std::regex kLine(R"(^.*RenderingBase-([A-Za-z]+)[ :*]+[0-9:.]+: (.*)$)");
    Lines lines;
    std::istringstream stream(errors);
    for (std::string line; std::getline(stream, line);) {
        std::smatch parts;
        if (line.empty()) continue;  // one stands before each warning
        lines.push_back(std::regex_match(line, parts, kLine) ? parts[1].str() + " " + parts[2].str()
                                                             : "no trace: " + line);
    }
    return lines;
}

Outcome resolved(const std::string& path, const Environment& environment,
                 const std::string& program = RB_PROBE) {
    const TempFolder folder;
    const std::string errors = folder.file("errors");
    std::string command =
        "env -u KVRGraphicPath -u KVRStartupPath -u KVRInstallPath -u ZWTSysTraces";
    for (const auto& [name, value] : environment) command += ' ' + shellWord(name + '=' + value);
    std::string line = rb::test::runProgram(command + ' ' + shellWord(program) + ' ' +
                                            shellWord(path) + " 2>" + shellWord(errors));
    EXPECT_TRUE(line.ends_with('\n'));
    line.pop_back();
    return {line, logLines(rb::test::contentOf(errors))};
}

std::string told(const std::string& text) { return "Message KVRRbaPathResolver: " + text; }

/// Three folders, one for each list, of which some have "sub/oak.png".
class PathResolver : public testing::Test {
protected:
    std::string folder(const std::string& name) const { return m_folder.file(name); }
    void put(const std::string& name) const { m_folder.write(name + "/sub/oak.png"); }
    Environment allLists() const {
        return {kTraced,
                {"KVRGraphicPath", folder("graphic")},
                {"KVRStartupPath", folder("startup")},
                {"KVRInstallPath", folder("install")}};
    }
    std::string match(const std::string& name) const { return folder(name) + R"(\sub\oak.png)"; }

private:
    TempFolder m_folder;
};

constexpr const char* kOak = R"(sub\oak.png)";
constexpr const char* kResolvingOak = R"(Resolving sub\oak.png ...)";

TEST_F(PathResolver, existing_path_comes_back_and_no_list_is_searched) {
    put("here");
    put("graphic");
    const std::string path = folder("here") + "/sub/oak.png";
    const Outcome outcome = resolved(path, allLists());
    EXPECT_EQ(outcome.path, path);
    EXPECT_EQ(outcome.trace, (Lines{told("Resolving " + path + " ...")}));
}

TEST_F(PathResolver, existing_path_keeps_its_long_path_prefix) {
    put("here");
    const std::string path = R"(\\?\)" + match("here");
    const Outcome outcome = resolved(path, allLists());
    EXPECT_EQ(outcome.path, path);
    EXPECT_EQ(outcome.trace, (Lines{told("Resolving " + path + " ...")}));
}

TEST_F(PathResolver, existing_folder_comes_back) {
    put("here");
    EXPECT_EQ(resolved(folder("here"), allLists()).path, folder("here"));
}

TEST_F(PathResolver, match_in_the_graphic_path_ends_the_search) {
    for (const char* name : {"graphic", "startup", "install"}) put(name);
    const Outcome outcome = resolved(kOak, allLists());
    EXPECT_EQ(outcome.path, match("graphic"));
    EXPECT_EQ(outcome.trace,
              (Lines{told(kResolvingOak), told("Found into graphic path : " + match("graphic") +
                                               " { path = " + folder("graphic") + " }")}));
}

TEST_F(PathResolver, startup_path_comes_before_the_install_path) {
    for (const char* name : {"startup", "install"}) put(name);
    const Outcome outcome = resolved(kOak, allLists());
    EXPECT_EQ(outcome.path, match("startup"));
    EXPECT_EQ(outcome.trace,
              (Lines{told(kResolvingOak),
                     told("Not found into graphic path { path = " + folder("graphic") + " }"),
                     told("Found into startup path : " + match("startup") +
                          " { path = " + folder("startup") + " }")}));
}

TEST_F(PathResolver, match_in_the_install_path_comes_after_two_lists_without) {
    put("install");
    const Outcome outcome = resolved(kOak, allLists());
    EXPECT_EQ(outcome.path, match("install"));
    EXPECT_EQ(outcome.trace,
              (Lines{told(kResolvingOak),
                     told("Not found into graphic path { path = " + folder("graphic") + " }"),
                     told("Not found into startup path { path = " + folder("startup") + " }"),
                     told("Found into install path : " + match("install") +
                          " { path = " + folder("install") + " }")}));
}

TEST_F(PathResolver, path_without_a_match_comes_back_as_it_was) {
    const std::string path = R"(\\?\sub/oak.png)";
    const Outcome outcome = resolved(path, allLists());
    EXPECT_EQ(outcome.path, path);
    EXPECT_EQ(outcome.trace,
              (Lines{told("Resolving " + path + " ..."),
                     told("Not found into graphic path { path = " + folder("graphic") + " }"),
                     told("Not found into startup path { path = " + folder("startup") + " }"),
                     told("Not found into install path { path = " + folder("install") + " }")}));
}

TEST_F(PathResolver, lists_that_are_not_defined_are_left_out_silently) {
    put("install");
    const Outcome outcome = resolved(kOak, {kTraced, {"KVRInstallPath", folder("install")}});
    EXPECT_EQ(outcome.path, match("install"));
    EXPECT_EQ(outcome.trace,
              (Lines{told(kResolvingOak), told("Found into install path : " + match("install") +
                                               " { path = " + folder("install") + " }")}));
}

TEST_F(PathResolver, without_lists_the_path_comes_back) {
    const Outcome outcome = resolved(kOak, {kTraced});
    EXPECT_EQ(outcome.path, kOak);
    EXPECT_EQ(outcome.trace, (Lines{told(kResolvingOak)}));
}

TEST_F(PathResolver, list_that_is_defined_but_empty_is_searched) {
    const Outcome outcome = resolved(kOak, {kTraced, {"KVRGraphicPath", ""}});
    EXPECT_EQ(outcome.path, kOak);
    EXPECT_EQ(outcome.trace,
              (Lines{told(kResolvingOak), told("Not found into graphic path { path =  }")}));
}

TEST_F(PathResolver, first_folder_of_a_list_that_has_it_wins) {
    put("second");
    put("third");
    fs::create_directory(folder("first"));
    const std::string list = folder("first") + ";;" + folder("second") + ";" + folder("third");
    const Outcome outcome = resolved(kOak, {kTraced, {"KVRStartupPath", list}});
    EXPECT_EQ(outcome.path, match("second"));
    EXPECT_EQ(outcome.trace,
              (Lines{told(kResolvingOak), told("Found into startup path : " + match("second") +
                                               " { path = " + list + " }")}));
}

TEST_F(PathResolver, long_path_prefix_is_left_out_of_the_search_wherever_it_stands) {
    put("graphic");
    for (const char* path : {R"(\\?\sub\oak.png)", R"(sub\\\?\oak.png)",
                             R"(\\?\\\?\sub\o\\?\ak.png)", R"(sub\oak.png\\?\)"}) {
        const Outcome outcome = resolved(path, allLists());
        EXPECT_EQ(outcome.path, match("graphic")) << path;
        ASSERT_EQ(outcome.trace.size(), 2U) << path;
        EXPECT_EQ(outcome.trace[0], told("Resolving " + std::string(path) + " ..."));
    }
}

TEST_F(PathResolver, link_to_nothing_is_no_match) {
    put("install");
    fs::create_directories(folder("graphic/sub"));
    fs::create_symlink("nowhere.png", folder("graphic/sub/oak.png"));
    EXPECT_EQ(resolved(kOak, allLists()).path, match("install"));
}

TEST_F(PathResolver, absolute_path_is_not_looked_for_below_the_lists) {
    const std::string path = folder("gone/oak.png");
    fs::create_directories(folder("graphic") + folder("gone"));
    std::ofstream(folder("graphic") + path).put('x');
    EXPECT_EQ(resolved(path, allLists()).path, path);
}

TEST_F(PathResolver, empty_path_stays_empty) {
    fs::create_directory(folder("graphic"));
    EXPECT_EQ(resolved("", allLists()).path, "");
}

TEST_F(PathResolver, tells_nothing_when_its_trace_is_off) {
    put("install");
    Environment environment = allLists();
    environment[0].second = "KVRSettingRepository";
    const Outcome outcome = resolved(kOak, environment);
    EXPECT_EQ(outcome.path, match("install"));
    EXPECT_EQ(outcome.trace, Lines());
    environment.erase(environment.begin());
    EXPECT_EQ(resolved(kOak, environment).trace, Lines());
}

// What a search tells is not taken on trust. The one of this host never tells of a file that is not
// there, short of somebody removing it that moment; the one in HastyHost.cpp always does.
TEST_F(PathResolver, match_that_does_not_exist_is_an_error_and_the_search_goes_on) {
    const auto error = [&](const std::string& name, const std::string& line) {
        return "WARNING KVRRbaPathResolver: RenderingBase/KVRRbaModel.m/src/KVRRbaPathResolver, "
               "line " +
               line + ": Found into " + name + " path : " + match(name) +
               " { path = " + folder(name) + " }";
    };
    const Outcome nowhere = resolved(kOak, allLists(), RB_HASTY_PROBE);
    EXPECT_EQ(nowhere.path, match("install"));
    EXPECT_EQ(nowhere.trace, (Lines{told(kResolvingOak), error("graphic", "37"),
                                    error("startup", "53"), error("install", "69")}));
    put("startup");
    const Outcome inStartup = resolved(kOak, allLists(), RB_HASTY_PROBE);
    EXPECT_EQ(inStartup.path, match("startup"));
    EXPECT_EQ(inStartup.trace, (Lines{told(kResolvingOak), error("graphic", "37"),
                                      told("Found into startup path : " + match("startup") +
                                           " { path = " + folder("startup") + " }")}));
}

}  // namespace
