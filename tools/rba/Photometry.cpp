#include "tools/rba/Photometry.h"

#include "RenderingBase/host/files/KVRFileSystem.h"
#include "tools/rba/Context.h"
#include "tools/rba/FileText.h"
#include "tools/rba/IesHint.h"
#include "tools/rba/Output.h"
#include "tools/rba/Paths.h"
#include "tools/rba/Profile.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <ios>
#include <new>

namespace rb::cli {
namespace {

using KVRRbaIESLoader::IESPhotometry;

std::string readText(const std::string& typedPath) {
    std::string text, reason;
    const HRESULT status =
        KVRReadFile(frameworkPath(typedPath), KVRRbaIESLoader::kMostFileBytes, text, reason);
    if (Failed(status)) throw Failure(typedPath, "expected a readable file, found " + reason);
    return text;
}

void makeReadable(Photometry& photometry) {
    IESPhotometry& record = photometry.record;
    for (std::string* text : {&record.versionText, &record.manufacturer, &record.luminaire,
                              &record.lamp, &record.luminaireCatalogue, &record.lampCatalogue,
                              &photometry.rest.tiltLine, &photometry.firstLine})
        *text = inUtf8(*text);
}

}  // namespace

Photometry loadPhotometry(const std::string& typedPath) {
    const std::string text = readText(typedPath);
    Photometry photometry;
    try {
        const HRESULT status = measured("KVRRbaIESLoader", "parseIESText", [&] {
            return KVRRbaIESLoader::parseIESText(text, photometry.record, &photometry.rest);
        });
        if (Failed(status))
            throw Failure(typedPath, "expected as many angles as are declared, found less");
    } catch (const std::ios_base::failure& failure) {
        throw Failure(typedPath, failure.what() + hintOn(text));
    } catch (const std::bad_alloc&) {
        throw Failure(typedPath, "expected memory for the values, found none");
    }
    photometry.record.filePath = typedPath;
    photometry.firstLine = trimmed(text.substr(0, text.find('\n')));
    makeReadable(photometry);
    return photometry;
}

bool hasIntensities(const IESPhotometry& record) {
    const std::size_t pairs = record.verticalAngles.size() * record.horizontalAngles.size();
    return pairs > 0 && record.candelaValues.size() >= pairs;
}

Circle circleOf(const IESPhotometry& record) {
    const float first = record.horizontalAngles.front(), last = record.horizontalAngles.back();
    constexpr float kEpsilon = 1.1920929e-7F;  // as the library has it
    if (last <= kEpsilon) return Circle::Axial;
    if (last <= 90) return Circle::Quadrant;
    if (last <= 180) return Circle::FrontHalf;
    if (first <= 90 && last <= 270) return Circle::SideHalf;
    return Circle::Whole;
}

AngleRange verticalRange(const IESPhotometry& record) {
    return record.photometricType == kTypeC ? AngleRange{0, 180} : AngleRange{-90, 90};
}

AngleRange horizontalRange(const IESPhotometry& record) {
    return record.photometricType == kTypeC ? AngleRange{0, 360} : AngleRange{-180, 180};
}

float candelaAtAngles(const IESPhotometry& record, float vertical, float horizontal) {
    constexpr float kDegrees = 57.295776F;  // to the radian, as the library has it
    const bool isTypeC = record.photometricType == kTypeC;
    // Types A and B have their axis level, at azimuth 180.
    const float down = isTypeC ? vertical : vertical + 90;
    const float azimuth = isTypeC ? horizontal : horizontal + 180;
    return KVRRbaIESLoader::candelaAt(record, (180 - down) / kDegrees, azimuth / kDegrees);
}

void fillTable(const IESPhotometry& record, int thetaCount, int phiCount, int channels,
               const KVRMathVector& orientation, float* table) {
    measured("KVRRbaIESLoader", "resample", [&] {
        KVRRbaIESLoader::resample(record, thetaCount, phiCount, channels, orientation, table);
    });
}

Peak peakOf(const IESPhotometry& record) {
    Peak peak;
    if (!hasIntensities(record)) return peak;
    const std::size_t verticals = record.verticalAngles.size();
    for (std::size_t h = 0; h < record.horizontalAngles.size(); ++h)
        for (std::size_t v = 0; v < verticals; ++v) {
            const float candela = record.candelaValues[h * verticals + v] * record.intensityScale;
            if (candela > peak.candela)
                peak = {candela, record.verticalAngles[v], record.horizontalAngles[h]};
        }
    return peak;
}

std::string shortText(float value, int mostDigits) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                   std::chars_format::general, mostDigits)
                         .ptr;
    return {text.data(), end};
}

}  // namespace rb::cli
