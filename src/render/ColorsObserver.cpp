#include "render/ColorsObserver.h"

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

// Out of line so that the virtual table has one home.
ColorsObserver::ColorsObserver() = default;
ColorsObserver::~ColorsObserver() = default;

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
