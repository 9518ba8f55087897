#pragma once

/// @file  Photometric files (IESNA LM-63: 1986, 1991, 1995) as tables of intensity.
///
///     std::vector<float> table(std::size_t{64} * 128);
///     if (Succeeded(KVRRbaIESLoader::loadIES("street.ies", 64, 128, 1, {0, 0, 0}, table.data())))
///         ...
///
/// Frame: z points up, away from the nadir of the file; a direction has the polar angle theta from
/// +z and the azimuth phi from +x towards +y, in radians. Intensities are candelas: the values of
/// the file, times its multiplier, times its number of lamps.
///
/// Threads: all functions may be called at once.

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRMath.h"
#include "RenderingBase/host/base/KVRResult.h"
#include "RenderingBase/host/base/KVRUnicodeString.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace KVRRbaIESLoader {

/// Larger files are refused unread: a hundred times what the finest grids take.
inline constexpr std::size_t kMostFileBytes = std::size_t{64} << 20;

/// What a photometric file says, as far as tables are made of it. Angles are degrees.
struct IESPhotometry {
    std::int32_t formatVersion = 1;  ///< 1 LM-63-1986 or not recognised, 2 1991, 3 1995.
    std::string versionText;         ///< The first line; "IESNA86" when it is not recognised.
    /// Texts of keyword lines, up to the next "]", with the blank before them.
    std::string manufacturer, luminaire, lamp, luminaireCatalogue, lampCatalogue;
    std::int32_t verticalAngleCount = -1;    ///< As declared.
    std::int32_t horizontalAngleCount = -1;  ///< As declared.
    std::int32_t photometricType = 0;        ///< 1 type C, 2 type B, 3 type A.
    float ballastFactor = 0;                 ///< Not applied.
    float intensityScale = 1;                ///< Number of lamps times candela multiplier.
    float inputWatts = 0;
    std::string filePath;
    std::vector<float> verticalAngles;    ///< In the order of the file.
    std::vector<float> horizontalAngles;  ///< Likewise.
    /// One run of vertical values for each horizontal angle: h * verticalAngleCount + v.
    std::vector<float> candelaValues;
};

/// What a photometric file says besides, and no table needs.
struct IESUnusedData {
    std::int32_t keywordLineCount = 0;  ///< Counted ones: not the first, nor empty ones.
    std::string tiltLine;               ///< The line with which the keywords end.
    std::int32_t tiltPairCount = 0;     ///< Of TILT=INCLUDE.
    std::int32_t lampCount = 0;
    float lumensPerLamp = 0;  ///< -1 for absolute photometry.
    float candelaMultiplier = 0;
    std::int32_t unitsType = 0;  ///< Of the sizes: 1 feet, 2 metres.
    float width = 0, length = 0, height = 0;
    float futureUse = 0;  ///< Later editions: ballast-lamp photometric factor.
    /// Bytes behind the last value, white space left out.
    std::size_t trailingByteCount = 0;
};

/// Reads a file and resamples it over a grid of directions.
///
/// Row i has theta = pi i / thetaCount, column j has phi = 2 pi j / phiCount: row 0 is the pole +z,
/// and the last row and the last column stop one step short of -z and of the full circle. Rows are
/// computed on all processors; the call blocks.
/// @param path         An absolute or relative path.
/// @param thetaCount, phiCount, channels  With one below 1 nothing is written.
/// @param orientation  Turns the luminaire, Euler angles in radians: about z first, then about x,
///                     then about y. About x by the right-hand rule, about y and z against it; kept
///                     for compatibility.
/// @param table        Room for thetaCount x phiCount x channels floats, row by row; all channels
///                     of a cell get the same value. Written only after the file was read.
/// @return  0. Errors: E_FAIL when the file cannot be read, its numbers are malformed or too few,
///          or without memory; the trace log tells why.
KVR_EXPORT HRESULT loadIES(const KVRUnicodeString& path, std::int32_t thetaCount,
                           std::int32_t phiCount, std::int32_t channels,
                           const KVRMathVector& orientation, float* table);

/// The same from the bytes of a file.
KVR_EXPORT HRESULT loadIES(std::span<const std::byte> file, std::int32_t thetaCount,
                           std::int32_t phiCount, std::int32_t channels,
                           const KVRMathVector& orientation, float* table);

/// Resamples what was read already, as loadIES does. Throws std::bad_alloc without memory, with
/// nothing written.
KVR_EXPORT void resample(const IESPhotometry& photometry, std::int32_t thetaCount,
                         std::int32_t phiCount, std::int32_t channels,
                         const KVRMathVector& orientation, float* table);

/// Reads a file. The decimal point is a point, whatever the locale.
/// @param path        UTF-8, in the form of the framework or of the system.
/// @param unused      May be null.
/// @return  0. Errors: E_FAIL when there are less angles than declared. Throws
///          std::ios_base::failure when the file cannot be opened, ends early, or has something
///          else where a number is expected, std::bad_alloc without memory; what was read until
///          then is in @p photometry.
KVR_EXPORT HRESULT parseIESFile(const char* path, IESPhotometry& photometry,
                                IESUnusedData* unused = nullptr);

/// The same from the text of a file; the path stays empty.
KVR_EXPORT HRESULT parseIESText(std::string_view text, IESPhotometry& photometry,
                                IESUnusedData* unused = nullptr);

/// Intensity in one direction, in candelas: between the angles of the file interpolated linearly in
/// both, beyond them 0.
/// @param theta  Polar angle from +z, 0 to pi. @param phi  Azimuth, 0 to 2 pi.
KVR_EXPORT float candelaAt(const IESPhotometry& photometry, float theta, float phi);

}  // namespace KVRRbaIESLoader
