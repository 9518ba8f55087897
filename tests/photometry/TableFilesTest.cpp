// Tables of real files of other programs. They lie outside the project, in the folder that
// RB_DATA_DIR names.

#include "RenderingBase/public/KVRRbaIESLoader.h"
#include "tests/photometry/TableTools.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <numbers>

namespace rb::test {
namespace {

/// What can be told of a file without a reader: its symmetry and its numbers of angles.
struct PhotometricFile {
    const char* path;
    kernels::Symmetry symmetry;
    std::size_t verticals, horizontals;
};

using kernels::Symmetry;

constexpr PhotometricFile kFiles[] = {
    {"ies/guv-calcs/B1 module.ies", Symmetry::Full, 37, 17},
    {"ies/guv-calcs/beacon.ies", Symmetry::Full, 37, 33},
    {"ies/guv-calcs/nukit_lantern.ies", Symmetry::Full, 361, 17},
    {"ies/guv-calcs/sterilray.ies", Symmetry::Full, 19, 17},
    {"ies/guv-calcs/ushio_b1.5.ies", Symmetry::Full, 19, 17},
    {"ies/guv-calcs/uvpro222_b2.ies", Symmetry::Full, 37, 33},
    {"ies/lidrs/iesna2002_example_typec.ies", Symmetry::Quadrant, 5, 3},
    {"ies/photometric-viewer/absolute_photometry.ies", Symmetry::Axial, 37, 1},
    {"ies/photometric-viewer/ellipsoid_opening_along_length.ies", Symmetry::Axial, 37, 1},
    {"ies/photometric-viewer/label_lines.ies", Symmetry::Axial, 37, 1},
    {"ies/photometric-viewer/round_opening_with_height.ies", Symmetry::Axial, 37, 1},
    {"ies/photompy-2025/tilt_include_v19.ies", Symmetry::Quadrant, 5, 3},
    {"ies/photompy-2025/type_b_full.ies", Symmetry::Signed, 5, 5},
    {"ies/photompy/B1.5 module.ies", Symmetry::Full, 37, 17},
    {"ies/photompy/LLIA001477-003.ies", Symmetry::Bilateral, 361, 9},
    {"ies/radiance/examp1.ies", Symmetry::Quadrant, 73, 5},
};

/// Empty when there is no such folder.
std::string dataFolder() {
    const char* const folder = std::getenv("RB_DATA_DIR");
    return folder && *folder ? std::string(folder) + "/" : std::string();
}

#define RB_NEED_DATA(folder) \
    if ((folder).empty()) GTEST_SKIP() << "RB_DATA_DIR does not name the folder of real files"

Luminaire luminaireOf(const std::string& path) {
    KVRRbaIESLoader::IESPhotometry file;
    EXPECT_NO_THROW(EXPECT_EQ(KVRRbaIESLoader::parseIESFile(path.c_str(), file), S_OK)) << path;
    return {path,
            file.photometricType,
            file.verticalAngles,
            file.horizontalAngles,
            file.candelaValues,
            file.intensityScale};
}

/// The light between two vertical angles, a full turn about the axis: the integral of a straight
/// line times the sine, in closed form.
double zoneFlux(double from, double to, double atFrom, double atTo) {
    const double slope = (atTo - atFrom) / (to - from);
    const auto integral = [&](double v) {
        return -(atFrom + slope * (v - from)) * std::cos(v) + slope * std::sin(v);
    };
    return 2 * std::numbers::pi * (integral(to) - integral(from));
}

/// The light of a luminaire of type C as its candela values have it.
double fluxOf(const Luminaire& luminaire) {
    constexpr double kRadian = std::numbers::pi / 180;
    const std::size_t verticals = luminaire.vertical.size(), runs = luminaire.horizontal.size();
    Floats mean(luminaire.candela.begin(),
                luminaire.candela.begin() + static_cast<std::ptrdiff_t>(verticals));
    const double turn =
        static_cast<double>(luminaire.horizontal.back() - luminaire.horizontal.front());
    for (std::size_t v = 0; runs > 1 && v < verticals; ++v) {
        double sum = 0;
        for (std::size_t h = 0; h + 1 < runs; ++h)
            sum += static_cast<double>(luminaire.candela[h * verticals + v] +
                                       luminaire.candela[(h + 1) * verticals + v]) /
                   2 * static_cast<double>(luminaire.horizontal[h + 1] - luminaire.horizontal[h]);
        mean[v] = static_cast<float>(sum / turn);
    }
    double flux = 0;
    for (std::size_t v = 0; v + 1 < verticals; ++v)
        flux += zoneFlux(static_cast<double>(luminaire.vertical[v]) * kRadian,
                         static_cast<double>(luminaire.vertical[v + 1]) * kRadian,
                         static_cast<double>(mean[v]), static_cast<double>(mean[v + 1]));
    return flux * static_cast<double>(luminaire.scale);
}

double fluxOf(const Floats& table, const kernels::TableShape& shape) {
    const double dTheta = std::numbers::pi / static_cast<double>(shape.rows);
    double sum = 0;
    for (std::size_t i = 0; i < table.size(); ++i)
        sum += static_cast<double>(table[i]) *
               std::sin(dTheta * static_cast<double>(i / shape.columns));
    return sum * dTheta * 2 * std::numbers::pi / static_cast<double>(shape.columns);
}

}  // namespace

TEST(TableFiles, have_the_angles_that_they_are_known_for) {
    const std::string folder = dataFolder();
    RB_NEED_DATA(folder);
    for (const PhotometricFile& file : kFiles) {
        const Luminaire luminaire = luminaireOf(folder + file.path);
        EXPECT_EQ(luminaire.vertical.size(), file.verticals) << file.path;
        EXPECT_EQ(luminaire.horizontal.size(), file.horizontals) << file.path;
        EXPECT_EQ(kernels::symmetryOf(luminaire.grid()), file.symmetry) << file.path;
    }
}

TEST(TableFiles, are_all_known) {
    const std::string folder = dataFolder();
    RB_NEED_DATA(folder);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder + "ies")) {
        if (entry.path().extension() != ".ies") continue;
        const std::string path = entry.path().string().substr(folder.size());
        EXPECT_TRUE(std::any_of(std::begin(kFiles), std::end(kFiles),
                                [&](const PhotometricFile& file) { return file.path == path; }))
            << path;
    }
}

TEST(TableFiles, have_the_plain_tables_but_for_the_last_places_of_angles) {
    const std::string folder = dataFolder();
    RB_NEED_DATA(folder);
    for (const PhotometricFile& file : kFiles) {
        const Luminaire luminaire = luminaireOf(folder + file.path);
        for (const kernels::Rotation& rotation : someRotations()) {
            expectPlainTable(luminaire, {36, 72, 1}, rotation);
            expectPlainTable(luminaire, {64, 128, 3}, rotation);
            expectPlainTable(luminaire, {5, 601, 4}, rotation);
        }
    }
}

TEST(TableFiles, have_tables_with_the_light_of_their_candela_values) {
    const std::string folder = dataFolder();
    RB_NEED_DATA(folder);
    constexpr kernels::TableShape kShape{720, 720, 1};
    // Steps of a quarter of a degree; bilateral files are black at the azimuths 0 and 180.
    constexpr double kTolerance = 5e-3;
    for (const PhotometricFile& file : kFiles) {
        const Luminaire luminaire = luminaireOf(folder + file.path);
        if (luminaire.type != 1) continue;
        const double expected = fluxOf(luminaire);
        ASSERT_GT(expected, 0) << file.path;
        for (const kernels::Rotation& rotation : {kernels::Rotation{}, someRotations().back()})
            EXPECT_NEAR(fluxOf(tableOf(luminaire, kShape, rotation), kShape) / expected, 1,
                        kTolerance)
                << file.path;
    }
}

}  // namespace rb::test
