#include "view/Viewport.h"

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

Viewport::Viewport() = default;

Viewport::Viewport(const Rectangle& iWindow, const Rectangle& iWorld) : mWindowBounds(iWindow), mWorldBounds(iWorld)
{
}

Viewport::~Viewport() = default;

void Viewport::store(Rectangle& ioField, const Rectangle& iValue)
{
    // Plain equality: the same values again, as in every step of an idle animation, tell nobody.
    if (iValue == ioField)
        return;
    ioField = iValue;
    notifyViewportChanged();
}

void Viewport::setWindowBounds(const Rectangle& iBounds)
{
    store(mWindowBounds, iBounds);
}

void Viewport::setWindowBounds(float iX, float iY, float iWidth, float iHeight)
{
    setWindowBounds(Rectangle(iX, iY, iWidth, iHeight));
}

void Viewport::setWorldBounds(const Rectangle& iBounds)
{
    store(mWorldBounds, iBounds);
}

void Viewport::setWorldBounds(float iX, float iY, float iWidth, float iHeight)
{
    setWorldBounds(Rectangle(iX, iY, iWidth, iHeight));
}

void Viewport::setWorldLimits(const Rectangle& iLimits)
{
    store(mWorldLimits, iLimits.width > 0.0 && iLimits.height > 0.0 ? iLimits : Rectangle());
}

void Viewport::setWorldLimits(float iX, float iY, float iWidth, float iHeight)
{
    setWorldLimits(Rectangle(iX, iY, iWidth, iHeight));
}

void Viewport::notifyViewportChanged()
{
    mObservers.notify(&ViewportObserver::viewportChanged, *this);
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
