#include "tests/cli/RunRba.h"

#include <cstdlib>

namespace rb::test {
namespace {

class FittingCommand : public testing::Test {
protected:
    FittingCommand() { unsetenv("RND_MATERIAL_NOT_FITTED"); }  // whatever it is on this machine

    /// With the variable defined.
    static RbaResult runWith(const std::string& value, const Arguments& arguments) {
        RbaSettings settings;
        settings.environment = {"RND_MATERIAL_NOT_FITTED=" + value};
        return runRba(arguments, settings);
    }
};

TEST_F(FittingCommand, shows_both_fittings_on_without_the_variable) {
    const RbaResult result = runRba({"fitting"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out,
              "glossiness fitting  on\n"
              "Fresnel fitting     on\n"
              "glossiness mode     2\n");
    const Json expected = {
        {"glossinessFitting", true}, {"fresnelFitting", true}, {"glossinessMode", 2}};
    const Json json = runRba({"--json", "fitting"}).json();
    EXPECT_EQ(json, expected);
    EXPECT_EQ(keysOf(json), keysOf(expected));
}

TEST_F(FittingCommand, shows_both_fittings_off_with_the_variable_whatever_its_value) {
    const Json expected = {
        {"glossinessFitting", false}, {"fresnelFitting", false}, {"glossinessMode", 2}};
    for (const char* value : {"1", "0", ""})
        EXPECT_EQ(runWith(value, {"fitting", "--json"}).json(), expected) << value;
    EXPECT_EQ(runWith("", {"fitting"}).out,
              "glossiness fitting  off\n"
              "Fresnel fitting     off\n"
              "glossiness mode     2\n");
}

}  // namespace
}  // namespace rb::test
