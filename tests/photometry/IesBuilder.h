#pragma once

/// @file  Photometric files put together part by part. A test changes what it is about.

#include <charconv>
#include <string>
#include <vector>

namespace rb::test {

/// Numbers with blanks between them, as short as they come back.
inline std::string joined(const std::vector<float>& values) {
    std::string text;
    for (const float value : values) {
        char digits[32];
        const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
        text += (text.empty() ? "" : " ") + std::string(digits, end);
    }
    return text;
}

struct IesBuilder {
    std::string version = "IESNA:LM-63-1995";
    std::string keywords = "[TEST] 1\n[MANUFAC] Lamps and Sons\n";
    std::string tilt = "TILT=NONE\n";
    std::string lampCount = "1", lumens = "1000", multiplier = "1";
    std::string type = "1";
    std::string ballast = "1", ballastLamp = "1";
    std::vector<float> vertical{0, 90, 180};
    std::vector<float> horizontal{0};
    std::vector<float> candela{30, 20, 10};

    std::string header() const {
        return lampCount + " " + lumens + " " + multiplier + " " + std::to_string(vertical.size()) +
               " " + std::to_string(horizontal.size()) + " " + type + " 2 0.1 0.2 0.3\n" + ballast +
               " " + ballastLamp + " 40\n";
    }
    std::string build() const {
        return version + "\n" + keywords + tilt + header() + joined(vertical) + "\n" +
               joined(horizontal) + "\n" + joined(candela) + "\n";
    }
};

}  // namespace rb::test
