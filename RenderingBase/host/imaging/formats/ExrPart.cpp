#include "RenderingBase/host/imaging/formats/ExrPart.h"

#include "RenderingBase/host/imaging/formats/RefusalTexts.h"

#include <ImfChannelList.h>
#include <ImfHeader.h>
#include <ImfPartType.h>
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace rb::imaging {
namespace {

/// What is there instead of channels that make a picture.
std::string someOf(const std::vector<std::string>& names) {
    constexpr std::size_t kShown = 8;
    if (names.empty()) return "none";
    std::string list;
    for (std::size_t i = 0; i < std::min(names.size(), kShown); ++i)
        list += (i ? ", " : "") + inQuotes(names[i]);
    return list + (names.size() > kShown ? ", ..." : "");
}

ReadResult chooseChannels(const Imf::Header& header, ExrPart& part) {
    std::vector<std::string> names;
    for (auto it = header.channels().begin(); it != header.channels().end(); ++it)
        names.emplace_back(it.name());
    part.channels = chooseExrChannels(names);
    if (part.channels.kind == ExrChannels::Kind::None)
        return refuse("channels R, G and B, a channel Y, or one channel", someOf(names));
    // The library converts luminance and chroma in the first part only, and to halves.
    if (part.hasChroma() && part.index > 0)
        return refuse("luminance and chroma in the first part", "another part");
    return {};
}

/// Half numbers when all channels that are delivered are half, else floats.
ReadResult chooseFormat(const Imf::Header& header, ExrPart& part) {
    using enum KVRPixelImageFormat;
    bool half = true;
    if (!part.hasChroma()) {
        std::vector<std::string> names(part.channels.color.begin(), part.channels.color.end());
        names.push_back(part.channels.alpha);
        for (const std::string& name : names) {
            if (name.empty()) continue;
            const Imf::Channel& channel = header.channels()[name];
            half = half && channel.type == Imf::HALF;
            if (channel.xSampling != 1 || channel.ySampling != 1)
                return refuse("a sample in every pixel",
                              "the subsampled channel " + inQuotes(name));
        }
    }
    if (half)
        part.format = part.hasAlpha() ? RGBA_f16 : part.isGrey() ? L_f16 : RGB_f16;
    else
        part.format = part.hasAlpha() ? RGBA_f : part.isGrey() ? L_f : RGB_f;
    return {};
}

}  // namespace

ReadResult chooseExrPart(const Imf::MultiPartInputFile& file, ExrPart& part) {
    bool deep = false;
    ReadResult refusal;
    for (part.index = 0; part.index < file.parts(); ++part.index) {
        const Imf::Header& header = file.header(part.index);
        deep = deep || header.type() == Imf::DEEPSCANLINE || header.type() == Imf::DEEPTILE;
        if (header.type() != Imf::SCANLINEIMAGE && header.type() != Imf::TILEDIMAGE) continue;
        ReadResult otherwise = chooseChannels(header, part);
        if (!otherwise) return chooseFormat(header, part);
        if (!refusal) refusal = std::move(otherwise);
    }
    if (refusal) return refusal;
    return refuse("a part with a flat image", deep ? "deep images only" : "none");
}

}  // namespace rb::imaging
