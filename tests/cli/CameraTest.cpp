#include "tests/cli/RunRba.h"

#include <array>

namespace rb::test {
namespace {

RbaResult runCamera(const Arguments& more, bool json = false) {
    Arguments arguments = {"camera"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    if (json) arguments.insert(arguments.begin(), "--json");
    return runRba(arguments);
}

/// The only number that a command gives, under the key that it has.
double numberOf(const Arguments& more, const std::string& key) {
    const RbaResult result = runCamera(more, true);
    EXPECT_EQ(result.status, 0) << result.err;
    const Json json = result.json();
    EXPECT_EQ(keysOf(json), std::vector<std::string>{key});
    return json[key].get<double>();
}

TEST(CameraEv, follows_sensitivity_time_and_aperture) {
    EXPECT_NEAR(numberOf({"ev", "--iso", "100"}, "ev"), 0.12182406224682825, 2e-15);
    EXPECT_NEAR(
        numberOf({"ev", "--iso", "400", "--time=0.016666666666666666", "--aperture=5.6"}, "ev"),
        1.6770392321143341, 2e-15);
    EXPECT_NEAR(numberOf({"ev", "--iso=100", "--time", "0.006"}, "ev"), 0.12182407478722979, 2e-15);
    EXPECT_EQ(numberOf({"ev", "--iso", "400", "--time=1/60"}, "ev"),
              numberOf({"ev", "--iso", "400", "--time=0.016666666666666666"}, "ev"));
    EXPECT_EQ(numberOf({"ev", "--iso=0"}, "ev"), -1.4);
    EXPECT_EQ(numberOf({"ev", "--iso", "-1e-3"}, "ev"), -1.4);
    EXPECT_EQ(numberOf({"ev", "--iso=250", "--aperture=0"}, "ev"),
              numberOf({"ev", "--iso=250", "--aperture=8"}, "ev"));
    EXPECT_EQ(runCamera({"ev", "--iso", "-100"}).out, "EV -1.4\n");
}

TEST(CameraIso, is_the_inverse) {
    EXPECT_DOUBLE_EQ(numberOf({"iso", "--ev", "0"}, "iso"), 91.90249524346346);
    EXPECT_DOUBLE_EQ(numberOf({"iso", "--ev", "-3", "--time=0.5", "--aperture=2"}, "iso"),
                     59.83235315404646);
    EXPECT_EQ(numberOf({"iso", "--ev=3", "--aperture=0"}, "iso"), 0);
    EXPECT_EQ(runCamera({"iso", "--ev=3", "--aperture=0"}).out, "ISO 0\n");
    EXPECT_TRUE(runCamera({"iso", "--ev", "2000"}, true).json()["iso"].is_null());
    EXPECT_EQ(runCamera({"iso", "--ev", "2000"}).out, "ISO inf\n");
}

TEST(CameraEv, text_and_json_have_all_digits) {
    const std::string text = runCamera({"ev", "--iso=100"}).out;
    ASSERT_TRUE(text.starts_with("EV 0.12182406")) << text;
    const double ev = numberOf({"ev", "--iso=100"}, "ev");
    EXPECT_EQ(std::stod(text.substr(3)), ev);
    EXPECT_NE(static_cast<double>(static_cast<float>(ev)), ev);
    EXPECT_NEAR(numberOf({"iso", "--ev", text.substr(3, text.size() - 4)}, "iso"), 100, 1e-12);
    EXPECT_EQ(runCamera({"colour", "0.1", "2"}).out, "0.00025\n");
}

TEST(CameraEv, wrong_numbers_are_wrong_usage) {
    const std::vector<std::pair<Arguments, std::string>> cases = {
        {{"ev"}, ""},
        {{"ev", "--iso", "x"}, "--iso"},
        {{"ev", "--iso", "nan"}, "--iso"},
        {{"ev", "--iso", "-inf"}, "--iso"},
        {{"ev", "--iso", "1e999"}, "--iso"},
        {{"ev", "--iso=100", "--time", "0"}, "--time"},
        {{"ev", "--iso=100", "--time", "-1"}, "--time"},
        {{"ev", "--iso=100", "--time="}, "--time"},
        {{"ev", "--iso=100", "--time", "1/0"}, "--time"},
        {{"ev", "--iso=100", "--time", "0/60"}, "--time"},
        {{"ev", "--iso=100", "--time", "-1/60"}, "--time"},
        {{"ev", "--iso=100", "--time", "1/60/2"}, "--time"},
        {{"ev", "--iso=100", "--time", "1/"}, "--time"},
        {{"ev", "--iso=100", "--time", "/60"}, "--time"},
        {{"ev", "--iso=100", "--time", "1e308/1e-308"}, "--time"},
        {{"ev", "--iso=100", "--aperture", "-1"}, "--aperture"},
        {{"iso", "--ev", "inf"}, "--ev"},
        {{"iso", "--ev=1", "--aperture", "nan"}, "--aperture"},
        {{"colour", "nan", "0"}, "V"},
        {{"colour", "1", "0.5"}, "P"},
        {{"colour", "1"}, ""},
        {{"to-screen", "0", "0", "0", "600"}, "W"},
        {{"to-screen", "0", "0", "800", "-600"}, "H"},
        {{"to-screen", "nan", "0", "800", "600"}, "RX"},
        {{"to-ratio", "0", "nan", "800", "600"}, "SY"},
        {{"to-ratio", "0", "0", "inf", "600"}, "W"},
        {{"to-ratio", "0", "0", "800"}, ""},
    };
    for (const auto& [arguments, name] : cases) {
        const RbaResult result = runCamera(arguments);
        EXPECT_EQ(result.status, 2) << testing::PrintToString(arguments);
        EXPECT_EQ(result.out, "") << testing::PrintToString(arguments);
        if (name.empty())
            EXPECT_TRUE(result.err.starts_with("rba: expected ")) << result.err;
        else
            EXPECT_TRUE(isErrorLine(result.err, name));
    }
}

void expectPoint(const Arguments& arguments, const std::array<std::string, 2>& keys, double x,
                 double y, int status) {
    const RbaResult result = runCamera(arguments, true);
    EXPECT_EQ(result.status, status == 0 ? 0 : 1) << testing::PrintToString(arguments);
    const Json json = result.json();
    EXPECT_EQ(keysOf(json), (std::vector<std::string>{keys[0], keys[1], "status"}));
    EXPECT_EQ(json[keys[0]], x) << testing::PrintToString(arguments);
    EXPECT_EQ(json[keys[1]], y) << testing::PrintToString(arguments);
    EXPECT_EQ(json["status"], status);
}

constexpr int kFailure = -2147467259;  // 0x80004005

TEST(CameraToScreen, places_points_from_the_top_left_corner) {
    expectPoint({"to-screen", "1", "1", "800", "600"}, {"sx", "sy"}, 800, 0, 0);
    expectPoint({"to-screen", "-0.25", "-.5", "800", "600"}, {"sx", "sy"}, 300, 450, 0);
    expectPoint({"to-screen", "-1", "-1", "801", "601"}, {"sx", "sy"}, 0, 601, 0);
    EXPECT_EQ(runCamera({"to-screen", "0.5", "-0.25", "1920", "1080"}).out,
              "sx 1440 px, sy 675 px, status 0\n");
}

TEST(CameraToScreen, outside_prints_the_centre_and_fails) {
    expectPoint({"to-screen", "1.01", "0", "800", "600"}, {"sx", "sy"}, 400, 300, kFailure);
    expectPoint({"to-screen", "0", "-inf", "800", "600"}, {"sx", "sy"}, 400, 300, kFailure);
    const RbaResult text = runCamera({"to-screen", "1.01", "-2", "800", "600"});
    EXPECT_EQ(text.status, 1);
    EXPECT_EQ(text.out, "sx 400 px, sy 300 px, status -2147467259\n");
    EXPECT_EQ(text.err,
              "rba: 1.01 -2: expected a point in the viewport (RX and RY from -1 to 1), found one "
              "outside, and took the centre\n");
}

TEST(CameraToRatio, gives_ratios_from_the_centre) {
    expectPoint({"to-ratio", "0", "600", "800", "600"}, {"rx", "ry"}, -1, -1, 0);
    expectPoint({"to-ratio", "600", "225", "800", "600"}, {"rx", "ry"}, 0.5, 0.25, 0);
    EXPECT_EQ(runCamera({"to-ratio", "600", "225", "800", "600"}).out,
              "rx 0.5, ry 0.25, status 0\n");
}

TEST(CameraToRatio, outside_prints_zero_and_fails) {
    expectPoint({"to-ratio", "-1", "300", "800", "600"}, {"rx", "ry"}, 0, 0, kFailure);
    expectPoint({"to-ratio", "400", "600.5", "800", "600"}, {"rx", "ry"}, 0, 0, kFailure);
    const RbaResult text = runCamera({"to-ratio", "400", "600.5", "800", "600"});
    EXPECT_EQ(text.status, 1);
    EXPECT_EQ(text.out, "rx 0, ry 0, status -2147467259\n");
    EXPECT_EQ(text.err,
              "rba: 400 600.5: expected a point in the viewport (SX from 0 to 800, SY from 0 to "
              "600), found one outside, and took the centre\n");
}

TEST(CameraColour, maps_values_by_the_number_of_the_parameter) {
    EXPECT_DOUBLE_EQ(numberOf({"colour", "50", "0"}, "value"), 1.1665);
    EXPECT_DOUBLE_EQ(numberOf({"colour", "-20", "1"}, "value"), 0.6);
    EXPECT_DOUBLE_EQ(numberOf({"colour", "-20", "2"}, "value"), -0.05);
    EXPECT_DOUBLE_EQ(numberOf({"colour", "50", "3"}, "value"), 0.25);
    EXPECT_DOUBLE_EQ(numberOf({"colour", "50", "4"}, "value"), 1.5);
    EXPECT_DOUBLE_EQ(numberOf({"colour", "50", "5"}, "value"), 0.5);
    EXPECT_EQ(numberOf({"colour", "50", "6"}, "value"), 0);
    EXPECT_EQ(numberOf({"colour", "50", "-1"}, "value"), 0);
    EXPECT_EQ(runCamera({"colour", "50", "4"}).out, "1.5\n");
}

TEST(CameraFocus, is_the_way_or_its_part_along_the_line_of_sight) {
    const Arguments conic = {"focus",    "--eye",   "1,2,3",   "--target",
                             "1,2,-100", "--point", "-2,-2,-9"};
    EXPECT_EQ(numberOf(conic, "distance"), 13);
    Arguments parallel = conic;
    parallel.emplace_back("--parallel");
    EXPECT_EQ(numberOf(parallel, "distance"), 12);
    EXPECT_EQ(runCamera(parallel).out, "12\n");
    EXPECT_EQ(numberOf({"focus", "--parallel", "--eye=-1,0,0", "--target=1,0,0", "--point=-3,5,5"},
                       "distance"),
              -2);
    // The float next to 0.1 prints as 0.1.
    EXPECT_EQ(numberOf({"focus", "--eye=0,0,0", "--target=1,0,0", "--point=.1,0,0"}, "distance"),
              0.1);
}

TEST(CameraFocus, other_texts_than_three_numbers_are_wrong_usage) {
    for (const char* wrong :
         {"", "1", "1,2", "1,2,", "1,2,3,4", "1,2,x", "1,2,inf", "nan,0,0", "1,2,1e39", "1;2;3"})
        for (const std::string option : {"--eye", "--target", "--point"}) {
            Arguments arguments = {"focus"};
            for (const std::string name : {"--eye", "--target", "--point"})
                arguments.insert(arguments.end(), {name, name == option ? wrong : "1,2,3"});
            const RbaResult result = runCamera(arguments);
            EXPECT_EQ(result.status, 2) << wrong;
            EXPECT_EQ(result.out, "") << wrong;
            EXPECT_TRUE(isErrorLine(result.err, option));
        }
    EXPECT_EQ(runCamera({"focus", "--eye=1,2,3", "--target=1,2,3"}).status, 2);
}

}  // namespace
}  // namespace rb::test
