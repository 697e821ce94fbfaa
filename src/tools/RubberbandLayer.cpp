#include "tools/RubberbandLayer.h"

#include "render/GLSentries.h"
#include "render/GraphViewColors.h"
#include "tools/DragDelay.h"
#include "tools/Picking.h"
#include "tools/SelectionOperations.h"
#include "view/Viewport.h"

#include "splinorlib/Selection.h"
#include "splinorlib/SplinorContainer.h"

#include <QMouseEvent>
#include <qopengl.h>

#include <algorithm>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

using SplinorLib::v19::HitRecord;
using SplinorLib::v19::HitSet;
using Vector = SplinorLib::v19::Vector2D<double>;

namespace {

constexpr double cDeadZone = 3.0;        // pixels a press may wander and still be a click
constexpr GLfloat cVeilAlpha = 0.3f;

bool Contains(const HitSet& iSet, const HitRecord& iRecord)
{
    return iSet.find(iRecord) != iSet.end();
}

Vector PointOf(const QMouseEvent& iEvent)
{
    return {double(iEvent.x()), double(iEvent.y())};
}

} // namespace

RubberbandLayer::RubberbandLayer(std::shared_ptr<SplinorLib::v19::SplinorContainer> iContainer,
                                 std::shared_ptr<SplinorLib::v19::Selection> iSelection,
                                 std::shared_ptr<const GraphViewColors> iColors)
    : mContainer(std::move(iContainer)), mSelection(std::move(iSelection)), mColors(std::move(iColors))
{
}

RubberbandLayer::~RubberbandLayer() = default;

bool RubberbandLayer::isBanding() const
{
    return mDelay && mDelay->isDragging();
}

bool RubberbandLayer::handleEvent(QEvent* iEvent, Viewport& iViewport)
{
    switch (iEvent->type()) {
    case QEvent::MouseButtonPress: {
        const auto* mouse = static_cast<QMouseEvent*>(iEvent);
        if (mouse->button() != Qt::LeftButton)
            return false;
        mAdding = mouse->modifiers() & Qt::ShiftModifier;
        mRemoving = (mouse->modifiers() & Qt::ControlModifier) && !mAdding;
        mDelay = std::make_unique<DragDelay>(PointOf(*mouse), cDeadZone);
        mStart = mEnd = iViewport.windowToWorld(PointOf(*mouse));
        mLastHits.clear();
        mPressHits.clear();
        if (!mAdding && !mRemoving)
            mSelection->clear();
        else
            GetSelected(*mSelection, mPressHits);
        return true;
    }
    case QEvent::MouseMove:
        if (mDelay) {
            const Vector point = PointOf(*static_cast<QMouseEvent*>(iEvent));
            mDelay->nextPoint(point);
            if (mDelay->isDragging())
                follow(point, iViewport);
        }
        return true;
    case QEvent::MouseButtonRelease: {
        if (static_cast<QMouseEvent*>(iEvent)->button() != Qt::LeftButton)
            return false;
        if (!mAdding && !mRemoving && !isBanding())
            mSelection->clear();
        removeFromManager();
        return false;
    }
    default:
        return false;
    }
}

void RubberbandLayer::follow(const Vector& iPoint, const Viewport& iViewport)
{
    mEnd = iViewport.windowToWorld(iPoint);
    const Vector start = iViewport.worldToWindow(mStart);
    const SplinorLib::v19::Rectangle<double> band(std::min(start.x, iPoint.x), std::min(start.y, iPoint.y),
                                                  std::abs(iPoint.x - start.x), std::abs(iPoint.y - start.y));
    HitSet hits;
    PickRegion(*mContainer, *mSelection, iViewport, band, hits);

    for (const HitRecord& record : hits) {
        auto stayed = mLastHits.find(record);
        if (stayed != mLastHits.end()) {
            mLastHits.erase(stayed);
        } else if (!mRemoving) {
            SelectHit(*mSelection, record, true);
        } else if (record.getType() != HitRecord::cCurve) {
            DeselectHit(*mSelection, record, true);
        }
    }
    // What is left has left the band.
    for (const HitRecord& record : mLastHits) {
        const bool before = Contains(mPressHits, record);
        if (mRemoving) {
            if (before)
                SelectHit(*mSelection, record, true);
        } else if (record.getType() != HitRecord::cCurve && !(mAdding && before)) {
            DeselectHit(*mSelection, record, true);
        }
    }
    mLastHits = std::move(hits);
    emit notifyLayerChanged();
}

void RubberbandLayer::draw(const Viewport& iViewport) const
{
    if (!isBanding())
        return;
    GLAttributeSentry sentry(0x600d);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    const QColor& background = mColors->getColor(GraphViewColors::cBackgroundColor);
    glColor4f(GLfloat(background.redF()), GLfloat(background.greenF()), GLfloat(background.blueF()), cVeilAlpha);

    const double left = std::min(mStart.x, mEnd.x);
    const double right = std::max(mStart.x, mEnd.x);
    const double bottom = std::min(mStart.y, mEnd.y);
    const double top = std::max(mStart.y, mEnd.y);
    const Viewport::Rectangle& w = iViewport.getWorldBounds();
    // The veil outside the band: above and below at full width, left and right as high as it.
    auto veil = [](double x0, double y0, double x1, double y1) {
        if (x1 - x0 > 0.0 && y1 - y0 > 0.0)
            glRectf(GLfloat(x0), GLfloat(y0), GLfloat(x1), GLfloat(y1));
    };
    veil(w.x, top, w.x + w.width, w.y + w.height);
    veil(w.x, w.y, w.x + w.width, bottom);
    veil(w.x, bottom, left, top);
    veil(right, bottom, w.x + w.width, top);

    if (right - left > 0.0 && top - bottom > 0.0) {
        const QColor& outline = mColors->getColor(GraphViewColors::cRubberbandColor);
        glColor3f(GLfloat(outline.redF()), GLfloat(outline.greenF()), GLfloat(outline.blueF()));
        glLineWidth(1.0f);
        glPolygonMode(GL_FRONT, GL_LINE);
        glRectf(GLfloat(left), GLfloat(bottom), GLfloat(right), GLfloat(top));
    }
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
