#include "render/CurveLayer.h"

#include "layers/LayerManager.h"
#include "render/CurveGlyphs.h"
#include "render/DeferredCurveDrawing.h"
#include "render/GLSentries.h"
#include "render/GraphViewColors.h"
#include "tools/Picking.h"
#include "tools/RubberbandLayer.h"
#include "tools/SelectionOperations.h"
#include "view/Viewport.h"

#include "splinorlib/CurveFlags.h"
#include "splinorlib/Interpolator.h"
#include "splinorlib/Splinor.h"

#include <QMouseEvent>
#include <qopengl.h>

#include <algorithm>
#include <map>
#include <functional>
#include <vector>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

using SplinorLib::v19::HitRecord;
using SplinorLib::v19::Splinor;
using Vector = SplinorLib::v19::Vector2D<double>;

namespace {

// Labels stand one every this many pixels along the bottom of the curves.
constexpr int cLabelStep = 40;

constexpr unsigned int cStageMask = 0xe00d;

} // namespace

void MakeUniqueLabels(const QStringList& iNames, QStringList& oLabels)
{
    auto suffix = [](const QStringList& parts, int depth) {
        return QStringList(parts.mid(parts.size() - 1 - depth)).join(".");
    };
    std::vector<std::map<QString, int>> counts;
    std::vector<QStringList> split;
    for (const QString& name : iNames) {
        split.push_back(name.split(".", Qt::KeepEmptyParts));
        const QStringList& parts = split.back();
        if (counts.size() < std::size_t(parts.size()))
            counts.resize(std::size_t(parts.size()));
        for (int depth = 0; depth < parts.size(); ++depth)
            ++counts[std::size_t(depth)][suffix(parts, depth)];
    }
    for (int i = 0; i < iNames.size(); ++i) {
        const QStringList& parts = split[std::size_t(i)];
        QString label = iNames[i];
        for (int depth = 0; depth < parts.size(); ++depth) {
            const QString candidate = suffix(parts, depth);
            if (counts[std::size_t(depth)][candidate] == 1) {
                label = candidate;
                break;
            }
        }
        oLabels.append(label);
    }
}

CurveLayer::CurveLayer(std::shared_ptr<SplinorLib::v19::SplinorContainer> iContainer,
    std::shared_ptr<SplinorLib::v19::Selection> iSelection, std::shared_ptr<const GraphViewColors> iColors)
    : Layer("Curve Layer")
    , mContainer(std::move(iContainer))
    , mColors(std::move(iColors))
    , mSelection(std::move(iSelection))
{
    Splinor::subscribeGlobal(*this);
    mContainer->subscribe(*this);
    mSelection->subscribe(*this);
    mColors->subscribe(*this);
}

CurveLayer::~CurveLayer() = default;

void CurveLayer::draw(const Viewport& iViewport) const
{
    GraphViewColors colours(*mColors);
    if (!mFullColors) {
        for (int id : { GraphViewColors::cLockedColor, GraphViewColors::cUnselectedInteriorColor,
                 GraphViewColors::cUnselectedExteriorColor, GraphViewColors::cSelectedInteriorColor,
                 GraphViewColors::cSelectedExteriorColor, GraphViewColors::cSelectedItemColor,
                 GraphViewColors::cHoverColor, GraphViewColors::cVelocityColor, GraphViewColors::cAccelerationColor })
            colours.setColor(id, colours.getColor(id).darker(200));
    }

    std::vector<Splinor*> visible;
    visible.reserve(mContainer->size());
    for (const auto& curve : *mContainer)
        if (IsVisible(*curve))
            visible.push_back(curve.get());

    if (mLabelsVisible)
        drawLabels(visible, iViewport, colours);

    {
        GLAttributeSentry sentry(cStageMask);
        BeginCurveStage();
        // Only the glyphs of selected curves hide anything. Bare lines alone are drawn as they
        // come, and GL rasterises each while the next is sampled.
        const auto selected = [this](const Splinor* iCurve) { return mSelection->isSelected(*iCurve); };
        if (std::none_of(visible.begin(), visible.end(), selected)) {
            for (Splinor* curve : visible)
                DrawUnselectedCurve(*curve, iViewport, colours, mHover);
            DrawHoverItem(mHover, *mSelection, iViewport, colours);
        } else {
            std::vector<std::function<void()>> steps;
            for (Splinor* curve : visible)
                if (!selected(curve))
                    steps.push_back([&, curve] { DrawUnselectedCurve(*curve, iViewport, colours, mHover); });
            for (Splinor* curve : visible)
                if (selected(curve))
                    steps.push_back(
                        [&, curve] { DrawSelectedCurve(*curve, *mSelection, iViewport, colours, mHover); });
            steps.push_back([&] { DrawHoverItem(mHover, *mSelection, iViewport, colours); });
            DeferredCurveDrawing().finish(steps);
        }
    }
    {
        GLAttributeSentry sentry(cStageMask);
        BeginCurveStage();
        for (Splinor* curve : visible)
            if (IsVelocityVisible(*curve))
                DrawVelocity(*curve, iViewport, colours);
    }
    {
        GLAttributeSentry sentry(cStageMask);
        BeginCurveStage();
        for (Splinor* curve : visible)
            if (IsAccelerationVisible(*curve))
                DrawAcceleration(*curve, iViewport, colours);
    }
}

void CurveLayer::drawLabels(
    const std::vector<Splinor*>& iCurves, const Viewport& iViewport, const GraphViewColors& iColours) const
{
    QStringList names;
    for (const Splinor* curve : iCurves)
        names.append(QString::fromLatin1(curve->getName()));
    QStringList labels;
    MakeUniqueLabels(names, labels);
    const QColor colour = iColours.getColor(GraphViewColors::cGridColor).lighter(150);

    int windowX = cLabelStep;
    for (std::size_t i = 0; i < iCurves.size(); ++i, windowX += cLabelStep) {
        const Splinor& curve = *iCurves[i];
        const double x = iViewport.windowToWorld({ double(windowX), 0.0 }).x;
        const double value = curve.eval(x);
        const auto& segment = *curve.findSegment(x);
        const double slope = segment.getInterpolator()->evalFirstDerivative(x, segment);
        const Vector p = iViewport.worldToWindow({ x, value });
        // Above a falling or level curve, below a rising one: clear of the line either way.
        const int y = slope <= 0.0 ? int(p.y) - 4 : int(p.y) + 12;
        emit requestDrawText(int(p.x), y, labels[int(i)], colour);
    }
}

bool CurveLayer::handleEvent(QEvent* iEvent, Viewport& iViewport)
{
    switch (iEvent->type()) {
    case QEvent::MouseButtonPress:
        return mInteractionEnabled && handlePress(*static_cast<QMouseEvent*>(iEvent), iViewport);
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove:
        if (mInteractionEnabled) {
            const auto* mouse = static_cast<QMouseEvent*>(iEvent);
            updateHover({ double(mouse->x()), double(mouse->y()) }, iViewport);
        }
        return false;
    case QEvent::MouseButtonDblClick: {
        const auto* mouse = static_cast<QMouseEvent*>(iEvent);
        return handleDoubleClick({ double(mouse->x()), double(mouse->y()) }, iViewport);
    }
    default:
        return false;
    }
}

bool CurveLayer::handlePress(QMouseEvent& iEvent, Viewport& iViewport)
{
    // The item under the press must not stay lit during whatever follows.
    clearHover();
    const Qt::KeyboardModifiers modifiers = iEvent.modifiers();
    if (iEvent.button() == Qt::LeftButton && (modifiers & Qt::ControlModifier) && (modifiers & Qt::AltModifier)) {
        // Control and Alt insert a keyframe here; the insertion tool plugs in at this point.
        return true;
    }
    if (iEvent.button() != Qt::LeftButton)
        return false;

    const Vector point(double(iEvent.x()), double(iEvent.y()));
    HitRecord hit;
    if (!PickPoint(*mContainer, *mSelection, iViewport, point, hit)) {
        auto band = std::make_shared<RubberbandLayer>(mContainer, mSelection, mColors);
        band->setShared(band);
        return startTool(band, &iEvent, iViewport);
    }

    // Shift adds, and decides before Control; Control takes a selected item away (and starts no
    // drag); a plain press on a selected item keeps the selection, so that it all drags.
    const bool selected = mSelection->isSelected(hit);
    if (modifiers & Qt::ShiftModifier) {
        SelectHit(*mSelection, hit, false);
    } else if (modifiers & Qt::ControlModifier) {
        if (selected) {
            DeselectHit(*mSelection, hit, false);
            return true;
        }
    } else if (!selected) {
        const std::shared_ptr<Splinor> curve = hit.getCurve();
        if (curve && mSelection->isSelected(*curve))
            DeselectSelectedParts(*mSelection);
        else
            mSelection->clear();
        SelectHit(*mSelection, hit, false);
    }

    // The drags of keyframes and tangent handles start here, once they exist; curves, segments
    // and tangent lines start none.
    return true;
}

bool CurveLayer::startTool(std::shared_ptr<Layer> iTool, QEvent* iPress, Viewport& iViewport)
{
    const std::shared_ptr<LayerManager> manager = getManager();
    if (!manager || !iTool->handleEvent(iPress, iViewport))
        return false;
    manager->pushLayer(std::move(iTool));
    return true;
}

bool CurveLayer::handleDoubleClick(const Vector& iPoint, const Viewport& iViewport)
{
    HitRecord hit;
    if (PickPoint(*mContainer, *mSelection, iViewport, iPoint, hit)) {
        // The whole curve, but not the open ends beyond its first and last keys.
        const std::shared_ptr<Splinor> curve = hit.getCurve();
        SelectCurveCompletely(*mSelection, *curve);
        mSelection->deselect(*curve->begin());
        mSelection->deselect(*--curve->end());
    }
    return true;
}

void CurveLayer::updateHover(const Vector& iPoint, const Viewport& iViewport)
{
    HitRecord hit;
    PickPoint(*mContainer, *mSelection, iViewport, iPoint, hit);
    // Parts of a locked curve do not light up; the curve itself does.
    if (hit.getType() != HitRecord::cNothing && hit.getType() != HitRecord::cCurve) {
        const std::shared_ptr<Splinor> curve = hit.getCurve();
        if (curve && IsLocked(*curve))
            hit.reset();
    }
    if (hit != mHover) {
        mHover = hit;
        emit notifyLayerChanged();
    }
}

void CurveLayer::clearHover()
{
    if (mHover.isEmpty())
        return;
    mHover.reset();
    emit notifyLayerChanged();
}

void CurveLayer::curveChanged(Splinor&)
{
    // The record may name an item that the change removed.
    clearHover();
    emit notifyLayerChanged();
}

void CurveLayer::containerChanged(SplinorLib::v19::SplinorContainer&)
{
    clearHover();
    emit notifyLayerChanged();
}

void CurveLayer::selectionChanged(SplinorLib::v19::Selection&)
{
    emit notifyLayerChanged();
}

void CurveLayer::colorsChanged()
{
    emit notifyLayerChanged();
}

void CurveLayer::enableInteraction()
{
    if (mInteractionEnabled)
        return;
    mInteractionEnabled = true;
    emit notifyLayerChanged();
}

void CurveLayer::disableInteraction()
{
    if (!mInteractionEnabled)
        return;
    mInteractionEnabled = false;
    clearHover();
    emit notifyLayerChanged();
}

void CurveLayer::enableFullColors()
{
    if (mFullColors)
        return;
    mFullColors = true;
    emit notifyLayerChanged();
}

void CurveLayer::disableFullColors()
{
    if (!mFullColors)
        return;
    mFullColors = false;
    clearHover();
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
