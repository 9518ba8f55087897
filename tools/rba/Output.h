#pragma once

/// @file  What commands print: results, errors, progress.

#include "tools/rba/Precompiled.h"

#include <cstddef>
#include <ostream>
#include <streambuf>
#include <string>
#include <string_view>

namespace rb::cli {

using Json = nlohmann::ordered_json;  ///< Keys keep the order in which they are put in.

/// Keeps the real standard output for results and points `std::cout` at standard error, where the
/// log lines of the library then go. Undone at the end of its life.
class ResultStream {
public:
    ResultStream();
    ~ResultStream();
    ResultStream(const ResultStream&) = delete;
    ResultStream& operator=(const ResultStream&) = delete;

    std::ostream& stream() { return m_stream; }

private:
    std::streambuf* m_standardOutput;
    std::ostream m_stream;
};

/// Prints one value over several lines. Bytes that are no UTF-8 become U+FFFD.
void printJson(std::ostream& out, const Json& value);

/// A number for JSON: the shortest decimal that reads back as @p value, so that 0.1f is 0.1. NaN
/// and infinities are null.
Json jsonNumber(float value);
Json jsonNumber(double value);

/// The shortest text that reads back as the same number: "0.1", "inf", "nan", "-0".
std::string numberText(float value);
std::string numberText(double value);
/// With a fixed number of decimals.
std::string numberText(double value, int decimals);
inline std::string numberText(float value, int decimals) {
    return numberText(static_cast<double>(value), decimals);
}

/// Text of somebody else (names, paths, what files say) for people: control characters are written
/// as "\x0a", so that it stays one line and a terminal does not take it for commands.
std::string onOneLine(std::string_view text);

inline const char* onOrOff(bool isOn) { return isOn ? "on" : "off"; }

/// One line on standard error, with the name of the program before it; as from `onOneLine`.
void printError(std::string_view message);

/// Tells on a terminal which of many things is being done; elsewhere it does nothing.
class Progress {
public:
    Progress(bool quiet, std::size_t total);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void step(std::string_view what);
    void clear();  ///< Makes room for a line of another kind.

private:
    bool m_visible;
    std::size_t m_total;
    std::size_t m_done = 0;
};

}  // namespace rb::cli
