// All image and texture files of the folder of real files: the table of what becomes of each. A
// file that nobody has an expectation for fails the test.

#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tests/image/DataFolder.h"
#include "tests/image/TextureBuilder.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace rb::test {
namespace {

/// For each known file whether it loads.
std::map<std::string, bool> expectations() {
    std::map<std::string, bool> loads;
    for (const auto& file : kRealFiles) loads[file.path] = true;
    for (const auto& file : kRealTextures) loads[file.path] = true;
    for (const char* const path : kReferencePictures) loads[path] = true;
    for (const auto& file : kRefusedFiles) loads[file.path] = false;
    for (const auto& file : kRefusedTextures) loads[file.path] = false;
    return loads;
}

/// Paths below the folder, of all files but the words about them.
std::vector<std::string> filesBelow(const std::string& folder, const char* part) {
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder + part))
        if (entry.is_regular_file() && entry.path().filename() != "README")
            paths.push_back(entry.path().string().substr(folder.size()));
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::string described(const Image& image) {
    int width = 0, height = 0;
    image->GetSize(width, height);
    return std::to_string(width) + " x " + std::to_string(height) + " " +
           imaging::layoutOf(image->GetFormat()).name;
}

TEST(DataFolderTable, every_file_loads_or_is_refused_as_expected) {
    const std::string folder = dataFile("");
    RB_NEED_DATA(folder);
    const std::map<std::string, bool> expected = expectations();
    for (const char* const part : {"images", "dds"})
        for (const std::string& path : filesBelow(folder, part)) {
            const Image image = Image::Adopt(
                KVRRbaImageServices::CreatePixelImageFromFullPath(folder + path, {}, 96));
            std::printf(
                "%-90s %s\n", path.c_str(),
                (image ? described(image) : "refused: " + KVRLastImageError().found).c_str());
            const auto known = expected.find(path);
            if (known == expected.end())
                ADD_FAILURE() << path << ": a file without an expectation";
            else
                EXPECT_EQ(static_cast<bool>(image), known->second) << path;
        }
}

}  // namespace
}  // namespace rb::test
