#include "tools/rba/IesFindings.h"

#include <algorithm>
#include <cmath>

namespace rb::cli {
namespace {

using KVRRbaIESLoader::IESPhotometry;
using Angles = std::vector<float>;

bool ascend(const Angles& angles) { return std::is_sorted(angles.begin(), angles.end()); }

void findInOrder(const std::string& kind, const Angles& angles, std::vector<Finding>& findings) {
    const auto back = std::is_sorted_until(angles.begin(), angles.end());
    if (back != angles.end())
        findings.push_back(
            {"angles-out-of-order", "the " + kind + " angles do not ascend, " + shortText(*back) +
                                        " follows " + shortText(back[-1]) +
                                        ": intensities are looked up in wrong places"});
    const auto twice = std::adjacent_find(angles.begin(), angles.end());
    if (twice != angles.end())
        findings.push_back({"repeated-angle", "the " + kind + " angle " + shortText(*twice) +
                                                  " stands twice in a row: nothing leads from "
                                                  "the values of the one to those of the other"});
}

/// "0 to 30"; nothing for an empty range.
std::string range(float from, float to) {
    return from < to ? shortText(from) + " to " + shortText(to) : "";
}

/// What becomes of two ranges, as in "0 to 10 and 80 to 90 are dark"; nothing of empty ones.
std::string told(const std::string& first, const std::string& second, const char* whatBecomes) {
    if (first.empty() && second.empty()) return "";
    const char* const between = first.empty() || second.empty() ? "" : " and ";
    return first + between + second + whatBecomes;
}

std::string listed(const std::string& first, const std::string& second) {
    return first + (first.empty() || second.empty() ? "" : ", ") + second;
}

void addRange(const std::string& kind, const Angles& angles, const std::string& gaps,
              std::vector<Finding>& findings) {
    if (gaps.empty()) return;
    findings.push_back({kind + "-range", "the " + kind + " angles go from " +
                                             shortText(angles.front()) + " to " +
                                             shortText(angles.back()) + ": " + gaps});
}

/// What of @p least to @p most angles from @p first to @p last leave dark, and what of them is
/// beyond.
std::string borderText(float first, float last, float least, float most) {
    const std::string dark =
        told(range(least, std::min(first, most)), range(std::max(last, least), most), " are dark");
    const std::string unused = told(range(first, std::min(last, least)),
                                    range(std::max(first, most), last), " are not used");
    return listed(dark, unused);
}

void findInVerticalRange(const Angles& angles, std::vector<Finding>& findings) {
    const float first = angles.front(), last = angles.back();
    const bool isHalf = (first == 0 && last == 90) || (first == 90 && last == 180);
    if (!isHalf) addRange("vertical", angles, borderText(first, last, 0, 180), findings);
}

/// What is not as it should be with angles that are to go from @p least to @p most.
std::string gapsIn(const Angles& angles, float least, float most, bool isDarkBehind) {
    const float first = angles.front(), last = angles.back();
    const char* const guessed = " continue the slope of the first two angles";
    // Behind the last angle of a circle that is not closed, values lead to those of the first.
    const bool isOpen = !isDarkBehind && last < most;
    const char* const beyond = isOpen ? " count only behind the last angle" : " are not used";
    const std::string before = first > least ? told(range(least, first), "", guessed)
                                             : told(range(first, least), "", beyond);
    if (last > most) return listed(before, told(range(most, last), "", " are not used"));
    return listed(before, isDarkBehind ? told(range(last, most), "", " are dark") : "");
}

/// What the kind of circle makes of angles that it does not usually have.
std::string gapsInCircle(const IESPhotometry& record) {
    const Angles& angles = record.horizontalAngles;
    switch (circleOf(record)) {
        case Circle::Axial:
            return angles.size() > 1 && angles.back() >= 0 ? "the first values count all around"
                                                           : "";
        case Circle::Quadrant:
            return gapsIn(angles, 0, 90, true);
        case Circle::FrontHalf:
            return gapsIn(angles, 0, 180, true);
        case Circle::SideHalf:
            return gapsIn(angles, 90, 270, true);
        case Circle::Whole:
            return gapsIn(angles, 0, 360, false);
    }
    return "";
}

bool hasSingleAngle(const IESPhotometry& record) {
    const bool isTypeC = record.photometricType == kTypeC;
    return record.horizontalAngles.size() == 1 && !(isTypeC && circleOf(record) == Circle::Axial);
}

void findSingleAngle(const IESPhotometry& record, std::vector<Finding>& findings) {
    if (!hasSingleAngle(record)) return;
    const bool isTypeC = record.photometricType == kTypeC;
    findings.push_back(
        {"single-angle", "there is one horizontal angle only, " +
                             shortText(record.horizontalAngles.front()) +
                             (isTypeC ? ", and it is not 0" : "") +
                             ": nothing leads from it to other directions, which are dark or no "
                             "numbers"});
}

/// How far the intensities just before 360 are from those at 0, in candelas.
float stepAtAzimuth0(const IESPhotometry& record) {
    float step = 0;
    for (const float vertical : record.verticalAngles) {
        const float before = candelaAtAngles(record, vertical, 359.999F);
        const float after = candelaAtAngles(record, vertical, 0);
        step = std::max(step, std::abs(after - before));  // NaN is told elsewhere
    }
    return step;
}

void findOpenCircle(const IESPhotometry& record, std::vector<Finding>& findings) {
    const float last = record.horizontalAngles.back();
    if (circleOf(record) != Circle::Whole || last >= 360) return;
    const float step = stepAtAzimuth0(record);
    const bool isVisible = step > 1e-3F * peakOf(record).candela;
    findings.push_back(
        {"circle-open",
         "the full circle ends at " + shortText(last) +
             ": from there to 360 the last values go on, and do not lead to those "
             "at 0" +
             (isVisible ? ", with a step of up to " + shortText(step, 3) + " cd" : "")});
}

/// What types A and B make of files that are stored for one side.
void findInFolding(const IESPhotometry& record, std::vector<Finding>& findings) {
    if (record.horizontalAngles.front() < 0) return;
    findings.push_back({"dark-half",
                        "the file has positive horizontal angles only, and they keep their sign: "
                        "the half of the negative ones is dark"});
    if (record.verticalAngles.front() < 0)
        findings.push_back({"vertical-mirrored",
                            "with positive horizontal angles only, values below the horizon are "
                            "not used: those above stand for them"});
}

/// Of types A and B, which usually cover the half in front. What is dark or unused because a file
/// is stored for one side is told by findInFolding().
void findInHalfRanges(const IESPhotometry& record, std::vector<Finding>& findings) {
    const Angles &vertical = record.verticalAngles, &horizontal = record.horizontalAngles;
    const bool isOneSided = horizontal.front() >= 0;
    const bool isMirrored = isOneSided || vertical.front() >= 0;
    const float first = isMirrored ? std::max(vertical.front(), 0.0F) : vertical.front();
    std::string gaps = borderText(first, vertical.back(), isMirrored ? 0 : -90, 90);
    if (isMirrored && !gaps.empty()) gaps += ", above and below the horizon";
    addRange("vertical", vertical, gaps, findings);
    if (hasSingleAngle(record)) return;
    // Some files have light behind as well.
    const float most = horizontal.front() < -90 || horizontal.back() > 90 ? 180 : 90;
    addRange("horizontal", horizontal,
             borderText(horizontal.front(), horizontal.back(), isOneSided ? 0 : -most, most),
             findings);
}

}  // namespace

void findInAngles(const Photometry& photometry, std::vector<Finding>& findings) {
    const IESPhotometry& record = photometry.record;
    findInOrder("vertical", record.verticalAngles, findings);
    findInOrder("horizontal", record.horizontalAngles, findings);
    const bool isAscending = ascend(record.verticalAngles) && ascend(record.horizontalAngles);
    if (!isAscending) return;
    if (record.photometricType == kTypeC) {
        findSingleAngle(record, findings);
        findInVerticalRange(record.verticalAngles, findings);
        if (!hasSingleAngle(record))
            addRange("horizontal", record.horizontalAngles, gapsInCircle(record), findings);
        findOpenCircle(record, findings);
    } else if (record.photometricType == kTypeA || record.photometricType == kTypeB) {
        findSingleAngle(record, findings);
        findInFolding(record, findings);
        findInHalfRanges(record, findings);
    }
}

}  // namespace rb::cli
