#include "RenderingBase/public/KVRRbaSettings.h"
#include "tests/cli/RunRba.h"

namespace rb::test {
namespace {

const std::vector<std::string> kKeys = {"repository", "name", "value"};

class SettingsCommands : public testing::Test {
protected:
    RbaResult run(const Arguments& arguments) const {
        RbaSettings settings;
        settings.environment = {"XDG_CONFIG_HOME=" + m_folder.path().string()};
        return runRba(arguments, settings);
    }
    const TempFolder& folder() const { return m_folder; }

private:
    TempFolder m_folder;
};

TEST_F(SettingsCommands, what_was_set_comes_back_from_another_process) {
    const RbaResult set = run({"settings", "set", "Mine", "Colour", "warm grey; \xc3\xa9"});
    EXPECT_EQ(set.status, 0);
    EXPECT_EQ(set.out, "Mine: Colour = warm grey; \xc3\xa9\n");
    EXPECT_EQ(run({"settings", "get", "Mine", "Colour"}).out, "warm grey; \xc3\xa9\n");
    const Json json = run({"--json", "settings", "get", "Mine", "Colour"}).json();
    EXPECT_EQ(keysOf(json), kKeys);
    EXPECT_EQ(json["repository"], "Mine");
    EXPECT_EQ(json["name"], "Colour");
    EXPECT_EQ(json["value"], "warm grey; \xc3\xa9");
}

TEST_F(SettingsCommands, set_prints_json_when_asked_and_nothing_when_quiet) {
    const Json json = run({"--json", "settings", "set", "Mine", "A", "-1"}).json();
    EXPECT_EQ(keysOf(json), kKeys);
    EXPECT_EQ(json["value"], "-1");
    EXPECT_EQ(run({"--quiet", "settings", "set", "Mine", "A", ""}).out, "");
    EXPECT_EQ(run({"settings", "get", "Mine", "A"}).out, "\n");
}

TEST_F(SettingsCommands, values_do_not_steer_the_terminal) {
    // An escape sequence, a line break, and U+009B, which some terminals take for the same as
    // ESC [; what lies beyond it is text.
    const std::string value =
        "a\x1b[2J\nB = 1\xc2\x9b"
        "2J\xc2\xa0\xc3\xa9";
    const std::string shown =
        "a\\x1b[2J\\x0aB = 1\\xc2\\x9b"
        "2J\xc2\xa0\xc3\xa9";
    EXPECT_EQ(run({"settings", "set", "Mine", "A", value}).out, "Mine: A = " + shown + "\n");
    EXPECT_EQ(run({"settings", "get", "Mine", "A"}).out, shown + "\n");
    EXPECT_EQ(run({"settings", "list"}).out, "Mine\n  A = " + shown + "\n");
    EXPECT_EQ(run({"--json", "settings", "get", "Mine", "A"}).json()["value"], value);
}

TEST_F(SettingsCommands, list_shows_every_setting_of_every_repository) {
    EXPECT_EQ(run({"settings", "list"}).out, "");
    EXPECT_EQ(run({"--json", "settings", "list"}).json(), Json::array());
    run({"settings", "set", "Second", "B", "2"});
    run({"settings", "set", "First", "A", "1"});
    run({"settings", "set", "First", "C", "3"});
    EXPECT_EQ(run({"settings", "list"}).out, "First\n  A = 1\n  C = 3\nSecond\n  B = 2\n");
    const Json json = run({"--json", "settings", "list"}).json();
    ASSERT_EQ(json.size(), 3U);
    for (const Json& setting : json) EXPECT_EQ(keysOf(setting), kKeys);
    EXPECT_EQ(json[1]["repository"], "First");
    EXPECT_EQ(json[1]["name"], "C");
    EXPECT_EQ(json[2]["value"], "2");
}

TEST_F(SettingsCommands, missing_repository_and_missing_setting_fail) {
    const RbaResult repository = run({"settings", "get", "Nobody", "A"});
    EXPECT_EQ(repository.status, 1);
    EXPECT_TRUE(isErrorLine(repository.err, "Nobody"));
    run({"settings", "set", "Mine", "A", "1"});
    const RbaResult setting = run({"settings", "get", "Mine", "B"});
    EXPECT_EQ(setting.status, 1);
    EXPECT_EQ(setting.out, "");
    EXPECT_TRUE(isErrorLine(setting.err, folder().file("RenderingBase/Mine.ini")));
}

TEST_F(SettingsCommands, reading_makes_no_repository) {
    run({"settings", "get", "Nobody", "A"});
    EXPECT_TRUE(std::filesystem::is_empty(folder().path()));
}

TEST_F(SettingsCommands, names_that_cannot_be_are_refused) {
    EXPECT_EQ(run({"settings", "set", "../outside", "A", "1"}).status, 1);
    EXPECT_EQ(run({"settings", "set", "Mine", "two words", "1"}).status, 1);
}

TEST_F(SettingsCommands, damaged_file_fails_and_the_others_are_listed) {
    run({"settings", "set", "Good", "A", "1"});
    const std::string bad = folder().write("RenderingBase/Bad.ini", "no key file\n");
    const RbaResult result = run({"settings", "list"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "Good\n  A = 1\n");
    EXPECT_TRUE(isErrorLine(result.err, bad));
    EXPECT_EQ(run({"settings", "set", "Bad", "A", "1"}).status, 1);
    EXPECT_EQ(readFile(bad), "no key file\n");
}

TEST(EnvCommand, json_has_every_setting_with_null_for_undefined) {
    RbaSettings settings;
    settings.environment = {"KVRStartupPath=/a;/b", "KVRRdgDebug="};
    const Json json = runRba({"--json", "env"}, settings).json();
    ASSERT_TRUE(json.is_object());
    std::vector<std::string> names;
    for (const auto& setting : KVRRbaSettings::All()) names.emplace_back(setting.name);
    EXPECT_EQ(keysOf(json), names);
    EXPECT_EQ(json["KVRStartupPath"], "/a;/b");
    EXPECT_EQ(json["KVRRdgDebug"], "");
    EXPECT_TRUE(json["KVRRdgDenoiser"].is_null());
    EXPECT_TRUE(json["KVRTemp"].is_string());
}

TEST(EnvCommand, text_tells_undefined_from_empty) {
    RbaSettings settings;
    settings.environment = {"KVRStartupPath=/a;/b", "KVRRdgDebug="};
    const std::string text = runRba({"env"}, settings).out;
    const auto valueOf = [&text](const std::string& name) {
        const auto at = text.find(name + " ");
        const auto end = text.find('\n', at);
        const auto value = text.find_first_not_of(' ', at + name.size());
        return text.substr(value, end - value);
    };
    EXPECT_EQ(valueOf("KVRStartupPath"), "/a;/b");
    EXPECT_EQ(valueOf("KVRRdgDebug"), "(empty)");
    EXPECT_EQ(valueOf("KVRRdgDenoiser"), "(not defined)");
}

TEST(EnvCommand, values_that_are_no_utf8_leave_valid_json) {
    RbaSettings settings;
    settings.environment = {"KVRCommandPath=/\xff"};
    EXPECT_EQ(runRba({"--json", "env"}, settings).json()["KVRCommandPath"], "/\xef\xbf\xbd");
}

}  // namespace
}  // namespace rb::test
