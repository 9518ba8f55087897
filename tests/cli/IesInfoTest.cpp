#include "tests/cli/RunRba.h"
#include "tests/photometry/IesBuilder.h"

namespace rb::test {
namespace {

const std::vector<std::string> kKeys = {"path",
                                        "formatVersion",
                                        "versionText",
                                        "manufacturer",
                                        "luminaire",
                                        "lamp",
                                        "luminaireCatalogue",
                                        "lampCatalogue",
                                        "verticalAngleCount",
                                        "horizontalAngleCount",
                                        "photometricType",
                                        "ballastFactor",
                                        "intensityScale",
                                        "inputWatts",
                                        "filePath",
                                        "verticalAngles",
                                        "horizontalAngles",
                                        "candelaValues"};

IesBuilder namedLuminaire() {
    IesBuilder ies;
    ies.keywords = "[MANUFAC] Lamps and Sons\n[LUMCAT] L-1\n[LUMINAIRE] Lantern\n[LAMP] Bulb\n";
    ies.lampCount = "2";
    ies.multiplier = "1.5";
    ies.ballast = "1.5";
    return ies;
}

TEST(IesInfo, text_is_for_people) {
    const TempFolder folder;
    const std::string path = folder.write("a.ies", namedLuminaire().build());
    const RbaResult result = runRba({"ies", "info", path});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, path +
                              "\n"
                              "  luminaire   Lantern (L-1)\n"
                              "  maker       Lamps and Sons\n"
                              "  lamp        Bulb\n"
                              "  dialect     LM-63-1995\n"
                              "  type        C\n"
                              "  vertical    3, from 0 to 180 degrees\n"
                              "  horizontal  1, at 0 degrees\n"
                              "  symmetry    the same all around the axis\n"
                              "  scale       3 (2 lamps, multiplier 1.5)\n"
                              "  watts       40\n"
                              "  peak        90 cd, at vertical 0, horizontal 0 degrees\n");
}

TEST(IesInfo, json_has_the_fields_of_the_record) {
    const TempFolder folder;
    const std::string path = folder.write("a.ies", namedLuminaire().build());
    const Json json = runRba({"--json", "ies", "info", path}).json();
    ASSERT_EQ(json.size(), 1U);
    EXPECT_EQ(keysOf(json[0]), kKeys);
    EXPECT_EQ(json[0]["formatVersion"], 3);
    EXPECT_EQ(json[0]["versionText"], "IESNA:LM-63-1995");
    EXPECT_EQ(json[0]["manufacturer"], " Lamps and Sons");  // with the blank
    EXPECT_EQ(json[0]["lampCatalogue"], "");
    EXPECT_EQ(json[0]["photometricType"], 1);
    EXPECT_EQ(json[0]["ballastFactor"], 1.5);
    EXPECT_EQ(json[0]["intensityScale"], 3);
    EXPECT_EQ(json[0]["verticalAngles"], (Json{0, 90, 180}));
    EXPECT_EQ(json[0]["horizontalAngles"], Json::array({0}));
    EXPECT_EQ(json[0]["candelaValues"], (Json{30, 20, 10}));  // not scaled
    EXPECT_EQ(json[0]["filePath"], path);
}

TEST(IesInfo, symmetry_is_told_in_words) {
    struct Case {
        const char* type;
        std::vector<float> vertical, horizontal;
        const char* words;
    };
    const Case cases[] = {
        {"1", {0, 90}, {0, 90}, "the four quadrants are alike"},
        {"1", {0, 90}, {0, 90, 180}, "mirrored at the plane of C0 and C180"},
        {"1", {0, 90}, {90, 180, 270}, "mirrored at the plane of C90 and C270"},
        {"1", {0, 90}, {0, 180, 360}, "none, all around"},
        {"2", {-90, 90}, {-90, 90}, "none"},
        {"2", {0, 90}, {-90, 90}, "above and below are alike"},
        {"3", {0, 90}, {0, 90}, "stored for a quadrant"},
        {"4", {0, 90}, {0, 90}, "-"},
    };
    const TempFolder folder;
    for (const Case& test : cases) {
        IesBuilder ies;
        ies.type = test.type;
        ies.vertical = test.vertical;
        ies.horizontal = test.horizontal;
        ies.candela.assign(test.vertical.size() * test.horizontal.size(), 5);
        const RbaResult result = runRba({"ies", "info", folder.write("a.ies", ies.build())});
        EXPECT_NE(result.out.find(std::string("\n  symmetry    ") + test.words + "\n"),
                  std::string::npos)
            << result.out;
    }
}

TEST(IesInfo, hostile_texts_stay_on_their_lines) {
    const TempFolder folder;
    IesBuilder ies;
    ies.version = "\x1b[31mred";
    ies.keywords = "[LUMINAIRE] a\tb\x1b[0m\xff\n";
    const std::string path = folder.write("a.ies", ies.build());
    const RbaResult text = runRba({"ies", "info", path});
    EXPECT_EQ(text.out.find('\x1b'), std::string::npos);
    EXPECT_EQ(runRba({"--json", "ies", "info", path}).json()[0]["luminaire"],
              " a\tb\x1b[0m\xc3\xbf");
}

TEST(IesInfo, texts_that_are_no_utf8_are_those_of_windows_1252) {
    const TempFolder folder;
    IesBuilder ies;
    ies.keywords =
        "[MANUFAC]M\xfcller\x96\x80\n[LUMINAIRE]Stra\xc3\x9f"
        "e\n[LAMP]\x81\n";
    const std::string path = folder.write("a.ies", ies.build());
    const Json json = runRba({"--json", "ies", "info", path}).json()[0];
    EXPECT_EQ(json["manufacturer"], "M\u00fcller\u2013\u20ac");
    EXPECT_EQ(json["luminaire"], "Stra\u00dfe");  // is UTF-8 already
    EXPECT_EQ(json["lamp"], "\ufffd");
    EXPECT_NE(runRba({"ies", "info", path}).out.find("maker       M\u00fcller\u2013\u20ac\n"),
              std::string::npos);
}

TEST(IesInfo, files_that_cannot_be_read_are_told_and_do_not_keep_the_others) {
    const TempFolder folder;
    const std::string good = folder.write("good.ies", IesBuilder().build());
    const std::string text = IesBuilder().build();
    const std::string cut = folder.write("cut.ies", text.substr(0, text.size() - 4));
    const std::string missing = folder.file("missing.ies");
    for (const std::string& bad :
         {cut, missing, folder.write("empty.ies"),
          folder.write("text.ies", "no\nphotometry\nhere\n"), folder.path().string()}) {
        const RbaResult result = runRba({"ies", "info", bad, good});
        EXPECT_EQ(result.status, 1);
        EXPECT_TRUE(isErrorLine(result.err, bad));
        EXPECT_TRUE(result.out.starts_with(good + "\n"));
    }
    const Json json = runRba({"--json", "ies", "info", cut, good}).json();
    EXPECT_EQ(keysOf(json[0]), (std::vector<std::string>{"path", "error"}));
    EXPECT_EQ(keysOf(json[1]), kKeys);
    EXPECT_EQ(runRba({"ies", "info"}).status, 2);
}

}  // namespace
}  // namespace rb::test
