#include "tools/rba/IesFindings.h"

#include <algorithm>
#include <cmath>

namespace rb::cli {
namespace {

using KVRRbaIESLoader::candelaAt;
using KVRRbaIESLoader::IESPhotometry;

constexpr float kPi = 3.1415927F;

constexpr std::size_t kMostSamples = 256;

/// About @p most of the angles, and what is half way between. Those out of @p range are its
/// borders.
std::vector<float> samplesOf(const std::vector<float>& angles, AngleRange range, std::size_t most) {
    const std::size_t step = (angles.size() - 1) / most + 1;
    const auto at = [&](std::size_t i) { return std::clamp(angles[i], range.least, range.most); };
    std::vector<float> samples;
    for (std::size_t i = 0; i < angles.size(); i += step) {
        samples.push_back(at(i));
        if (i + 1 < angles.size()) samples.push_back((at(i) + at(i + 1)) / 2);
    }
    return samples;
}

void findNegatives(const IESPhotometry& record, std::vector<Finding>& findings) {
    const auto isNegative = [&](float value) { return value * record.intensityScale < 0; };
    const auto count = std::ranges::count_if(record.candelaValues, isNegative);
    if (count > 0)
        findings.push_back({"negative", std::to_string(count) + " of " +
                                            std::to_string(record.candelaValues.size()) +
                                            " intensities are negative, and stay so"});
}

/// What is found in directions of the file.
struct Survey {
    bool isLit = false;
    std::string notNumber, infinite;  // the first place
};

Survey surveyOf(const IESPhotometry& record, std::size_t most) {
    Survey survey;
    const auto verticals = samplesOf(record.verticalAngles, verticalRange(record), most);
    for (const float horizontal : samplesOf(record.horizontalAngles, horizontalRange(record), most))
        for (const float vertical : verticals) {
            const float candela = candelaAtAngles(record, vertical, horizontal);
            survey.isLit |= candela != 0;
            if (std::isfinite(candela)) continue;
            std::string& place = std::isnan(candela) ? survey.notNumber : survey.infinite;
            if (place.empty())
                place = "vertical " + shortText(vertical) + ", horizontal " + shortText(horizontal);
        }
    return survey;
}

void findInSurvey(const IESPhotometry& record, std::vector<Finding>& findings) {
    const bool hasValues =
        std::ranges::any_of(record.candelaValues, [](float value) { return value != 0; });
    Survey survey = surveyOf(record, kMostSamples);
    if (!survey.isLit && hasValues)  // the light may be narrower than the samples are apart
        survey = surveyOf(record, record.candelaValues.size());
    if (!survey.notNumber.empty())
        findings.push_back({"not-a-number", "the intensity is not a number (NaN) at " +
                                                survey.notNumber + " degrees"});
    if (!survey.infinite.empty())
        findings.push_back({"too-large", "with the scale of " + shortText(record.intensityScale) +
                                             " the intensity is infinite at " + survey.infinite +
                                             " degrees"});
    if (survey.isLit) return;
    std::string reason = "all intensities are 0";
    if (hasValues)
        reason = record.intensityScale == 0 ? "the scale is 0 (lamps times multiplier)"
                                            : "its angles leave no direction with light";
    findings.push_back({"dark", "every direction is dark: " + reason});
}

/// How far beside a border intensities are looked at, in radians.
constexpr float kAside = 1e-3F;

/// Whether an intensity of 0 is not what the two beside it lead to.
bool isBlack(float there, float beside, float farther) {
    constexpr float kRounding = 1e-2F;  // of angles in single precision, so close to one another
    return there == 0 && std::abs(2 * beside - farther) > kRounding * std::abs(beside);
}

bool isBlackSeam(const IESPhotometry& record, float phi) {
    const auto verticals = samplesOf(record.verticalAngles, verticalRange(record), kMostSamples);
    return std::ranges::any_of(verticals, [&](float vertical) {
        const float theta = (180 - vertical) / 180 * kPi;
        return isBlack(candelaAt(record, theta, phi), candelaAt(record, theta, phi + kAside),
                       candelaAt(record, theta, phi + 2 * kAside));
    });
}

/// @param theta  0 or pi.
bool isBlackPole(const IESPhotometry& record, float theta) {
    const float step = theta == 0 ? kAside : -kAside;
    return isBlack(candelaAt(record, theta, kPi / 2), candelaAt(record, theta + step, kPi / 2),
                   candelaAt(record, theta + 2 * step, kPi / 2));
}

void findBlackBorders(const IESPhotometry& record, std::vector<Finding>& findings) {
    const auto joined = [](bool isFirst, const char* first, bool isSecond, const char* second) {
        return std::string(isFirst ? first : "") + (isFirst && isSecond ? " and " : "") +
               (isSecond ? second : "");
    };
    const bool isFirst = isBlackSeam(record, 0);
    const std::string seam = joined(isFirst, "azimuth 0", isBlackSeam(record, kPi), "azimuth 180");
    if (!seam.empty())
        findings.push_back({"black-seam", seam +
                                              ": exactly there the intensity is 0, as in all "
                                              "files for half a circle" +
                                              (isFirst ? "; column 0 of a table is black" : "")});
    const std::string poles = joined(isBlackPole(record, 0), "straight up (row 0 of a table)",
                                     isBlackPole(record, kPi), "straight down");
    if (!poles.empty())
        findings.push_back({"black-pole", poles + ": exactly there the intensity is 0, as in all "
                                                  "files for half a circle"});
}

}  // namespace

void findInIntensities(const Photometry& photometry, std::vector<Finding>& findings) {
    const IESPhotometry& record = photometry.record;
    findNegatives(record, findings);
    if (record.photometricType < kTypeC || record.photometricType > kTypeA) return;
    findInSurvey(record, findings);
    if (record.photometricType == kTypeC && circleOf(record) == Circle::FrontHalf)
        findBlackBorders(record, findings);
}

}  // namespace rb::cli
