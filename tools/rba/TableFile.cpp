#include "tools/rba/TableFile.h"

#include "tools/rba/Output.h"
#include "tools/rba/OutputFile.h"
#include "tools/rba/Paths.h"

#include <bit>
#include <cmath>
#include <cstdint>

namespace rb::cli {
namespace {

/// Handed over in pieces: a table may be larger than what is worth collecting.
class BufferedFile {
public:
    explicit BufferedFile(const std::string& typed) : m_file(typedPath(frameworkPath(typed))) {}

    std::string& text() { return m_text; }
    void step() {
        constexpr std::size_t kPiece = 1 << 16;
        if (m_text.size() >= kPiece) flush();
    }
    void commit() {
        flush();
        m_file.commit();
    }

private:
    void flush() {
        m_file.write(m_text);
        m_text.clear();
    }
    OutputFile m_file;
    std::string m_text;
};

void writeBin(const std::string& path, const IntensityTable& table) {
    BufferedFile file(path);
    for (const float value : table.values) {
        const auto bits = std::bit_cast<std::uint32_t>(value);
        for (int shift = 0; shift < 32; shift += 8)
            file.text() += static_cast<char>(bits >> shift & 255);
        file.step();
    }
    file.commit();
}

void writeCsv(const std::string& path, const IntensityTable& table) {
    BufferedFile file(path);
    const std::size_t columns =
        static_cast<std::size_t>(table.phi) * static_cast<std::size_t>(table.channels);
    for (std::size_t i = 0; i < table.values.size(); ++i) {
        file.text() += numberText(table.values[i]);
        file.text() += (i + 1) % columns == 0 ? '\n' : ',';
        file.step();
    }
    file.commit();
}

void writeJson(const std::string& path, const IntensityTable& table) {
    BufferedFile file(path);
    file.text() = "{\"theta\": " + std::to_string(table.theta) +
                  ", \"phi\": " + std::to_string(table.phi) +
                  ", \"channels\": " + std::to_string(table.channels) + ", \"values\": [";
    const char* separator = "";
    for (const float value : table.values) {
        file.text() += separator;
        file.text() += std::isfinite(value) ? numberText(value) : "null";
        separator = ", ";
        file.step();
    }
    file.text() += "]}\n";
    file.commit();
}

}  // namespace

TableWriter tableWriterOf(const std::string& extension) {
    if (extension == "bin") return writeBin;
    if (extension == "csv") return writeCsv;
    if (extension == "json") return writeJson;
    return nullptr;
}

}  // namespace rb::cli
