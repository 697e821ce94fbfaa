#pragma once

#include "splinorlib/SharedFromThis.h"

#include <QUndoStack>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

/// Holds the one QUndoStack that every edit of the widget goes through. The widget runs
/// commands on it and never undoes them itself: undo and redo are the host's to offer.
class UndoStack : public SplinorLib::v19::SharedFromThis<UndoStack>
{
public:
    UndoStack();
    virtual ~UndoStack();
    UndoStack(const UndoStack&) = delete;
    UndoStack& operator=(const UndoStack&) = delete;

    QUndoStack& getStack() { return mStack; }
    const QUndoStack& getStack() const { return mStack; }

private:
    QUndoStack mStack;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
