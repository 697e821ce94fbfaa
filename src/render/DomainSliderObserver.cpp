#include "render/DomainSliderObserver.h"

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

// Out of line so that the virtual table has one home.
DomainSliderObserver::DomainSliderObserver() = default;
DomainSliderObserver::~DomainSliderObserver() = default;

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
