#pragma once

/// @file  The library's trace log: lines on standard output that tell what went wrong, where and
/// when. Private to the library; a program of ours redirects `std::cout` to see it elsewhere.
///
///     constexpr const char* kSource = RB_TRACE_SOURCE("KVRRbaTextureLoader");
///     rb::trace::write(rb::trace::kInformation, kSource, " ", 477, " ", "Check ", name);
///     if (!RB_TRACE_CHECK(kSource, image != nullptr, "Texture Import failed")) return E_FAIL;
///
/// writes
///
///     [INFO]    : (1234 ms) RenderingBase/KVRRbaModel.m/src/KVRRbaTextureLoader 477 Check oak.png
///
/// The environment variable QLT_TRACE_SEVERITY says what is written; it is read once, at load:
/// undefined or empty errors only, "2" warnings too, "3" everything, "0" nothing. See `passes`.
/// Threads: any. A line goes out in pieces, so lines written at the same time may be mixed piece
/// by piece; only a prefix with its time stays whole.

#include "RenderingBase/host/base/KVREnvironment.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <string>
#include <string_view>
#include <type_traits>

/// The name under which a source file of the library writes: its path without extension.
#define RB_TRACE_SOURCE(baseName) "RenderingBase/KVRRbaModel.m/src/" baseName

/// Gives the truth of @p condition, and reports a false one as a warning: the text of the
/// condition, " is false.", and the further message parts right behind it.
#define RB_TRACE_CHECK(source, condition, ...)                         \
    ::rb::trace::check(static_cast<bool>(condition), source, __LINE__, \
                       #condition __VA_OPT__(, ) __VA_ARGS__)

namespace rb::trace {

inline constexpr std::int8_t kError = 0;
inline constexpr std::int8_t kWarning = 1;
inline constexpr std::int8_t kInformation = 2;

/// What all source files of a module share: threshold, start of the clock, lock.
///
/// The environment is read here once more, since `KVRRbaSettings` may be initialised later than
/// the first source that logs. The object needs no destructor, so code that runs at exit may log.
class Log {
public:
    Log() : m_threshold(thresholdOf(KVRGetEnv("QLT_TRACE_SEVERITY"))) {}

    /// Whether lines of this severity are written. Both sides are taken modulo 256, as unsigned
    /// numbers, and a setting that is no number counts as 0: "256" and "abc" silence everything,
    /// "-1" lets everything through. Kept for compatibility.
    bool passes(std::int8_t severity) const {
        return static_cast<std::uint8_t>(severity) < m_threshold;
    }

    /// What a line shows of a time: 0 for all below one millisecond.
    static constexpr std::int64_t wholeMilliseconds(std::chrono::steady_clock::duration time) {
        return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
    }

    /// Writes what a line begins with. False, with nothing written, for an unknown severity.
    bool writePrefix(std::int8_t severity) {
        const std::int64_t elapsedMs =
            wholeMilliseconds(std::chrono::steady_clock::now() - m_start);
        const std::lock_guard lock(m_outputLock);
        const char* prefix = prefixOf(severity);
        if (!prefix) return false;
        put(prefix + std::to_string(elapsedMs) + " ms) ");
        return true;
    }

    void writePiece(std::string_view piece) {
        const std::lock_guard lock(m_outputLock);
        put(piece);
    }

    void endLine() {
        const std::lock_guard lock(m_outputLock);
        put("\n");
        std::cout.flush();
    }

private:
    static std::uint8_t thresholdOf(const char* setting) {
        const bool isEmpty = !setting || !*setting;
        return isEmpty ? std::uint8_t{1} : static_cast<std::uint8_t>(std::atoi(setting));
    }
    // Padded to one width.
    static const char* prefixOf(std::int8_t severity) {
        switch (severity) {
            case kError:
                return "[ERROR]   : (";
            case kWarning:
                return "[WARNING] : (";
            case kInformation:
                return "[INFO]    : (";
            default:
                return nullptr;
        }
    }
    // Unformatted, so that a width or a locale set on the stream does not show.
    static void put(std::string_view text) {
        std::cout.write(text.data(), static_cast<std::streamsize>(text.size()));
    }

    std::uint8_t m_threshold;
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    std::mutex m_outputLock;
};

/// One in each module, made when the module is loaded.
inline Log g_log;
static_assert(std::is_trivially_destructible_v<Log>);

/// Writes a line if its severity passes.
/// @param file  See `RB_TRACE_SOURCE`.
/// @param fileSeparator, lineSeparator  Written behind file and line; callers pass a blank.
/// @param parts  The message: narrow texts, written with nothing between them.
template <class... Parts>
void write(std::int8_t severity, std::string_view file, std::string_view fileSeparator,
           std::uint32_t line, std::string_view lineSeparator, const Parts&... parts) {
    static_assert(sizeof...(parts) > 0, "a line has a message");
    if (!g_log.passes(severity) || !g_log.writePrefix(severity)) return;
    g_log.writePiece(file);
    g_log.writePiece(fileSeparator);
    g_log.writePiece(std::to_string(line));
    g_log.writePiece(lineSeparator);
    (g_log.writePiece(parts), ...);
    g_log.endLine();
}

/// Warns that a check failed.
/// @param checkText  The check's source text, written with " is false." behind it.
template <class... Parts>
void reportFailedCheck(std::string_view file, std::uint32_t line, std::string_view checkText,
                       const Parts&... message) {
    write(kWarning, file, " ", line, " ", checkText, " is false.", message...);
}

/// Reports a check that failed. @return  Whether it held. See `RB_TRACE_CHECK`.
template <class... Parts>
bool check(bool holds, std::string_view file, std::uint32_t line, std::string_view checkText,
           const Parts&... message) {
    if (!holds) reportFailedCheck(file, line, checkText, message...);
    return holds;
}

}  // namespace rb::trace
