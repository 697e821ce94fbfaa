#include "splinorlib/Interpolator.h"

#include "splinorlib/Segment.h"

#include <algorithm>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {

Interpolator::Interpolator(std::string iExpression) : mExpression(std::move(iExpression)) {}

Interpolator::~Interpolator() = default;

double Interpolator::sampleX(double iX0, double iX1, int iIndex, int iCount)
{
    if (iCount < 2 || iIndex == 0)
        return iX0;
    if (iIndex == iCount - 1)
        return iX1;
    return iX0 + (iX1 - iX0) * (double(iIndex) / double(iCount - 1));
}

double Interpolator::evalOrder(const Segment& iSegment, double iX, int iOrder) const
{
    const Keyframe* left = iSegment.getLeftKey();
    const Keyframe* right = iSegment.getRightKey();
    if (!left || !right) {
        if (iOrder != 0)
            return 0.0;
        return left ? left->getY() : right ? right->getY() : 0.0;
    }
    return evalInterior(iSegment, std::clamp(iX, left->getX(), right->getX()), iOrder);
}

void Interpolator::sampleOrder(const Segment& iSegment, double iX0, double iX1, int iCount, int iOrder,
                               std::vector<Vector2D<double>>& oPoints) const
{
    oPoints.clear();
    if (iCount <= 0)
        return;
    const Keyframe* left = iSegment.getLeftKey();
    const Keyframe* right = iSegment.getRightKey();
    if (left && right) {
        // Clamping both ends keeps the samples in x order for the interpolator's own walk.
        const double x0 = std::clamp(iX0, left->getX(), right->getX());
        const double x1 = std::clamp(iX1, left->getX(), right->getX());
        if (x0 <= x1 && iX0 == x0 && iX1 == x1) {
            sampleInterior(iSegment, x0, x1, iCount, iOrder, oPoints);
            return;
        }
    }
    oPoints.reserve(std::size_t(iCount));
    for (int i = 0; i < iCount; ++i) {
        const double x = sampleX(iX0, iX1, i, iCount);
        oPoints.emplace_back(x, evalOrder(iSegment, x, iOrder));
    }
}

void Interpolator::sampleInterior(const Segment& iSegment, double iX0, double iX1, int iCount, int iOrder,
                                  std::vector<Vector2D<double>>& oPoints) const
{
    oPoints.reserve(std::size_t(iCount));
    for (int i = 0; i < iCount; ++i) {
        const double x = sampleX(iX0, iX1, i, iCount);
        oPoints.emplace_back(x, evalInterior(iSegment, x, iOrder));
    }
}

void Interpolator::sampleValues(const Segment& iSegment, double iX0, double iX1, int iCount,
                                std::vector<Vector2D<double>>& oPoints) const
{
    sampleOrder(iSegment, iX0, iX1, iCount, 0, oPoints);
}

double Interpolator::evalFirstDerivative(double iX, const Segment& iSegment) const
{
    return evalOrder(iSegment, iX, 1);
}

void Interpolator::sampleFirstDerivative(const Segment& iSegment, double iX0, double iX1, int iCount,
                                         std::vector<Vector2D<double>>& oPoints) const
{
    sampleOrder(iSegment, iX0, iX1, iCount, 1, oPoints);
}

void Interpolator::sampleSecondDerivative(const Segment& iSegment, double iX0, double iX1, int iCount,
                                          std::vector<Vector2D<double>>& oPoints) const
{
    sampleOrder(iSegment, iX0, iX1, iCount, 2, oPoints);
}

double Interpolator::eval(double iX, const Segment& iSegment) const
{
    return evalOrder(iSegment, iX, 0);
}

double Interpolator::evalSecondDerivative(double iX, const Segment& iSegment) const
{
    return evalOrder(iSegment, iX, 2);
}

} // namespace v19
} // namespace SplinorLib
} // namespace Ovantis
