#pragma once

#include "layers/Layer.h"
#include "render/ColorsObserver.h"

#include "splinorlib/HitRecord.h"
#include "splinorlib/Selection.h"
#include "splinorlib/SplinorContainer.h"
#include "splinorlib/SplinorObserver.h"

#include <QStringList>

class QMouseEvent;

#include <memory>

namespace Ovantis {
namespace SplinorEditorQtLib {
namespace v22 {

class GraphViewColors;

/// Gives each dotted name the shortest ending that tells it apart from the others: a.b.x, a.c.x
/// and d.y give b.x, c.x and y. Equal names stay whole.
void MakeUniqueLabels(const QStringList& iNames, QStringList& oLabels);

/// Shows the curves of a container and is where mouse work on them starts. It draws in four
/// stages (name labels; curves with their keyframes and tangents; velocity; acceleration),
/// lights up the item under the mouse, and keeps nothing from the curves between paints.
class CurveLayer : public Layer,
                   public SplinorLib::v19::SplinorObserver,
                   public SplinorLib::v19::ContainerObserver,
                   public SplinorLib::v19::SelectionObserver,
                   public ColorsObserver
{
    Q_OBJECT

public:
    CurveLayer(std::shared_ptr<SplinorLib::v19::SplinorContainer> iContainer,
               std::shared_ptr<SplinorLib::v19::Selection> iSelection,
               std::shared_ptr<const GraphViewColors> iColors);
    ~CurveLayer() override;

    void draw(const Viewport& iViewport) const override;
    bool handleEvent(QEvent* iEvent, Viewport& iViewport) override;

    void curveChanged(SplinorLib::v19::Splinor& iCurve) override;
    void containerChanged(SplinorLib::v19::SplinorContainer& iContainer) override;
    void selectionChanged(SplinorLib::v19::Selection& iSelection) override;
    void colorsChanged() override;

    void enableInteraction();
    void disableInteraction();
    bool isInteractionEnabled() const { return mInteractionEnabled; }
    void enableFullColors();
    void disableFullColors();
    bool hasFullColors() const { return mFullColors; }
    void setLabelsVisible(bool iVisible) { mLabelsVisible = iVisible; }
    bool areLabelsVisible() const { return mLabelsVisible; }

    const SplinorLib::v19::HitRecord& getHover() const { return mHover; }

private:
    void drawLabels(const std::vector<SplinorLib::v19::Splinor*>& iCurves, const Viewport& iViewport,
                    const GraphViewColors& iColours) const;
    void updateHover(const SplinorLib::v19::Vector2D<double>& iPoint, const Viewport& iViewport);
    /// Empties the hover record, asking for a repaint if that changed it.
    void clearHover();
    bool handleDoubleClick(const SplinorLib::v19::Vector2D<double>& iPoint, const Viewport& iViewport);
    bool handlePress(QMouseEvent& iEvent, Viewport& iViewport);
    /// Hands a press to a new tool and stands it in front of this layer if it takes the press.
    bool startTool(std::shared_ptr<Layer> iTool, QEvent* iPress, Viewport& iViewport);

    std::shared_ptr<SplinorLib::v19::SplinorContainer> mContainer;
    std::shared_ptr<const GraphViewColors> mColors;
    std::shared_ptr<SplinorLib::v19::Selection> mSelection;
    SplinorLib::v19::HitRecord mHover;
    bool mInteractionEnabled = true;
    bool mFullColors = true;
    bool mLabelsVisible = false;
};

} // namespace v22
} // namespace SplinorEditorQtLib
} // namespace Ovantis
