#include "RenderingBase/KVRRbaModel.m/src/IesParser.h"

#include "RenderingBase/KVRRbaModel.m/src/IesScanner.h"
#include "RenderingBase/KVRRbaModel.m/src/KVRRbaTraceLog.h"

#include <algorithm>
#include <vector>

namespace rb::photometry {
namespace {

using KVRRbaIESLoader::IESPhotometry;
using KVRRbaIESLoader::IESUnusedData;

constexpr const char* kSource = RB_TRACE_SOURCE("KVRRbaIESLoader");
constexpr std::int32_t kMostKeywordLines = 100;

bool contains(std::string_view text, std::string_view what) {
    return text.find(what) != std::string_view::npos;
}

/// The first two pieces of a text between separators.
struct Pieces {
    std::string_view first, second;
    int count = 0;  ///< 0 of an empty text; 2 when there are more.
};

/// There is no piece behind a separator at the end.
Pieces split(std::string_view text, char separator) {
    if (text.empty()) return {};
    const std::size_t end = std::min(text.find(separator), text.size());
    const std::string_view first = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (text.empty()) return {first, {}, 1};
    return {first, text.substr(0, text.find(separator)), 2};
}

/// 1 for every dialect that is not known, of later editions too.
std::int32_t versionOf(std::string_view line) {
    if (contains(line, "IES LM-63-1991") || contains(line, "IESNA91")) return 2;
    if (contains(line, "IES LM-63-1995") || contains(line, "IESNA:LM-63-1995")) return 3;
    return 1;
}

class Parser {
public:
    Parser(std::string_view text, IESPhotometry& photometry, IESUnusedData& unused)
        : m_scanner(text), m_record(photometry), m_unused(unused) {}

    HRESULT parse() {
        const std::string_view tiltLine = readKeywords();
        m_unused.tiltLine = tiltLine;
        skipTilt(tiltLine);
        readHeader();
        readNumbers(m_record.verticalAngleCount, m_record.verticalAngles);
        readNumbers(m_record.horizontalAngleCount, m_record.horizontalAngles);
        if (!hasAllAngles()) return E_FAIL;
        readNumbers(std::int64_t{m_record.verticalAngleCount} * m_record.horizontalAngleCount,
                    m_record.candelaValues);
        m_unused.trailingByteCount = m_scanner.leftWithoutSpace();
        return S_OK;
    }

private:
    std::string_view readKeywords();
    void readKeyword(std::string_view line);
    void skipTilt(std::string_view tiltLine);
    void readHeader();
    void readNumbers(std::int64_t count, std::vector<float>& numbers);
    bool hasAllAngles() const;

    std::int32_t integer() {
        m_scanner.skipSeparators();
        return m_scanner.integer();
    }
    float number() {
        m_scanner.skipSeparators();
        return m_scanner.number();
    }

    Scanner m_scanner;
    IESPhotometry& m_record;
    IESUnusedData& m_unused;
    bool m_isTiltSeen = false;
};

/// The first line is used up in every case, also when it is a keyword or the tilt line already.
/// @return  The line with which the keywords end: the tilt line, unless there are too many.
std::string_view Parser::readKeywords() {
    std::string_view line = m_scanner.line();
    m_record.formatVersion = versionOf(line);
    m_record.versionText = m_record.formatVersion == 1 ? "IESNA86" : line;
    const auto goesOn = [&] {
        if (m_unused.keywordLineCount >= kMostKeywordLines) return false;
        if (!contains(line, "TILT=")) return true;
        return !contains(line, "[MORE]") && !m_isTiltSeen;
    };
    while (goesOn()) {
        line = m_scanner.line();
        readKeyword(line);
    }
    return line;
}

/// The tests are independent of one another: a catalogue number of the lamp is its name as well,
/// unless a line with its name follows. Continuation lines are dropped. Kept for compatibility.
void Parser::readKeyword(std::string_view line) {
    const Pieces pieces = split(line, ']');
    if (pieces.count == 0) return;
    ++m_unused.keywordLineCount;
    if (pieces.count < 2) {
        m_isTiltSeen |= contains(line, "TILT");
        return;
    }
    const struct {
        const char* keyword;
        std::string& text;
    } keywords[] = {{"LUMCAT", m_record.luminaireCatalogue},
                    {"LUMINAIRE", m_record.luminaire},
                    {"LAMPCAT", m_record.lampCatalogue},
                    {"LAMP", m_record.lamp},
                    {"MANUFAC", m_record.manufacturer}};
    for (const auto& [keyword, text] : keywords)
        if (contains(pieces.first, keyword)) text = pieces.second;
}

/// Tilt factors would be for lamps that are not mounted as they were measured; none is applied, and
/// files of their own are not opened.
void Parser::skipTilt(std::string_view tiltLine) {
    const Pieces pieces = split(tiltLine, '=');
    if (pieces.count < 2 || !contains(pieces.first, "TILT") || !contains(pieces.second, "INCLUDE"))
        return;
    m_scanner.line();  // how the lamp is mounted
    m_unused.tiltPairCount = integer();
    m_scanner.line();
    for (std::int64_t left = 2 * std::int64_t{m_unused.tiltPairCount}; left > 0; --left) {
        m_scanner.skipLineEnd();
        number();
        m_scanner.skipOne();
    }
}

void Parser::readHeader() {
    m_scanner.skipLineEnd();
    m_unused.lampCount = integer();
    m_unused.lumensPerLamp = number();
    m_unused.candelaMultiplier = number();
    m_record.verticalAngleCount = integer();
    m_record.horizontalAngleCount = integer();
    m_record.photometricType = integer();
    m_unused.unitsType = integer();
    m_unused.width = number();
    m_unused.length = number();
    m_unused.height = number();
    m_record.ballastFactor = number();
    m_unused.futureUse = number();
    m_record.inputWatts = number();
    m_record.intensityScale = static_cast<float>(m_unused.lampCount) * m_unused.candelaMultiplier;
}

/// A count below 1 reads nothing.
void Parser::readNumbers(std::int64_t count, std::vector<float>& numbers) {
    if (count < 1) return;
    // A number takes one byte at least: no more room than the text can fill.
    numbers.reserve(
        std::min(static_cast<std::uint64_t>(count), static_cast<std::uint64_t>(m_scanner.left())));
    for (; count > 0; --count) numbers.push_back(number());
}

bool Parser::hasAllAngles() const {
    const auto lacks = [](const std::vector<float>& angles, std::int32_t count) {
        return static_cast<std::int64_t>(angles.size()) < count;
    };
    const auto report = [](std::uint32_t line, const char* text) {
        trace::write(trace::kError, kSource, " ", line, " ", text);
        return false;
    };
    if (lacks(m_record.verticalAngles, m_record.verticalAngleCount))
        return report(313, "Number of vertical angles doesn't match actual angle count");
    if (lacks(m_record.horizontalAngles, m_record.horizontalAngleCount))
        return report(318, "Number of horizontal angles doesn't match actual angle count");
    return true;
}

}  // namespace

HRESULT parse(std::string_view text, IESPhotometry& photometry, IESUnusedData& unused) {
    return Parser(text, photometry, unused).parse();
}

}  // namespace rb::photometry
