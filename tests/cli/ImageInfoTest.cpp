#include "tests/cli/RunRba.h"

#include <span>

namespace rb::test {
namespace {

const std::vector<std::string> kKeys = {"path", "width",   "height",   "format", "formatName",
                                        "dpi",  "widthMm", "heightMm", "profile"};

TEST(ImageInfo, text_tells_size_format_resolution_and_profile) {
    const TempFolder folder;
    writePicture(folder, "a/b.png", 40, 20, KVRPixelImageFormat::RGB, 254);
    RbaSettings inFolder;
    inFolder.folder = folder.path();
    const RbaResult result = runRba({"image", "info", "a/b.png"}, inFolder);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    // 254 dots to the inch are 10 to the millimetre.
    EXPECT_EQ(result.out,
              "a/b.png\n"
              "  size        40 x 20 px\n"
              "  format      RGB (2)\n"
              "  resolution  254 dpi\n"
              "  print size  4.00 x 2.00 mm\n"
              "  profile     none\n");
}

TEST(ImageInfo, text_has_a_dash_for_millimetres_when_resolution_is_not_stated) {
    const TempFolder folder;
    const RbaResult result = runRba({"image", "info", writePicture(folder, "plain.png", 3, 2)});
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.out.find("\n  resolution  not stated\n  print size  -\n"), std::string::npos);
}

TEST(ImageInfo, json_is_an_array_with_the_keys_of_the_table) {
    const TempFolder folder;
    const std::string path = writePicture(folder, "c.png", 40, 20, KVRPixelImageFormat::RGBA, 254);
    const RbaResult result = runRba({"--json", "image", "info", path});
    EXPECT_EQ(result.status, 0);
    const Json json = result.json();
    ASSERT_TRUE(json.is_array());
    ASSERT_EQ(json.size(), 1U);
    EXPECT_EQ(keysOf(json[0]), kKeys);
    EXPECT_EQ(json[0]["path"], path);
    EXPECT_EQ(json[0]["width"], 40);
    EXPECT_EQ(json[0]["height"], 20);
    EXPECT_EQ(json[0]["format"], 3);
    EXPECT_EQ(json[0]["formatName"], "RGBA");
    EXPECT_EQ(json[0]["dpi"], 254);
    EXPECT_EQ(json[0]["widthMm"], 4);
    EXPECT_EQ(json[0]["heightMm"], 2);
    EXPECT_TRUE(json[0]["profile"].is_null());
}

TEST(ImageInfo, json_has_null_millimetres_without_resolution) {
    const TempFolder folder;
    const Json json =
        runRba({"--json", "image", "info", writePicture(folder, "p.png", 3, 2)}).json();
    EXPECT_EQ(keysOf(json[0]), kKeys);
    EXPECT_EQ(json[0]["dpi"], 0);
    EXPECT_TRUE(json[0]["widthMm"].is_null());
    EXPECT_TRUE(json[0]["heightMm"].is_null());
}

TEST(ImageInfo, profile_is_named_as_in_the_file) {
    const TempFolder folder;
    const std::string path = folder.file("tagged.png");
    const auto image =
        KVRVar<KVRPixelImage>::Adopt(new KVRPixelImage(4, 4, KVRPixelImageFormat::RGB));
    const auto profile = KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateSRGB());
    image->AssignColorProfile(profile.Get(), 0);
    ASSERT_EQ(image->WriteToFile(path, "PNG"), S_OK);
    const std::string name(profile->getProfileName().View());
    ASSERT_NE(name, "");
    EXPECT_EQ(runRba({"--json", "image", "info", path}).json()[0]["profile"], name);
    EXPECT_NE(runRba({"image", "info", path}).out.find("\n  profile     " + name + "\n"),
              std::string::npos);
}

/// The built-in profile with ESC for the first letter of its name (UTF-16, big endian).
KVRVar<KVRMMColorProfile> profileWithEscape() {
    const auto profile = KVRVar<KVRMMColorProfile>::Adopt(KVRMMColorProfile::CreateSRGB());
    const std::string name(profile->getProfileName().View());
    std::string wide;
    for (const char c : name) wide += {'\0', c};
    const auto data = profile->GetData();
    std::string bytes(reinterpret_cast<const char*>(data.data()), data.size());
    bytes.at(bytes.find(wide) + 1) = '\x1b';
    return KVRVar<KVRMMColorProfile>::Adopt(
        KVRMMColorProfile::CreateFromMemory(std::as_bytes(std::span(bytes))));
}

TEST(ImageInfo, profile_name_and_path_do_not_steer_the_terminal) {
    const TempFolder folder;
    const std::string path = folder.file("a\x1b[2Jb.png");
    const auto image =
        KVRVar<KVRPixelImage>::Adopt(new KVRPixelImage(4, 4, KVRPixelImageFormat::RGB));
    const auto profile = profileWithEscape();
    ASSERT_TRUE(profile);
    const std::string name(profile->getProfileName().View());
    ASSERT_TRUE(name.starts_with('\x1b')) << name;
    image->AssignColorProfile(profile.Get(), 0);
    ASSERT_EQ(image->WriteToFile(path, "PNG"), S_OK);
    const std::string text = runRba({"image", "info", path}).out;
    EXPECT_EQ(text.find('\x1b'), std::string::npos);
    EXPECT_TRUE(text.starts_with(folder.file("a\\x1b[2Jb.png") + "\n")) << text;
    EXPECT_TRUE(text.ends_with("\n  profile     \\x1b" + name.substr(1) + "\n")) << text;
    const Json json = runRba({"--json", "image", "info", path}).json();
    EXPECT_EQ(json[0]["path"], path);
    EXPECT_EQ(json[0]["profile"], name);
}

TEST(ImageInfo, floating_point_images_are_told_as_they_are) {
    const TempFolder folder;
    const std::string path = folder.write("light.hdr", radianceFile(3, 2));
    const Json json = runRba({"--json", "image", "info", path}).json();
    EXPECT_EQ(json[0]["formatName"], "RGB_f");
    EXPECT_EQ(json[0]["format"], 10);
}

TEST(ImageInfo, one_failing_among_several_keeps_its_place) {
    const TempFolder folder;
    const std::string first = writePicture(folder, "1.png", 3, 2);
    const std::string missing = folder.file("2.png");
    const std::string last = writePicture(folder, "3.png", 5, 4);
    const RbaResult result = runRba({"--json", "image", "info", first, missing, last});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(isErrorLine(result.err, missing));
    const Json json = result.json();
    ASSERT_EQ(json.size(), 3U);
    EXPECT_EQ(keysOf(json[0]), kKeys);
    EXPECT_EQ(keysOf(json[1]), (std::vector<std::string>{"path", "error"}));
    EXPECT_EQ(json[1]["path"], missing);
    EXPECT_TRUE(json[1]["error"].get<std::string>().starts_with("expected "));
    EXPECT_EQ(keysOf(json[2]), kKeys);
    EXPECT_EQ(json[2]["width"], 5);
}

TEST(ImageInfo, text_of_the_good_ones_is_printed_when_one_fails) {
    const TempFolder folder;
    const std::string good = writePicture(folder, "good.png", 3, 2);
    const RbaResult result = runRba({"image", "info", folder.file("missing.png"), good});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.out.starts_with(good + "\n  size        3 x 2 px\n")) << result.out;
}

TEST(ImageInfo, damaged_file_is_one_line_with_file_expected_and_found) {
    const TempFolder folder;
    const std::string whole = readFile(writePicture(folder, "whole.png", 64, 64));
    const std::string cut = folder.write("cut.png", whole.substr(0, whole.size() / 2));
    const std::string other = folder.write("text.png", "this is no picture");
    const std::string empty = folder.write("empty.png");
    for (const std::string& path : {cut, other, empty, folder.path().string()}) {
        const RbaResult result = runRba({"image", "info", path});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(isErrorLine(result.err, path));
    }
}

TEST(ImageInfo, unusual_file_names_work) {
    const TempFolder folder;
    RbaSettings inFolder;
    inFolder.folder = folder.path();
    for (const std::string name :
         {"two words.png", "Eiche \xc3\xa4\xe2\x9c\x93.png", "find", "settings", "[a,b]", "a=b.png",
          "{x}.png", "#1.png", "'quoted\".png", "@oak", "a.b.c.png.3"}) {
        writePicture(folder, name, 3, 2);
        const RbaResult result = runRba({"--json", "image", "info", "first.png", name}, inFolder);
        const Json json = result.json();
        ASSERT_EQ(json.size(), 2U) << name;
        EXPECT_EQ(json[1]["path"], name);
        EXPECT_EQ(json[1]["width"], 3) << result.err;
    }
}

TEST(ImageInfo, names_with_a_leading_dash_stand_behind_two_dashes) {
    const TempFolder folder;
    RbaSettings inFolder;
    inFolder.folder = folder.path();
    for (const std::string name : {"-dash.png", "--json", "-", "--"}) {
        writePicture(folder, name, 3, 2);
        const RbaResult result =
            runRba({"image", "info", "--json", "--", "also.png", name}, inFolder);
        const Json json = result.json();
        ASSERT_EQ(json.size(), 2U) << name;
        EXPECT_EQ(json[1]["path"], name);
        EXPECT_EQ(json[1]["width"], 3) << result.err;
    }
}

TEST(ImageInfo, path_that_is_no_utf8_fails_and_leaves_valid_json) {
    const TempFolder folder;
    const std::string path = folder.file("bad\xff\xfe.png");
    const RbaResult result = runRba({"--json", "image", "info", path});
    EXPECT_EQ(result.status, 1);
    const Json json = result.json();
    EXPECT_EQ(json[0]["path"], folder.file("bad\xef\xbf\xbd\xef\xbf\xbd.png"));
    EXPECT_EQ(json[0]["error"], "expected a path in UTF-8, found other bytes");
}

TEST(ImageInfo, error_about_a_name_with_a_line_break_stays_one_line) {
    const RbaResult result = runRba({"image", "info", "/nowhere/a\nb.png"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(isErrorLine(result.err, "/nowhere/a\\x0ab.png"));
}

}  // namespace
}  // namespace rb::test
