#pragma once

/// @file  A second reader of photometric files, on an input stream of the standard library: slower,
/// and the measure of which numbers are accepted.

#include "RenderingBase/public/KVRRbaIESLoader.h"

#include <cstdint>
#include <locale>
#include <sstream>
#include <string>
#include <vector>

namespace rb::test {

class StreamParser {
public:
    explicit StreamParser(const std::string& text) : m_in(text) {
        m_in.imbue(std::locale::classic());
        m_in.exceptions(std::ios::failbit | std::ios::badbit);
    }

    /// Throws std::ios_base::failure. Counts must be small: nothing is held against the text.
    KVRRbaIESLoader::IESPhotometry parse() {
        std::string line;
        std::getline(m_in, line);
        m_record.versionText = line;
        const auto has = [&line](const char* text) { return line.find(text) != std::string::npos; };
        if (line.size() >= 14 && has("IES LM-63-1991"))
            m_record.formatVersion = 2;
        else if (has("IESNA91"))
            m_record.formatVersion = 2;
        else if (has("IES LM-63-1995") || has("IESNA:LM-63-1995"))
            m_record.formatVersion = 3;
        else
            m_record.versionText = "IESNA86";
        int counter = 0;
        bool isTiltSeen = false;
        while ((!has("TILT=") && counter < 100) ||
               (has("TILT=") && !has("[MORE]") && counter < 100 && !isTiltSeen)) {
            std::getline(m_in, line);
            std::vector<std::string> pieces;
            std::istringstream whole(line);
            for (std::string piece; std::getline(whole, piece, ']');) pieces.push_back(piece);
            if (!pieces.empty()) ++counter;
            if (pieces.size() < 2) {
                if (has("TILT")) isTiltSeen = true;
                continue;
            }
            const auto names = [&](const char* text) {
                return pieces[0].find(text) != std::string::npos;
            };
            if (names("LUMCAT")) m_record.luminaireCatalogue = pieces[1];
            if (names("LUMINAIRE")) m_record.luminaire = pieces[1];
            if (names("LAMPCAT")) m_record.lampCatalogue = pieces[1];
            if (names("LAMP")) m_record.lamp = pieces[1];
            if (names("MANUFAC")) m_record.manufacturer = pieces[1];
        }
        readTilt(line);
        readNumbers();
        return m_record;
    }

private:
    void skipSeparators() {
        while (m_in.peek() == ',' || m_in.peek() == ' ') m_in.get();
    }
    template <class Value>
    Value next() {
        Value value{};
        skipSeparators();
        m_in >> value;
        return value;
    }
    void discardLine() {
        std::string line;
        std::getline(m_in, line);
    }
    void readTilt(const std::string& line) {
        std::vector<std::string> pieces;
        std::istringstream whole(line);
        for (std::string piece; std::getline(whole, piece, '=');) pieces.push_back(piece);
        if (pieces.size() < 2 || pieces[0].find("TILT") == std::string::npos ||
            pieces[1].find("INCLUDE") == std::string::npos)
            return;
        discardLine();
        const auto pairs = next<std::int32_t>();
        discardLine();
        for (std::int64_t i = 0; i < 2 * std::int64_t{pairs}; ++i) {
            if (m_in.peek() == '\n') discardLine();
            next<float>();
            m_in.ignore(1);
        }
    }
    void readNumbers() {
        if (m_in.peek() == '\n') discardLine();
        const auto lamps = next<std::int32_t>();
        next<float>();
        const auto multiplier = next<float>();
        m_record.verticalAngleCount = next<std::int32_t>();
        m_record.horizontalAngleCount = next<std::int32_t>();
        m_record.photometricType = next<std::int32_t>();
        next<std::int32_t>();
        for (int i = 0; i < 3; ++i) next<float>();
        m_record.ballastFactor = next<float>();
        next<float>();
        m_record.inputWatts = next<float>();
        m_record.intensityScale = static_cast<float>(lamps) * multiplier;
        readList(m_record.verticalAngleCount, m_record.verticalAngles);
        readList(m_record.horizontalAngleCount, m_record.horizontalAngles);
        readList(std::int64_t{m_record.verticalAngleCount} * m_record.horizontalAngleCount,
                 m_record.candelaValues);
    }
    void readList(std::int64_t count, std::vector<float>& list) {
        for (std::int64_t i = 0; i < count; ++i) list.push_back(next<float>());
    }

    std::istringstream m_in;
    KVRRbaIESLoader::IESPhotometry m_record;
};

}  // namespace rb::test
