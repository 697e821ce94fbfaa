#pragma once

#include <cmath>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

/// A point or a vector in the plane. Curve space has y upward; window space (pixels) y downward.
template <typename T>
struct Vector2D
{
    T x{};
    T y{};

    constexpr Vector2D() = default;
    constexpr Vector2D(T iX, T iY) : x(iX), y(iY) {}

    constexpr Vector2D operator+(const Vector2D& o) const { return {x + o.x, y + o.y}; }
    constexpr Vector2D operator-(const Vector2D& o) const { return {x - o.x, y - o.y}; }
    constexpr Vector2D operator-() const { return {-x, -y}; }
    constexpr Vector2D operator*(T s) const { return {x * s, y * s}; }
    constexpr Vector2D operator/(T s) const { return {x / s, y / s}; }
    Vector2D& operator+=(const Vector2D& o) { x += o.x; y += o.y; return *this; }
    Vector2D& operator-=(const Vector2D& o) { x -= o.x; y -= o.y; return *this; }
    Vector2D& operator*=(T s) { x *= s; y *= s; return *this; }

    constexpr bool operator==(const Vector2D& o) const { return x == o.x && y == o.y; }
    constexpr bool operator!=(const Vector2D& o) const { return !(*this == o); }
};

template <typename T>
constexpr Vector2D<T> operator*(T s, const Vector2D<T>& v) { return v * s; }

template <typename T>
constexpr T Dot(const Vector2D<T>& a, const Vector2D<T>& b) { return a.x * b.x + a.y * b.y; }

template <typename T>
constexpr T LengthSquared(const Vector2D<T>& v) { return Dot(v, v); }

template <typename T>
T Length(const Vector2D<T>& v) { return std::hypot(v.x, v.y); }

template <typename T>
bool IsFinite(const Vector2D<T>& v) { return std::isfinite(v.x) && std::isfinite(v.y); }

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
