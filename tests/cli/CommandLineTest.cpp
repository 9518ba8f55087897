#include "tests/cli/RunRba.h"

namespace rb::test {
namespace {

/// Every command, with arguments that are enough to parse.
const std::vector<Arguments> kCommands = {
    {"image", "info"},
    {"image", "find"},
    {"image", "convert"},
    {"image", "units", "infer-dpi"},
    {"image", "units", "size-mm"},
    {"image", "units", "size-px"},
    {"image", "units", "dot-size"},
    {"image", "half"},
    {"env"},
    {"fitting"},
    {"settings", "list"},
    {"settings", "get"},
    {"settings", "set"},
    {"tour"},
};

Arguments with(Arguments arguments, const std::string& more) {
    arguments.push_back(more);
    return arguments;
}

std::string nameOf(const Arguments& command) {
    std::string name = "rba";
    for (const std::string& word : command) name += " " + word;
    return name;
}

TEST(CommandLine, help_of_every_command_has_usage_and_examples) {
    for (const Arguments& command : kCommands) {
        const RbaResult result = runRba(with(command, "--help"));
        SCOPED_TRACE(nameOf(command));
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_NE(result.out.find("Usage: " + nameOf(command)), std::string::npos) << result.out;
        EXPECT_NE(result.out.find("Examples:\n  "), std::string::npos) << result.out;
        EXPECT_EQ(result.out.find('\x1f'), std::string::npos);
    }
}

TEST(CommandLine, help_of_groups_lists_their_commands) {
    for (const Arguments& command : kCommands) {
        if (command.size() < 2) continue;
        const Arguments group(command.begin(), command.end() - 1);
        const RbaResult result = runRba(with(group, "--help"));
        EXPECT_EQ(result.status, 0);
        EXPECT_NE(result.out.find("\n  " + command.back() + " "), std::string::npos) << result.out;
    }
}

TEST(CommandLine, help_of_the_program_explains_exit_statuses) {
    const RbaResult result = runRba({"--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.out.find("Exit status: 0 done, 1 the operation failed"), std::string::npos);
    EXPECT_NE(result.out.find("\n  image "), std::string::npos);
    EXPECT_NE(result.out.find("\n  settings "), std::string::npos);
}

TEST(CommandLine, version_goes_to_standard_output) {
    const RbaResult result = runRba({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "rba " RB_VERSION "\n");
    EXPECT_EQ(result.err, "");
}

TEST(CommandLine, wrong_usage_is_status_2_with_one_line) {
    const std::vector<Arguments> wrong = {
        {},
        {"imagine"},
        {"image"},
        {"image", "imagine"},
        {"image", "info"},
        {"image", "info", "--unknown", "a.png"},
        {"image", "find", "a.png"},
        {"image", "find", "a.png", "--kind"},
        {"image", "find", "a.png", "--kind", "first"},
        {"image", "convert", "a.png"},
        {"image", "convert", "a.png", "b.png", "c.png"},
        {"image", "units", "size-mm", "10"},
        {"image", "units", "size-mm", "ten", "96"},
        {"image", "units", "size-mm", "1.5", "96"},
        {"image", "half"},
        {"env", "more"},
        {"fitting", "on"},
        {"settings", "get", "OnlyTheRepository"},
        {"tour"},
        {"tour", "a", "b"},
        {"--json"},
    };
    for (const Arguments& arguments : wrong) {
        const RbaResult result = runRba(arguments);
        SCOPED_TRACE(nameOf(arguments));
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_TRUE(result.err.starts_with("rba: ")) << result.err;
        EXPECT_EQ(std::ranges::count(result.err, '\n'), 1) << result.err;
        EXPECT_NE(result.err.find("--help'"), std::string::npos) << result.err;
        EXPECT_EQ(result.err.find('\x1f'), std::string::npos);
        EXPECT_NE(result.err.find("expected "), std::string::npos) << result.err;
        EXPECT_NE(result.err.find(", found "), std::string::npos) << result.err;
    }
}

struct WrongCase {
    Arguments arguments;
    std::string complaint;
};

TEST(CommandLine, wrong_usage_tells_what_was_expected_and_what_was_found) {
    const std::string program = "rba image convert";
    const std::vector<WrongCase> cases = {
        {{}, "expected IN, found none"},
        {{"a.png"}, "expected OUT, found none"},
        {{"a.png", "b.png", "c.png", "d.png"}, "expected no more arguments, found 'c.png'"},
        {{"--size", "1", "a.png", "b.png"},
         "expected an option of '" + program + "', found '--size'"},
        {{"--size=1", "a.png", "b.png"}, "expected an option of '" + program + "', found '--size'"},
        {{"a.png", "b.png", "--dpi"}, "--dpi: expected a value, found none"},
        {{"--dpi", "--json", "a.png", "b.png"}, "--dpi: expected a value, found '--json'"},
        {{"--json=yes", "a.png", "b.png"}, "--json: expected no value, found 'yes'"},
        {{"--dpi", "x", "a.png", "b.png"}, "--dpi: expected a whole number, found 'x'"},
        {{"--dpi=", "a.png", "b.png"}, "--dpi: expected a whole number, found ''"},
        {{"--dpi=7.5", "a.png", "b.png"}, "--dpi: expected a whole number, found '7.5'"},
        {{"--dpi=3000000000", "a.png", "b.png"},
         "--dpi: expected a whole number from -2147483648 to 2147483647, found '3000000000'"},
        {{"--dpi=96", "a.png", "b.png", "--dpi", "97"}, "--dpi: expected one value, found 2"},
    };
    for (const auto& [more, complaint] : cases) {
        Arguments arguments = {"image", "convert"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const RbaResult result = runRba(arguments);
        EXPECT_EQ(result.status, 2) << complaint;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "rba: " + complaint + "; see '" + program + " --help'\n");
    }
}

TEST(CommandLine, empty_path_is_named) {
    const TempFolder folder;
    const std::string picture = writePicture(folder, "in.png", 2, 2);
    RbaSettings inFolder;
    inFolder.folder = folder.path();
    for (const Arguments& arguments :
         {Arguments{"image", "info", ""}, Arguments{"image", "find", "", "--kind", "1"},
          Arguments{"image", "convert", "", "out.png"}, Arguments{"image", "convert", picture, ""},
          Arguments{"tour", "", "--samples", folder.path()}}) {
        const RbaResult result = runRba(arguments, inFolder);
        EXPECT_NE(result.status, 0);
        EXPECT_TRUE(isErrorLine(result.err, "an empty path"));
    }
    EXPECT_TRUE(isErrorLine(runRba({"settings", "get", "", "A"}).err, "an empty name"));
}

TEST(CommandLine, unknown_command_is_named_with_those_that_there_are) {
    const RbaResult result = runRba({"image", "imagine", "a.png"});
    EXPECT_EQ(
        result.err,
        "rba: expected a command of 'rba image' (info, find, convert, grey, mono, negative, "
        "alpha-invert, mask, bump, icon, dds, mirror-ball, units, half), found 'imagine'; see 'rba "
        "image --help'\n");
}

TEST(CommandLine, common_options_stand_anywhere) {
    for (const Arguments& arguments :
         {Arguments{"--json", "image", "units", "dot-size", "254"},
          Arguments{"image", "--json", "units", "dot-size", "254"},
          Arguments{"image", "units", "dot-size", "--json", "254"},
          Arguments{"image", "units", "dot-size", "254", "--json", "--quiet"}}) {
        const RbaResult result = runRba(arguments);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.out, "{\n  \"value\": 0.1\n}\n");
    }
}

TEST(CommandLine, full_standard_output_is_a_failure) {
    RbaSettings settings;
    settings.out = "/dev/full";
    const RbaResult result = runRba({"env"}, settings);
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(isErrorLine(result.err, "standard output"));
}

}  // namespace
}  // namespace rb::test
