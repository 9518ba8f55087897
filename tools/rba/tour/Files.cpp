#include "tools/rba/tour/Files.h"

#include "RenderingBase/host/base/KVRUnicodeString.h"
#include "tools/rba/Paths.h"

#include <fstream>
#include <iterator>

namespace rb::cli::tour {

std::string readFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string kindOf(const std::filesystem::path& path) {
    // Names that are no UTF-8 are not paths of the framework; their extension mostly is.
    const KVRUnicodeString valid("sample" + path.extension().string());
    return lowerExtension(std::string(valid.View()));
}

}  // namespace rb::cli::tour
