#include "tools/rba/CommandLine.h"
#include "tools/rba/Commands.h"
#include "tools/rba/FileText.h"
#include "tools/rba/Output.h"
#include "tools/rba/PathList.h"
#include "tools/rba/Photometry.h"

#include <algorithm>

namespace rb::cli {
namespace {

using KVRRbaIESLoader::IESPhotometry;

struct InfoArguments {
    std::vector<std::string> paths;
};

Json numbers(const std::vector<float>& values) {
    Json array = Json::array();
    for (const float value : values) array.push_back(jsonNumber(value));
    return array;
}

Json toJson(const std::string& path, const Photometry& photometry) {
    const IESPhotometry& record = photometry.record;
    return {{"path", path},
            {"formatVersion", record.formatVersion},
            {"versionText", record.versionText},
            {"manufacturer", record.manufacturer},
            {"luminaire", record.luminaire},
            {"lamp", record.lamp},
            {"luminaireCatalogue", record.luminaireCatalogue},
            {"lampCatalogue", record.lampCatalogue},
            {"verticalAngleCount", record.verticalAngleCount},
            {"horizontalAngleCount", record.horizontalAngleCount},
            {"photometricType", record.photometricType},
            {"ballastFactor", jsonNumber(record.ballastFactor)},
            {"intensityScale", jsonNumber(record.intensityScale)},
            {"inputWatts", jsonNumber(record.inputWatts)},
            {"filePath", record.filePath},
            {"verticalAngles", numbers(record.verticalAngles)},
            {"horizontalAngles", numbers(record.horizontalAngles)},
            {"candelaValues", numbers(record.candelaValues)}};
}

std::string dialectOf(const Photometry& photometry) {
    switch (photometry.record.formatVersion) {
        case 2:
            return "LM-63-1991";
        case 3:
            return "LM-63-1995";
        default:
            return "read as LM-63-1986; the first line is: " + onOneLine(photometry.firstLine);
    }
}

std::string typeOf(const IESPhotometry& record) {
    switch (record.photometricType) {
        case kTypeC:
            return "C";
        case kTypeB:
            return "B";
        case kTypeA:
            return "A";
        default:
            return "unknown (" + std::to_string(record.photometricType) + ")";
    }
}

std::string anglesOf(const std::vector<float>& angles) {
    if (angles.empty()) return "none";
    if (angles.size() == 1) return "1, at " + shortText(angles[0]) + " degrees";
    const auto [least, most] = std::minmax_element(angles.begin(), angles.end());
    return std::to_string(angles.size()) + ", from " + shortText(*least) + " to " +
           shortText(*most) + " degrees";
}

std::string symmetryOfTypeC(const IESPhotometry& record) {
    switch (circleOf(record)) {
        case Circle::Axial:
            return "the same all around the axis";
        case Circle::Quadrant:
            return "the four quadrants are alike";
        case Circle::FrontHalf:
            return "mirrored at the plane of C0 and C180";
        case Circle::SideHalf:
            return "mirrored at the plane of C90 and C270";
        case Circle::Whole:
            break;
    }
    return "none, all around";
}

std::string symmetryOf(const IESPhotometry& record) {
    if (!hasIntensities(record)) return "-";
    if (record.photometricType == kTypeC) return symmetryOfTypeC(record);
    if (record.photometricType != kTypeA && record.photometricType != kTypeB) return "-";
    const bool isLeftRight = record.horizontalAngles.front() >= 0;
    const bool isUpDown = record.verticalAngles.front() >= 0;
    if (isLeftRight && isUpDown) return "stored for a quadrant";
    if (isLeftRight) return "stored for the half of the positive horizontal angles";
    if (isUpDown) return "above and below are alike";
    return "none";
}

std::string peakText(const IESPhotometry& record) {
    const Peak peak = peakOf(record);
    if (peak.candela <= 0) return "no light";
    return shortText(peak.candela) + " cd, at vertical " + shortText(peak.vertical) +
           ", horizontal " + shortText(peak.horizontal) + " degrees";
}

std::string scaleText(const Photometry& photometry) {
    const auto& rest = photometry.rest;
    return shortText(photometry.record.intensityScale) + " (" + std::to_string(rest.lampCount) +
           (rest.lampCount == 1 ? " lamp" : " lamps") + ", multiplier " +
           shortText(rest.candelaMultiplier) + ")";
}

/// A text of the file; a dash without one.
std::string told(const std::string& text) {
    const std::string shown = trimmed(text);
    return shown.empty() ? "-" : onOneLine(shown);
}

std::string withNumber(const std::string& name, const std::string& number) {
    return told(name) + (trimmed(number).empty() ? "" : " (" + told(number) + ")");
}

void printText(std::ostream& out, const std::string& path, const Photometry& photometry) {
    const IESPhotometry& record = photometry.record;
    out << onOneLine(path) << "\n  luminaire   "
        << withNumber(record.luminaire, record.luminaireCatalogue) << "\n  maker       "
        << told(record.manufacturer) << "\n  lamp        "
        << withNumber(record.lamp, record.lampCatalogue) << "\n  dialect     "
        << dialectOf(photometry) << "\n  type        " << typeOf(record) << "\n  vertical    "
        << anglesOf(record.verticalAngles) << "\n  horizontal  "
        << anglesOf(record.horizontalAngles) << "\n  symmetry    " << symmetryOf(record)
        << "\n  scale       " << scaleText(photometry) << "\n  watts       "
        << shortText(record.inputWatts) << "\n  peak        " << peakText(record) << '\n';
}

int runInfo(Context& context, const InfoArguments& arguments) {
    return reportOnPaths<Photometry>(context, arguments.paths, {loadPhotometry, toJson, printText});
}

}  // namespace

void addIesInfo(CLI::App& group, Context& context) {
    auto [command, arguments] = addCommand<InfoArguments>(
        group, context, runInfo,
        {"info",
         "Show what photometric files (IESNA LM-63) say. That is the luminaire, its angles, its "
         "symmetry and its brightest direction. Angles are degrees as the file counts them, the "
         "peak is in "
         "candelas with the scale applied. JSON has all angles and the candela values without the "
         "scale.",
         "rba ies info street.ies\nrba --json ies info lamps/*.ies"});
    addArgument(command, "PATH", arguments.paths, "Photometric files");
}

}  // namespace rb::cli
