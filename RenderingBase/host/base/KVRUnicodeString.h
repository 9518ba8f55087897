#pragma once

/// @file  The text type of the framework. For bytes that are not text use KVRString.
///
///     KVRUnicodeString name("Été.png");
///     int dot = name.SearchLast(U'.');                     // 3: positions count characters
///     KVRUnicodeString base = name.SubString(0, dot);      // "Été"

#include "RenderingBase/host/base/KVRExport.h"

#include <iosfwd>
#include <string>
#include <string_view>

/// A text of Unicode characters, kept as valid UTF-8.
///
/// Positions and lengths count characters (code points) from 0, unless a name says bytes. Bytes
/// that are no UTF-8 become U+FFFD when they come in, and so does an embedded zero byte, so that
/// CastToCharPtr() always shows the whole text. Comparisons are exact and case-sensitive, in the
/// order of the code points; nothing depends on the locale of the process. Texts are shorter than
/// 2 GiB.
/// Threads: const members may be called at once.
/// Cost: a position in a text of ASCII characters is found at once, in any other text by counting
/// from its start.
class KVR_EXPORT KVRUnicodeString {
public:
    KVRUnicodeString() = default;
    /// @param utf8  UTF-8, ends at the first zero byte; null makes an empty text.
    KVRUnicodeString(const char* utf8);
    KVRUnicodeString(std::string_view utf8);
    KVRUnicodeString(const std::string& utf8);
    KVRUnicodeString(const KVRUnicodeString&) = default;
    KVRUnicodeString(KVRUnicodeString&& other) noexcept;  ///< Leaves @p other empty.
    KVRUnicodeString& operator=(KVRUnicodeString other) noexcept;
    ~KVRUnicodeString() = default;

    int GetLengthInChar() const { return m_charCount; }
    int GetLengthInByte() const { return static_cast<int>(m_utf8.size()); }
    /// The UTF-8 bytes with a zero at the end; valid until the text changes or dies.
    const char* CastToCharPtr() const { return m_utf8.c_str(); }
    /// The UTF-8 bytes; valid until the text changes or dies.
    std::string_view View() const { return m_utf8; }

    /// The character at a position, 0 outside the text.
    char32_t operator[](int charIndex) const;
    /// Returns at most @p chars characters from @p start on; what lies outside the text is left
    /// out.
    KVRUnicodeString SubString(int start, int chars) const;
    /// Returns the position of the first occurrence that starts at @p from or later, -1 for none.
    int SearchSubString(const KVRUnicodeString& what, int from = 0) const;
    /// Returns the position of the last occurrence, -1 for none.
    int SearchLast(char32_t character) const;
    /// Replaces every occurrence from left to right; what was put in is not searched again.
    /// @param what  An empty one changes nothing.
    void Replace(const KVRUnicodeString& what, const KVRUnicodeString& by);
    /// Turns every character into its simple lower-case form, for every script.
    void ToLower();

    /// Reads a number as `sscanf` does: trailing text is no error.
    /// @param format  one conversion for an int.
    /// @return true when a number was read; otherwise @p number keeps its value.
    bool ConvertToNum(int& number, const char* format = "%d") const;
    /// Replaces the text by a number. @param format  one conversion for the number's type.
    void BuildFromNum(int number, const char* format = "%d");
    void BuildFromNum(unsigned number, const char* format = "%u");

    /// Returns the FNV-1a hash (32 bits) of the UTF-8 bytes; the same in every process and on every
    /// machine.
    unsigned ComputeHashKey() const;

    KVRUnicodeString& operator+=(const KVRUnicodeString& other);
    friend KVRUnicodeString operator+(KVRUnicodeString a, const KVRUnicodeString& b) {
        a += b;
        return a;
    }
    friend bool operator==(const KVRUnicodeString& a, const KVRUnicodeString& b) {
        return a.m_utf8 == b.m_utf8;
    }
    friend bool operator<(const KVRUnicodeString& a, const KVRUnicodeString& b) {
        return a.m_utf8 < b.m_utf8;
    }
    /// Writes the UTF-8 bytes.
    friend KVR_EXPORT std::ostream& operator<<(std::ostream& stream, const KVRUnicodeString& text);

private:
    bool isAscii() const { return m_charCount == GetLengthInByte(); }
    std::size_t byteOffset(int charIndex) const;  // for 0 <= charIndex <= m_charCount
    int charOffset(std::size_t byteIndex) const;

    std::string m_utf8;
    int m_charCount = 0;
};
