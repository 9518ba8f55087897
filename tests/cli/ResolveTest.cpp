#include "tests/cli/RunRba.h"

namespace rb::test {
namespace {

const std::vector<std::string> kKeys = {"path", "resolved", "exists"};

/// An installation with one folder a list.
class Resolve : public testing::Test {
protected:
    RbaResult run(const Arguments& arguments, const std::string& traces = {}) const {
        RbaSettings settings;
        settings.environment = {"KVRGraphicPath=" + m_folder.file("graphic"),
                                "KVRStartupPath=" + m_folder.file("startup"),
                                "KVRInstallPath=" + m_folder.file("install"),
                                "ZWTSysTraces=" + traces};
        settings.folder = m_folder.path();
        return runRba(arguments, settings);
    }
    const TempFolder& folder() const { return m_folder; }

private:
    TempFolder m_folder;
};

TEST_F(Resolve, relative_path_is_found_in_the_lists) {
    const std::string oak = folder().write("startup/wood/oak.png");
    const RbaResult text = run({"resolve", "wood/oak.png"});
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(text.out, "wood/oak.png -> " + oak + "\n");
    EXPECT_EQ(text.err, "");
    const RbaResult json = run({"--json", "resolve", "wood/oak.png"});
    EXPECT_EQ(json.status, 0);
    ASSERT_EQ(json.json().size(), 1U);
    EXPECT_EQ(keysOf(json.json()[0]), kKeys);
    EXPECT_EQ(json.json()[0]["path"], "wood/oak.png");
    EXPECT_EQ(json.json()[0]["resolved"], oak);
    EXPECT_EQ(json.json()[0]["exists"], true);
}

TEST_F(Resolve, missing_lists_are_told_where_nothing_is_found) {
    const std::string hint =
        "KVRGraphicPath, KVRStartupPath and KVRInstallPath are not defined or empty";
    RbaSettings noLists;
    noLists.environment = {"KVRStartupPath="};
    noLists.folder = folder().path();
    const RbaResult without = runRba({"resolve", "oak.png"}, noLists);
    EXPECT_EQ(without.status, 1);
    EXPECT_NE(without.err.find(hint), std::string::npos) << without.err;
    const RbaResult with = run({"resolve", "oak.png"});
    EXPECT_EQ(with.status, 1);
    EXPECT_EQ(with.err.find(hint), std::string::npos) << with.err;
}

TEST_F(Resolve, path_that_exists_stays_as_it_is) {
    folder().write("graphic/oak.png");
    folder().write("oak.png");
    EXPECT_EQ(run({"resolve", "oak.png"}).out, "oak.png -> oak.png\n");
    EXPECT_EQ(run({"resolve", "graphic"}).out, "graphic -> graphic\n");
}

TEST_F(Resolve, graphic_path_comes_before_the_install_path) {
    folder().write("install/oak.png");
    EXPECT_EQ(run({"resolve", "oak.png"}).out, "oak.png -> " + folder().file("install/oak.png\n"));
    folder().write("graphic/oak.png");
    EXPECT_EQ(run({"resolve", "oak.png"}).out, "oak.png -> " + folder().file("graphic/oak.png\n"));
}

TEST_F(Resolve, stored_path_of_another_system_is_understood) {
    const std::string oak = folder().write("install/wood/oak.png");
    const std::string stored = R"(\\?\wood\oak.png)";
    const RbaResult result = run({"resolve", stored});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, stored + " -> " + oak + "\n");
}

TEST_F(Resolve, path_that_leads_to_nothing_fails_and_keeps_the_others) {
    const std::string oak = folder().write("install/oak.png");
    const RbaResult text = run({"resolve", "elm.png", "oak.png"});
    EXPECT_EQ(text.status, 1);
    EXPECT_EQ(text.out, "oak.png -> " + oak + "\n");
    EXPECT_TRUE(isErrorLine(text.err, "elm.png"));
    const RbaResult result = run({"--json", "resolve", "elm.png", "oak.png"});
    EXPECT_EQ(result.status, 1);
    const Json json = result.json();
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(keysOf(json[0]), kKeys);
    EXPECT_EQ(json[0]["path"], "elm.png");
    EXPECT_EQ(json[0]["resolved"], "elm.png");
    EXPECT_EQ(json[0]["exists"], false);
    EXPECT_EQ(json[1]["exists"], true);
}

TEST_F(Resolve, path_that_is_no_utf8_and_an_empty_one_fail) {
    const RbaResult bytes = run({"--json", "resolve", "\xff.png"});
    EXPECT_EQ(bytes.status, 1);
    EXPECT_EQ(keysOf(bytes.json()[0]), (std::vector<std::string>{"path", "error"}));
    const RbaResult empty = run({"resolve", ""});
    EXPECT_EQ(empty.status, 1);
    EXPECT_TRUE(isErrorLine(empty.err, "an empty path"));
}

TEST_F(Resolve, needs_a_path) { EXPECT_EQ(run({"resolve"}).status, 2); }

TEST_F(Resolve, control_characters_do_not_reach_the_terminal) {
    folder().write("install/a\nb.png");
    EXPECT_EQ(run({"resolve", "a\nb.png"}).out,
              "a\\x0ab.png -> " + folder().file("install/a\\x0ab.png\n"));
}

TEST_F(Resolve, trace_tells_of_the_search_on_standard_error) {
    const std::string oak = folder().write("install/oak.png");
    const RbaResult result = run({"resolve", "oak.png"}, "KVRRbaPathResolver");
    EXPECT_EQ(result.out, "oak.png -> " + oak + "\n");
    std::string::size_type at = 0;
    for (const std::string& text :
         {std::string("Resolving oak.png ...\n"),
          "Not found into graphic path { path = " + folder().file("graphic") + " }\n",
          "Not found into startup path { path = " + folder().file("startup") + " }\n",
          "Found into install path : " + folder().file("install") +
              "\\oak.png { path = " + folder().file("install") + " }\n"}) {
        const auto next = result.err.find("KVRRbaPathResolver: " + text, at);
        ASSERT_NE(next, std::string::npos) << text << "in\n" << result.err;
        at = next + 1;
    }
}

}  // namespace
}  // namespace rb::test
