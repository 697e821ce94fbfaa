#include "commands/UndoStack.h"

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

UndoStack::UndoStack() = default;
UndoStack::~UndoStack() = default;

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
