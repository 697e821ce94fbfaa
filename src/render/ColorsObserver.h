#pragma once

#include "splinorlib/TrackedObserver.h"

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

/// Observer of the colour table: told after any colour has changed.
class ColorsObserver : public SplinorLib::v19::TrackedObserver
{
public:
    ColorsObserver();
    ~ColorsObserver() override;

    virtual void colorsChanged() {}
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
