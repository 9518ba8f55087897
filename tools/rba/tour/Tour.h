#pragma once

/// @file  The tour: takes sample files through every service and shows what came out on one page.
/// A section is one file in this folder and one entry in the list of Sections.cpp.

#include "tools/rba/Output.h"
#include "tools/rba/tour/Html.h"

#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace rb::cli::tour {

/// What a section works with.
struct TourInput {
    std::filesystem::path samples;  ///< Folder with the sample files.
    std::filesystem::path scratch;  ///< A folder to write to; removed at the end.
    std::filesystem::path program;  ///< This tool, for settings that are read when it starts.
    bool quiet = false;
};

/// One section. What `write` throws stands in the page in place of its content.
struct Section {
    const char* id;  ///< Its anchor.
    const char* title;
    void (*write)(const TourInput& input, Html& page);
};

/// All sections, in the order in which they are shown.
std::span<const Section> sections();

/// The whole page, which needs no other file.
struct Page {
    std::string html;
    std::vector<std::string> failures;  ///< Of each section that could not be made: "title: why".
};
Page buildPage(const TourInput& input);

void writeImagesSection(const TourInput& input, Html& page);
void writeDerivedSection(const TourInput& input, Html& page);
void writeTexturesSection(const TourInput& input, Html& page);
void writeImportSection(const TourInput& input, Html& page);
void writePhotometrySection(const TourInput& input, Html& page);
void writeSearchSection(const TourInput& input, Html& page);
void writeCameraSection(const TourInput& input, Html& page);
void writeResourcesSection(const TourInput& input, Html& page);
void writeHalfSection(const TourInput& input, Html& page);
void writeProfileSection(const TourInput& input, Html& page);

extern const std::string_view kStyleSheet;

}  // namespace rb::cli::tour
