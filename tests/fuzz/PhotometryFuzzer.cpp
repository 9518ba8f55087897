// Any bytes as a photometric file, and a small table of intensity of what is read.

#include "RenderingBase/KVRRbaModel.m/src/kernels/CandelaSampler.h"
#include "RenderingBase/public/KVRRbaIESLoader.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <ios>
#include <string_view>
#include <vector>

namespace {

using Floats = std::vector<float>;
using KVRRbaIESLoader::IESPhotometry;

constexpr std::int32_t kRows = 8, kColumns = 16, kChannels = 3;
constexpr std::size_t kCells = std::size_t{kRows} * kColumns;

/// Ends the run when what is promised does not hold; the fuzzer keeps the input.
void promise(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "broken promise: %s\n", what);
    std::abort();
}

/// False when the text is refused.
bool parse(std::string_view text, IESPhotometry& photometry) {
    try {
        return Succeeded(KVRRbaIESLoader::parseIESText(text, photometry));
    } catch (const std::ios_base::failure& refusal) {
        promise(*refusal.what(), "a refusal has a reason");
        return false;
    }
}

void checkCounts(const IESPhotometry& photometry) {
    const auto atLeast0 = [](std::int32_t count) {
        return static_cast<std::size_t>(std::max(count, 0));
    };
    const std::size_t verticals = photometry.verticalAngles.size();
    const std::size_t horizontals = photometry.horizontalAngles.size();
    promise(verticals == atLeast0(photometry.verticalAngleCount), "all vertical angles are there");
    promise(horizontals == atLeast0(photometry.horizontalAngleCount),
            "all horizontal angles are there");
    if (verticals > 0 && horizontals > 0)
        promise(photometry.candelaValues.size() == verticals * horizontals,
                "there is a value for each pair of angles");
}

/// Every number moderate, and lists that rise: then interpolation has a number everywhere.
bool isOrdinary(const IESPhotometry& photometry) {
    const auto isModerate = [](float value) { return std::abs(value) <= 1e12F; };
    const auto rises = [](const Floats& list) {
        return std::adjacent_find(list.begin(), list.end(), std::greater_equal<>()) == list.end();
    };
    const Floats &vertical = photometry.verticalAngles, &horizontal = photometry.horizontalAngles;
    return isModerate(photometry.intensityScale) &&
           std::all_of(vertical.begin(), vertical.end(), isModerate) &&
           std::all_of(horizontal.begin(), horizontal.end(), isModerate) &&
           std::all_of(photometry.candelaValues.begin(), photometry.candelaValues.end(),
                       isModerate) &&
           rises(vertical) && rises(horizontal) && vertical.size() != 1 &&
           (horizontal.size() != 1 || horizontal.front() <= 0);
}

void checkTable(const IESPhotometry& photometry, const KVRMathVector& orientation) {
    // A value that no cell has, unless it is left out: no number with a payload of its own.
    const float unwritten = std::bit_cast<float>(0x7FC12345U);
    Floats table(kCells * kChannels, unwritten);
    KVRRbaIESLoader::resample(photometry, kRows, kColumns, kChannels, orientation, table.data());
    const bool hasNumbers = isOrdinary(photometry);
    for (std::size_t i = 0; i < table.size(); ++i) {
        const auto bits = std::bit_cast<std::uint32_t>(table[i]);
        promise(bits != 0x7FC12345U, "every cell is written");
        promise(bits == std::bit_cast<std::uint32_t>(table[i - i % kChannels]),
                "the channels of a cell are the same");
        promise(!hasNumbers || std::isfinite(table[i]), "ordinary files have numbers in all cells");
    }
}

/// Lookups of many directions are those of single ones, bit by bit; no numbers are alike.
void checkLookups(const IESPhotometry& photometry) {
    const rb::kernels::CandelaGrid grid{photometry.photometricType, photometry.verticalAngles,
                                        photometry.horizontalAngles, photometry.candelaValues,
                                        photometry.intensityScale};
    Floats theta, phi, found(kCells);
    for (std::size_t i = 0; i < kCells; ++i) {
        theta.push_back(3.1415927F * static_cast<float>(i / 16) / 7);
        phi.push_back(6.2831855F * static_cast<float>(i % 16) / 15);
    }
    rb::kernels::CandelaSampler(grid).sample(theta, phi, found);
    for (std::size_t i = 0; i < kCells; ++i) {
        const float one = KVRRbaIESLoader::candelaAt(photometry, theta[i], phi[i]);
        promise(std::isnan(one)
                    ? std::isnan(found[i])
                    : std::bit_cast<std::uint32_t>(one) == std::bit_cast<std::uint32_t>(found[i]),
                "many lookups are as single ones");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    IESPhotometry photometry;
    if (!parse({reinterpret_cast<const char*>(data), size}, photometry)) return 0;
    checkCounts(photometry);
    checkTable(photometry, {0, 0, 0});
    checkTable(photometry, {0.3, -1.1, 2.5});
    checkLookups(photometry);
    return 0;
}
