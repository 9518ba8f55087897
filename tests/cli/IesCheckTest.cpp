#include "tests/cli/RunRba.h"
#include "tests/photometry/IesBuilder.h"

#include <set>

namespace rb::test {
namespace {

using Codes = std::set<std::string>;

class IesCheck : public testing::Test {
protected:
    /// The codes of the findings of a file that can be read.
    Codes codesOf(const std::string& text) {
        const std::string path = m_folder.write("a.ies", text);
        const RbaResult result = runRba({"--json", "ies", "check", path});
        EXPECT_EQ(result.status, 0) << result.err << text;
        Codes codes;
        const Json json = result.json();
        EXPECT_EQ(keysOf(json[0]), (std::vector<std::string>{"path", "findings"}));
        EXPECT_EQ(json[0]["path"], path);
        for (const Json& finding : json[0]["findings"]) {
            EXPECT_EQ(keysOf(finding), (std::vector<std::string>{"code", "message"}));
            codes.insert(finding["code"]);
        }
        return codes;
    }
    /// The same with other angles; every intensity is 5.
    Codes codesOf(IesBuilder ies, std::vector<float> vertical, std::vector<float> horizontal) {
        ies.candela.assign(vertical.size() * horizontal.size(), 5);
        ies.vertical = std::move(vertical);
        ies.horizontal = std::move(horizontal);
        return codesOf(ies.build());
    }
    const TempFolder& folder() const { return m_folder; }

private:
    TempFolder m_folder;
};

TEST_F(IesCheck, plain_files_have_nothing_unusual) {
    EXPECT_EQ(codesOf(IesBuilder().build()), Codes{});
    for (const char* version : {"IES LM-63-1991", "IESNA91", "IES LM-63-1995"}) {
        IesBuilder ies;
        ies.version = version;
        EXPECT_EQ(codesOf(ies.build()), Codes{}) << version;
    }
    for (const std::vector<float>& vertical :
         {std::vector<float>{0, 45, 90}, {90, 135, 180}, {0, 90, 180}})
        for (const std::vector<float>& horizontal :
             {std::vector<float>{0}, {0, 45, 90}, {90, 180, 270}, {0, 90, 180, 270, 360}})
            EXPECT_EQ(codesOf(IesBuilder(), vertical, horizontal), Codes{});
    const std::string path = folder().write("a.ies", IesBuilder().build());
    EXPECT_EQ(runRba({"ies", "check", path}).out, path + ": nothing unusual\n");
}

TEST_F(IesCheck, a_single_horizontal_angle_leads_nowhere) {
    for (const float angle : {45.0F, 90.0F, 180.0F, 270.0F, 300.0F, 360.0F}) {
        const Codes codes = codesOf(IesBuilder(), {0, 90, 180}, {angle});
        EXPECT_EQ(codes.count("single-angle"), 1U) << angle;
        EXPECT_EQ(codes.count("horizontal-range"), 0U) << angle;
    }
    IesBuilder level;
    level.type = "2";
    EXPECT_EQ(codesOf(level, {-90, 90}, {-5}), (Codes{"dark", "single-angle"}));
}

TEST_F(IesCheck, a_mark_before_the_first_line_hides_nothing) {
    IesBuilder ies;
    ies.version = "\xEF\xBB\xBF[TEST] 1";
    EXPECT_EQ(codesOf(ies.build()), (Codes{"first-line-used-up", "dialect-unknown"}));
}

TEST_F(IesCheck, text_has_a_line_for_each_finding) {
    IesBuilder ies;
    ies.version = "IESNA:LM-63-2002";
    ies.lampCount = "2";
    ies.lumens = "-1";
    const std::string path = folder().write("a.ies", ies.build());
    EXPECT_EQ(runRba({"ies", "check", path}).out,
              path +
                  ": the first line, 'IESNA:LM-63-2002', names no known dialect (1991, 1995): the "
                  "file is read as one of 1986 [dialect-unknown]\n" +
                  path +
                  ": the photometry is absolute (lumens are -1), and yet intensities are "
                  "multiplied by the number of lamps, 2 [absolute-lamps]\n");
}

TEST_F(IesCheck, first_line_that_is_used_up) {
    IesBuilder keyword;
    keyword.version = "[TEST] 1";
    EXPECT_EQ(codesOf(keyword.build()), (Codes{"first-line-used-up", "dialect-unknown"}));
    IesBuilder tilt;
    tilt.version = "TILT=NONE";
    EXPECT_EQ(codesOf(tilt.build()), (Codes{"first-line-used-up", "dialect-unknown"}));
}

TEST_F(IesCheck, absolute_photometry_of_one_lamp_is_usual) {
    IesBuilder ies;
    ies.lumens = "-1";
    EXPECT_EQ(codesOf(ies.build()), Codes{});
    ies.lampCount = "3";
    EXPECT_EQ(codesOf(ies.build()), Codes{"absolute-lamps"});
    ies.lumens = "900";
    EXPECT_EQ(codesOf(ies.build()), Codes{});
}

TEST_F(IesCheck, tilt_that_is_not_applied) {
    IesBuilder ies;
    ies.tilt = "TILT=INCLUDE\n1\n2\n0 90\n1 0.9\n";
    EXPECT_EQ(codesOf(ies.build()), Codes{"tilt-dropped"});
    ies.tilt = "TILT=lamp.tlt\n";
    EXPECT_EQ(codesOf(ies.build()), Codes{"tilt-file"});
    ies.tilt = "TILT=NONE\r\n";
    EXPECT_EQ(codesOf(ies.build()), Codes{});
}

TEST_F(IesCheck, keywords_beyond_the_hundredth_line) {
    IesBuilder ies;
    ies.keywords.clear();
    for (int i = 0; i < 99; ++i) ies.keywords += "[OTHER] x\n";
    EXPECT_EQ(codesOf(ies.build()), Codes{});  // the tilt line is the hundredth
    ies.keywords += "[OTHER] last\n";
    const std::string path = folder().write("a.ies", ies.build());
    const RbaResult result = runRba({"ies", "check", path});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(isErrorLine(result.err, path));
    EXPECT_NE(result.err.find("hundredth line"), std::string::npos) << result.err;
    ies.tilt.clear();
    EXPECT_EQ(codesOf(ies.build()), Codes{"keyword-limit"});
}

TEST_F(IesCheck, borders_of_half_circles_are_black) {
    EXPECT_EQ(codesOf(IesBuilder(), {0, 90, 180}, {0, 90, 180}),
              (Codes{"black-seam", "black-pole"}));
    // Nothing is lost where there was no light.
    IesBuilder dark;
    dark.vertical = {0, 45, 90};
    dark.horizontal = {0, 90, 180};
    dark.candela = {0, 0, 0, 0, 7, 0, 0, 0, 0};
    EXPECT_EQ(codesOf(dark.build()), Codes{});
    dark.candela = {0, 3, 0, 0, 7, 0, 0, 0, 0};
    EXPECT_EQ(codesOf(dark.build()), Codes{"black-seam"});
    dark.candela = {3, 0, 0, 3, 7, 0, 3, 0, 0};  // straight down is the first value of a run
    EXPECT_EQ(codesOf(dark.build()), (Codes{"black-seam", "black-pole"}));
}

TEST_F(IesCheck, black_column_and_row_are_those_of_the_table) {
    IesBuilder ies;
    ies.horizontal = {0, 90, 180};
    ies.candela.assign(9, 5);
    const std::string path = folder().write("a.ies", ies.build());
    const std::string text = runRba({"ies", "check", path}).out;
    EXPECT_NE(text.find("column 0 of a table is black"), std::string::npos) << text;
    EXPECT_NE(text.find("straight up (row 0 of a table)"), std::string::npos) << text;
    const std::string out = folder().file("a.json");
    ASSERT_EQ(runRba({"ies", "table", path, "--theta=8", "--phi=12", "-o", out}).status, 0);
    const Json values = Json::parse(readFile(out))["values"];
    for (std::size_t i = 0; i < 8; ++i)
        for (std::size_t j = 0; j < 12; ++j)
            EXPECT_EQ(values[i * 12 + j] == 0, i == 0 || j == 0) << i << ", " << j;
}

TEST_F(IesCheck, circles_that_are_not_whole) {
    EXPECT_EQ(codesOf(IesBuilder(), {0, 90}, {0, 90, 180, 270, 345}), Codes{"circle-open"});
    EXPECT_EQ(codesOf(IesBuilder(), {0, 90}, {0, 45, 75}), Codes{"horizontal-range"});
    EXPECT_EQ(codesOf(IesBuilder(), {0, 90}, {10, 90}), Codes{"horizontal-range"});
    EXPECT_EQ(codesOf(IesBuilder(), {0, 90}, {0, 90, 270}), Codes{"horizontal-range"});
    EXPECT_EQ(codesOf(IesBuilder(), {0, 90}, {0, 180, 400}), Codes{"horizontal-range"});
    IesBuilder step;
    step.vertical = {0, 90};
    step.horizontal = {0, 180, 300};
    step.candela = {10, 10, 20, 20, 40, 40};
    const std::string path = folder().write("a.ies", step.build());
    // Just before 360: 40 + (360 - 300) / (0 - 300) * (10 - 40) = 46, which is 36 above 10.
    EXPECT_NE(runRba({"ies", "check", path}).out.find("step of up to 36 cd"), std::string::npos)
        << runRba({"ies", "check", path}).out;
}

TEST_F(IesCheck, vertical_angles_that_leave_directions_dark) {
    EXPECT_EQ(codesOf(IesBuilder(), {0, 75}, {0}), Codes{"vertical-range"});
    EXPECT_EQ(codesOf(IesBuilder(), {10, 90}, {0}), Codes{"vertical-range"});
    EXPECT_EQ(codesOf(IesBuilder(), {-10, 190}, {0}), Codes{"vertical-range"});
}

TEST_F(IesCheck, ranges_are_told_in_words) {
    struct Case {
        const char* type;
        std::vector<float> vertical, horizontal;
        const char* words;
    };
    const Case cases[] = {
        {"1", {0, 75}, {0}, "vertical angles go from 0 to 75: 75 to 180 are dark ["},
        {"1", {10, 80}, {0}, "from 10 to 80: 0 to 10 and 80 to 180 are dark ["},
        {"1", {-90, 90}, {0}, "from -90 to 90: 90 to 180 are dark, -90 to 0 are not used ["},
        {"1", {-10, 190}, {0}, "from -10 to 190: -10 to 0 and 180 to 190 are not used ["},
        {"1", {190, 200}, {0}, "from 190 to 200: 0 to 180 are dark, 190 to 200 are not used ["},
        {"1", {0, 90}, {0, 45, 75}, "horizontal angles go from 0 to 75: 75 to 90 are dark ["},
        {"1", {0, 90}, {10, 90}, "from 10 to 90: 0 to 10 continue the slope of the first two"},
        {"1", {0, 90}, {0, 90, 270}, "from 0 to 270: 0 to 90 are not used ["},
        {"1", {0, 90}, {90, 250}, "from 90 to 250: 250 to 270 are dark ["},
        {"1", {0, 90}, {0, 345}, "do not lead to those at 0 ["},
        {"1", {0, 90}, {0, 180, 400}, "from 0 to 400: 360 to 400 are not used ["},
        {"1", {0, 90}, {-90, -45, 0}, "from -90 to 0: the first values count all around ["},
        {"1", {0, 90}, {-30, 300}, "from -30 to 300: -30 to 0 count only behind the last angle ["},
        {"1", {0, 90}, {-30, 180, 360}, "from -30 to 360: -30 to 0 are not used ["},
        {"2", {10, 90}, {-90, 90}, "from 10 to 90: 0 to 10 are dark, above and below the horizon"},
        {"3", {-60, 60}, {-90, 90}, "from -60 to 60: -90 to -60 and 60 to 90 are dark ["},
        {"3", {-90, -10}, {0, 90}, "from -90 to -10: 0 to 90 are dark, above and below"},
        {"3", {-120, -100}, {-90, 90}, "-100: -90 to 90 are dark, -120 to -100 are not used ["},
        {"2", {-90, 90}, {10, 90}, "horizontal angles go from 10 to 90: 0 to 10 are dark ["},
        {"2", {-90, 90}, {-90, 0}, "from -90 to 0: 0 to 90 are dark ["},
        {"3", {-90, 90}, {-180, 90}, "from -180 to 90: 90 to 180 are dark ["},
        {"3", {-90, 90}, {-200, 180}, "from -200 to 180: -200 to -180 are not used ["},
        {"3", {-90, 90}, {5}, "there is one horizontal angle only, 5: nothing leads from it"},
    };
    for (const Case& test : cases) {
        IesBuilder ies;
        ies.type = test.type;
        ies.vertical = test.vertical;
        ies.horizontal = test.horizontal;
        ies.candela.assign(test.vertical.size() * test.horizontal.size(), 5);
        const std::string text = runRba({"ies", "check", folder().write("a.ies", ies.build())}).out;
        EXPECT_NE(text.find(test.words), std::string::npos) << test.words << "\n" << text;
    }
}

TEST_F(IesCheck, dark_is_what_has_no_light_in_any_direction) {
    // The borders of a half circle are black, not what is between.
    EXPECT_EQ(codesOf(IesBuilder(), {0, 90, 180}, {-180, 180}),
              (Codes{"horizontal-range", "black-seam", "black-pole"}));
    IesBuilder sideways;
    sideways.type = "2";
    EXPECT_EQ(codesOf(sideways, {-90, 90}, {190, 220}).count("dark"), 1U);
    EXPECT_EQ(codesOf(sideways, {100, 110}, {-90, 90}).count("dark"), 1U);
    EXPECT_EQ(codesOf(sideways, {80, 110}, {-90, 90}).count("dark"), 0U);
    // A beam of one value among thousands.
    IesBuilder beam;
    beam.vertical.clear();
    for (int i = 0; i <= 3600; ++i) beam.vertical.push_back(static_cast<float>(i) / 20);
    for (const std::size_t lit : {1000U, 1001U, 1007U}) {
        beam.candela.assign(beam.vertical.size(), 0);
        beam.candela[lit] = 5;
        EXPECT_EQ(codesOf(beam.build()), Codes{}) << lit;
    }
}

TEST_F(IesCheck, factors_of_the_ballast_are_not_applied) {
    IesBuilder ies;
    ies.ballast = "0.9";
    EXPECT_EQ(codesOf(ies.build()), Codes{"ballast-not-applied"});
    ies.ballast = "1.1";
    EXPECT_EQ(codesOf(ies.build()), Codes{"ballast-not-applied"});
    ies.ballast = "1.0";
    EXPECT_EQ(codesOf(ies.build()), Codes{});
    ies.ballastLamp = "0.95";  // editions since 1995 have other things there
    EXPECT_EQ(codesOf(ies.build()), Codes{});
    ies.version = "IESNA:LM-63-2002";
    EXPECT_EQ(codesOf(ies.build()), Codes{"dialect-unknown"});
    ies.version = "IESNA91";
    EXPECT_EQ(codesOf(ies.build()), Codes{"ballast-not-applied"});
    ies.version = "IESNA:LM-63-1986";
    EXPECT_EQ(codesOf(ies.build()), (Codes{"ballast-not-applied", "dialect-unknown"}));
    ies.version = "a label as in 1986";
    EXPECT_EQ(codesOf(ies.build()), (Codes{"ballast-not-applied", "dialect-unknown"}));
}

TEST_F(IesCheck, types_a_and_b) {
    for (const char* type : {"2", "3"}) {
        IesBuilder ies;
        ies.type = type;
        EXPECT_EQ(codesOf(ies, {-90, 0, 90}, {-90, 0, 90}), Codes{}) << type;
        EXPECT_EQ(codesOf(ies, {0, 90}, {-90, 0, 90}), Codes{}) << type;
        EXPECT_EQ(codesOf(ies, {0, 90}, {-180, 0, 180}), Codes{}) << type;
        EXPECT_EQ(codesOf(ies, {0, 45, 90}, {0, 45, 90}), Codes{"dark-half"}) << type;
        EXPECT_EQ(codesOf(ies, {-90, 0, 90}, {0, 45, 90}),
                  (Codes{"dark-half", "vertical-mirrored"}))
            << type;
    }
}

TEST_F(IesCheck, angles_out_of_order_and_repeated) {
    EXPECT_EQ(codesOf(IesBuilder(), {0, 60, 30, 90}, {0}).count("angles-out-of-order"), 1U);
    EXPECT_EQ(codesOf(IesBuilder(), {0, 90}, {0, 90, 45, 90}).count("angles-out-of-order"), 1U);
    EXPECT_EQ(codesOf(IesBuilder(), {0, 45, 45, 90}, {0}), Codes{"repeated-angle"});
    // The first two: between them there is nothing to interpolate.
    EXPECT_EQ(codesOf(IesBuilder(), {0, 0, 90}, {0}), (Codes{"repeated-angle", "not-a-number"}));
    EXPECT_EQ(codesOf(IesBuilder(), {0, 90}, {0, 0, 90}),
              (Codes{"repeated-angle", "not-a-number"}));
}

TEST_F(IesCheck, counts_that_do_not_match) {
    EXPECT_EQ(codesOf(IesBuilder().build() + "7 8\n"), Codes{"left-over"});
    IesBuilder few;
    few.candela.pop_back();
    const std::string path = folder().write("few.ies", few.build());
    const RbaResult result = runRba({"ies", "check", path});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_TRUE(isErrorLine(result.err, path));
    EXPECT_EQ(keysOf(runRba({"--json", "ies", "check", path}).json()[0]),
              (std::vector<std::string>{"path", "error"}));
    IesBuilder none;
    none.vertical.clear();
    none.candela.clear();
    EXPECT_EQ(codesOf(none.build()), Codes{"no-values"});
}

TEST_F(IesCheck, header_values) {
    IesBuilder type;
    type.type = "4";
    EXPECT_EQ(codesOf(type.build()), Codes{"type-unknown"});
    std::string units = IesBuilder().build();
    units.replace(units.find(" 2 0.1"), 2, " 3");
    EXPECT_EQ(codesOf(units), Codes{"units-unknown"});
}

TEST_F(IesCheck, intensities) {
    IesBuilder ies;
    ies.candela = {30, -1, 10};
    EXPECT_EQ(codesOf(ies.build()), Codes{"negative"});
    ies.candela = {0, 0, 0};
    EXPECT_EQ(codesOf(ies.build()), Codes{"dark"});
    ies.candela = {30, 20, 10};
    ies.lampCount = "0";
    EXPECT_EQ(codesOf(ies.build()), Codes{"dark"});
    ies.lampCount = "2";
    ies.candela = {3e38F, 3e38F, 3e38F};
    EXPECT_EQ(codesOf(ies.build()), Codes{"too-large"});
    // A single horizontal angle that is not 0 is a quadrant without width.
    EXPECT_EQ(codesOf(IesBuilder(), {0, 90}, {45}), (Codes{"dark", "single-angle"}));
}

TEST_F(IesCheck, tilt_line_at_the_beginning_is_the_hint_when_the_rest_fails) {
    IesBuilder ies;
    ies.version = "TILT=NONE";
    ies.tilt.clear();
    ies.keywords.clear();
    const std::string path = folder().write("a.ies", ies.build());
    const RbaResult result = runRba({"ies", "check", path});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(isErrorLine(result.err, path));
    EXPECT_NE(result.err.find("the first line is always used up"), std::string::npos);
}

TEST_F(IesCheck, hints_name_what_makes_texts_unreadable) {
    const auto replaced = [](std::string text, const std::string& what, const std::string& by) {
        for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
            text.replace(at, what.size(), by);
        return text;
    };
    const std::string plain = IesBuilder().build();
    std::string wide;
    for (const char c : plain) wide += {c, '\0'};
    struct Case {
        std::string text, hint;
    };
    const Case cases[] = {
        {replaced(plain, "\n", "\r"), "carriage returns alone end no line"},
        {replaced(plain, "\n", "\r") + "\r\n\n", "carriage returns alone end no line"},
        {"\xFF\xFE" + wide, "UTF-16"},
        {wide, "UTF-16"},
        {replaced(plain, "TILT=", "TILT ="), "no blank before its '='"},
        {replaced(plain, "TILT=NONE", "NONE"), "there is no tilt line"},
    };
    for (const Case& test : cases) {
        const std::string path = folder().write("a.ies", test.text);
        const RbaResult result = runRba({"ies", "check", path});
        EXPECT_EQ(result.status, 1);
        EXPECT_TRUE(isErrorLine(result.err, path));
        EXPECT_NE(result.err.find(test.hint), std::string::npos) << test.hint << "\n" << result.err;
    }
    // With line feeds as well, carriage returns do no harm.
    EXPECT_EQ(codesOf(replaced(plain, "\n", "\r\n")), Codes{});
}

}  // namespace
}  // namespace rb::test
