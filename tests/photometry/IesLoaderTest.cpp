#include "RenderingBase/public/KVRRbaIESLoader.h"
#include "tests/image/DerivedImages.h"
#include "tests/photometry/IesBuilder.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <regex>
#include <span>
#include <vector>

namespace rb::test {
namespace {

constexpr float kUntouched = -7;

struct Table {
    std::array<float, 4 * 3 * 2> cells;
    Table() { cells.fill(kUntouched); }
    bool isUntouched() const { return cells == Table().cells; }
};

HRESULT load(const KVRUnicodeString& path, Table& table) {
    return KVRRbaIESLoader::loadIES(path, 4, 3, 2, {0, 0, 0}, table.cells.data());
}

HRESULT loadBytes(const std::string& text, Table& table) {
    return KVRRbaIESLoader::loadIES(std::as_bytes(std::span(text)), 4, 3, 2, {0, 0, 0},
                                    table.cells.data());
}

/// 180 candelas at the nadir, 0 at the zenith, and evenly in between.
std::string linearFile() {
    IesBuilder file;
    file.vertical = {0, 180};
    file.candela = {180, 0};
    return file.build();
}

TEST(IesLoader, fills_a_table_row_by_row_from_the_zenith) {
    const TempFolder folder;
    Table table;
    ASSERT_EQ(load(folder.write("a.ies", linearFile()), table), S_OK);
    for (int row = 0; row < 4; ++row)
        for (int i = 0; i < 6; ++i)
            EXPECT_NEAR(table.cells[static_cast<std::size_t>(6 * row + i)], 45.0 * row, 1e-3)
                << row;
}

TEST(IesLoader, takes_paths_of_both_forms_and_literals) {
    const TempFolder folder;
    std::string path = folder.write("a.ies", linearFile());
    Table native, framework;
    ASSERT_EQ(KVRRbaIESLoader::loadIES(path.c_str(), 4, 3, 2, {0, 0, 0}, native.cells.data()),
              S_OK);
    for (char& c : path)
        if (c == '/') c = '\\';
    ASSERT_EQ(load(path, framework), S_OK);
    EXPECT_EQ(native.cells, framework.cells);
    Table none;
    EXPECT_EQ(KVRRbaIESLoader::loadIES("none.ies", 4, 3, 2, {0, 0, 0}, none.cells.data()), E_FAIL);
}

TEST(IesLoader, takes_the_bytes_of_a_file) {
    const TempFolder folder;
    Table fromFile, fromBytes;
    ASSERT_EQ(load(folder.write("a.ies", linearFile()), fromFile), S_OK);
    ASSERT_EQ(loadBytes(linearFile(), fromBytes), S_OK);
    EXPECT_EQ(fromFile.cells, fromBytes.cells);
    EXPECT_EQ(loadBytes("", fromBytes), E_FAIL);
}

TEST(IesLoader, writes_nothing_when_a_count_is_below_one) {
    const TempFolder folder;
    const KVRUnicodeString path = folder.write("a.ies", linearFile());
    const std::array<std::array<std::int32_t, 3>, 5> shapes{
        {{0, 3, 2}, {4, 0, 2}, {4, 3, 0}, {-1, -1, 2}, {-4, 3, -2}}};
    for (const auto& [rows, columns, channels] : shapes) {
        Table table;
        EXPECT_EQ(
            KVRRbaIESLoader::loadIES(path, rows, columns, channels, {0, 0, 0}, table.cells.data()),
            S_OK);
        EXPECT_TRUE(table.isUntouched());
    }
}

using Vector = std::array<double, 3>;

/// A luminaire that shines in a narrow beam around a direction, all around the file.
std::string beamFile(const Vector& beam) {
    constexpr double kDegree = 3.14159265358979323846 / 180;
    IesBuilder file;
    file.vertical.clear();
    file.horizontal.clear();
    file.candela.clear();
    for (int v = 0; v <= 180; v += 5) file.vertical.push_back(static_cast<float>(v));
    for (int h = 0; h <= 360; h += 5) file.horizontal.push_back(static_cast<float>(h));
    for (int h = 0; h <= 360; h += 5)
        for (int v = 0; v <= 180; v += 5) {
            const double theta = (180 - v) * kDegree, phi = h * kDegree;
            const double cosine = std::sin(theta) * std::cos(phi) * beam[0] +
                                  std::sin(theta) * std::sin(phi) * beam[1] +
                                  std::cos(theta) * beam[2];
            file.candela.push_back(
                static_cast<float>(std::round(1000 * std::pow(std::max(0.0, cosine), 20))));
        }
    return file.build();
}

/// Where the table of a turned luminaire is brightest: the mean of its cells, by brightness.
Vector brightestOf(const std::string& file, const KVRMathVector& orientation) {
    constexpr int kRows = 90, kColumns = 180;
    std::vector<float> table(std::size_t{kRows} * kColumns);
    EXPECT_EQ(KVRRbaIESLoader::loadIES(std::as_bytes(std::span(file)), kRows, kColumns, 1,
                                       orientation, table.data()),
              S_OK);
    Vector sum{};
    for (int i = 0; i < kRows; ++i)
        for (int j = 0; j < kColumns; ++j) {
            const double theta = 3.14159265358979323846 * i / kRows;
            const double phi = 2 * 3.14159265358979323846 * j / kColumns;
            const double weight =
                static_cast<double>(table[static_cast<std::size_t>(i * kColumns + j)]) *
                std::sin(theta);
            sum[0] += weight * std::sin(theta) * std::cos(phi);
            sum[1] += weight * std::sin(theta) * std::sin(phi);
            sum[2] += weight * std::cos(theta);
        }
    const double norm = std::sqrt(sum[0] * sum[0] + sum[1] * sum[1] + sum[2] * sum[2]);
    return {sum[0] / norm, sum[1] / norm, sum[2] / norm};
}

/// By the right-hand rule about axis 0, 1 or 2.
Vector turned(const Vector& v, int axis, double angle) {
    const auto b = static_cast<std::size_t>((axis + 1) % 3);
    const auto c = static_cast<std::size_t>((axis + 2) % 3);
    Vector out = v;
    out[b] = v[b] * std::cos(angle) - v[c] * std::sin(angle);
    out[c] = v[b] * std::sin(angle) + v[c] * std::cos(angle);
    return out;
}

TEST(IesLoader, turns_about_x_by_the_right_hand_rule_and_about_y_and_z_against_it) {
    const Vector beam{0.75, 0.4330127, -0.5};
    const std::string file = beamFile(beam);
    const std::array<Vector, 6> orientations{
        {{0, 0, 0}, {0.3, 0, 0}, {0, 0.3, 0}, {0, 0, 0.3}, {0.3, -0.5, 0.7}, {-1.2, 0.9, 2.5}}};
    for (const Vector& o : orientations) {
        const Vector expected = turned(turned(turned(beam, 2, -o[2]), 0, o[0]), 1, -o[1]);
        const Vector actual = brightestOf(file, {o[0], o[1], o[2]});
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(actual[i], expected[i], 0.01) << o[0] << ' ' << o[1] << ' ' << o[2];
    }
}

TEST(IesLoader, leaves_the_table_and_logs_the_reason_when_it_fails) {
    const TempFolder folder;
    const std::string cut = linearFile().substr(0, 60), path = folder.file("none.ies");
    Table table;
    HRESULT status = S_OK;
    const std::string missing = written([&] { status = load(path, table); });
    EXPECT_EQ(status, E_FAIL);
    const std::string line =
        R"(\[ERROR\]   : \([0-9]+ ms\) RenderingBase/KVRRbaModel[.]m/src/KVRRbaIESLoader 539 )";
    EXPECT_TRUE(std::regex_match(
        missing, std::regex(line + ".*none[.]ies: expected a readable file, found .+\n")))
        << missing;
    const std::string malformed =
        written([&] { status = load(folder.write("cut.ies", cut), table); });
    EXPECT_EQ(status, E_FAIL);
    EXPECT_TRUE(std::regex_match(
        malformed,
        std::regex(line + ".*cut[.]ies: line [0-9]+: expected .+, found the end of the file\n")))
        << malformed;
    EXPECT_TRUE(table.isUntouched());
}

TEST(IesLoader, logs_nothing_when_it_succeeds) {
    Table table;
    EXPECT_EQ(written([&] { loadBytes(linearFile(), table); }), "");
    EXPECT_FALSE(table.isUntouched());
}

}  // namespace
}  // namespace rb::test
