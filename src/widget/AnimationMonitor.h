#pragma once

#include "layers/Layer.h"
#include "view/Viewport.h"

#include <memory>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
class Splinor;
}
} // namespace SplinorLib

namespace SplinorEditorQtLib {
namespace v22 {

/// An ease from 0 to 1 over 0 to 1 whose steepest part sits nearer the start when the view
/// shrinks (zooming in) and nearer the end when it grows, so that a zoom feels even.
std::shared_ptr<SplinorLib::v19::Splinor> MakeEasingCurve(double iStartSize, double iTargetSize);

/// Glides the world bounds to a target in ten steps of 33 ms, under two easing curves, one for
/// x and width and one for y and height. A mouse press stops it where it is (the press goes on
/// to the layers behind); a finished monitor leaves the tree at the next event.
class AnimationMonitor : public Layer
{
    Q_OBJECT

public:
    AnimationMonitor(std::shared_ptr<Viewport> iViewport, const Viewport::Rectangle& iTarget, int iDuration,
                     int iInterval);
    ~AnimationMonitor() override;

    bool handleEvent(QEvent* iEvent, Viewport& iViewport) override;

    bool isFinished() const { return mFinished; }

protected:
    void timerEvent(QTimerEvent* iEvent) override;

private:
    void stop();

    std::shared_ptr<Viewport> mViewport;
    Viewport::Rectangle mStart;
    Viewport::Rectangle mTarget;
    std::shared_ptr<SplinorLib::v19::Splinor> mEaseX;
    std::shared_ptr<SplinorLib::v19::Splinor> mEaseY;
    int mTimerId = 0;
    int mElapsed = 0;
    int mDuration;
    int mInterval;
    bool mFinished = false;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
