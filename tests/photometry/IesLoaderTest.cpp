#include "RenderingBase/public/KVRRbaIESLoader.h"
#include "tests/image/DerivedImages.h"
#include "tests/photometry/IesBuilder.h"
#include "tests/support/TempFolder.h"

#include <array>
#include <gtest/gtest.h>
#include <regex>
#include <span>

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
        malformed, std::regex(line + "line [0-9]+: expected .+, found the end of the file\n")))
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
