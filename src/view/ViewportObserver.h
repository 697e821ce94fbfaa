#pragma once

#include "splinorlib/TrackedObserver.h"

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

class Viewport;

/// Observer of a Viewport: told after every change of its bounds.
class ViewportObserver : public SplinorLib::v19::TrackedObserver
{
public:
    ViewportObserver();
    ~ViewportObserver() override;

    virtual void viewportChanged(const Viewport&) {}
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
