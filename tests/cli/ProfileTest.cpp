#include "tests/cli/RunRba.h"
#include "tests/cli/TextureFiles.h"

#include <regex>
#include <utility>

namespace rb::test {
namespace {

/// The measures that `--json --profile` tells.
Json measuresOf(const RbaResult& result) { return Json::parse(result.err); }

RbaSettings environment(const std::string& variable) {
    RbaSettings settings;
    settings.environment = {variable};
    return settings;
}

const Json* rowOf(const Json& measures, const std::string& timer) {
    for (const Json& row : measures)
        if (row["timer"] == timer) return &row;
    return nullptr;
}

TEST(Profile, is_told_beside_the_results) {
    const TempFolder folder;
    const std::string path = writePicture(folder, "a.png", 4, 3);
    const RbaResult plain = runRba({"image", "info", path});
    EXPECT_EQ(plain.err, "");
    const RbaResult profiled = runRba({"--profile", "image", "info", path});
    EXPECT_EQ(profiled.status, 0);
    EXPECT_EQ(profiled.out, plain.out);
    const std::regex table(
        "group +timer +hits +total ms +mean ms\n"
        "(KVR[A-Za-z]+ +[A-Za-z]+ +1 +[0-9]+[.][0-9]{3} +[0-9]+[.][0-9]{3}\n){3}");
    EXPECT_TRUE(std::regex_match(profiled.err, table)) << profiled.err;
    // Wherever it stands, and quiet or not: it was asked for.
    EXPECT_NE(runRba({"image", "info", path, "--quiet", "--profile"}).err, "");
}

TEST(Profile, counts_every_call_of_the_library) {
    const TempFolder folder;
    const std::string a = writePicture(folder, "a.png", 4, 3);
    const std::string b = writePicture(folder, "b.png", 4, 3);
    const Json measures = measuresOf(runRba({"--json", "--profile", "image", "info", a, b, a}));
    ASSERT_EQ(measures.size(), 3U);
    for (const char* timer : {"CreatePixelImageFromFullPath", "GiveImageInfos", "GetImageInfo"}) {
        const Json* row = rowOf(measures, timer);
        ASSERT_TRUE(row) << timer;
        EXPECT_EQ(keysOf(*row),
                  (std::vector<std::string>{"group", "timer", "hitCount", "accumulatedMs"}));
        EXPECT_EQ((*row)["hitCount"], 3) << timer;
        EXPECT_GE((*row)["accumulatedMs"], 0.0) << timer;
    }
    EXPECT_EQ((*rowOf(measures, "GiveImageInfos"))["group"], "KVRRbaImageServices");
    EXPECT_EQ((*rowOf(measures, "GetImageInfo"))["group"], "KVRMMRasterAdministrator");
    for (std::size_t i = 1; i < measures.size(); ++i)
        EXPECT_GE(measures[i - 1]["accumulatedMs"], measures[i]["accumulatedMs"]);
}

TEST(Profile, has_each_measure_when_they_are_kept) {
    const TempFolder folder;
    const std::string path = writePicture(folder, "a.png", 40, 30);
    const Json measures = measuresOf(runRba({"--json", "--profile", "image", "info", path, path},
                                            environment("KVRRbaProfilerKeepAllSamples=")));
    ASSERT_FALSE(measures.empty());
    for (const Json& row : measures) {
        ASSERT_EQ(row["measuresMs"].size(), 2U);
        const double sum = row["measuresMs"][0].get<double>() + row["measuresMs"][1].get<double>();
        EXPECT_NEAR(row["accumulatedMs"].get<double>(), sum, 1e-9);
    }
}

TEST(Profile, is_told_of_failures_and_of_commands_without_a_call) {
    const TempFolder folder;
    const std::string missing = folder.file("missing.png");
    const RbaResult failed = runRba({"--profile", "image", "info", missing});
    EXPECT_EQ(failed.status, 1);
    EXPECT_NE(failed.err.find(missing + ": expected"), std::string::npos);
    EXPECT_NE(failed.err.find("CreatePixelImageFromFullPath"), std::string::npos);
    const Arguments none = {"--profile", "settings", "get", "NoSuchRepository", "name"};
    const std::string config = "XDG_CONFIG_HOME=" + folder.path().string();
    const std::string text = runRba(none, environment(config)).err;
    EXPECT_NE(text.find("No call of the library was measured.\n"), std::string::npos) << text;
    const RbaResult wrong = runRba({"--profile", "image", "info"});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_EQ(wrong.err.find("timer"), std::string::npos) << wrong.err;
}

TEST(Profile, groups_of_the_environment_alone_print_nothing) {
    const RbaResult result =
        runRba({"env"}, environment("KVRRbaProfilerActiveGroups=KVRRbaSettings"));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
}

TEST(Profile, every_group_of_commands_has_calls) {
    const TempFolder folder;
    const std::string out = folder.file("out.png");
    const std::string picture = writePicture(folder, "a.png", 8, 8);
    const std::pair<Arguments, const char*> cases[] = {
        {{"image", "grey", picture, out}, "ComputeGreyScaleImage"},
        {{"image", "grey", picture, out}, "WriteToFile"},
        {{"image", "icon", picture, out, "--size=4"}, "ComputeIconImage"},
        {{"image", "find", picture, "--kind=1"}, "FindImageInPaths"},
        {{"image", "units", "dot-size", "96"}, "DotsPerInchToDotsPerMM"},
        {{"image", "half", "0.1"}, "float_to_half"},
        {{"texture", "import", picture}, "ImportTexture"},
        {{"camera", "ev", "--iso=100"}, "ComputeEVValuefromISO"},
        {{"camera", "focus", "--eye=0,0,0", "--target=1,0,0", "--point=1,1,0"}, "GetFocusDistance"},
        {{"resolve", picture}, "Resolve"},
        {{"display", "vendor"}, "GetGraphicCardVendor"},
        {{"display", "unit", "mm"}, "IsMetricUnit"},
        {{"fitting"}, "GetMaterialFittingController"},
        {{"env"}, "All"},
    };
    for (const auto& [command, timer] : cases) {
        Arguments arguments = command;
        arguments.insert(arguments.begin(), {"--json", "--profile"});
        const RbaResult result = runRba(arguments);
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_TRUE(rowOf(measuresOf(result), timer)) << timer << "\n" << result.err;
    }
}

}  // namespace
}  // namespace rb::test
