#include "render/GraphViewColors.h"

#include <cstddef>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

namespace {
bool IsValidId(int iId)
{
    return iId >= 0 && iId < GraphViewColors::cColorCount;
}
} // namespace

GraphViewColors::GraphViewColors()
    : mTable {
        QColor(46, 46, 46), // cBackgroundColor
        QColor(81, 81, 81), // cGridColor
        QColor(255, 255, 255), // cRubberbandColor
        QColor(255, 102, 51), // cReservedColor3
        QColor(255, 102, 51), // cLockedColor
        QColor(255, 155, 0), // cLockedSelectedColor
        QColor(0, 255, 0), // cUnselectedInteriorColor
        QColor(0, 165, 0), // cUnselectedExteriorColor
        QColor(100, 255, 100), // cUnselectedTangentColor
        QColor(0, 255, 255), // cSelectedInteriorColor
        QColor(0, 191, 191), // cSelectedExteriorColor
        QColor(0, 255, 255), // cSelectedTangentColor
        QColor(255, 255, 0), // cSelectedItemColor
        QColor(255, 255, 255), // cHoverColor
        QColor(255, 204, 255), // cVelocityColor
        QColor(255, 102, 170), // cAccelerationColor
        QColor(255, 255, 255), // cReadoutTextColor
        QColor(204, 0, 0), // cReservedColor17
        QColor(255, 165, 0), // cDomainSliderColor
        QColor(204, 255, 51), // cInsertMarkerColor
        QColor(255, 255, 51), // cFocusColor
    }
{
}

GraphViewColors::GraphViewColors(const GraphViewColors& iOther)
    : mObservers()
    , mTable(iOther.mTable)
{
}

GraphViewColors& GraphViewColors::operator=(const GraphViewColors& iOther)
{
    if (*this == iOther)
        return *this;
    mTable = iOther.mTable;
    notifyChanged();
    return *this;
}

const QColor& GraphViewColors::getColor(int iId) const
{
    static const QColor invalid;
    return IsValidId(iId) ? mTable[static_cast<std::size_t>(iId)] : invalid;
}

void GraphViewColors::setColor(int iId, const QColor& iColor)
{
    if (!IsValidId(iId))
        return;
    QColor& entry = mTable[static_cast<std::size_t>(iId)];
    if (entry != iColor) {
        entry = iColor;
        notifyChanged();
    }
}

void GraphViewColors::subscribe(ColorsObserver& iObserver) const
{
    mObservers.subscribe(iObserver);
}

void GraphViewColors::unsubscribe(ColorsObserver& iObserver) const
{
    mObservers.unsubscribe(iObserver);
}

void GraphViewColors::notifyChanged()
{
    mObservers.notify(&ColorsObserver::colorsChanged);
}

bool operator==(const GraphViewColors& iLeft, const GraphViewColors& iRight)
{
    for (int id = 0; id < GraphViewColors::cColorCount; ++id) {
        if (iLeft.getColor(id) != iRight.getColor(id))
            return false;
    }
    return true;
}

bool operator!=(const GraphViewColors& iLeft, const GraphViewColors& iRight)
{
    return !(iLeft == iRight);
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
