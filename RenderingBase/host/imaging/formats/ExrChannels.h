#pragma once

/// @file  Which channels of an OpenEXR part make the picture.

#include <array>
#include <span>
#include <string>

namespace rb::imaging {

/// Names of the channels that are delivered; an empty one has no channel in the file.
struct ExrChannels {
    enum class Kind {
        None,
        Grey,             ///< color[0]
        Rgb,              ///< color[0..2]
        LuminanceChroma,  ///< Y, RY and BY of `layer`, subsampled
    };
    Kind kind = Kind::None;
    std::array<std::string, 3> color;
    std::string alpha;
    std::string layer;  ///< Without the dot behind it; empty for channels outside layers.
};

/// Chooses among the channels of a part: R, G, B; else Y, with RY and BY if they are there; of the
/// channels outside layers, else of the first layer that has them; with the A beside them. A single
/// channel of whatever name is grey. Else what there is of R, G and B.
ExrChannels chooseExrChannels(std::span<const std::string> names);

}  // namespace rb::imaging
