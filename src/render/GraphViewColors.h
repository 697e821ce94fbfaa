#pragma once

#include "render/ColorsObserver.h"

#include "splinorlib/SubjectBase.h"

#include <QColor>

#include <vector>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

/// The colour table of one view: 21 entries, each under a fixed id, and the observers to tell
/// when any of them changes. Layers read it at every draw.
class GraphViewColors
{
public:
    static constexpr int cBackgroundColor = 0;
    static constexpr int cGridColor = 1;
    static constexpr int cRubberbandColor = 2;
    static constexpr int cReservedColor3 = 3;
    static constexpr int cLockedColor = 4;
    static constexpr int cLockedSelectedColor = 5;
    static constexpr int cUnselectedInteriorColor = 6;
    static constexpr int cUnselectedExteriorColor = 7;
    static constexpr int cUnselectedTangentColor = 8;
    static constexpr int cSelectedInteriorColor = 9;
    static constexpr int cSelectedExteriorColor = 10;
    static constexpr int cSelectedTangentColor = 11;
    static constexpr int cSelectedItemColor = 12;
    static constexpr int cHoverColor = 13;
    static constexpr int cVelocityColor = 14;
    static constexpr int cAccelerationColor = 15;
    static constexpr int cReadoutTextColor = 16;
    static constexpr int cReservedColor17 = 17;
    static constexpr int cDomainSliderColor = 18;
    static constexpr int cInsertMarkerColor = 19;
    static constexpr int cFocusColor = 20;
    static constexpr int cColorCount = 21;

    /// The default colours.
    GraphViewColors();
    /// The colours only: a copy starts with no observers.
    GraphViewColors(const GraphViewColors& iOther);
    /// Takes the other table's colours and tells this table's observers once, unless the two
    /// tables were already equal. Observers are not exchanged.
    GraphViewColors& operator=(const GraphViewColors& iOther);

    /// For an id outside [0, cColorCount), an invalid QColor.
    const QColor& getColor(int iId) const;
    /// An id outside [0, cColorCount) is ignored. Observers hear of a change only.
    void setColor(int iId, const QColor& iColor);

    // Const, so that a layer holding the table read-only may still listen to it.
    void subscribe(ColorsObserver& iObserver) const;
    void unsubscribe(ColorsObserver& iObserver) const;

private:
    void notifyChanged();

    using ObserverSet = SplinorLib::v19::Private::SubjectBase<ColorsObserver, 1>::ObserverSet;

    // The subscribers are not part of the table's value.
    mutable ObserverSet mObservers;
    std::vector<QColor> mTable;
};

bool operator==(const GraphViewColors& iLeft, const GraphViewColors& iRight);
bool operator!=(const GraphViewColors& iLeft, const GraphViewColors& iRight);

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
