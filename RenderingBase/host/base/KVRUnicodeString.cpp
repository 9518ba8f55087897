#include "RenderingBase/host/base/KVRUnicodeString.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <glib.h>
#include <memory>
#include <ostream>
#include <utility>

namespace {

int countChars(std::string_view utf8) {
    return static_cast<int>(g_utf8_strlen(utf8.data(), static_cast<gssize>(utf8.size())));
}

bool isPlainAscii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<signed char>(c) > 0; });
}

std::string validUtf8(std::string_view bytes) {
    const std::unique_ptr<char, decltype(&g_free)> valid(
        g_utf8_make_valid(bytes.data(), static_cast<gssize>(bytes.size())), &g_free);
    return valid.get();
}

template <class Number>
KVRUnicodeString formatted(Number number, const char* format) {
    const int size = std::snprintf(nullptr, 0, format, number);
    if (size <= 0) return {};
    std::string text(static_cast<std::size_t>(size) + 1, '\0');
    std::snprintf(text.data(), text.size(), format, number);
    return KVRUnicodeString(text.c_str());
}

}  // namespace

KVRUnicodeString::KVRUnicodeString(const char* utf8)
    : KVRUnicodeString(utf8 ? std::string_view(utf8) : std::string_view()) {}

KVRUnicodeString::KVRUnicodeString(std::string_view utf8) {
    if (isPlainAscii(utf8)) {
        m_utf8 = utf8;
        m_charCount = GetLengthInByte();
    } else {
        m_utf8 = validUtf8(utf8);
        m_charCount = countChars(m_utf8);
    }
}

KVRUnicodeString::KVRUnicodeString(const std::string& utf8)
    : KVRUnicodeString(std::string_view(utf8)) {}

// Written out because the two members must stay in step in the text that is moved from.
KVRUnicodeString::KVRUnicodeString(KVRUnicodeString&& other) noexcept
    : m_utf8(std::move(other.m_utf8)), m_charCount(std::exchange(other.m_charCount, 0)) {
    other.m_utf8.clear();
}

KVRUnicodeString& KVRUnicodeString::operator=(KVRUnicodeString other) noexcept {
    m_utf8.swap(other.m_utf8);
    std::swap(m_charCount, other.m_charCount);
    return *this;
}

std::size_t KVRUnicodeString::byteOffset(int charIndex) const {
    if (isAscii()) return static_cast<std::size_t>(charIndex);
    const char* start = m_utf8.c_str();
    return static_cast<std::size_t>(g_utf8_offset_to_pointer(start, charIndex) - start);
}

int KVRUnicodeString::charOffset(std::size_t byteIndex) const {
    return isAscii() ? static_cast<int>(byteIndex) : countChars(View().substr(0, byteIndex));
}

char32_t KVRUnicodeString::operator[](int charIndex) const {
    if (charIndex < 0 || charIndex >= m_charCount) return 0;
    return static_cast<char32_t>(g_utf8_get_char(m_utf8.c_str() + byteOffset(charIndex)));
}

KVRUnicodeString KVRUnicodeString::SubString(int start, int chars) const {
    const std::int64_t end = std::int64_t{start} + std::max(chars, 0);
    const int first = std::clamp(start, 0, m_charCount);
    const int last = static_cast<int>(std::clamp<std::int64_t>(end, first, m_charCount));
    KVRUnicodeString part;
    const std::size_t from = byteOffset(first);
    part.m_utf8 = m_utf8.substr(from, byteOffset(last) - from);
    part.m_charCount = last - first;
    return part;
}

int KVRUnicodeString::SearchSubString(const KVRUnicodeString& what, int from) const {
    if (from > m_charCount) return -1;
    const std::size_t found = m_utf8.find(what.m_utf8, byteOffset(std::max(from, 0)));
    return found == std::string::npos ? -1 : charOffset(found);
}

int KVRUnicodeString::SearchLast(char32_t character) const {
    if (character == 0 || !g_unichar_validate(character)) return -1;
    char utf8[6];
    const int size = g_unichar_to_utf8(character, utf8);
    const std::size_t found = m_utf8.rfind(utf8, std::string::npos, static_cast<std::size_t>(size));
    return found == std::string::npos ? -1 : charOffset(found);
}

void KVRUnicodeString::Replace(const KVRUnicodeString& what, const KVRUnicodeString& by) {
    std::size_t found = what.m_utf8.empty() ? std::string::npos : m_utf8.find(what.m_utf8);
    if (found == std::string::npos) return;
    std::string result;
    std::size_t copied = 0;
    for (; found != std::string::npos; found = m_utf8.find(what.m_utf8, copied)) {
        result.append(m_utf8, copied, found - copied).append(by.m_utf8);
        copied = found + what.m_utf8.size();
    }
    result.append(m_utf8, copied);
    m_charCount = countChars(result);
    m_utf8 = std::move(result);
}

void KVRUnicodeString::ToLower() {
    std::string lower;
    lower.reserve(m_utf8.size());
    for (const char* at = m_utf8.c_str(); *at; at = g_utf8_next_char(at)) {
        char utf8[6];
        const int size = g_unichar_to_utf8(g_unichar_tolower(g_utf8_get_char(at)), utf8);
        lower.append(utf8, static_cast<std::size_t>(size));
    }
    m_utf8 = std::move(lower);
}

bool KVRUnicodeString::ConvertToNum(int& number, const char* format) const {
    int read = 0;
    if (!format || std::sscanf(m_utf8.c_str(), format, &read) != 1) return false;
    number = read;
    return true;
}

void KVRUnicodeString::BuildFromNum(int number, const char* format) {
    *this = formatted(number, format ? format : "%d");
}

void KVRUnicodeString::BuildFromNum(unsigned number, const char* format) {
    *this = formatted(number, format ? format : "%u");
}

unsigned KVRUnicodeString::ComputeHashKey() const {
    std::uint32_t hash = 2166136261U;  // offset basis and prime of the 32-bit FNV-1a hash
    for (const char byte : m_utf8) hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619U;
    return hash;
}

KVRUnicodeString& KVRUnicodeString::operator+=(const KVRUnicodeString& other) {
    m_charCount += other.m_charCount;  // before the text, which may be the other's
    m_utf8 += other.m_utf8;
    return *this;
}

std::ostream& operator<<(std::ostream& stream, const KVRUnicodeString& text) {
    return stream << text.m_utf8;
}
