#include "tools/rba/IesFindings.h"

#include "tools/rba/FileText.h"
#include "tools/rba/Output.h"

namespace rb::cli {
namespace {

constexpr int kMostKeywordLines = 100;

bool contains(std::string_view text, std::string_view what) {
    return text.find(what) != std::string_view::npos;
}

std::string inQuotes(std::string_view text) {
    constexpr std::size_t kShown = 60;
    return "'" + onOneLine(shortened(text, kShown)) + "'";
}

/// Some editors put a mark before the first line of UTF-8 texts.
std::string_view withoutMark(std::string_view line) {
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    return line.substr(line.starts_with(kMark) ? kMark.size() : 0);
}

void findInFirstLine(const Photometry& photometry, std::vector<Finding>& findings) {
    const std::string_view line = withoutMark(photometry.firstLine);
    if (contains(line, "TILT="))
        findings.push_back({"first-line-used-up",
                            "the first line is a tilt line already, and is used up: " +
                                inQuotes(photometry.rest.tiltLine) + " counts in its place"});
    else if (line.starts_with('['))
        findings.push_back({"first-line-used-up", "the first line is a keyword line already, " +
                                                      inQuotes(line) +
                                                      ", and is used up: its text is not kept"});
    if (photometry.record.formatVersion == 1)
        findings.push_back({"dialect-unknown", "the first line, " + inQuotes(line) +
                                                   ", names no known dialect (1991, 1995): the "
                                                   "file is read as one of 1986"});
}

void findInKeywords(const Photometry& photometry, std::vector<Finding>& findings) {
    const auto& rest = photometry.rest;
    if (rest.keywordLineCount >= kMostKeywordLines && !contains(rest.tiltLine, "TILT="))
        findings.push_back({"keyword-limit", "the keywords end with the hundredth line, " +
                                                 inQuotes(trimmed(rest.tiltLine)) +
                                                 ", without a tilt line: the numbers are read "
                                                 "from the line behind it"});
}

/// What follows the equals sign; "NONE" on a line that is no tilt line.
std::string tiltName(std::string_view line) {
    const std::size_t sign = line.find('=');
    if (sign == std::string_view::npos || !contains(line.substr(0, sign), "TILT")) return "NONE";
    line.remove_prefix(sign + 1);
    return trimmed(line.substr(0, line.find('=')));
}

void findInTilt(const Photometry& photometry, std::vector<Finding>& findings) {
    const auto& rest = photometry.rest;
    const std::string name = tiltName(rest.tiltLine);
    if (contains(name, "INCLUDE")) {
        if (rest.tiltPairCount > 0)
            findings.push_back({"tilt-dropped", "the " + std::to_string(rest.tiltPairCount) +
                                                    " tilt factors are dropped: intensities are "
                                                    "those of the lamp as it was measured"});
    } else if (!name.empty() && !contains(name, "NONE")) {
        findings.push_back(
            {"tilt-file", "the tilt line names " + inQuotes(name) +
                              ": no file of that name is opened, and no tilt factor is applied"});
    }
}

/// Editions since 1995 keep other things in the place of the ballast-lamp factor.
bool hasBallastLampFactor(const Photometry& photometry) {
    const int version = photometry.record.formatVersion;
    const std::string_view line = photometry.firstLine;
    return version == 2 || (version == 1 && (!contains(line, "LM-63") || contains(line, "1986")));
}

void findInBallast(const Photometry& photometry, std::vector<Finding>& findings) {
    const auto add = [&findings](const char* name, float factor) {
        if (factor != 1)
            findings.push_back({"ballast-not-applied", std::string("the ") + name + " factor is " +
                                                           shortText(factor) +
                                                           ": intensities are not multiplied by "
                                                           "it"});
    };
    add("ballast", photometry.record.ballastFactor);
    if (hasBallastLampFactor(photometry)) add("ballast-lamp", photometry.rest.futureUse);
}

void findInHeader(const Photometry& photometry, std::vector<Finding>& findings) {
    const auto& rest = photometry.rest;
    const auto& record = photometry.record;
    if (rest.lumensPerLamp == -1 && rest.lampCount > 1)
        findings.push_back({"absolute-lamps",
                            "the photometry is absolute (lumens are -1), and yet intensities "
                            "are multiplied by the number of lamps, " +
                                std::to_string(rest.lampCount)});
    if (record.photometricType < kTypeC || record.photometricType > kTypeA)
        findings.push_back({"type-unknown", "the photometric type is " +
                                                std::to_string(record.photometricType) +
                                                ", not 1 (C), 2 (B) or 3 (A): every direction is "
                                                "dark"});
    if (rest.unitsType != 1 && rest.unitsType != 2)
        findings.push_back({"units-unknown", "the unit of the sizes is " +
                                                 std::to_string(rest.unitsType) +
                                                 ", not 1 (feet) or 2 (metres); sizes are not "
                                                 "used"});
}

void findInCounts(const Photometry& photometry, std::vector<Finding>& findings) {
    const auto& record = photometry.record;
    const std::string counts = std::to_string(record.verticalAngleCount) + " vertical and " +
                               std::to_string(record.horizontalAngleCount) + " horizontal angles";
    if (!hasIntensities(record))
        findings.push_back({"no-values", counts + " are declared: every direction is dark"});
    if (photometry.rest.trailingByteCount > 0)
        findings.push_back({"left-over", "behind the values of " + counts + " there are " +
                                             std::to_string(photometry.rest.trailingByteCount) +
                                             " bytes more: the counts are too small, or it is no "
                                             "part of the file"});
}

}  // namespace

void findInText(const Photometry& photometry, std::vector<Finding>& findings) {
    findInFirstLine(photometry, findings);
    findInKeywords(photometry, findings);
    findInTilt(photometry, findings);
    findInHeader(photometry, findings);
    findInBallast(photometry, findings);
    findInCounts(photometry, findings);
}

std::vector<Finding> findingsOf(const Photometry& photometry) {
    std::vector<Finding> findings;
    findInText(photometry, findings);
    if (!hasIntensities(photometry.record)) return findings;
    findInAngles(photometry, findings);
    findInIntensities(photometry, findings);
    return findings;
}

}  // namespace rb::cli
