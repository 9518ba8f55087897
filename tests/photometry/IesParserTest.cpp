#include "tests/photometry/IesBuilder.h"
#include "tests/photometry/StreamParser.h"
#include "tests/support/AddressSpace.h"
#include "tests/support/TempFolder.h"

#include <cfloat>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <iostream>
#include <locale.h>
#include <locale>
#include <optional>
#include <random>
#include <sys/stat.h>

namespace rb::test {
namespace {

using KVRRbaIESLoader::IESPhotometry;
using KVRRbaIESLoader::IESUnusedData;

IESPhotometry parsed(const std::string& text, IESUnusedData* unused = nullptr) {
    IESPhotometry photometry;
    EXPECT_NO_THROW(EXPECT_EQ(KVRRbaIESLoader::parseIESText(text, photometry, unused), S_OK))
        << text;
    return photometry;
}

/// The message with which a text is refused; empty when it is not.
std::string refusal(const std::string& text) {
    IESPhotometry photometry;
    try {
        KVRRbaIESLoader::parseIESText(text, photometry);
        return {};
    } catch (const std::ios_base::failure& failure) {
        return failure.what();
    }
}

void expectEqual(const IESPhotometry& a, const IESPhotometry& b) {
    const auto bits = [](const std::vector<float>& values) {
        std::vector<std::uint32_t> all(values.size());
        if (!values.empty()) std::memcpy(all.data(), values.data(), 4 * values.size());
        return all;
    };
    EXPECT_EQ(a.formatVersion, b.formatVersion);
    EXPECT_EQ(a.versionText, b.versionText);
    EXPECT_EQ(a.manufacturer, b.manufacturer);
    EXPECT_EQ(a.luminaire, b.luminaire);
    EXPECT_EQ(a.lamp, b.lamp);
    EXPECT_EQ(a.luminaireCatalogue, b.luminaireCatalogue);
    EXPECT_EQ(a.lampCatalogue, b.lampCatalogue);
    EXPECT_EQ(a.verticalAngleCount, b.verticalAngleCount);
    EXPECT_EQ(a.horizontalAngleCount, b.horizontalAngleCount);
    EXPECT_EQ(a.photometricType, b.photometricType);
    EXPECT_EQ(bits({a.ballastFactor, a.intensityScale, a.inputWatts}),
              bits({b.ballastFactor, b.intensityScale, b.inputWatts}));
    EXPECT_EQ(bits(a.verticalAngles), bits(b.verticalAngles));
    EXPECT_EQ(bits(a.horizontalAngles), bits(b.horizontalAngles));
    EXPECT_EQ(bits(a.candelaValues), bits(b.candelaValues));
}

/// Both readers take a text, or both refuse it.
void expectAsStream(const std::string& text) {
    std::optional<IESPhotometry> expected;
    try {
        expected = StreamParser(text).parse();
    } catch (const std::ios_base::failure&) {
    }
    ASSERT_EQ(refusal(text).empty(), expected.has_value()) << text << "\n" << refusal(text);
    if (expected) expectEqual(parsed(text), *expected);
}

/// A file whose number of lamps is @p number, and candela multiplier 1.
std::string withLamps(const std::string& number) {
    IesBuilder file;
    file.lampCount = number;
    return file.build();
}

/// A file whose candela multiplier is @p number.
std::string withMultiplier(const std::string& number) {
    IesBuilder file;
    file.multiplier = number;
    return file.build();
}

TEST(IesVersion, is_recognised_anywhere_in_the_first_line) {
    const struct {
        const char* line;
        int version;
    } cases[] = {{"IES LM-63-1991", 2},      {"IESNA91", 2},           {"IES LM-63-1995", 3},
                 {"IESNA:LM-63-1995", 3},    {"  IESNA91 of ours", 2}, {"#IESNA:LM-63-1995\r", 3},
                 {"xIES LM-63-1991IESNA", 2}};
    for (const auto& [line, version] : cases) {
        IesBuilder file;
        file.version = line;
        const IESPhotometry photometry = parsed(file.build());
        EXPECT_EQ(photometry.formatVersion, version) << line;
        EXPECT_EQ(photometry.versionText, line);
    }
}

TEST(IesVersion, of_other_files_is_the_first_edition) {
    for (const char* line : {"IESNA:LM-63-2002", "IES:LM-63-2019", "IESNA86", "a street lamp", "",
                             "IESNA:LM-63-199", "iesna91", "[MANUFAC] lost"}) {
        IesBuilder file;
        file.version = line;
        const IESPhotometry photometry = parsed(file.build());
        EXPECT_EQ(photometry.formatVersion, 1) << line;
        EXPECT_EQ(photometry.versionText, "IESNA86") << line;
        EXPECT_EQ(photometry.manufacturer, " Lamps and Sons") << "the first line is used up";
        EXPECT_EQ(photometry.candelaValues, (std::vector<float>{30, 20, 10}));
    }
}

TEST(IesKeywords, are_kept_up_to_the_bracket) {
    IesBuilder file;
    file.keywords = "[LUMCAT] A 1\n[LUMINAIRE]two ]three\n[_MANUFAC_] M \r\n[OTHER] x\nlabel\n\n";
    const IESPhotometry photometry = parsed(file.build());
    EXPECT_EQ(photometry.luminaireCatalogue, " A 1");
    EXPECT_EQ(photometry.luminaire, "two ");
    EXPECT_EQ(photometry.manufacturer, " M \r");
    EXPECT_EQ(photometry.lamp, "");
}

TEST(IesKeywords, of_the_lamp_catalogue_are_the_lamp_as_well) {
    IesBuilder file;
    file.keywords = "[LAMPCAT] C\n";
    EXPECT_EQ(parsed(file.build()).lamp, " C");
    EXPECT_EQ(parsed(file.build()).lampCatalogue, " C");
    file.keywords = "[LAMPCAT] C\n[LAMP] L\n";
    EXPECT_EQ(parsed(file.build()).lamp, " L");
    EXPECT_EQ(parsed(file.build()).lampCatalogue, " C");
    file.keywords = "[LAMP] L\n[LAMPCAT] C\n";
    EXPECT_EQ(parsed(file.build()).lamp, " C");
}

TEST(IesKeywords, that_continue_are_dropped) {
    IesBuilder file;
    file.keywords = "[LUMINAIRE] one\n[MORE] two\n";
    EXPECT_EQ(parsed(file.build()).luminaire, " one");
    // Unless the keyword itself is in the bracket.
    file.keywords = "[MORE LAMP] three\n";
    EXPECT_EQ(parsed(file.build()).lamp, " three");
}

TEST(IesKeywords, without_a_text_change_nothing) {
    IesBuilder file;
    file.keywords = "[LAMP] L\n[LAMP]\n";
    EXPECT_EQ(parsed(file.build()).lamp, " L");
}

TEST(IesKeywords, end_after_a_hundred_lines) {
    IesBuilder file;
    const auto lines = [](int count) {
        std::string text;
        for (int i = 0; i < count; ++i) text += "[OTHER] line\n\n";  // empty lines do not count
        return text;
    };
    IESUnusedData unused;
    file.keywords = lines(99);
    parsed(file.build(), &unused);
    EXPECT_EQ(unused.keywordLineCount, 100);
    EXPECT_EQ(unused.tiltLine, "TILT=NONE");
    // The hundredth line is taken for the tilt line, and numbers are expected where that stands.
    file.keywords = lines(100);
    EXPECT_NE(refusal(file.build()).find("expected an integer, found 'TILT=NONE'"),
              std::string::npos);
    file.tilt.clear();
    parsed(file.build(), &unused);
    EXPECT_EQ(unused.tiltLine, "[OTHER] line");
}

TEST(IesTilt, in_the_first_line_is_used_up) {
    IesBuilder file;
    file.version = "TILT=NONE";
    file.tilt.clear();
    file.keywords.clear();
    EXPECT_NE(refusal(file.build()), "");
    expectAsStream(file.build());
}

TEST(IesTilt, that_is_continued_goes_on) {
    IesBuilder file;
    file.keywords = "[OTHER] TILT=NONE\n";
    EXPECT_EQ(parsed(file.build()).verticalAngleCount, 3);
    file.keywords = "[MORE] TILT=NONE\n";  // ends the keywords; the tilt line is no number
    expectAsStream(file.build());
    EXPECT_NE(refusal(file.build()), "");
}

TEST(IesTilt, that_is_included_is_skipped) {
    for (const char* tilt : {"TILT=INCLUDE\n1\n3\n0 45 90\n1.0 0.9 0.8\n",
                             "TILT=INCLUDE\r\n1\r\n3\r\n0 45 90\r\n1.0 0.9 0.8\r\n",
                             "TILT=INCLUDE\n1\n3 pairs\n0,45,90\n1.0,0.9,0.8\n",
                             "TILT=INCLUDE\n1\n 3\n0 45\n90 1.0\n0.9\n0.8\n",
                             "TILT= INCLUDE of ours\nany text\n3\n0 45 90 1 2 3 "}) {
        IesBuilder file;
        file.tilt = tilt;
        IESUnusedData unused;
        const IESPhotometry photometry = parsed(file.build(), &unused);
        EXPECT_EQ(unused.tiltPairCount, 3) << tilt;
        EXPECT_EQ(photometry.verticalAngleCount, 3) << tilt;
        EXPECT_EQ(photometry.candelaValues, (std::vector<float>{30, 20, 10})) << tilt;
        expectAsStream(file.build());
    }
}

TEST(IesTilt, without_pairs_skips_none) {
    for (const char* count : {"0", "-5"}) {
        IesBuilder file;
        file.tilt = std::string("TILT=INCLUDE\n1\n") + count + "\n";
        EXPECT_EQ(parsed(file.build()).verticalAngleCount, 3);
    }
}

TEST(IesTilt, of_a_file_is_not_opened) {
    IesBuilder file;
    file.tilt = "TILT=/nowhere/tilt.txt\n";
    EXPECT_EQ(parsed(file.build()).candelaValues, (std::vector<float>{30, 20, 10}));
}

TEST(IesHeader, values_are_where_the_standard_has_them) {
    IesBuilder file;
    file.lampCount = "2";
    file.lumens = "1200.5";
    file.multiplier = "0.25";
    file.type = "3";
    file.ballast = "1.5";
    file.ballastLamp = "0.75";
    IESUnusedData unused;
    const IESPhotometry photometry = parsed(file.build(), &unused);
    EXPECT_EQ(photometry.verticalAngleCount, 3);
    EXPECT_EQ(photometry.horizontalAngleCount, 1);
    EXPECT_EQ(photometry.photometricType, 3);
    EXPECT_EQ(photometry.ballastFactor, 1.5F);
    EXPECT_EQ(photometry.inputWatts, 40.0F);
    EXPECT_EQ(photometry.intensityScale, 0.5F);
    EXPECT_EQ(unused.lampCount, 2);
    EXPECT_EQ(unused.lumensPerLamp, 1200.5F);
    EXPECT_EQ(unused.candelaMultiplier, 0.25F);
    EXPECT_EQ(unused.unitsType, 2);
    EXPECT_EQ(unused.width, 0.1F);
    EXPECT_EQ(unused.length, 0.2F);
    EXPECT_EQ(unused.height, 0.3F);
    EXPECT_EQ(unused.futureUse, 0.75F);
    EXPECT_EQ(unused.trailingByteCount, 0U);
}

TEST(IesHeader, absolute_photometry_needs_no_lumens) {
    IesBuilder file;
    file.lumens = "-1";
    EXPECT_EQ(parsed(file.build()).intensityScale, 1.0F);
}

TEST(IesNumbers, may_be_separated_by_commas_and_any_white_space) {
    const std::string keywords = "IESNA91\nTILT=NONE\n";
    for (const char* numbers :
         {"1,2,3,1,1,1,1,0,0,0,1,1,5\n0\n0\n7\n", "1 , 2 ,, 3 1\t1\v1\f1 0 0 0\r\n1 1 5 0 0 7",
          "\n1 2 3 1 1 1 1 0 0 0 1 1 5\n\n\n0\n0\n7", "1 2 3 1 1 1 1 0 0 0 1 1 5,0,0,7,,,"}) {
        const IESPhotometry photometry = parsed(keywords + numbers);
        EXPECT_EQ(photometry.intensityScale, 3.0F) << numbers;
        EXPECT_EQ(photometry.candelaValues, (std::vector<float>{7})) << numbers;
        expectAsStream(keywords + numbers);
    }
    // A comma after another kind of white space is none.
    EXPECT_NE(refusal(keywords + "1\t,2 3 1 1 1 1 0 0 0 1 1 5 0 0 7"), "");
}

TEST(IesNumbers, of_all_spellings_are_those_of_a_stream) {
    const std::vector<std::string> spellings{
        "1",
        "+5",
        "-3",
        "0",
        "007",
        "-0",
        "+0",
        "1.",
        ".5",
        "-.5",
        "+.5",
        "1.5",
        "1e2",
        "1E2",
        "1e+2",
        "1e-2",
        ".5e1",
        "5.e1",
        "1e",
        "1e+",
        "1e-",
        "1.5.3",
        "1.2e3.4",
        "1e2e3",
        "1e2 e3",
        "--1",
        "+-1",
        "- 1",
        ".",
        "-.",
        "e5",
        ".e5",
        "",
        "x",
        "0x10",
        "0x1p3",
        "1f",
        "1d5",
        "1,5",
        "1;5",
        "inf",
        "-inf",
        "nan",
        "NAN",
        "infinity",
        "1e999",
        "-1e999",
        "1e-999",
        "-1e-999",
        "1e38",
        "3.4028235e38",
        "3.4028236e38",
        "3.5e38",
        "1e-38",
        "1e-45",
        "7e-46",
        "1.1754942e-38",
        "0.1",
        "16777217",
        "16777219",
        "0.30000001192092896",
        "2147483647",
        "2147483648",
        "-2147483648",
        "-2147483649",
        "99999999999999999999",
        "1.5e3",
        "1\xC2\xA0",
        "\xEF\xBB\xBF"
        "1",
        "1'000",
        "1_000",
        "1e0000000000001",
        "0.00000000000000000000000000000000000000000000000000000000001e59",
        std::string(400, '9'),
        "0." + std::string(400, '0') + "1",
        "1" + std::string(1, '\0')};
    for (const std::string& spelling : spellings) {
        expectAsStream(withLamps(spelling));
        expectAsStream(withMultiplier(spelling));
        IesBuilder file;
        file.type = spelling;
        expectAsStream(file.build());
    }
}

TEST(IesNumbers, are_rounded_to_single_precision_once) {
    // Between two floats, just above the middle in a digit that double precision loses.
    EXPECT_EQ(parsed(withMultiplier("1.00000005960464477539062500000001")).intensityScale,
              1.00000011920928955078125F);
    EXPECT_EQ(parsed(withMultiplier("1.000000059604644775390625")).intensityScale, 1.0F);
    EXPECT_EQ(parsed(withMultiplier("3.4028235e38")).intensityScale, FLT_MAX);
    EXPECT_EQ(parsed(withMultiplier("1e-45")).intensityScale, 1.40129846e-45F);
    EXPECT_TRUE(std::signbit(parsed(withMultiplier("-1e-999")).intensityScale));
}

/// Writes one half as "0,5", and a thousand as "1.000".
class CommaPunctuation : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(IesNumbers, have_a_decimal_point_whatever_the_locale) {
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation));
    setlocale(LC_ALL, "de_DE.UTF-8");  // where there is one
    EXPECT_EQ(parsed(withMultiplier("0.5")).intensityScale, 0.5F);
    EXPECT_EQ(parsed(withMultiplier("1.5e-999")).intensityScale, 0.0F);
    EXPECT_EQ(parsed(withMultiplier("1.000")).intensityScale, 1.0F);
    setlocale(LC_ALL, "C");
    std::locale::global(before);
}

TEST(IesCounts, below_one_read_nothing) {
    IesBuilder file;
    const std::string start = file.version + "\n" + file.tilt;
    for (const char* counts : {"0 0", "-1 0", "0 5", "-2 -3"}) {
        const std::string text =
            start + "1 1 1 " + counts + " 1 1 0 0 0 1 1 5\n1 2 3 4 5 6 7 8 9 10 11\n";
        const IESPhotometry photometry = parsed(text);
        EXPECT_TRUE(photometry.verticalAngles.empty());
        expectAsStream(text);
        EXPECT_EQ(KVRRbaIESLoader::candelaAt(photometry, 1, 1), 0);
    }
}

TEST(IesCounts, larger_than_the_file_end_it_without_the_memory) {
    const std::string start = "IESNA91\nTILT=NONE\n1 1 1 ";
    for (const char* counts : {"2147483647 1", "1 2147483647", "2147483647 2147483647", "4 4"}) {
        const std::string why = refusal(start + counts + " 1 1 0 0 0 1 1 5\n1 2 3 4 5 6 7\n");
        EXPECT_NE(why.find("expected a number, found the end of the file"), std::string::npos);
    }
    // As many tilt factors.
    EXPECT_NE(refusal("IESNA91\nTILT=INCLUDE\n1\n2147483647\n1 2 3"), "");
}

TEST(IesText, of_separators_only_takes_no_memory_for_its_pieces) {
    const std::string many(std::size_t{8} << 20, ']'), equal(std::size_t{8} << 20, '=');
    const long long before = peakAddressSpace();
    EXPECT_NE(refusal("IESNA91\n" + many + "\n"), "");
    EXPECT_NE(refusal("IESNA91\nTILT" + equal + "\n1 2"), "");
    constexpr long long kAllowed = 64LL << 20;  // the texts themselves, and room for them to grow
    EXPECT_LT(peakAddressSpace() - before, kAllowed);
}

TEST(IesCounts, with_a_fraction_leave_it_to_the_next_number) {
    IesBuilder file;
    const std::string text = "IESNA91\nTILT=NONE\n1 1 1 2.5 1 1 0 0 0 1 1 5\n1 2 3 4 5 6 7 8 9";
    expectAsStream(text);
    file.lampCount = "1.5";
    expectAsStream(file.build());
}

TEST(IesText, cut_anywhere_is_refused_or_read_as_by_a_stream) {
    IesBuilder file;
    file.tilt = "TILT=INCLUDE\r\n1\r\n2\r\n0 90\r\n1 0.5\r\n";
    const std::string text = file.build();
    for (std::size_t length = 0; length <= text.size(); ++length)
        expectAsStream(text.substr(0, length));
}

TEST(IesText, changed_anywhere_is_refused_or_read_as_by_a_stream) {
    IesBuilder file;
    file.tilt = "TILT=INCLUDE\n1\n2\n0 90\n1 0.5\n";
    file.horizontal = {0, 90};
    file.candela = {1, 2, 3, 4, 5, 6};
    const std::string text = file.build();
    constexpr std::string_view kAlphabet = "0123456789+-.eE, \t\n\r]=[TILT";
    std::mt19937 random(11);
    for (int i = 0; i < 20000; ++i) {
        std::string changed = text;
        for (auto edits = 1 + random() % 3; edits > 0; --edits) {
            const std::size_t at = random() % changed.size();
            const char c = kAlphabet[random() % kAlphabet.size()];
            switch (random() % 3) {
                case 0:
                    changed[at] = c;
                    break;
                case 1:
                    changed.insert(at, 1, c);
                    break;
                default:
                    changed.erase(at, 1);
                    break;
            }
        }
        // Counts that are large by accident would only make the stream slow.
        expectAsStream(changed);
        if (HasFatalFailure() || HasNonfatalFailure()) return;
    }
}

TEST(IesText, of_other_kinds_is_refused_with_the_place) {
    EXPECT_EQ(refusal(""), "line 1: expected a line, found the end of the file");
    EXPECT_EQ(refusal("IESNA91\n"), "line 2: expected a line, found the end of the file");
    EXPECT_EQ(refusal("IESNA91\nTILT=NONE\n"),
              "line 3: expected an integer, found the end of the file");
    EXPECT_EQ(refusal("IESNA91\nTILT=NONE\n1 many 1"), "line 3: expected a number, found 'many'");
    EXPECT_EQ(refusal("IESNA91\nTILT=NONE\n1 1\n 1e99"),
              "line 4: expected a number within the range of single precision, found '1e99'");
    std::string wide;  // UTF-16
    for (const char c : IesBuilder().build()) wide += {c, '\0'};
    EXPECT_NE(refusal(wide), "");
}

TEST(IesText, with_a_mark_before_the_first_line_is_read) {
    const IESPhotometry photometry = parsed("\xEF\xBB\xBF" + IesBuilder().build());
    EXPECT_EQ(photometry.formatVersion, 3);
    EXPECT_EQ(photometry.versionText, "\xEF\xBB\xBFIESNA:LM-63-1995");
}

TEST(IesText, with_more_behind_the_values_is_read) {
    IESUnusedData unused;
    parsed(IesBuilder().build() + " \n 12 more\n\n", &unused);
    EXPECT_EQ(unused.trailingByteCount, 7U);
}

TEST(IesFile, keeps_its_path) {
    const TempFolder folder;
    const std::string path = folder.write("a.ies", IesBuilder().build());
    IESPhotometry photometry;
    EXPECT_EQ(KVRRbaIESLoader::parseIESFile(path.c_str(), photometry), S_OK);
    EXPECT_EQ(photometry.filePath, path);
    EXPECT_EQ(photometry.candelaValues, (std::vector<float>{30, 20, 10}));
}

TEST(IesFile, that_is_none_is_refused) {
    const TempFolder folder;
    const std::string pipe = folder.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string large = folder.write("large.ies", IesBuilder().build());
    std::filesystem::resize_file(large, std::uintmax_t{1} << 40);  // sparse
    for (const std::string& path : {folder.path().string(), pipe, folder.file("none.ies"), large,
                                    std::string(), folder.write("empty.ies", "")}) {
        IESPhotometry photometry;
        EXPECT_THROW(KVRRbaIESLoader::parseIESFile(path.c_str(), photometry),
                     std::ios_base::failure)
            << path;
    }
    IESPhotometry photometry;
    EXPECT_THROW(KVRRbaIESLoader::parseIESFile(nullptr, photometry), std::ios_base::failure);
}

}  // namespace
}  // namespace rb::test
