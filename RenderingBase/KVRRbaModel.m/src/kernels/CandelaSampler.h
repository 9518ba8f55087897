#pragma once

/// @file  The intensities of a luminaire in many directions. Pure computation.

#include "RenderingBase/KVRRbaModel.m/src/kernels/AngleIndex.h"
#include "RenderingBase/KVRRbaModel.m/src/kernels/CandelaLookup.h"

#include <cstddef>
#include <span>

namespace rb::kernels {

/// Looks up many directions in one grid.
///
/// Gives the bits of candelaAt() on every processor. Lists of angles that do not rise, or that have
/// many angles in one place, are asked direction by direction.
///
/// Lifetime: the grid's lists must outlive the sampler. Threads: const members may be called at
/// once.
class CandelaSampler {
public:
    /// Errors: throws std::bad_alloc. Cost: proportional to the numbers of angles.
    explicit CandelaSampler(const CandelaGrid& grid);

    /// @param theta, phi  Radians, as many as @p out; see candelaAt(). Numbers.
    void sample(std::span<const float> theta, std::span<const float> phi,
                std::span<float> out) const;

    /// So many horizontal angles sampleLevel() takes in vectors; their values stay in the nearest
    /// cache.
    static constexpr std::int32_t kMostMixedRuns = 512;

    /// The same of directions with one polar angle, in fewer operations when there are not more
    /// horizontal angles than that.
    void sampleLevel(float theta, std::span<const float> phi, std::span<float> out) const;

    const CandelaGrid& grid() const { return m_grid; }
    Symmetry symmetry() const { return m_symmetry; }
    const AngleIndex& vertical() const { return m_vertical; }
    const AngleIndex& horizontal() const { return m_horizontal; }

private:
    CandelaGrid m_grid;
    Symmetry m_symmetry;
    AngleIndex m_vertical, m_horizontal;
    bool m_hasVectors = false;
};

}  // namespace rb::kernels
