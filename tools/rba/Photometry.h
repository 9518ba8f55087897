#pragma once

/// @file  What commands about photometric files share.

#include "RenderingBase/public/KVRRbaIESLoader.h"

#include <string>
#include <string_view>

namespace rb::cli {

/// Texts are in UTF-8, whatever the file has.
struct Photometry {
    KVRRbaIESLoader::IESPhotometry record;
    KVRRbaIESLoader::IESUnusedData rest;
    std::string firstLine;  ///< Without white space at its ends.
};

/// Reads a photometric file. Throws Failure ("path: expected ..., found ...") when it cannot be
/// read, also when a value for a pair of angles is missing.
Photometry loadPhotometry(const std::string& typedPath);

inline constexpr int kTypeC = 1, kTypeB = 2, kTypeA = 3;

/// Whether there is an intensity for every pair of angles, and one pair at least.
bool hasIntensities(const KVRRbaIESLoader::IESPhotometry& record);

/// How a file of type C covers the circle, which its last horizontal angle tells.
enum class Circle {
    Axial,
    Quadrant,
    FrontHalf,
    SideHalf,
    Whole
};
Circle circleOf(const KVRRbaIESLoader::IESPhotometry& record);  ///< Has horizontal angles.

/// Degrees of a kind of angles.
struct AngleRange {
    float least, most;
};
/// What directions have, as files of the type count them.
AngleRange verticalRange(const KVRRbaIESLoader::IESPhotometry& record);
AngleRange horizontalRange(const KVRRbaIESLoader::IESPhotometry& record);

/// The intensity in the direction of two angles as the file counts them, in candelas.
float candelaAtAngles(const KVRRbaIESLoader::IESPhotometry& record, float vertical,
                      float horizontal);

/// Fills a table of directions as `KVRRbaIESLoader::resample` does.
void fillTable(const KVRRbaIESLoader::IESPhotometry& record, int thetaCount, int phiCount,
               int channels, const KVRMathVector& orientation, float* table);

/// The largest stored intensity, in candelas, and where it is.
struct Peak {
    float candela = 0, vertical = 0, horizontal = 0;
};
Peak peakOf(const KVRRbaIESLoader::IESPhotometry& record);  ///< Zeros without intensities.

/// A number of a file as people write it.
std::string shortText(float value, int mostDigits = 6);

}  // namespace rb::cli
