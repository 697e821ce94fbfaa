#pragma once

#include "layers/Layer.h"

#include "splinorlib/HitRecord.h"
#include "splinorlib/Vector2D.h"

#include <memory>

namespace Ovantis {
namespace SplinorLib {
namespace v19 {
class Selection;
class SplinorContainer;
} // namespace v19
} // namespace SplinorLib

namespace SplinorEditorQtLib {
namespace v22 {

class DragDelay;
class GraphViewColors;

/// A rectangle selection, live while the band grows and shrinks, from a left press in empty
/// space to its release. Plain, the selection follows the band; with Shift the band adds what it
/// touches and gives up what it leaves unless that was selected before; with Control it takes
/// away what it touches and gives back what it leaves. A curve, once touched, stays selected.
/// The corners are kept in curve space, so the band survives a change of the view.
class RubberbandLayer : public Layer
{
    Q_OBJECT

public:
    RubberbandLayer(std::shared_ptr<SplinorLib::v19::SplinorContainer> iContainer,
                    std::shared_ptr<SplinorLib::v19::Selection> iSelection,
                    std::shared_ptr<const GraphViewColors> iColors);
    ~RubberbandLayer() override;

    void draw(const Viewport& iViewport) const override;
    bool handleEvent(QEvent* iEvent, Viewport& iViewport) override;

private:
    bool isBanding() const;
    void follow(const SplinorLib::v19::Vector2D<double>& iPoint, const Viewport& iViewport);

    bool mAdding = false;
    bool mRemoving = false;
    std::unique_ptr<DragDelay> mDelay;
    SplinorLib::v19::Vector2D<double> mStart;
    SplinorLib::v19::Vector2D<double> mEnd;
    std::shared_ptr<SplinorLib::v19::SplinorContainer> mContainer;
    SplinorLib::v19::HitSet mPressHits;
    SplinorLib::v19::HitSet mLastHits;
    std::shared_ptr<SplinorLib::v19::Selection> mSelection;
    std::shared_ptr<const GraphViewColors> mColors;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
