#include "RenderingBase/KVRRbaModel.m/src/kernels/IntensityTable.h"

#include "RenderingBase/KVRRbaModel.m/src/kernels/CandelaSampler.h"
#include "RenderingBase/KVRRbaModel.m/src/kernels/TableDirections.h"
#include "RenderingBase/KVRRbaModel.m/src/kernels/ToneMapping.h"

#include <algorithm>
#include <array>
#include <limits>

namespace rb::kernels {
namespace {

/// Cells that are computed at once; their angles and values stay in the nearest cache.
constexpr std::size_t kCells = 512;

/// Fewer are computed in the time that other threads take to start.
constexpr std::size_t kCellsWorthThreads = 4096;

/// Writes each value into all channels of its cell.
void spread(std::span<const float> values, std::size_t channels, float* cells) {
    if (channels == 3) return repeatForColors(values, {cells, 3 * values.size()});
    if (channels == 4) {
        for (std::size_t i = 0; i < values.size(); ++i)
            for (std::size_t k = 0; k < 4; ++k) cells[4 * i + k] = values[i];
        return;
    }
    for (std::size_t i = 0; i < values.size(); ++i)
        std::fill_n(cells + channels * i, channels, values[i]);
}

void fillRow(const TableDirections& directions, const CandelaSampler& sampler, std::size_t row,
             const TableShape& shape, float* cells) {
    const Symmetry symmetry = sampler.symmetry();
    if (symmetry == Symmetry::Dark || (symmetry == Symmetry::Axial && directions.areLevel())) {
        const float value = candelaAt(sampler.grid(), directions.polarAngle(row), 0);
        std::fill_n(cells, shape.columns * shape.channels, value);
        return;
    }
    std::array<float, kCells> theta, phi, values;
    const bool isLevel =
        directions.areLevel() && sampler.horizontal().count <= CandelaSampler::kMostMixedRuns;
    for (std::size_t begin = 0; begin < shape.columns; begin += kCells) {
        const std::size_t count = std::min(kCells, shape.columns - begin);
        directions.compute(row, begin, {theta.data(), count}, {phi.data(), count});
        float* const place = cells + begin * shape.channels;
        float* const to = shape.channels == 1 ? place : values.data();
        if (isLevel)
            sampler.sampleLevel(theta[0], {phi.data(), count}, {to, count});
        else
            sampler.sample({theta.data(), count}, {phi.data(), count}, {to, count});
        if (shape.channels != 1) spread({to, count}, shape.channels, place);
    }
}

}  // namespace

void resample(const CandelaGrid& grid, const TableShape& shape, const Rotation& rotation,
              std::span<float> table) {
    const TableDirections directions(shape, rotation);
    const CandelaSampler sampler(grid);
    if (!directions.areNumbers()) {
        constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();
        std::fill(table.begin(), table.end(), candelaAt(grid, kNoNumber, kNoNumber));
        return;
    }
    const auto rows = static_cast<std::ptrdiff_t>(shape.rows);
    const bool isWorthThreads = shape.rows * shape.columns >= kCellsWorthThreads;
#pragma omp parallel for schedule(static) if (isWorthThreads)
    for (std::ptrdiff_t i = 0; i < rows; ++i) {
        const auto row = static_cast<std::size_t>(i);
        fillRow(directions, sampler, row, shape,
                table.data() + row * shape.columns * shape.channels);
    }
}

}  // namespace rb::kernels
