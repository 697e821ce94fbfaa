#pragma once

#include "SplinorEditorQt.h"

#include <QEvent>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace EditorTest {

using namespace Ovantis::SplinorEditorQtLib::v22;
using namespace Ovantis::SplinorLib::v19;

/// The three steps by which every layer comes to life.
template <class T, class... Args>
std::shared_ptr<T> Make(Args&&... iArgs)
{
    std::shared_ptr<T> object(new T(std::forward<Args>(iArgs)...));
    object->setShared(object);
    return object;
}

/// A layer whose drawing and event handling a test scripts, and which logs what it saw.
class ScriptedLayer : public Layer
{
public:
    ScriptedLayer(std::string iId, std::vector<std::string>* iLog) : Layer(iId.c_str()), mId(std::move(iId)), mLog(iLog) {}
    ~ScriptedLayer() override
    {
        if (mLog)
            mLog->push_back("~" + mId);
    }

    void draw(const Viewport& iViewport) const override
    {
        if (mLog)
            mLog->push_back("draw " + mId);
        if (onDraw)
            onDraw(iViewport);
    }

    bool handleEvent(QEvent* iEvent, Viewport& iViewport) override
    {
        if (mLog)
            mLog->push_back("event " + mId);
        return onEvent ? onEvent(iEvent, iViewport) : false;
    }

    std::function<void(const Viewport&)> onDraw;
    std::function<bool(QEvent*, Viewport&)> onEvent;

private:
    std::string mId;
    std::vector<std::string>* mLog;
};

} // namespace EditorTest
