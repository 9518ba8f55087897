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

std::string both(const std::string& first, const std::string& second) {
    return first.empty() || second.empty() ? first + second : first + " and " + second;
}

void findInVerticalRange(const Angles& angles, std::vector<Finding>& findings) {
    const float first = angles.front(), last = angles.back();
    const bool isUsual =
        (first == 0 && (last == 90 || last == 180)) || (first == 90 && last == 180);
    if (isUsual) return;
    const std::string dark = both(range(0, first), range(last, 180));
    findings.push_back(
        {"vertical-range",
         "the vertical angles go from " + shortText(first) + " to " + shortText(last) + ": " +
             (dark.empty() ? "what is beyond 0 to 180 is not used" : dark + " are dark")});
}

/// What is not as it should be with angles that are to go from @p least to @p most.
std::string gapsIn(const Angles& angles, float least, float most, bool isDarkBehind) {
    const float first = angles.front(), last = angles.back();
    std::string text;
    if (first > least) text = range(least, first) + " continue the slope of the first two angles";
    if (first < least) text = range(first, least) + " are not used";
    if (last < most && isDarkBehind)
        text += (text.empty() ? "" : ", ") + range(last, most) + " are dark";
    if (last > most) text += (text.empty() ? "" : ", ") + range(most, last) + " are not used";
    return text;
}

void findInHorizontalRange(const IESPhotometry& record, std::vector<Finding>& findings) {
    const Angles& angles = record.horizontalAngles;
    if (angles.size() == 1 && circleOf(record) != Circle::Axial) {
        findings.push_back({"single-angle", "there is one horizontal angle only, " +
                                                shortText(angles.front()) +
                                                ", and it is not 0: nothing leads from it to "
                                                "other directions, which are dark or no numbers"});
        return;
    }
    std::string gaps;
    const char* usual = "";
    switch (circleOf(record)) {
        case Circle::Axial:
            return;
        case Circle::Quadrant:
            usual = "0 to 90";
            gaps = gapsIn(angles, 0, 90, true);
            break;
        case Circle::FrontHalf:
            usual = "0 to 180";
            gaps = gapsIn(angles, 0, 180, true);
            break;
        case Circle::SideHalf:
            usual = "90 to 270";
            gaps = gapsIn(angles, 90, 270, true);
            break;
        case Circle::Whole:
            usual = "0 to 360";
            gaps = gapsIn(angles, 0, 360, false);
            break;
    }
    if (gaps.empty()) return;
    findings.push_back(
        {"horizontal-range", "the horizontal angles go from " + shortText(angles.front()) + " to " +
                                 shortText(angles.back()) + ", not " + usual + ": " + gaps});
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

}  // namespace

void findInAngles(const Photometry& photometry, std::vector<Finding>& findings) {
    const IESPhotometry& record = photometry.record;
    findInOrder("vertical", record.verticalAngles, findings);
    findInOrder("horizontal", record.horizontalAngles, findings);
    const bool isAscending = ascend(record.verticalAngles) && ascend(record.horizontalAngles);
    if (!isAscending) return;
    if (record.photometricType == kTypeA || record.photometricType == kTypeB)
        findInFolding(record, findings);
    if (record.photometricType != kTypeC) return;
    findInVerticalRange(record.verticalAngles, findings);
    findInHorizontalRange(record, findings);
    findOpenCircle(record, findings);
}

}  // namespace rb::cli
