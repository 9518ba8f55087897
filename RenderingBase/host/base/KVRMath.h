#pragma once

/// @file  Points and vectors of three components, right-handed, without units of their own.

#include <cmath>

/// A vector in double precision.
class KVRMathVector {
public:
    constexpr KVRMathVector() = default;
    constexpr KVRMathVector(double x, double y, double z) : m_x(x), m_y(y), m_z(z) {}

    constexpr double GetX() const { return m_x; }
    constexpr double GetY() const { return m_y; }
    constexpr double GetZ() const { return m_z; }

    /// Divides by the length; the zero vector stays zero.
    void Normalize() {
        const double norm = std::sqrt(m_x * m_x + m_y * m_y + m_z * m_z);
        if (norm == 0.0) return;
        m_x /= norm;
        m_y /= norm;
        m_z /= norm;
    }

private:
    double m_x = 0.0, m_y = 0.0, m_z = 0.0;
};

/// A vector in single precision; every operation rounds to single precision.
class KVRMathVectorf {
public:
    constexpr KVRMathVectorf() = default;
    constexpr KVRMathVectorf(float x, float y, float z) : m_x(x), m_y(y), m_z(z) {}

    constexpr float GetX() const { return m_x; }
    constexpr float GetY() const { return m_y; }
    constexpr float GetZ() const { return m_z; }

    float Norm() const { return std::sqrt(m_x * m_x + m_y * m_y + m_z * m_z); }

    /// The dot product.
    friend constexpr float operator*(const KVRMathVectorf& a, const KVRMathVectorf& b) {
        return a.m_x * b.m_x + a.m_y * b.m_y + a.m_z * b.m_z;
    }
    friend constexpr KVRMathVectorf operator*(const KVRMathVectorf& v, float factor) {
        return {v.m_x * factor, v.m_y * factor, v.m_z * factor};
    }
    friend constexpr KVRMathVectorf operator*(float factor, const KVRMathVectorf& v) {
        return v * factor;
    }
    friend constexpr KVRMathVectorf operator-(const KVRMathVectorf& a, const KVRMathVectorf& b) {
        return {a.m_x - b.m_x, a.m_y - b.m_y, a.m_z - b.m_z};
    }

private:
    float m_x = 0.0F, m_y = 0.0F, m_z = 0.0F;
};

/// A point in single precision.
class KVRMathPointf {
public:
    constexpr KVRMathPointf() = default;
    constexpr KVRMathPointf(float x, float y, float z) : m_x(x), m_y(y), m_z(z) {}

    constexpr float GetX() const { return m_x; }
    constexpr float GetY() const { return m_y; }
    constexpr float GetZ() const { return m_z; }

    /// The vector from @p from to @p to.
    friend constexpr KVRMathVectorf operator-(const KVRMathPointf& to, const KVRMathPointf& from) {
        return {to.m_x - from.m_x, to.m_y - from.m_y, to.m_z - from.m_z};
    }
    friend constexpr KVRMathPointf operator+(const KVRMathPointf& p, const KVRMathVectorf& v) {
        return {p.m_x + v.GetX(), p.m_y + v.GetY(), p.m_z + v.GetZ()};
    }

private:
    float m_x = 0.0F, m_y = 0.0F, m_z = 0.0F;
};
