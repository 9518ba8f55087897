#include "tools/rba/IesHint.h"

#include <algorithm>

namespace rb::cli {
namespace {

std::string_view firstLineOf(std::string_view text) { return text.substr(0, text.find('\n')); }

bool contains(std::string_view text, std::string_view what) {
    return text.find(what) != std::string_view::npos;
}

/// How many keyword lines come before the tilt line; the first line is no keyword line.
int keywordLinesOf(std::string_view text) {
    int count = 0;
    for (;;) {
        text.remove_prefix(std::min(firstLineOf(text).size() + 1, text.size()));
        const std::string_view line = firstLineOf(text);
        if (text.empty() || contains(line, "TILT=")) return count;
        if (!line.empty()) ++count;
    }
}

/// Without the ends of lines behind it.
std::string_view trimmedEnd(std::string_view line) {
    return line.substr(0, line.find_last_not_of("\r\n") + 1);
}

/// UTF-16 and UTF-32 have zeros in every letter of the numbers.
bool isWide(std::string_view text) {
    return text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF") ||
           contains(text.substr(0, 64), std::string_view("\0", 1));
}

bool hasTiltWithBlanks(std::string_view text) {
    for (std::size_t at = 0; (at = text.find("TILT", at)) != std::string_view::npos; at += 4) {
        const std::size_t next = text.find_first_not_of(" \t", at + 4);
        if (next != std::string_view::npos && next > at + 4 && text[next] == '=') return true;
    }
    return false;
}

}  // namespace

std::string hintOn(std::string_view text) {
    constexpr int kMostKeywordLines = 99;  // and the tilt line
    if (isWide(text)) return " (the text is UTF-16 or no text at all)";
    if (contains(trimmedEnd(firstLineOf(text)), "\r"))
        return " (carriage returns alone end no line, so all of it is the first line)";
    if (contains(firstLineOf(text), "TILT="))
        return " (the first line is always used up, here it is the tilt line)";
    if (!contains(text, "TILT="))
        return hasTiltWithBlanks(text) ? " (the tilt line must have no blank before its '=')"
                                       : " (there is no tilt line, 'TILT=')";
    if (keywordLinesOf(text) > kMostKeywordLines)
        return " (the keywords end with the hundredth line, the tilt line included)";
    return "";
}

}  // namespace rb::cli
