#include "tools/rba/tour/Tour.h"

#include <array>

namespace rb::cli::tour {

std::span<const Section> sections() {
    static constexpr std::array<Section, 10> kSections{{
        {"images", "Images from file to pixels", writeImagesSection},
        {"derived", "Derived images", writeDerivedSection},
        {"textures", "Texture files: faces, levels, mirror ball", writeTexturesSection},
        {"import", "Textures as a renderer gets them", writeImportSection},
        {"photometry", "Photometry", writePhotometrySection},
        {"search", "Where image files are found", writeSearchSection},
        {"camera", "Cameras", writeCameraSection},
        {"resources", "Resources, units, display", writeResourcesSection},
        {"half", "Half floats", writeHalfSection},
        {"profile", "Where the time went", writeProfileSection},  // measures those above
    }};
    return kSections;
}

}  // namespace rb::cli::tour
