// The seeds of the photometric fuzzer are read, and there is one for every symmetry.

#include "RenderingBase/KVRRbaModel.m/src/kernels/CandelaLookup.h"
#include "RenderingBase/public/KVRRbaIESLoader.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <set>

namespace {

using rb::kernels::Symmetry;

constexpr const char* kFolder = RB_SOURCE_DIR "/tests/fuzz/photometry_seeds";

}  // namespace

TEST(PhotometrySeeds, are_small_and_read_and_have_every_symmetry) {
    constexpr std::uintmax_t kMostBytes = 2048;
    std::set<Symmetry> symmetries;
    std::set<int> versions;
    for (const auto& entry : std::filesystem::directory_iterator(kFolder)) {
        const std::string path = entry.path().string();
        EXPECT_LE(entry.file_size(), kMostBytes) << path;
        KVRRbaIESLoader::IESPhotometry photometry;
        ASSERT_NO_THROW(ASSERT_EQ(KVRRbaIESLoader::parseIESFile(path.c_str(), photometry), S_OK))
            << path;
        versions.insert(photometry.formatVersion);
        symmetries.insert(rb::kernels::symmetryOf(
            {photometry.photometricType, photometry.verticalAngles, photometry.horizontalAngles,
             photometry.candelaValues, photometry.intensityScale}));
    }
    EXPECT_EQ(symmetries,
              (std::set{Symmetry::Dark, Symmetry::Axial, Symmetry::Quadrant, Symmetry::Bilateral,
                        Symmetry::FacingX, Symmetry::Full, Symmetry::Signed}));
    EXPECT_EQ(versions, (std::set{1, 2, 3}));
}
