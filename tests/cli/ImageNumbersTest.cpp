#include "tests/cli/RunRba.h"

namespace rb::test {
namespace {

struct UnitCase {
    Arguments arguments;
    std::string text;
    Json value;
};

TEST(ImageUnits, values_have_their_unit_in_text_and_none_in_json) {
    const std::vector<UnitCase> cases = {
        {{"infer-dpi", "100", "25.4"}, "100 dpi\n", 100},
        {{"infer-dpi", "100", "0"}, "0 dpi\n", 0},
        {{"size-mm", "300", "300"}, "25.4 mm\n", 25.4},
        {{"size-mm", "300", "0"}, "0 mm\n", 0},
        {{"size-px", "25.4", "300"}, "300 px\n", 300},
        {{"dot-size", "254"}, "0.1 mm\n", 0.1},
        {{"dot-size", "0"}, "0 mm\n", 0},
    };
    for (const UnitCase& unit : cases) {
        Arguments arguments = {"image", "units"};
        arguments.insert(arguments.end(), unit.arguments.begin(), unit.arguments.end());
        EXPECT_EQ(runRba(arguments).out, unit.text);
        arguments.insert(arguments.begin(), "--json");
        const Json json = runRba(arguments).json();
        EXPECT_EQ(keysOf(json), std::vector<std::string>{"value"});
        EXPECT_EQ(json["value"], unit.value);
    }
}

TEST(ImageUnits, negative_and_endless_measures_are_wrong_usage) {
    for (const Arguments& arguments : {Arguments{"image", "units", "infer-dpi", "-100", "25.4"},
                                       Arguments{"image", "units", "infer-dpi", "100", "-25.4"},
                                       Arguments{"image", "units", "infer-dpi", "100", "nan"},
                                       Arguments{"image", "units", "size-px", "inf", "300"},
                                       Arguments{"image", "units", "size-px", "10", "-300"},
                                       Arguments{"image", "units", "size-mm", "99999999999", "96"},
                                       Arguments{"image", "units", "dot-size", "-inf"}}) {
        const RbaResult result = runRba(arguments);
        EXPECT_EQ(result.status, 2) << arguments[2] << ' ' << result.out;
        EXPECT_EQ(result.out, "");
    }
}

TEST(ImageUnits, numbers_are_decimal_whatever_they_begin_with) {
    EXPECT_EQ(runRba({"image", "units", "size-mm", "0300", "300"}).out, "25.4 mm\n");
    EXPECT_EQ(runRba({"image", "units", "infer-dpi", "08", "25.4"}).out, "8 dpi\n");
    EXPECT_EQ(runRba({"image", "units", "size-px", "025.4", "+0100"}).out, "100 px\n");
}

TEST(ImageUnits, other_texts_are_wrong_usage) {
    for (const char* text : {"", " ", "0x10", "1 2", "12px", "1,5", "--", "++1", "+-1", "1e99"}) {
        for (const Arguments& arguments :
             {Arguments{"image", "units", "infer-dpi", "--", text, "25.4"},
              Arguments{"image", "units", "infer-dpi", "--", "100", text}}) {
            const RbaResult result = runRba(arguments);
            EXPECT_EQ(result.status, 2) << text;
            EXPECT_EQ(result.out, "");
            EXPECT_TRUE(isErrorLine(result.err, text == arguments[4] ? "PX" : "MM"));
            EXPECT_NE(result.err.find("found '" + std::string(text) + "'"), std::string::npos);
        }
    }
}

TEST(ImageUnits, beyond_whole_numbers_text_says_so_and_json_stays_a_number) {
    const RbaResult text = runRba({"image", "units", "size-px", "1e30", "300"});
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(text.out, "2147483647 px or more, beyond the range of a whole number\n");
    EXPECT_EQ(runRba({"--json", "image", "units", "size-px", "1e30", "300"}).json()["value"],
              2147483647);
    EXPECT_EQ(runRba({"image", "units", "infer-dpi", "100", "1e-30"}).out,
              "2147483647 dpi or more, beyond the range of a whole number\n");
}

TEST(ImageHalf, table_shows_bits_and_what_was_lost) {
    const RbaResult result = runRba({"image", "half", "0.1", "65504", "65520", "-0", "1e-8"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(
        result.out,
        "float           half           back            note\n"
        "0.1             0x2e66  11878  0.099975586     rounded\n"
        "65504           0x7bff  31743  65504           exact\n"
        "65520           0x7c00  31744  inf             overflow: the largest half is 65504\n"
        "-0              0x8000  32768  -0              exact\n"
        "1e-08           0x0000      0  0               underflow: the smallest half is 2^-24\n");
}

TEST(ImageHalf, json_is_an_array_with_numbers_and_nulls) {
    const Json json = runRba({"--json", "image", "half", "1", "-inf", "nan", "0x7bff"}).json();
    ASSERT_EQ(json.size(), 4U);
    for (const Json& row : json)
        EXPECT_EQ(keysOf(row), (std::vector<std::string>{"float", "half", "back"}));
    EXPECT_EQ(json[0]["float"], 1);
    EXPECT_EQ(json[0]["half"], 0x3c00);
    EXPECT_EQ(json[0]["back"], 1);
    EXPECT_TRUE(json[1]["float"].is_null());
    EXPECT_EQ(json[1]["half"], 0xfc00);
    EXPECT_TRUE(json[2]["float"].is_null());
    EXPECT_EQ(json[2]["half"].get<int>() & 0x7e00, 0x7e00);
    EXPECT_TRUE(json[2]["back"].is_null());
    EXPECT_EQ(json[3]["float"], 65504);
    EXPECT_EQ(json[3]["half"], 0x7bff);
}

TEST(ImageHalf, negative_words_and_signs_are_values) {
    const Json json =
        runRba({"image", "half", "--json", "-inf", "-Infinity", "-nan", "-1", "-.5", "+2"}).json();
    ASSERT_EQ(json.size(), 6U);
    EXPECT_EQ(json[0]["half"], 0xfc00);
    EXPECT_EQ(json[1]["half"], 0xfc00);
    EXPECT_EQ(json[3]["float"], -1);
    EXPECT_EQ(json[4]["float"], -0.5);
    EXPECT_EQ(json[5]["float"], 2);
}

TEST(ImageHalf, patterns_of_not_a_number_keep_their_bits) {
    EXPECT_EQ(runRba({"--json", "image", "half", "0x7c01"}).json()[0]["half"], 0x7c01);
}

TEST(ImageHalf, other_texts_are_wrong_usage) {
    for (const char* text : {"", "one", "1,5", "0x", "0x12345", "0xgg", "1e99", "1 2", "+-1"}) {
        const RbaResult result = runRba({"image", "half", "1", text});
        EXPECT_EQ(result.status, 2) << text;
        EXPECT_EQ(result.out, "") << text;
        EXPECT_TRUE(isErrorLine(result.err, "VALUE"));
    }
}

}  // namespace
}  // namespace rb::test
