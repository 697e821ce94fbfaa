#include "widget/AnimationMonitor.h"

#include "splinorlib/Interpolators.h"
#include "splinorlib/Splinor.h"

#include <QEvent>
#include <QTimerEvent>

#include <algorithm>
#include <cmath>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

using SplinorLib::v19::Bezier;
using SplinorLib::v19::Constant;
using SplinorLib::v19::Keyframe;
using SplinorLib::v19::Splinor;

std::shared_ptr<Splinor> MakeEasingCurve(double iStartSize, double iTargetSize)
{
    const double ratio = iTargetSize / iStartSize;
    double k = ratio / (ratio + 1.0);
    if (!std::isfinite(k) || k < 0.0 || k > 1.0) // a start of zero size: ease evenly
        k = 0.5;

    auto curve = Splinor::create();
    Keyframe key;
    key.set(0.0, 0.0);
    Splinor::iterator ease = curve->insertSegment(key, Bezier::create());
    key.set(1.0, 1.0);
    curve->insertSegment(key, Constant::create());

    // Flat handles that together span the segment: the curve starts and ends at rest, and is
    // steepest where the out handle from 0 and the in handle from 1 meet, at k.
    SplinorLib::v19::Tangent* out = ease->getOutTangent();
    SplinorLib::v19::Tangent* in = ease->getInTangent();
    out->setWeighted(true);
    in->setWeighted(true);
    out->set(k, 0.0);
    in->set(k - 1.0, 0.0);
    return curve;
}

AnimationMonitor::AnimationMonitor(std::shared_ptr<Viewport> iViewport, const Viewport::Rectangle& iTarget,
                                   int iDuration, int iInterval)
    : mViewport(std::move(iViewport)), mTarget(iTarget), mDuration(iDuration), mInterval(iInterval)
{
    mStart = mViewport->getWorldBounds();
    mEaseX = MakeEasingCurve(mStart.width, mTarget.width);
    mEaseY = MakeEasingCurve(mStart.height, mTarget.height);
    mTimerId = startTimer(mInterval, Qt::CoarseTimer);
}

AnimationMonitor::~AnimationMonitor()
{
    stop();
}

void AnimationMonitor::stop()
{
    if (mTimerId != 0)
        killTimer(mTimerId);
    mTimerId = 0;
}

void AnimationMonitor::timerEvent(QTimerEvent* iEvent)
{
    if (iEvent->timerId() != mTimerId || mTimerId == 0)
        return;
    mElapsed += mInterval;
    const double t = std::clamp(double(mElapsed) / double(mDuration), 0.0, 1.0);
    const double fx = mEaseX->eval(t);
    const double fy = mEaseY->eval(t);
    auto blend = [](double start, double target, double f) { return (1.0 - f) * start + f * target; };
    mViewport->setWorldBounds(Viewport::Rectangle(blend(mStart.x, mTarget.x, fx), blend(mStart.y, mTarget.y, fy),
                                                  blend(mStart.width, mTarget.width, fx),
                                                  blend(mStart.height, mTarget.height, fy)));
    if (t == 1.0) {
        stop();
        mFinished = true;
    }
}

bool AnimationMonitor::handleEvent(QEvent* iEvent, Viewport&)
{
    if (iEvent->type() == QEvent::MouseButtonPress) {
        stop();
        removeFromManager();
    }
    if (mFinished)
        removeFromManager();
    return false;
}

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
