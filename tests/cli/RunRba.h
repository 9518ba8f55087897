#pragma once

/// @file  Runs the real program in a process of its own, and makes small files to give it.

#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace rb::test {

using Json = nlohmann::ordered_json;  // with the keys in the order in which they were printed

struct RbaResult {
    int status = -1;  ///< Exit status; 128 + number for a signal, as shells have it.
    std::string out, err;

    /// Standard output as JSON; the test fails when it is not exactly one value.
    Json json() const;
};

struct RbaSettings {
    std::vector<std::string> environment;  ///< "NAME=value", added to that of the test.
    std::string folder;                    ///< To run in; empty for that of the test.
    std::string out;                       ///< File for standard output, which is not read then.
};

using Arguments = std::vector<std::string>;

/// Runs the program. Settings of the user and start-up paths, where @p settings has none, are those
/// of an empty folder, whatever they are on this machine.
RbaResult runRba(const Arguments& arguments, const RbaSettings& settings = {});

/// Starts the program, with its output to files, and returns its process number.
int startRba(const Arguments& arguments, const RbaSettings& settings, const std::string& outFile,
             const std::string& errFile);
/// Whether a process that was started has not ended yet.
bool isRunning(int process);
/// Waits for it and returns the status as in RbaResult.
int waitForRba(int process);

std::string readFile(const std::string& path);

/// The keys of a JSON object in their order.
std::vector<std::string> keysOf(const Json& object);

/// Writes a PNG in which no two pixels of a small picture are equal. @p dpi 0 for no resolution.
std::string writePicture(const TempFolder& folder, const std::string& name, int width, int height,
                         KVRPixelImageFormat format = KVRPixelImageFormat::RGB, double dpi = 0);

/// The bytes of a Radiance picture (RGBE, not compressed): floating-point pixels.
std::string radianceFile(int width, int height);

/// Whether @p text is one line of the form "rba: FILE: expected ..., found ...".
testing::AssertionResult isErrorLine(const std::string& text, const std::string& file);

}  // namespace rb::test
