#include "RenderingBase/host/visu/KVRGraphicCard.h"
#include "RenderingBase/public/KVRRbaVisuServices.h"
#include "tests/cli/RunRba.h"

namespace rb::test {
namespace {

TEST(DisplayVendor, tells_the_word_and_the_id) {
    KVRString vendor;
    KVRRbaVisuServices::GetGraphicCardVendor(vendor);
    const RbaResult text = runRba({"display", "vendor"});
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(text.out.substr(0, text.out.find_first_of(" \n")), vendor);
    const Json json = runRba({"--json", "display", "vendor"}).json();
    EXPECT_EQ(keysOf(json), (std::vector<std::string>{"vendor", "id"}));
    EXPECT_EQ(json["vendor"], vendor.CastToCharPtr());
    ASSERT_TRUE(json["id"].is_number_unsigned());
    EXPECT_EQ(json["id"], KVRGetGraphicCardVendorID());
}

TEST(DisplayUnit, tells_magnitude_factor_and_whether_it_is_a_length) {
    const RbaResult text = runRba({"display", "unit", "in", "deg", "cd/m2"});
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(text.out,
              "in: LENGTH, factor 0.0254, a length\n"
              "deg: ANGLE, factor 0.017453292519943295\n"
              "cd/m2: LUMINANCE, factor 1.0\n");
    const Json json = runRba({"--json", "display", "unit", "mm", "%"}).json();
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(keysOf(json[0]),
              (std::vector<std::string>{"unit", "magnitude", "factor", "isLength"}));
    EXPECT_EQ(json[0]["unit"], "mm");
    EXPECT_EQ(json[0]["magnitude"], "LENGTH");
    EXPECT_EQ(json[0]["factor"], 0.001);
    EXPECT_EQ(json[0]["isLength"], true);
    EXPECT_EQ(json[1]["magnitude"], "RATIO");
    EXPECT_EQ(json[1]["factor"], 0.01);
    EXPECT_EQ(json[1]["isLength"], false);
}

TEST(DisplayUnit, unknown_unit_fails_and_keeps_the_others) {
    const RbaResult text = runRba({"display", "unit", "furlong", "ft"});
    EXPECT_EQ(text.status, 1);
    EXPECT_EQ(text.out, "ft: LENGTH, factor 0.3048, a length\n");
    EXPECT_TRUE(isErrorLine(text.err, "furlong"));
    const RbaResult result = runRba({"--json", "display", "unit", "furlong", "ft"});
    EXPECT_EQ(result.status, 1);
    const Json json = result.json();
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(keysOf(json[0]), (std::vector<std::string>{"unit", "error"}));
    EXPECT_EQ(json[0]["unit"], "furlong");
    EXPECT_EQ(json[1]["unit"], "ft");
}

TEST(DisplayUnit, empty_symbol_and_bytes_that_are_no_text_fail) {
    const RbaResult empty = runRba({"display", "unit", ""});
    EXPECT_EQ(empty.status, 1);
    EXPECT_TRUE(isErrorLine(empty.err, "an empty symbol"));
    EXPECT_EQ(runRba({"--json", "display", "unit", "m\xff"}).status, 1);
}

TEST(DisplayUnit, needs_a_unit) {
    EXPECT_EQ(runRba({"display", "unit"}).status, 2);
    EXPECT_EQ(runRba({"display"}).status, 2);
}

}  // namespace
}  // namespace rb::test
