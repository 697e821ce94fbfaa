#pragma once

#include "splinorlib/TrackedObserver.h"

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

class DomainSlider;

/// Observer of the domain slider: its showing, hiding and moving.
class DomainSliderObserver : public SplinorLib::v19::TrackedObserver
{
public:
    DomainSliderObserver();
    ~DomainSliderObserver() override;

    virtual void shown(DomainSlider&) {}
    virtual void hidden(DomainSlider&) {}
    virtual void valueChanged(DomainSlider&) {}
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
