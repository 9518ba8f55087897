#include "RenderingBase/host/imaging/formats/ExrChannels.h"

#include <map>

namespace rb::imaging {
namespace {

/// The name in capitals: some programs write small letters.
std::string capitals(std::string name) {
    for (char& c : name)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return name;
}

/// The channels of one layer: their full names by their own names.
using Layer = std::map<std::string, std::string>;

std::string nameIn(const Layer& layer, const char* channel) {
    const auto found = layer.find(channel);
    return found == layer.end() ? std::string() : found->second;
}

ExrChannels colorsOf(const Layer& layer) {
    ExrChannels chosen;
    chosen.kind = ExrChannels::Kind::Rgb;
    chosen.color = {nameIn(layer, "R"), nameIn(layer, "G"), nameIn(layer, "B")};
    chosen.alpha = nameIn(layer, "A");
    return chosen;
}

/// The picture of a layer that has all it takes.
ExrChannels completeIn(const std::string& name, const Layer& layer) {
    ExrChannels chosen;
    if (layer.count("R") && layer.count("G") && layer.count("B")) {
        chosen = colorsOf(layer);
    } else if (layer.count("Y")) {
        const bool chroma = layer.count("RY") && layer.count("BY");
        chosen.kind = chroma ? ExrChannels::Kind::LuminanceChroma : ExrChannels::Kind::Grey;
        chosen.color[0] = nameIn(layer, "Y");
        chosen.alpha = nameIn(layer, "A");
    }
    chosen.layer = name;
    return chosen;
}

}  // namespace

ExrChannels chooseExrChannels(std::span<const std::string> names) {
    if (names.size() == 1) return {ExrChannels::Kind::Grey, {names[0]}, {}, {}};
    std::map<std::string, Layer> layers;  // the one without a name comes first
    for (const std::string& name : names) {
        const std::size_t dot = name.rfind('.');
        const bool inLayer = dot != std::string::npos;
        layers[inLayer ? name.substr(0, dot) : ""].emplace(
            capitals(inLayer ? name.substr(dot + 1) : name), name);
    }
    for (const auto& [name, layer] : layers) {
        ExrChannels chosen = completeIn(name, layer);
        if (chosen.kind != ExrChannels::Kind::None) return chosen;
    }
    for (const auto& [name, layer] : layers)
        if (layer.count("R") || layer.count("G") || layer.count("B")) return colorsOf(layer);
    return {};
}

}  // namespace rb::imaging
