#pragma once

/// @file  Where a scene is seen from.

#include "RenderingBase/host/base/KVRExport.h"
#include "RenderingBase/host/base/KVRMath.h"
#include "RenderingBase/host/modeler/KVRClass.h"

/// A viewpoint: an eye (origin), the point that it looks at (target), and how it projects.
///
/// Frame: that of the scene, right-handed. Lengths are in the unit of the scene.
/// Threads: belongs to the interactive thread. Lifetime: counted.
class KVR_EXPORT KVR3DViewpoint : public KVRClass<"KVR3DViewpoint"> {
public:
    /// The kinds of projection that have a meaning here. A number and no enumeration, since a
    /// viewpoint may have a projection that is neither.
    static constexpr int kParallel = 0;
    static constexpr int kConic = 1;

    /// @param projectionType  `kParallel`, `kConic`, or any other number, which is kept as it is.
    explicit KVR3DViewpoint(int projectionType = kConic, const KVRMathPointf& origin = {},
                            const KVRMathPointf& target = {0.0F, 0.0F, -1.0F});

    int GetProjectionType() const { return m_projectionType; }

    const KVRMathPointf& GetOrigin() const { return m_origin; }
    void SetOrigin(const KVRMathPointf& origin) { m_origin = origin; }
    const KVRMathPointf& GetTarget() const { return m_target; }
    void SetTarget(const KVRMathPointf& target) { m_target = target; }

    /// The direction from the origin to the target, of length 1; the zero vector when they
    /// coincide. Coordinates that are not finite give components that are not numbers.
    KVRMathVectorf GetSightDirection() const;

    /// The distance at which the picture is sharp, as it was set last; 0 before. Kept as it is, and
    /// without effect on origin and target.
    float GetFocus() const { return m_focus; }
    void SetFocus(float distance) { m_focus = distance; }

private:
    int m_projectionType;
    KVRMathPointf m_origin, m_target;
    float m_focus = 0.0F;
};
