#include "tests/cli/RunRba.h"

namespace rb::test {
namespace {

const std::vector<std::string> kKeys = {"status", "found"};

TEST(ImageFind, file_itself_is_found) {
    const TempFolder folder;
    const std::string path = std::filesystem::canonical(folder.path()) / "oak.png";
    folder.write("oak.png");
    const RbaResult text = runRba({"image", "find", path, "--kind", "1"});
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(text.out, "status 0, found: " + path + "\n");
    const RbaResult json = runRba({"--json", "image", "find", path, "--kind=1"});
    EXPECT_EQ(json.status, 0);
    EXPECT_EQ(keysOf(json.json()), kKeys);
    EXPECT_EQ(json.json()["status"], 0);
    EXPECT_EQ(json.json()["found"], path);
}

TEST(ImageFind, missing_file_is_status_minus_2) {
    const RbaResult text = runRba({"image", "find", "/nowhere/oak.png", "--kind", "1"});
    EXPECT_EQ(text.status, 1);
    EXPECT_EQ(text.out, "");
    EXPECT_TRUE(isErrorLine(text.err, "/nowhere/oak.png"));
    EXPECT_NE(text.err.find("status -2, not found"), std::string::npos);
    const RbaResult json = runRba({"--json", "image", "find", "/nowhere/oak.png", "--kind", "1"});
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(keysOf(json.json()), kKeys);
    EXPECT_EQ(json.json()["status"], -2);
    EXPECT_TRUE(json.json()["found"].is_null());
}

TEST(ImageFind, extension_of_another_kind_is_status_minus_1) {
    const TempFolder folder;
    const std::string path = folder.write("oak.png");
    const RbaResult text = runRba({"image", "find", path, "--kind", "4"});
    EXPECT_EQ(text.status, 1);
    EXPECT_TRUE(isErrorLine(text.err, path));
    EXPECT_NE(text.err.find("status -1, extension not accepted"), std::string::npos);
    EXPECT_EQ(runRba({"--json", "image", "find", path, "--kind", "4"}).json()["status"], -1);
}

TEST(ImageFind, kind_that_there_is_not_is_wrong_usage) {
    const TempFolder folder;
    const std::string path = folder.write("oak.png");
    for (const std::string kind : {"0", "5", "9", "-7"}) {
        const RbaResult result = runRba({"--json", "image", "find", path, "--kind", kind});
        EXPECT_EQ(result.status, 2) << kind;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err,
                  "rba: --kind: expected 1 (images), 2 (effects), 3 (environment maps) or 4 "
                  "(photometric tables), found " +
                      kind + "\n");
    }
}

TEST(ImageFind, refused_link_is_told_by_the_extension_of_its_target) {
    const TempFolder folder;
    folder.write("o.gif");
    std::filesystem::create_symlink("o.gif", folder.file("l.png"));
    const RbaResult result = runRba({"image", "find", folder.file("l.png"), "--kind", "1"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(isErrorLine(result.err, folder.file("l.png")));
    EXPECT_NE(result.err.find("status -1, "), std::string::npos);
    EXPECT_TRUE(result.err.ends_with(", found 'gif'\n")) << result.err;
}

TEST(ImageFind, startup_path_is_searched_for_the_file_name) {
    const TempFolder folder;
    const std::string path = folder.write("install/stickers/oak.png");
    RbaSettings settings;
    settings.environment = {"KVRStartupPath=" + folder.file("install")};
    const Json json =
        runRba({"--json", "image", "find", "/nowhere/oak.png", "--kind", "1"}, settings).json();
    EXPECT_EQ(json["status"], 0);
    EXPECT_EQ(json["found"], path);
}

TEST(ImageFind, catalogue_setting_comes_before_the_startup_path) {
    const TempFolder folder;
    folder.write("install/stickers/oak.png");
    const std::string path = folder.write("catalogue/oak.png");
    RbaSettings settings;
    settings.environment = {"KVRStartupPath=" + folder.file("install"),
                            "XDG_CONFIG_HOME=" + folder.file("config")};
    runRba({"settings", "set", "MaterialOptionsSettings", "CatalagPath", folder.file("catalogue")},
           settings);
    const Json json =
        runRba({"--json", "image", "find", "/nowhere/oak.png", "--kind", "1"}, settings).json();
    EXPECT_EQ(json["found"], path);
}

}  // namespace
}  // namespace rb::test
