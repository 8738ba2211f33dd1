#pragma once

#include "VelorBaseExport.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <type_traits>

/// \file
/// Small value types of motion code: vectors, a 4 by 4 matrix and a quaternion.
///
/// All are trivially copyable with public fields and no padding, so that an array of them is an array of
/// their components. Arithmetic works per component unless documented otherwise. Comparison is exact, so
/// that NaN equals nothing and the two zeros are equal.
///
/// Debug output needs `<QDebug>` where it is used: it is a template here, so that motion code does not pay
/// for that header.

class QDebug;
class QDebugStateSaver;

/// Two components, `x` and `y`.
template <typename T>
struct TVec2d
{
    /// The components, in the order in which they lie.
    /// @{
    T x = 0;
    T y = 0;
    /// @}

    /// Arithmetic on each component; `==` is exact.
    /// @{
    constexpr TVec2d& operator+=(const TVec2d& o) { return *this = *this + o; }
    constexpr TVec2d& operator-=(const TVec2d& o) { return *this = *this - o; }
    constexpr TVec2d& operator*=(const TVec2d& o) { return *this = *this * o; }
    constexpr TVec2d& operator/=(const TVec2d& o) { return *this = *this / o; }
    constexpr TVec2d& operator*=(T s) { return *this = *this * s; }
    constexpr TVec2d& operator/=(T s) { return *this = *this / s; }

    friend constexpr bool operator==(const TVec2d&, const TVec2d&) = default;
    friend constexpr TVec2d operator-(const TVec2d& v) { return {-v.x, -v.y}; }
    friend constexpr TVec2d operator+(const TVec2d& a, const TVec2d& b) { return {a.x + b.x, a.y + b.y}; }
    friend constexpr TVec2d operator-(const TVec2d& a, const TVec2d& b) { return {a.x - b.x, a.y - b.y}; }
    friend constexpr TVec2d operator*(const TVec2d& a, const TVec2d& b) { return {a.x * b.x, a.y * b.y}; }
    friend constexpr TVec2d operator/(const TVec2d& a, const TVec2d& b) { return {a.x / b.x, a.y / b.y}; }
    friend constexpr TVec2d operator*(const TVec2d& v, T s) { return {v.x * s, v.y * s}; }
    friend constexpr TVec2d operator*(T s, const TVec2d& v) { return {s * v.x, s * v.y}; }
    friend constexpr TVec2d operator/(const TVec2d& v, T s) { return {v.x / s, v.y / s}; }
    /// @}

    /// The sum of the products, added from `x` on.
    friend constexpr T dot(const TVec2d& a, const TVec2d& b) { return a.x * b.x + a.y * b.y; }
    /// The Euclidean length, by the square root in `T`; very small and very large components are not
    /// rescaled.
    friend T length(const TVec2d& v) { return std::sqrt(dot(v, v)); }

    /// Writes the name of the type and its components.
    template <typename Debug, typename Saver = QDebugStateSaver>
        requires std::is_same_v<Debug, QDebug>
    friend Debug operator<<(Debug debug, const TVec2d& v)
    {
        const Saver saver(debug);
        return debug.nospace() << "TVec2d(" << v.x << ", " << v.y << ')';
    }
};

/// Three components, `x`, `y` and `z`.
template <typename T>
struct TVec3d
{
    /// The components, in the order in which they lie.
    /// @{
    T x = 0;
    T y = 0;
    T z = 0;
    /// @}

    /// Arithmetic on each component; `==` is exact.
    /// @{
    constexpr TVec3d& operator+=(const TVec3d& o) { return *this = *this + o; }
    constexpr TVec3d& operator-=(const TVec3d& o) { return *this = *this - o; }
    constexpr TVec3d& operator*=(const TVec3d& o) { return *this = *this * o; }
    constexpr TVec3d& operator/=(const TVec3d& o) { return *this = *this / o; }
    constexpr TVec3d& operator*=(T s) { return *this = *this * s; }
    constexpr TVec3d& operator/=(T s) { return *this = *this / s; }

    friend constexpr bool operator==(const TVec3d&, const TVec3d&) = default;
    friend constexpr TVec3d operator-(const TVec3d& v) { return {-v.x, -v.y, -v.z}; }
    friend constexpr TVec3d operator+(const TVec3d& a, const TVec3d& b)
    {
        return {a.x + b.x, a.y + b.y, a.z + b.z};
    }
    friend constexpr TVec3d operator-(const TVec3d& a, const TVec3d& b)
    {
        return {a.x - b.x, a.y - b.y, a.z - b.z};
    }
    friend constexpr TVec3d operator*(const TVec3d& a, const TVec3d& b)
    {
        return {a.x * b.x, a.y * b.y, a.z * b.z};
    }
    friend constexpr TVec3d operator/(const TVec3d& a, const TVec3d& b)
    {
        return {a.x / b.x, a.y / b.y, a.z / b.z};
    }
    friend constexpr TVec3d operator*(const TVec3d& v, T s) { return {v.x * s, v.y * s, v.z * s}; }
    friend constexpr TVec3d operator*(T s, const TVec3d& v) { return {s * v.x, s * v.y, s * v.z}; }
    friend constexpr TVec3d operator/(const TVec3d& v, T s) { return {v.x / s, v.y / s, v.z / s}; }
    /// @}

    /// The sum of the products, added from `x` on.
    friend constexpr T dot(const TVec3d& a, const TVec3d& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
    /// The right-handed cross product `a` x `b`.
    friend constexpr TVec3d cross(const TVec3d& a, const TVec3d& b)
    {
        return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
    }
    /// The Euclidean length, by the square root in `T`; very small and very large components are not
    /// rescaled.
    friend T length(const TVec3d& v) { return std::sqrt(dot(v, v)); }

    /// Writes the name of the type and its components.
    template <typename Debug, typename Saver = QDebugStateSaver>
        requires std::is_same_v<Debug, QDebug>
    friend Debug operator<<(Debug debug, const TVec3d& v)
    {
        const Saver saver(debug);
        return debug.nospace() << "TVec3d(" << v.x << ", " << v.y << ", " << v.z << ')';
    }
};

/// Sixteen elements in one storage order; which of them form a row is the caller's convention. A
/// default-built matrix is the identity under either. There is no matrix product here: `+`, `-` and the
/// operators with a number work on each element.
template <typename T>
struct TMat4d
{
    /// The number of elements.
    static constexpr std::size_t Size = 16;

    /// The elements in storage order.
    std::array<T, Size> elements{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

    /// The element at `index`, 0 to 15, in storage order.
    /// @{
    constexpr T& operator[](std::size_t index) { return elements[index]; }
    constexpr const T& operator[](std::size_t index) const { return elements[index]; }
    /// @}

    /// Arithmetic on each component; `==` is exact.
    /// @{
    constexpr TMat4d& operator+=(const TMat4d& o)
    {
        for (std::size_t i = 0; i < Size; ++i) {
            elements[i] += o[i];
        }
        return *this;
    }
    constexpr TMat4d& operator-=(const TMat4d& o)
    {
        for (std::size_t i = 0; i < Size; ++i) {
            elements[i] -= o[i];
        }
        return *this;
    }
    constexpr TMat4d& operator*=(T s)
    {
        for (T& element : elements) {
            element *= s;
        }
        return *this;
    }
    constexpr TMat4d& operator/=(T s)
    {
        for (T& element : elements) {
            element /= s;
        }
        return *this;
    }

    friend constexpr bool operator==(const TMat4d&, const TMat4d&) = default;
    friend constexpr TMat4d operator-(TMat4d m) { return m *= T(-1); }
    friend constexpr TMat4d operator+(TMat4d a, const TMat4d& b) { return a += b; }
    friend constexpr TMat4d operator-(TMat4d a, const TMat4d& b) { return a -= b; }
    friend constexpr TMat4d operator*(TMat4d m, T s) { return m *= s; }
    friend constexpr TMat4d operator*(T s, TMat4d m) { return m *= s; }
    friend constexpr TMat4d operator/(TMat4d m, T s) { return m /= s; }
    /// @}

    /// Writes the name of the type and its components.
    template <typename Debug, typename Saver = QDebugStateSaver>
        requires std::is_same_v<Debug, QDebug>
    friend Debug operator<<(Debug debug, const TMat4d& m)
    {
        const Saver saver(debug);
        debug.nospace() << "TMat4d(" << m[0];
        for (std::size_t i = 1; i < Size; ++i) {
            debug << ", " << m[i];
        }
        return debug << ')';
    }
};

/// A quaternion, `w` being its real part; a default-built one turns nothing. There is no quaternion product
/// here: `+`, `-` and the operators with a number work on each component.
struct quat
{
    /// The components, in the order in which they lie.
    /// @{
    float x = 0;
    float y = 0;
    float z = 0;
    float w = 1;
    /// @}

    /// Arithmetic on each component; `==` is exact.
    /// @{
    constexpr quat& operator+=(const quat& o) { return *this = *this + o; }
    constexpr quat& operator-=(const quat& o) { return *this = *this - o; }
    constexpr quat& operator*=(float s) { return *this = *this * s; }
    constexpr quat& operator/=(float s) { return *this = *this / s; }

    friend constexpr bool operator==(const quat&, const quat&) = default;
    friend constexpr quat operator-(const quat& q) { return {-q.x, -q.y, -q.z, -q.w}; }
    friend constexpr quat operator+(const quat& a, const quat& b)
    {
        return {a.x + b.x, a.y + b.y, a.z + b.z, a.w + b.w};
    }
    friend constexpr quat operator-(const quat& a, const quat& b)
    {
        return {a.x - b.x, a.y - b.y, a.z - b.z, a.w - b.w};
    }
    friend constexpr quat operator*(const quat& q, float s) { return {q.x * s, q.y * s, q.z * s, q.w * s}; }
    friend constexpr quat operator*(float s, const quat& q) { return q * s; }
    friend constexpr quat operator/(const quat& q, float s) { return {q.x / s, q.y / s, q.z / s, q.w / s}; }
    /// @}

    /// Writes the name of the type and its components.
    template <typename Debug, typename Saver = QDebugStateSaver>
        requires std::is_same_v<Debug, QDebug>
    friend Debug operator<<(Debug debug, const quat& q)
    {
        const Saver saver(debug);
        return debug.nospace() << "quat(x " << q.x << ", y " << q.y << ", z " << q.z << ", w " << q.w << ')';
    }
};
