#include <chrono>

// Read before the log's own clock: both stand in every source in this order.
inline const auto g_beforeTheLog = std::chrono::steady_clock::now();

#include "RenderingBase/KVRRbaModel.m/src/KVRRbaTraceLog.h"
#include "tests/diagnostics/Probe.h"
#include "tests/support/LoadTimeEnvironment.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <iomanip>
#include <iostream>
#include <locale>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using rb::trace::kError;
using rb::trace::kInformation;
using rb::trace::kWarning;

constexpr const char* kSource = RB_TRACE_SOURCE("KVRRbaTextureLoader");

/// Lets other threads run within every piece, so that pieces without a lock would be mixed.
class YieldingBuffer : public std::stringbuf {
    std::streamsize xsputn(const char* text, std::streamsize size) override {
        for (std::streamsize i = 0; i < size; ++i) {
            std::stringbuf::xsputn(text + i, 1);
            std::this_thread::yield();
        }
        return size;
    }
};

/// Takes what goes to `std::cout`.
class CapturedOutput {
public:
    CapturedOutput() : m_before(std::cout.rdbuf(&m_text)) {}
    ~CapturedOutput() { std::cout.rdbuf(m_before); }
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;
    std::string text() const { return m_text.str(); }

private:
    YieldingBuffer m_text;
    std::streambuf* m_before;
};

/// What @p action writes, with the number of milliseconds replaced by "T".
template <class Action>
std::string written(Action action) {
    const CapturedOutput output;
    action();
    return std::regex_replace(output.text(), std::regex(R"(\((-?[0-9]+) ms\))"), "(T ms)");
}

std::int64_t elapsedMs(std::chrono::steady_clock::time_point start) {
    const auto elapsed = std::chrono::steady_clock::now() - start;
    return std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count();
}

TEST(TraceLog, writes_prefix_time_source_line_and_message) {
    EXPECT_EQ(written([] {
                  rb::trace::write(kInformation, kSource, " ", 477, " ",
                                   "Check BeginAsyncResultPolling");
              }),
              "[INFO]    : (T ms) RenderingBase/KVRRbaModel.m/src/KVRRbaTextureLoader 477 "
              "Check BeginAsyncResultPolling\n");
}

TEST(TraceLog, pads_the_prefixes_to_one_width) {
    EXPECT_EQ(written([] { rb::trace::write(kError, "f", " ", 1, " ", "m"); }),
              "[ERROR]   : (T ms) f 1 m\n");
    EXPECT_EQ(written([] { rb::trace::write(kWarning, "f", " ", 1, " ", "m"); }),
              "[WARNING] : (T ms) f 1 m\n");
    EXPECT_EQ(written([] { rb::trace::write(kInformation, "f", " ", 1, " ", "m"); }),
              "[INFO]    : (T ms) f 1 m\n");
}

TEST(TraceLog, writes_separators_as_given_and_nothing_between_the_parts) {
    EXPECT_EQ(written([] {
                  const char* pointer = "pointer";
                  rb::trace::write(kError, "file", "<1>", 4294967295U, "<2>", std::string("text"),
                                   "", pointer, std::string_view("view"), "\n");
              }),
              "[ERROR]   : (T ms) file<1>4294967295<2>textpointerview\n\n");
}

TEST(TraceLog, writes_nothing_for_an_unknown_severity_that_passes) {
    for (int severity = INT8_MIN; severity <= INT8_MAX; ++severity) {
        if (severity >= kError && severity <= kInformation) continue;
        EXPECT_EQ(written([&] {
                      rb::trace::write(static_cast<std::int8_t>(severity), "f", " ", 1, " ", "m");
                  }),
                  "")
            << severity;
    }
}

TEST(TraceLog, writes_the_same_whatever_the_state_of_the_stream) {
    struct Grouping : std::numpunct<char> {
        char do_thousands_sep() const override { return '\''; }
        std::string do_grouping() const override { return "\1"; }
    };
    const CapturedOutput output;
    const std::locale before = std::cout.imbue(std::locale(std::locale(), new Grouping));
    const auto flags = std::cout.flags();
    std::cout << std::hex << std::showbase << std::setw(40) << std::setfill('*');
    rb::trace::write(kError, "f", " ", 1234567, " ", "m");
    std::cout.width(0);
    std::cout.flags(flags);
    std::cout.imbue(before);
    EXPECT_TRUE(
        std::regex_match(output.text(), std::regex(R"(\[ERROR\]   : \([0-9]+ ms\) f 1234567 m\n)")))
        << output.text();
}

TEST(TraceLog, counts_whole_milliseconds_from_the_load_of_the_module) {
    const auto started = std::chrono::steady_clock::now();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const CapturedOutput output;
    const std::int64_t least = elapsedMs(started);
    rb::trace::write(kError, "f", " ", 1, " ", "m");
    const std::int64_t most = elapsedMs(g_beforeTheLog);
    std::smatch time;
    const std::string text = output.text();
    ASSERT_TRUE(std::regex_search(text, time, std::regex(R"(\(([0-9]+) ms\))"))) << text;
    EXPECT_GE(std::stoll(time[1]), least);
    EXPECT_LE(std::stoll(time[1]), most);
}

/// A message part that writes a line of its own when its text is asked for.
struct InterruptingPart {
    operator std::string_view() const {
        rb::trace::write(kWarning, "inner", " ", 2, " ", "line");
        return "second";
    }
};

TEST(TraceLog, shows_no_time_below_one_millisecond) {
    using std::chrono::microseconds;
    EXPECT_EQ(rb::trace::Log::wholeMilliseconds(microseconds(0)), 0);
    EXPECT_EQ(rb::trace::Log::wholeMilliseconds(microseconds(999)), 0);
    EXPECT_EQ(rb::trace::Log::wholeMilliseconds(microseconds(1000)), 1);
    EXPECT_EQ(rb::trace::Log::wholeMilliseconds(microseconds(2999)), 2);
}

TEST(TraceLog, flushes_every_line) {
    struct CountingBuffer : std::stringbuf {
        int sync() override {
            textAtFlush = str();
            return ++flushes, 0;
        }
        int flushes = 0;
        std::string textAtFlush;
    } buffer;
    std::streambuf* const before = std::cout.rdbuf(&buffer);
    rb::trace::write(kError, "f", " ", 1, " ", "first");
    const int flushesOfFirst = buffer.flushes;
    rb::trace::write(kError, "f", " ", 2, " ", "second");
    std::cout.rdbuf(before);
    EXPECT_EQ(flushesOfFirst, 1);
    EXPECT_EQ(buffer.flushes, 2);
    EXPECT_TRUE(buffer.textAtFlush.ends_with(" f 2 second\n")) << buffer.textAtFlush;
}

TEST(TraceLog, holds_the_lock_for_single_pieces_only) {
    EXPECT_EQ(written([] {
                  rb::trace::write(kError, "outer", " ", 1, " ", "first, ", InterruptingPart());
              }),
              "[ERROR]   : (T ms) outer 1 first, [WARNING] : (T ms) inner 2 line\nsecond\n");
}

TEST(TraceLog, keeps_every_piece_whole_when_threads_write_at_once) {
    constexpr int kThreads = 4;
    constexpr int kLines = 500;
    const std::string text = written([] {
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([] {
                for (int line = 0; line < kLines; ++line) {
                    rb::trace::write(kWarning, "<file>", "<s>", 42, "<t>", "<message>");
                }
            });
        }
        for (auto& thread : threads) thread.join();
    });
    std::string rest = text;
    for (const std::string piece :
         {"[WARNING] : (T ms) ", "<file>", "<s>", "42", "<t>", "<message>", "\n"}) {
        int count = 0;
        for (std::size_t at = 0; (at = rest.find(piece, at)) != std::string::npos; ++count) {
            rest.erase(at, piece.size());
        }
        EXPECT_EQ(count, kThreads * kLines) << piece;
    }
    EXPECT_EQ(rest, "");
}

TEST(TraceCheck, is_silent_when_the_condition_holds) {
    int evaluations = 0;
    bool result = false;
    EXPECT_EQ(written([&] { result = RB_TRACE_CHECK(kSource, ++evaluations > 0); }), "");
    EXPECT_TRUE(result);
    EXPECT_EQ(evaluations, 1);
}

TEST(TraceCheck, warns_with_the_source_text_of_the_condition) {
    const int* rgba_image = nullptr;
    bool result = true;
    const std::string line = std::to_string(__LINE__ + 1);
    EXPECT_EQ(written([&] { result = RB_TRACE_CHECK("file", rgba_image); }),
              "[WARNING] : (T ms) file " + line + " rgba_image is false.\n");
    EXPECT_FALSE(result);
}

TEST(TraceCheck, writes_a_message_right_behind_the_condition) {
    const std::string path;
    EXPECT_EQ(written([&] {
                  rb::trace::reportFailedCheck("file", 9, "path != \"\"", "Texture ", "failed");
              }),
              "[WARNING] : (T ms) file 9 path != \"\" is false.Texture failed\n");
    const std::string line = std::to_string(__LINE__ + 1);
    EXPECT_EQ(written([&] { RB_TRACE_CHECK("file", path != "", "Texture ", "failed"); }),
              "[WARNING] : (T ms) file " + line + " path != \"\" is false.Texture failed\n");
}

/// The initials of the severities that a process writes whose setting is @p severity.
std::string passing(const std::map<std::string, std::string>& environment) {
    const std::string text = rb::test::probed("trace", environment);
    static const std::regex line(
        R"(\[(ERROR|WARNING|INFO)\] +: \([0-9]+ ms\) \S+/src/Probe 7 severity ([0-9]+)\n)");
    std::string initials;
    for (std::sregex_iterator at(text.begin(), text.end(), line), end; at != end; ++at) {
        initials += (*at)[1].str().front() + (*at)[2].str();
    }
    EXPECT_EQ(std::regex_replace(text, line, ""), "");
    return initials;
}

std::string passing(const std::string& severity) {
    return passing(std::map<std::string, std::string>{{"QLT_TRACE_SEVERITY", severity}});
}

constexpr const char* kNothing = "";
constexpr const char* kErrors = "E0";
constexpr const char* kErrorsAndWarnings = "E0W1";
constexpr const char* kEverything = "E0W1I2";

TEST(TraceThreshold, lets_errors_through_when_undefined_or_empty) {
    EXPECT_EQ(passing(std::map<std::string, std::string>{}), kErrors);
    EXPECT_EQ(passing(""), kErrors);
}

TEST(TraceThreshold, is_one_above_the_highest_severity_written) {
    EXPECT_EQ(passing("0"), kNothing);
    EXPECT_EQ(passing("1"), kErrors);
    EXPECT_EQ(passing("2"), kErrorsAndWarnings);
    EXPECT_EQ(passing("3"), kEverything);
    EXPECT_EQ(passing("4"), kEverything);
}

TEST(TraceThreshold, reads_leading_digits_and_takes_other_texts_for_zero) {
    EXPECT_EQ(passing("abc"), kNothing);
    EXPECT_EQ(passing(" "), kNothing);
    EXPECT_EQ(passing("x3"), kNothing);
    EXPECT_EQ(passing(" +2.9"), kErrorsAndWarnings);
    EXPECT_EQ(passing("3abc"), kEverything);
}

TEST(TraceThreshold, keeps_the_low_eight_bits_only) {
    EXPECT_EQ(passing("-1"), kEverything);
    EXPECT_EQ(passing("128"), kEverything);
    EXPECT_EQ(passing("255"), kEverything);
    EXPECT_EQ(passing("256"), kNothing);
    EXPECT_EQ(passing("257"), kErrors);
    EXPECT_EQ(passing("-254"), kErrorsAndWarnings);
}

TEST(TraceThreshold, takes_no_notice_of_the_files_setting) {
    const std::map<std::string, std::string> environment = {{"QLT_TRACE_SEVERITY", "3"},
                                                            {"QLT_TRACE_FILES", "Other"}};
    EXPECT_EQ(passing(environment), kEverything);
}

}  // namespace

int main(int argc, char** argv) {
    rb::test::ensureLoadTimeEnvironment(argv, {{"QLT_TRACE_SEVERITY", "-1"}});
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
