#include "RenderingBase/host/visu/KVR3DViewpoint.h"

KVR3DViewpoint::KVR3DViewpoint(int projectionType, const KVRMathPointf& origin,
                               const KVRMathPointf& target)
    : m_projectionType(projectionType), m_origin(origin), m_target(target) {}

KVRMathVectorf KVR3DViewpoint::GetSightDirection() const {
    // In double precision: squares of floats neither overflow nor vanish there.
    const auto difference = [](float to, float from) {
        return static_cast<double>(to) - static_cast<double>(from);
    };
    KVRMathVector sight(difference(m_target.GetX(), m_origin.GetX()),
                        difference(m_target.GetY(), m_origin.GetY()),
                        difference(m_target.GetZ(), m_origin.GetZ()));
    sight.Normalize();
    return {static_cast<float>(sight.GetX()), static_cast<float>(sight.GetY()),
            static_cast<float>(sight.GetZ())};
}
