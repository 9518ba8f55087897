#pragma once

/// A quaternion: vector part x, y, z and scalar part s, in this order everywhere.
///
/// The flag of the constructor and of GetCoord() tells how the components are meant; 1, components
/// as they stand, is the only meaning, so nothing is normalised.
class KVRMathQuaternion {
public:
    constexpr KVRMathQuaternion(double x, double y, double z, double s, int /*flag*/ = 1)
        : m_x(x), m_y(y), m_z(z), m_s(s) {}

    constexpr void GetCoord(double& x, double& y, double& z, double& s, int /*flag*/ = 1) const {
        x = m_x;
        y = m_y;
        z = m_z;
        s = m_s;
    }

    /// Negates the vector part.
    constexpr void Conjugate() {
        m_x = -m_x;
        m_y = -m_y;
        m_z = -m_z;
    }

    /// The Hamilton product: as rotations, @p b first, then @p a.
    friend constexpr KVRMathQuaternion operator*(const KVRMathQuaternion& a,
                                                 const KVRMathQuaternion& b) {
        return {a.m_s * b.m_x + a.m_x * b.m_s + a.m_y * b.m_z - a.m_z * b.m_y,
                a.m_s * b.m_y - a.m_x * b.m_z + a.m_y * b.m_s + a.m_z * b.m_x,
                a.m_s * b.m_z + a.m_x * b.m_y - a.m_y * b.m_x + a.m_z * b.m_s,
                a.m_s * b.m_s - a.m_x * b.m_x - a.m_y * b.m_y - a.m_z * b.m_z};
    }

private:
    double m_x, m_y, m_z, m_s;
};
