#pragma once

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

/// An axis-aligned rectangle from (x, y) to (x + width, y + height). Which of its horizontal
/// edges is "top" depends on the space: curve space has y upward, window space downward.
template <typename T>
struct Rectangle
{
    T x{};
    T y{};
    T width{};
    T height{};

    constexpr Rectangle() = default;
    constexpr Rectangle(T iX, T iY, T iWidth, T iHeight) : x(iX), y(iY), width(iWidth), height(iHeight) {}

    constexpr bool operator==(const Rectangle& o) const
    {
        return x == o.x && y == o.y && width == o.width && height == o.height;
    }
    constexpr bool operator!=(const Rectangle& o) const { return !(*this == o); }
};

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
