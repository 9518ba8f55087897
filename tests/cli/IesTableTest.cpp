#include "RenderingBase/public/KVRRbaIESLoader.h"
#include "tests/cli/RunRba.h"
#include "tests/photometry/IesBuilder.h"

#include <cmath>
#include <cstring>
#include <filesystem>
#include <sstream>

namespace rb::test {
namespace {

constexpr int kTheta = 6, kPhi = 8;

IesBuilder lantern() {
    IesBuilder ies;
    ies.vertical = {0, 45, 90, 180};
    ies.horizontal = {0, 90, 180, 270, 360};
    ies.candela = {10, 20, 30, 5, 10, 40, 50, 5, 10, 60, 70, 5, 10, 80, 90, 5, 10, 20, 30, 5};
    return ies;
}

class IesTable : public testing::Test {
protected:
    RbaResult make(const std::string& name, const Arguments& more = {}) const {
        Arguments arguments = {"--json",  "ies",
                               "table",   m_in,
                               "--theta", std::to_string(kTheta),
                               "--phi",   std::to_string(kPhi),
                               "-o",      m_folder.file(name)};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runRba(arguments);
    }
    std::vector<float> expected(int channels, const KVRMathVector& orientation = {0, 0, 0}) const {
        std::vector<float> table(static_cast<std::size_t>(kTheta * kPhi * channels));
        EXPECT_EQ(KVRRbaIESLoader::loadIES(KVRUnicodeString(m_in), kTheta, kPhi, channels,
                                           orientation, table.data()),
                  S_OK);
        return table;
    }
    std::string content(const std::string& name) const { return readFile(m_folder.file(name)); }
    const TempFolder& folder() const { return m_folder; }

private:
    TempFolder m_folder;
    std::string m_in = m_folder.write("in.ies", lantern().build());
};

std::vector<float> floatsOf(const std::string& bytes) {
    std::vector<float> values(bytes.size() / sizeof(float));
    std::memcpy(values.data(), bytes.data(), values.size() * sizeof(float));
    return values;
}

TEST_F(IesTable, bin_is_the_table_of_the_library) {
    for (const int channels : {1, 2, 5}) {
        const RbaResult result = make("out.bin", {"--channels", std::to_string(channels)});
        ASSERT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(floatsOf(content("out.bin")), expected(channels));
    }
    // One cell worked out by hand: theta 90 degrees and phi 45 are half way from 30 to 50.
    ASSERT_EQ(make("out.bin").status, 0);
    EXPECT_NEAR(floatsOf(content("out.bin"))[3 * kPhi + 1], 40, 1e-3);
}

TEST_F(IesTable, orientation_is_passed_on) {
    ASSERT_EQ(make("out.bin", {"--orientation", "-0.5,1.25,+2"}).status, 0);
    EXPECT_EQ(floatsOf(content("out.bin")), expected(1, {-0.5, 1.25, 2}));
    EXPECT_NE(floatsOf(content("out.bin")), expected(1));
}

TEST_F(IesTable, csv_has_a_line_for_a_row) {
    ASSERT_EQ(make("out.csv", {"--channels=2"}).status, 0);
    const std::vector<float> table = expected(2);
    std::istringstream lines(content("out.csv"));
    std::size_t at = 0;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream cells(line);
        std::size_t count = 0;
        for (std::string cell; std::getline(cells, cell, ','); ++count)
            EXPECT_EQ(std::stof(cell), table.at(at++));
        EXPECT_EQ(count, 2U * kPhi);
    }
    EXPECT_EQ(at, table.size());
}

TEST_F(IesTable, json_has_shape_and_values) {
    ASSERT_EQ(make("out.json", {"--channels=3"}).status, 0);
    const Json json = Json::parse(content("out.json"));
    EXPECT_EQ(keysOf(json), (std::vector<std::string>{"theta", "phi", "channels", "values"}));
    EXPECT_EQ(json["theta"], kTheta);
    EXPECT_EQ(json["phi"], kPhi);
    EXPECT_EQ(json["channels"], 3);
    EXPECT_EQ(json["values"].get<std::vector<float>>(), expected(3));
}

TEST_F(IesTable, pictures_have_a_row_for_each_theta) {
    for (const int channels : {1, 3, 4}) {
        ASSERT_EQ(make("out.exr", {"--channels", std::to_string(channels)}).status, 0);
        const auto image = KVRVar<KVRPixelImage>::Adopt(
            KVRPixelImage::CreateFromFile(folder().file("out.exr"), 1, 0));
        ASSERT_TRUE(image);
        int width = 0, height = 0;
        image->GetSize(width, height);
        EXPECT_EQ(width, kPhi);
        EXPECT_EQ(height, kTheta);
        const std::vector<float> table = expected(channels);
        EXPECT_EQ(std::memcmp(image->GetFloatingPixelsToRead(), table.data(), 4 * table.size()), 0);
    }
    for (const int channels : {1, 3, 4}) {
        ASSERT_EQ(make("out.hdr", {"--channels", std::to_string(channels)}).status, 0);
        const auto image = KVRVar<KVRPixelImage>::Adopt(
            KVRPixelImage::CreateFromFile(folder().file("out.hdr"), 1, 0));
        ASSERT_TRUE(image);
        ASSERT_EQ(image->GetFormat(), KVRPixelImageFormat::RGB_f);
        const std::vector<float> table = expected(1);
        // Eight bits are good for one in 256.
        for (std::size_t i = 0; i < 3 * table.size(); ++i)
            EXPECT_NEAR(image->GetFloatingPixelsToRead()[i], table[i / 3], table[i / 3] / 255);
    }
}

TEST_F(IesTable, result_tells_shape_and_extent) {
    const Json json = make("out.bin").json();
    EXPECT_EQ(keysOf(json), (std::vector<std::string>{"path", "theta", "phi", "channels", "min",
                                                      "max", "status"}));
    const std::vector<float> table = expected(1);
    EXPECT_EQ(json["path"], folder().file("out.bin"));
    EXPECT_EQ(json["theta"], kTheta);
    EXPECT_EQ(json["phi"], kPhi);
    EXPECT_EQ(json["channels"], 1);
    EXPECT_EQ(json["min"].get<float>(), *std::min_element(table.begin(), table.end()));
    EXPECT_EQ(json["max"].get<float>(), *std::max_element(table.begin(), table.end()));
    EXPECT_EQ(json["status"], 0);
    const std::string out = folder().file("out.bin"), in = folder().file("in.ies");
    EXPECT_EQ(runRba({"ies", "table", in, "--theta=2", "--phi=1", "-o", out}).out,
              out + ": 2 x 1 x 1, 5 to 30 cd\n");
    EXPECT_EQ(runRba({"--quiet", "ies", "table", in, "--theta=2", "--phi=1", "-o", out}).out, "");
}

TEST_F(IesTable, what_is_no_number_is_null) {
    IesBuilder ies;  // infinite, and therefore dark; the first two angles are one: NaN
    ies.vertical = {90, 90, 180};
    const std::string in = folder().write("nan.ies", ies.build()), out = folder().file("nan.json");
    const RbaResult result =
        runRba({"--json", "ies", "table", in, "--theta=2", "--phi=1", "-o", out});
    ASSERT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(Json::parse(readFile(out))["values"], (Json{10, nullptr}));
    EXPECT_EQ(result.json()["min"], 10);
    EXPECT_EQ(result.json()["max"], 10);
}

TEST_F(IesTable, wrong_usage_is_told_before_anything_is_read) {
    const std::string missing = folder().file("missing.ies");
    const auto statusOf = [&](const Arguments& more, const char* name = "out.exr") {
        Arguments arguments = {"ies", "table", missing, "-o", folder().file(name)};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runRba(arguments).status;
    };
    EXPECT_EQ(statusOf({"--theta=4", "--phi=4"}), 1);  // usage is right, the file is missing
    for (const char* wrong : {"0", "-1", "x", "1.5", "4294967300"}) {
        EXPECT_EQ(statusOf({std::string("--theta=") + wrong, "--phi=4"}), 2) << wrong;
        EXPECT_EQ(statusOf({"--theta=4", std::string("--phi=") + wrong}), 2) << wrong;
        EXPECT_EQ(statusOf({"--theta=4", "--phi=4", std::string("--channels=") + wrong}), 2);
    }
    for (const char* wrong : {"", "1", "1,2", "1,2,", "1,2,3,4", "1,2,x", "1,2,inf", "nan,0,0"})
        EXPECT_EQ(statusOf({"--theta=4", "--phi=4", std::string("--orientation=") + wrong}), 2)
            << wrong;
    EXPECT_EQ(statusOf({"--theta=4", "--phi=4"}, "out.png"), 2);
    EXPECT_EQ(statusOf({"--theta=4", "--phi=4", "--channels=2"}), 2);
    EXPECT_EQ(statusOf({"--theta=4", "--phi=4", "--channels=5"}, "out.hdr"), 2);
    EXPECT_EQ(statusOf({"--theta=4"}), 2);
    EXPECT_EQ(make("out.hdr", {"--channels=2"}).err,
              "rba: --channels: expected 1, 3 or 4 for a picture (hdr), found 2\n");
}

TEST_F(IesTable, what_is_too_large_or_cannot_be_read_or_written_is_told) {
    const std::string in = folder().file("in.ies"), out = folder().file("out.bin");
    const auto run = [&](const std::string& path, const char* theta, const std::string& to) {
        return runRba(
            {"ies", "table", path, std::string("--theta=") + theta, "--phi=16384", "-o", to});
    };
    const RbaResult large = run(in, "16385", out);  // 2^28 values and a row
    EXPECT_EQ(large.status, 1);
    EXPECT_TRUE(isErrorLine(large.err, out));
    EXPECT_TRUE(isErrorLine(run(in, "2147483647", out).err, out));
    const std::string missing = folder().file("missing.ies");
    EXPECT_TRUE(isErrorLine(run(missing, "1", out).err, missing));
    for (const char* name : {"no/such/folder/out.bin", "no/such/folder/out.exr"}) {
        const RbaResult written = run(in, "1", folder().file(name));
        EXPECT_EQ(written.status, 1);
        EXPECT_TRUE(isErrorLine(written.err, folder().file(name)));
    }
    EXPECT_FALSE(std::filesystem::exists(out));
}

}  // namespace
}  // namespace rb::test
