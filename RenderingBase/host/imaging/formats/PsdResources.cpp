// Resources of PSD files, one after the other:
//
//   "8BIM"  03 ED  00 00  00 00 00 10      number 1005 without a name, 16 bytes, and a byte more
//   00 48 00 00 00 01 00 01 ...            after an odd number of them
//
// and the section of layers, of which only the signs matter that concern the merged picture:
//
//   00 00 01 50      length of the layers (eight bytes in a PSB file), 0 for none here
//   FF FF ...        how many they are: minus one
//   00 00 00 00      length of the global mask
//   "8BIM" "Lr16" 00 00 02 00 FF FE ...    more blocks; here stand layers of 16 and 32 bits
//
// Source: Adobe Photoshop File Formats, "Image Resource Blocks", "Layer and Mask
// Information Section", "Additional Layer Information".

#include "RenderingBase/host/imaging/formats/PsdResources.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace rb::imaging {
namespace {

constexpr std::uint32_t kResolutionInfo = 1005, kProfile = 1039, kTransparentIndex = 1047,
                        kVersionInfo = 1057;

/// Both numbers are pixels per inch in 16.16 bits, whatever unit people are shown.
Resolution readResolution(PsdInput& input) {
    const double x = input.number32() / 65536.0;
    input.number(4);  // units in which resolution and width are shown
    const double y = input.number32() / 65536.0;
    // Writers that know no resolution have put 0 there, or the smallest number that is not 0.
    if (x < 1 || y < 1) return {};
    return {x, y, kPerInch};
}

void readResource(PsdInput& input, std::uint32_t id, std::uint64_t length, PsdHeader& header) {
    constexpr std::uint64_t kLargestProfile = 16 << 20;
    if (id == kResolutionInfo && length >= 16) {
        header.resolution = readResolution(input);
    } else if (id == kProfile && length <= kLargestProfile) {
        header.profile.resize(static_cast<std::size_t>(length));
        input.read(header.profile.data(), header.profile.size());
    } else if (id == kTransparentIndex && length >= 2) {
        const std::uint32_t index = input.number16();
        header.transparentIndex = index < 256 ? static_cast<int>(index) : -1;
    } else if (id == kVersionInfo && length >= 5) {
        input.number(4);  // version
        header.mergedPictureIsReal = input.number(1) != 0;
    }
}

/// Layer blocks begin with the number of layers, negative when the merged picture has opacity.
void readLayerCount(PsdInput& input, PsdHeader& header) {
    const std::uint32_t count = input.number16();
    if (count != 0) header.hasLayers = true;
    if (count & 0x8000) header.hasTransparency = true;
}

bool isOneOf(std::string_view key, std::initializer_list<std::string_view> keys) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

/// How many bytes the length of a block has.
int lengthBytes(std::string_view signature, std::string_view key, bool big) {
    const bool longLength =
        signature == "8B64" || isOneOf(key, {"LMsk", "Lr16", "Lr32", "Layr", "Mt16", "Mt32", "Mtrn",
                                             "Alph", "FMsk", "lnk2", "FEid", "FXid", "PxSD"});
    return big && longLength ? 8 : 4;
}

/// Finds the signature of the next block. Blocks are filled up to a multiple of two or four bytes,
/// or not at all, depending on who wrote them.
std::string nextSignature(PsdInput& input, std::uint64_t end) {
    constexpr std::uint64_t kMostFilling = 3, kLeastBlock = 12;
    const std::uint64_t begin = input.position();
    for (std::uint64_t filling = 0; filling <= kMostFilling; ++filling) {
        if (end - begin < filling + kLeastBlock) break;
        input.seek(begin + filling);
        std::string signature = input.text(4);
        if (signature == "8BIM" || signature == "8B64") return signature;
    }
    return {};
}

void readBlocks(PsdInput& input, std::uint64_t end, PsdHeader& header) {
    for (;;) {
        const std::string signature = nextSignature(input, end);
        if (signature.empty()) return;
        const std::string key = input.text(4);
        const std::uint64_t length = input.number(lengthBytes(signature, key, header.big));
        const std::uint64_t begin = input.position();
        if (begin > end || length > end - begin) return;
        if (isOneOf(key, {"Layr", "Lr16", "Lr32"}) && length >= 2) readLayerCount(input, header);
        // These say nothing more than that the merged picture has opacity.
        if (isOneOf(key, {"Mtrn", "Mt16", "Mt32"})) header.hasTransparency = true;
        input.seek(begin + length);
    }
}

}  // namespace

void readPsdResources(PsdInput& input, std::uint64_t end, PsdHeader& header) {
    constexpr std::uint64_t kLeastResource = 12;
    while (input.position() + kLeastResource <= end) {
        const std::string signature = input.text(4);
        const std::uint32_t id = input.number16();
        const std::uint64_t nameLength = input.number(1);
        // The name is filled up so that it has an even number of bytes with its length.
        input.seek(input.position() + (nameLength | 1));
        const std::uint64_t length = input.number(4);
        const std::uint64_t begin = input.position();
        if (begin > end || length > end - begin) return;
        if (signature == "8BIM") readResource(input, id, length, header);
        input.seek(begin + length + length % 2);
    }
}

void readPsdLayers(PsdInput& input, std::uint64_t end, PsdHeader& header) {
    const auto passOver = [&](int bytes, const auto& content) {
        if (end - input.position() < static_cast<std::uint64_t>(bytes)) return false;
        const std::uint64_t length = input.number(bytes);
        const std::uint64_t begin = input.position();
        if (length > end - begin) return false;
        content(length);
        input.seek(begin + length);
        return true;
    };
    const auto layers = [&](std::uint64_t length) {
        if (length >= 2) readLayerCount(input, header);
    };
    const auto mask = [](std::uint64_t) {};
    if (passOver(header.big ? 8 : 4, layers) && passOver(4, mask)) readBlocks(input, end, header);
}

}  // namespace rb::imaging
