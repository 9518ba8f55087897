// The first directory of a TIFF file, and of BigTIFF where that differs:
//
//   II 2A 00          little endian (MM 00 2A: big); BigTIFF: II 2B 00 08 00 00 00
//   08 00 00 00       where the directory stands; BigTIFF: 8 bytes
//   0A 00             ten fields; BigTIFF: 8 bytes
//   00 01 03 00       tag 256, type 3 (short),
//   01 00 00 00       one value; BigTIFF: 8 bytes
//   20 00 00 00       the value or, when it is longer than these bytes, where it stands; BigTIFF: 8
//
// Sources: TIFF Revision 6.0 (1992), section 2; the BigTIFF design of the codec library.

#include "RenderingBase/host/imaging/formats/TiffDirectoryCheck.h"

#include "RenderingBase/host/imaging/formats/RefusalTexts.h"
#include "RenderingBase/host/imaging/formats/SaturatedMath.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace rb::imaging {
namespace {

/// Bytes of one value of each type; 0 for types that there are not, of which the library reads
/// nothing.
constexpr std::array<std::uint8_t, 19> kTypeBytes{0, 1, 1, 2, 4, 8, 1, 1, 2, 4,
                                                  8, 4, 8, 4, 0, 0, 8, 8, 8};

class DirectoryWalk {
public:
    explicit DirectoryWalk(SharedSource& source) : m_source(source), m_size(source.size()) {}
    ReadResult walk();

private:
    /// Bytes of an offset, of a count of values, and of a value that stands in the directory.
    std::size_t wordBytes() const { return m_bigTiff ? 8 : 4; }
    std::size_t countBytes() const { return m_bigTiff ? 8 : 2; }
    std::size_t fieldBytes() const { return 4 + 2 * wordBytes(); }
    std::uint64_t number(const unsigned char* bytes, std::size_t count) const {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < count; ++i)
            value = value << 8 | bytes[m_bigEndian ? i : count - 1 - i];
        return value;
    }
    bool readNumber(std::uint64_t offset, std::size_t count, std::uint64_t& value) {
        std::array<unsigned char, 8> bytes{};
        if (m_source.read(offset, bytes.data(), count) != count) return false;
        value = number(bytes.data(), count);
        return true;
    }
    ReadResult findDirectory();
    std::uint64_t valueBytes(const unsigned char* field) const;
    ReadResult addValues();

    SharedSource& m_source;
    const std::uint64_t m_size;
    bool m_bigEndian = false;
    bool m_bigTiff = false;
    std::uint64_t m_offset = 0;  // of the directory
    std::uint64_t m_fields = 0;
};

ReadResult DirectoryWalk::findDirectory() {
    std::array<unsigned char, 4> magic{};
    const std::size_t got = m_source.read(0, magic.data(), magic.size());
    m_bigEndian = magic[0] == 'M';
    m_bigTiff = number(magic.data() + 2, 2) == 43;
    if (got != magic.size() || !readNumber(m_bigTiff ? 8 : 4, wordBytes(), m_offset))
        return refuse("a header", "the end of the file");
    const std::size_t headerBytes = m_bigTiff ? 16 : 8;
    if (m_offset < headerBytes || !readNumber(m_offset, countBytes(), m_fields))
        return refuse("a directory within a file of " + bytesText(m_size),
                      "one at byte " + std::to_string(m_offset));
    return {};
}

/// How many bytes the library may copy for a field: values that end behind the file are left out
/// by it, after reading what there is.
std::uint64_t DirectoryWalk::valueBytes(const unsigned char* field) const {
    const std::uint64_t type = number(field + 2, 2);
    const std::uint64_t each = type < kTypeBytes.size() ? kTypeBytes[type] : 0;
    const std::uint64_t bytes = saturatedProduct(number(field + 4, wordBytes()), each);
    if (bytes <= wordBytes()) return 0;  // in the directory itself
    const std::uint64_t offset = number(field + 4 + wordBytes(), wordBytes());
    return std::min(bytes, m_size - std::min(m_size, offset));
}

ReadResult DirectoryWalk::addValues() {
    // Values stand one behind the other; those that are alike, such as both resolutions, may be
    // shared. A file in which every value is shared by two fields passes.
    const std::uint64_t most = saturatedProduct(2, m_size);
    std::vector<unsigned char> fields(static_cast<std::size_t>(m_fields) * fieldBytes());
    if (m_source.read(m_offset + countBytes(), fields.data(), fields.size()) != fields.size())
        return refuse("a directory that ends", "the end of the file");
    std::uint64_t sum = 0;  // does not overflow: no field adds more than the file's size
    for (std::size_t at = 0; at < fields.size() && sum <= most; at += fieldBytes())
        sum += valueBytes(fields.data() + at);
    if (sum > most)
        return refuse("fields with values of together at most " + bytesText(most),
                      "at least " + bytesText(sum), placeText(m_offset));
    return {};
}

ReadResult DirectoryWalk::walk() {
    // The codec library reads no more of them.
    constexpr std::uint64_t kMostFields = 4096;
    if (ReadResult refusal = findDirectory()) return refusal;
    const std::string where = placeText(m_offset);
    const std::uint64_t room = m_size - m_offset - countBytes();
    if (m_fields == 0) return refuse("a directory with fields", "an empty one", where);
    if (m_fields > room / fieldBytes())
        return refuse("room for " + std::to_string(m_fields) + " fields", bytesText(room), where);
    if (m_fields > kMostFields)
        return refuse("at most " + std::to_string(kMostFields) + " fields",
                      std::to_string(m_fields), where);
    return addValues();
}

}  // namespace

ReadResult checkTiffDirectory(SharedSource& source) { return DirectoryWalk(source).walk(); }

}  // namespace rb::imaging
