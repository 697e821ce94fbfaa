#pragma once

#include "view/ViewportObserver.h"

#include "splinorlib/Rectangle.h"
#include "splinorlib/SharedFromThis.h"
#include "splinorlib/SubjectBase.h"
#include "splinorlib/Vector2D.h"

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

/// The mapping between window pixels (y downward) and curve space (y upward): the part of the
/// widget drawn into, the part of curve space shown there, and the limits that keyframe edits
/// keep to. Every layer converts with windowToWorld, worldToWindow and pixelSize, so that all of
/// them round alike.
class Viewport : public SplinorLib::v19::SharedFromThis<Viewport>
{
public:
    using Rectangle = SplinorLib::v19::Rectangle<double>;
    using Vector = SplinorLib::v19::Vector2D<double>;

    Viewport();
    Viewport(const Rectangle& iWindow, const Rectangle& iWorld);
    Viewport(const Viewport&) = delete;
    Viewport& operator=(const Viewport&) = delete;
    ~Viewport();

    void subscribe(ViewportObserver& iObserver) { mObservers.subscribe(iObserver); }
    void unsubscribe(ViewportObserver& iObserver) { mObservers.unsubscribe(iObserver); }

    /// Each setter stores and notifies once when the value differs, and does nothing otherwise.
    /// Nothing is validated: a zero or negative size is stored as given.
    void setWindowBounds(const Rectangle& iBounds);
    void setWindowBounds(float iX, float iY, float iWidth, float iHeight);
    const Rectangle& getWindowBounds() const { return mWindowBounds; }

    void setWorldBounds(const Rectangle& iBounds);
    void setWorldBounds(float iX, float iY, float iWidth, float iHeight);
    const Rectangle& getWorldBounds() const { return mWorldBounds; }

    /// Limits without a positive width and height are stored as all zero: no limit.
    void setWorldLimits(const Rectangle& iLimits);
    void setWorldLimits(float iX, float iY, float iWidth, float iHeight);
    const Rectangle& getWorldLimits() const { return mWorldLimits; }

    /// Whether the user may pan and zoom; no notification.
    void setPanZoomEnabled(bool iEnabled) { mPanZoomEnabled = iEnabled; }
    bool isPanZoomEnabled() const { return mPanZoomEnabled; }

    // The conversions keep the order of operations of their formulas (multiply, then divide),
    // so that every caller gets the same bits for the same point.
    // They are inline: glyphs and picking convert hundreds of thousands of points a paint.
    Vector windowToWorld(const Vector& iWindow) const
    {
        const Rectangle& win = mWindowBounds;
        const Rectangle& world = mWorldBounds;
        return { (iWindow.x - win.x) * world.width / win.width + world.x,
            (win.height + win.y - iWindow.y) * world.height / win.height + world.y };
    }
    Vector worldToWindow(const Vector& iWorld) const
    {
        const Rectangle& win = mWindowBounds;
        const Rectangle& world = mWorldBounds;
        return { (iWorld.x - world.x) * win.width / world.width + win.x,
            (world.height + world.y - iWorld.y) * win.height / world.height + win.y };
    }
    /// World units per pixel on each axis.
    Vector pixelSize() const
    {
        return { mWorldBounds.width / mWindowBounds.width, mWorldBounds.height / mWindowBounds.height };
    }

private:
    void store(Rectangle& ioField, const Rectangle& iValue);
    void notifyViewportChanged();

    Rectangle mWindowBounds{0.0, 0.0, 100.0, 100.0};
    Rectangle mWorldBounds{0.0, 0.0, 1.0, 1.0};
    Rectangle mWorldLimits{0.0, 0.0, 0.0, 0.0};
    SplinorLib::v19::Private::SubjectBase<ViewportObserver>::ObserverSet mObservers;
    bool mPanZoomEnabled = true;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
