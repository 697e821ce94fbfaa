#pragma once

#include "SplinorEditorQt.h"

#include <QColor>
#include <QEvent>

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace EditorTest {

using namespace Ovantis::SplinorEditorQtLib::v22;
using namespace Ovantis::SplinorLib::v19;

using Rect = Viewport::Rectangle;
using V = Vector2D<double>;

/// The three steps by which every layer comes to life.
template <class T, class... Args> std::shared_ptr<T> Make(Args&&... iArgs)
{
    std::shared_ptr<T> object(new T(std::forward<Args>(iArgs)...));
    object->setShared(object);
    return object;
}

/// A curve through the given keys: linear segments, or Bezier ones where tangents matter.
inline std::shared_ptr<Splinor> MakeCurve(std::initializer_list<V> iKeys, bool iBezier = false)
{
    std::shared_ptr<Splinor> curve = Splinor::create();
    for (const V& key : iKeys)
        curve->insertSegment(Keyframe(key.x, key.y), iBezier ? Bezier::create() : Linear::create());
    return curve;
}

/// Whether each of the red, green and blue channels is within iTolerance of the expected one.
inline ::testing::AssertionResult NearColor(const QColor& iActual, const QColor& iExpected, int iTolerance)
{
    const auto near = [iTolerance](int iA, int iB) { return std::abs(iA - iB) <= iTolerance; };
    if (near(iActual.red(), iExpected.red()) && near(iActual.green(), iExpected.green())
        && near(iActual.blue(), iExpected.blue()))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "got " << iActual.name().toStdString() << ", expected "
                                         << iExpected.name().toStdString() << " within " << iTolerance;
}

/// Counts the notifications of a viewport.
struct ViewportCounter : ViewportObserver
{
    void viewportChanged(const Viewport&) override { ++count; }
    int count = 0;
};

/// A layer whose drawing and event handling a test scripts, and which logs what it saw.
class ScriptedLayer : public Layer
{
public:
    ScriptedLayer(std::string iId, std::vector<std::string>* iLog)
        : Layer(iId.c_str())
        , mId(std::move(iId))
        , mLog(iLog)
    {
    }
    ~ScriptedLayer() override { log("~" + mId); }

    void draw(const Viewport& iViewport) const override
    {
        log("draw " + mId);
        if (onDraw)
            onDraw(iViewport);
    }

    bool handleEvent(QEvent* iEvent, Viewport& iViewport) override
    {
        log("event " + mId);
        return onEvent ? onEvent(iEvent, iViewport) : false;
    }

    std::function<void(const Viewport&)> onDraw;
    std::function<bool(QEvent*, Viewport&)> onEvent;

private:
    void log(const std::string& iEntry) const
    {
        if (mLog)
            mLog->push_back(iEntry);
    }
    std::string mId;
    std::vector<std::string>* mLog;
};

} // namespace EditorTest
