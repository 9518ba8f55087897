#include "RenderingBase/host/base/KVRString.h"
#include "RenderingBase/host/base/KVRUnicodeString.h"

#include <climits>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <string>
#include <vector>

using namespace std::string_literals;

namespace {

// A text with characters of one, two, three and four bytes.
const KVRUnicodeString kMixed("aé€😀b");

std::u32string characters(const KVRUnicodeString& text) {
    std::u32string all;
    for (int i = 0; i < text.GetLengthInChar(); ++i) all += text[i];
    return all;
}

}  // namespace

TEST(KVRUnicodeString, is_empty_when_made_from_nothing) {
    for (const KVRUnicodeString& text : {KVRUnicodeString(), KVRUnicodeString(""),
                                         KVRUnicodeString(static_cast<const char*>(nullptr))}) {
        EXPECT_EQ(text.GetLengthInChar(), 0);
        EXPECT_EQ(text.GetLengthInByte(), 0);
        EXPECT_STREQ(text.CastToCharPtr(), "");
        EXPECT_EQ(text[0], U'\0');
    }
}

TEST(KVRUnicodeString, counts_characters_and_bytes) {
    EXPECT_EQ(kMixed.GetLengthInChar(), 5);
    EXPECT_EQ(kMixed.GetLengthInByte(), 1 + 2 + 3 + 4 + 1);
    EXPECT_EQ(characters(kMixed), U"aé€😀b");
}

TEST(KVRUnicodeString, character_outside_the_text_is_zero) {
    const KVRUnicodeString ascii("abc");
    EXPECT_EQ(ascii[2], U'c');
    for (const auto* text : {&ascii, &kMixed}) {
        EXPECT_EQ((*text)[-1], U'\0');
        EXPECT_EQ((*text)[text->GetLengthInChar()], U'\0');
        EXPECT_EQ((*text)[INT_MIN], U'\0');
        EXPECT_EQ((*text)[INT_MAX], U'\0');
    }
}

TEST(KVRUnicodeString, bytes_that_are_no_utf8_become_replacement_characters) {
    EXPECT_EQ(KVRUnicodeString("a\xFFz"), KVRUnicodeString("a\uFFFDz"));
    EXPECT_EQ(KVRUnicodeString("\xC3"), KVRUnicodeString("\uFFFD"));  // first half of a character
    EXPECT_EQ(KVRUnicodeString("a\xED\xA0\x80")[1], U'\uFFFD');       // a surrogate
    EXPECT_EQ(KVRUnicodeString("a\xFFz").GetLengthInChar(), 3);
}

TEST(KVRUnicodeString, embedded_zero_byte_becomes_a_replacement_character) {
    const KVRUnicodeString text("a\0b"s);
    EXPECT_EQ(text, KVRUnicodeString("a\uFFFDb"));
    EXPECT_EQ(std::string(text.CastToCharPtr()).size(), text.View().size());
}

TEST(KVRUnicodeString, substring_counts_characters_and_stays_inside_the_text) {
    EXPECT_EQ(kMixed.SubString(1, 3), KVRUnicodeString("é€😀"));
    EXPECT_EQ(kMixed.SubString(1, 3).GetLengthInChar(), 3);
    EXPECT_EQ(kMixed.SubString(4, 100), KVRUnicodeString("b"));
    EXPECT_EQ(kMixed.SubString(0, INT_MAX), kMixed);
    EXPECT_EQ(kMixed.SubString(3, INT_MAX), KVRUnicodeString("😀b"));
    EXPECT_EQ(kMixed.SubString(-2, 3), KVRUnicodeString("a"));  // two of the three lie before it
    for (const auto& [start, chars] :
         {std::pair{5, 1}, {6, 1}, {2, 0}, {2, -1}, {-5, 2}, {INT_MAX, INT_MAX}}) {
        EXPECT_EQ(kMixed.SubString(start, chars), KVRUnicodeString()) << start << ' ' << chars;
    }
}

TEST(KVRUnicodeString, search_finds_the_first_occurrence_by_character) {
    const KVRUnicodeString text("é;a;b");
    EXPECT_EQ(text.SearchSubString(";"), 1);
    EXPECT_EQ(text.SearchSubString(";", 1), 1);
    EXPECT_EQ(text.SearchSubString(";", 2), 3);
    EXPECT_EQ(text.SearchSubString(";", 4), -1);
    EXPECT_EQ(text.SearchSubString(";", 99), -1);
    EXPECT_EQ(text.SearchSubString(";", -7), 1);
    EXPECT_EQ(text.SearchSubString("A"), -1);
    EXPECT_EQ(text.SearchSubString("é;a;b;"), -1);
    EXPECT_EQ(text.SearchSubString("", 2), 2);
}

TEST(KVRUnicodeString, search_last_finds_the_last_occurrence_by_character) {
    const KVRUnicodeString text("é.a.😀");
    EXPECT_EQ(text.SearchLast(U'.'), 3);
    EXPECT_EQ(text.SearchLast(U'😀'), 4);
    EXPECT_EQ(text.SearchLast(U'é'), 0);
    EXPECT_EQ(text.SearchLast(U'x'), -1);
    EXPECT_EQ(text.SearchLast(U'\0'), -1);
    EXPECT_EQ(text.SearchLast(0xD800), -1);
    EXPECT_EQ(text.SearchLast(0x110000), -1);
}

TEST(KVRUnicodeString, replace_changes_every_occurrence_once) {
    KVRUnicodeString text("aaa b aa");
    text.Replace("aa", "é");
    EXPECT_EQ(text, KVRUnicodeString("éa b é"));
    EXPECT_EQ(text.GetLengthInChar(), 6);
    text.Replace("é", "éé");  // what was put in is not searched again
    EXPECT_EQ(text, KVRUnicodeString("ééa b éé"));
    text.Replace("é", "");
    EXPECT_EQ(text, KVRUnicodeString("a b "));
    text.Replace("", "x");
    EXPECT_EQ(text, KVRUnicodeString("a b "));
    text.Replace(text, text);
    EXPECT_EQ(text, KVRUnicodeString("a b "));
}

TEST(KVRUnicodeString, lower_case_covers_every_script_and_ignores_the_locale) {
    KVRUnicodeString text("ABC.TIFF ÀÉÎ ΑΣ Ж ß I");
    text.ToLower();
    EXPECT_EQ(text, KVRUnicodeString("abc.tiff àéî ασ ж ß i"));
    KVRUnicodeString longer("\u023A!");  // two bytes, its lower case has three
    longer.ToLower();
    EXPECT_EQ(longer, KVRUnicodeString("\u2C65!"));
    EXPECT_EQ(longer[1], U'!');
}

TEST(KVRUnicodeString, reads_numbers_as_sscanf_does) {
    int number = 7;
    EXPECT_TRUE(KVRUnicodeString("12").ConvertToNum(number));
    EXPECT_EQ(number, 12);
    EXPECT_TRUE(KVRUnicodeString("-3ds").ConvertToNum(number));
    EXPECT_EQ(number, -3);
    EXPECT_TRUE(KVRUnicodeString("ff").ConvertToNum(number, "%x"));
    EXPECT_EQ(number, 255);
    for (const char* text : {"", "x3", "-", "é"}) {
        EXPECT_FALSE(KVRUnicodeString(text).ConvertToNum(number)) << text;
        EXPECT_EQ(number, 255);
    }
}

TEST(KVRUnicodeString, writes_numbers) {
    KVRUnicodeString text("old");
    text.BuildFromNum(-42);
    EXPECT_EQ(text, KVRUnicodeString("-42"));
    text.BuildFromNum(4294967295U);
    EXPECT_EQ(text, KVRUnicodeString("4294967295"));
    text.BuildFromNum(7, "é%03d");
    EXPECT_EQ(text, KVRUnicodeString("é007"));
    EXPECT_EQ(text.GetLengthInChar(), 4);
}

TEST(KVRUnicodeString, hash_is_fnv1a_of_the_bytes) {
    // Published test vectors of the hash.
    EXPECT_EQ(KVRUnicodeString("").ComputeHashKey(), 0x811c9dc5U);
    EXPECT_EQ(KVRUnicodeString("a").ComputeHashKey(), 0xe40c292cU);
    EXPECT_EQ(KVRUnicodeString("foobar").ComputeHashKey(), 0xbf9cf968U);
    // Bytes above 127 count as unsigned: two steps by hand from the offset basis.
    std::uint64_t byHand = 2166136261U;
    for (const std::uint64_t byte : {0xC3U, 0xA9U})
        byHand = ((byHand ^ byte) * 16777619U) & 0xFFFFFFFFU;
    EXPECT_EQ(KVRUnicodeString("é").ComputeHashKey(), byHand);
}

TEST(KVRUnicodeString, compares_exactly_and_in_the_order_of_code_points) {
    EXPECT_TRUE(KVRUnicodeString("a") == "a");
    EXPECT_TRUE(KVRUnicodeString("a") != "A");
    EXPECT_TRUE(KVRUnicodeString("a") != "a ");
    EXPECT_TRUE(KVRUnicodeString("\u00E9") != "e\u0301");  // no normalisation
    const std::vector<KVRUnicodeString> rising = {"", "A", "AA", "B", "a", "é", "€", "\uFFFD", "😀"};
    for (std::size_t i = 0; i + 1 < rising.size(); ++i) {
        EXPECT_TRUE(rising[i] < rising[i + 1]) << i;
        EXPECT_FALSE(rising[i + 1] < rising[i]) << i;
    }
    EXPECT_FALSE(rising[3] < rising[3]);
}

TEST(KVRUnicodeString, joins_texts) {
    KVRUnicodeString text("é");
    text += "\\";
    text += text;
    EXPECT_EQ(text, KVRUnicodeString("é\\é\\"));
    EXPECT_EQ(text.GetLengthInChar(), 4);
    EXPECT_EQ("<" + text + std::string(">"), KVRUnicodeString("<é\\é\\>"));
}

TEST(KVRUnicodeString, is_empty_after_it_was_moved_from) {
    KVRUnicodeString source("a longer text with an é so that nothing fits in place");
    const KVRUnicodeString copy(source);
    KVRUnicodeString target(std::move(source));
    EXPECT_EQ(target, copy);
    EXPECT_EQ(source.GetLengthInChar(), 0);  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(source[3], U'\0');
    source = std::move(target);
    EXPECT_EQ(source, copy);
    source = *&source;
    EXPECT_EQ(source, copy);
}

TEST(KVRUnicodeString, writes_its_bytes_to_a_stream) {
    std::ostringstream stream;
    stream << kMixed;
    EXPECT_EQ(stream.str(), "aé€😀b");
}

// Random texts against the same operations on arrays of code points.
TEST(KVRUnicodeString, agrees_with_arrays_of_code_points) {
    std::mt19937 random(20240229);
    const std::u32string alphabet = U"ab.;\\é€😀";
    const auto draw = [&](std::size_t limit) {
        std::u32string text(random() % limit, U' ');
        for (auto& c : text) c = alphabet[random() % alphabet.size()];
        return text;
    };
    const auto encode = [](const std::u32string& text) {
        KVRUnicodeString result;
        for (const char32_t c : text) {
            for (const char* one : {"a", "b", ".", ";", "\\", "é", "€", "😀"}) {
                if (KVRUnicodeString(one)[0] == c) result += one;
            }
        }
        return result;
    };
    for (int round = 0; round < 2000; ++round) {
        const std::u32string text = draw(12), what = draw(3), by = draw(4);
        const KVRUnicodeString encoded = encode(text);
        ASSERT_EQ(characters(encoded), text);
        const int from = static_cast<int>(random() % 14), chars = static_cast<int>(random() % 14);
        const std::size_t found = text.find(what, static_cast<std::size_t>(from));
        ASSERT_EQ(encoded.SearchSubString(encode(what), from),
                  static_cast<int>(found == text.npos ? -1 : static_cast<int>(found)));
        if (from <= static_cast<int>(text.size())) {
            ASSERT_EQ(characters(encoded.SubString(from, chars)),
                      text.substr(static_cast<std::size_t>(from), static_cast<std::size_t>(chars)));
        }
        std::u32string replaced = text;
        for (std::size_t at = 0; !what.empty() && (at = replaced.find(what, at)) != replaced.npos;
             at += by.size()) {
            replaced.replace(at, what.size(), by);
        }
        KVRUnicodeString changed = encoded;
        changed.Replace(encode(what), encode(by));
        ASSERT_EQ(characters(changed), replaced);
    }
}

TEST(KVRString, is_a_narrow_string_with_the_frameworks_accessor) {
    const KVRString bytes("a\xFF");
    EXPECT_STREQ(bytes.CastToCharPtr(), "a\xFF");  // bytes stay as they are
    EXPECT_STREQ(KVRString(static_cast<const char*>(nullptr)).CastToCharPtr(), "");
    EXPECT_EQ(KVRUnicodeString(KVRString("tmp") + "\\x"), KVRUnicodeString("tmp\\x"));
}
