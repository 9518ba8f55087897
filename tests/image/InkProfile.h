#pragma once

/// @file  Colour profiles of devices with four inks, for tests.

#include <array>
#include <cstddef>
#include <gtest/gtest.h>
#include <lcms2.h>
#include <string>
#include <vector>

namespace rb::test {

/// The profile of a device whose sixteen extreme ink mixtures have the colours of @p nodes, with
/// straight lines between them; black changes fastest. Made by the colour engine, without any
/// reader of ours.
inline std::string inkProfile(const std::array<cmsCIELab, 16>& nodes) {
    const cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 4.2);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    std::vector<cmsUInt16Number> table;
    for (const cmsCIELab& lab : nodes) {
        std::array<cmsUInt16Number, 3> encoded{};
        cmsFloat2LabEncoded(encoded.data(), &lab);
        table.insert(table.end(), encoded.begin(), encoded.end());
    }
    cmsPipeline* const pipeline = cmsPipelineAlloc(nullptr, 4, 3);
    cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 4, nullptr));
    cmsPipelineInsertStage(pipeline, cmsAT_END,
                           cmsStageAllocCLut16bit(nullptr, 2, 4, 3, table.data()));
    cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
    for (const cmsTagSignature tag : {cmsSigAToB0Tag, cmsSigAToB1Tag})
        EXPECT_TRUE(cmsWriteTag(profile, tag, pipeline));
    cmsPipelineFree(pipeline);
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    std::string data(size, '\0');
    cmsSaveProfileToMem(profile, data.data(), &size);
    cmsCloseProfile(profile);
    return data;
}

/// Paper, cyan, magenta, yellow and black of a device.
inline constexpr std::array<cmsCIELab, 5> kPaperAndInks{
    {{100, 0, 0}, {60, -20, -30}, {50, 40, 0}, {85, 0, 40}, {0, 0, 0}}};

/// The profile of that device. Every mixture with black is black, which keeps black point
/// compensation out of the numbers.
inline std::string profileOfInks() {
    std::array<cmsCIELab, 16> nodes{};
    for (std::size_t i = 0; i < nodes.size(); ++i)
        nodes[i] = i & 1 ? kPaperAndInks[4] : cmsCIELab{50, 0, 0};
    nodes[0] = kPaperAndInks[0];
    for (std::size_t ink = 1; ink <= 3; ++ink) nodes[16 >> ink] = kPaperAndInks[ink];
    return inkProfile(nodes);
}

}  // namespace rb::test
