#include "RenderingBase/host/app/SettingText.h"

#include <array>
#include <utility>

namespace rb::app {
namespace {

constexpr std::array<std::pair<char, char>, 6> kEscapes = {
    {{' ', 's'}, {'\n', 'n'}, {'\t', 't'}, {'\r', 'r'}, {'\f', 'f'}, {'\\', '\\'}}};

}  // namespace

std::string escapedSetting(std::string_view text) {
    std::string line;
    for (const char character : text) {
        const bool isInnerBlank = character == ' ' && !line.empty();
        char letter = 0;
        for (const auto& [plain, escape] : kEscapes) {
            if (plain == character && !isInnerBlank) letter = escape;
        }
        if (letter) line += '\\';
        line += letter ? letter : character;
    }
    return line;
}

std::string unescapedSetting(std::string_view line) {
    std::string text;
    for (std::size_t at = 0; at < line.size(); ++at) {
        char character = line[at];
        if (character == '\\' && at + 1 < line.size()) {
            for (const auto& [plain, escape] : kEscapes) {
                if (escape != line[at + 1]) continue;
                character = plain;
                ++at;
                break;
            }
        }
        text += character;
    }
    return text;
}

}  // namespace rb::app
