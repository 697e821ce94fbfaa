#include "view/ViewportObserver.h"

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

// Out of line so that the virtual table has one home.
ViewportObserver::ViewportObserver() = default;
ViewportObserver::~ViewportObserver() = default;

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
