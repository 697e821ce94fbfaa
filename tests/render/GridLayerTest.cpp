#include "widget/WidgetHarness.h"

#include <gtest/gtest.h>

#include <limits>

using namespace EditorTest;

namespace {

/// Records the labels a grid asks for while it draws.
struct LabelRecorder
{
    struct Label
    {
        int x;
        int y;
        std::string text;
    };

    explicit LabelRecorder(ShownWidget& iShown)
        : shown(iShown)
    {
        QObject::connect(shown.widget->getRootLayer()->findLayer("Grid Layer").get(), &Layer::requestDrawText,
            [this](int iX, int iY, const QString& iText, const QColor&) {
                labels.push_back({ iX, iY, iText.toStdString() });
            });
    }
    /// The labels of one paint alone, with the bounds given.
    void paint(const Rect& iBounds)
    {
        shown.widget->getViewport()->setWorldBounds(iBounds);
        shown.grab();
        labels.clear();
        shown.widget->grabFramebuffer();
    }
    /// Those along the bottom (x values), or those in the left column (y values), which stand at x = 2.
    std::vector<std::string> texts(bool iAlongX) const
    {
        std::vector<std::string> result;
        for (const Label& label : labels)
            if ((label.x == 2) != iAlongX)
                result.push_back(label.text);
        return result;
    }

    ShownWidget& shown;
    std::vector<Label> labels;
};

bool IsGrey(const QColor& iPixel, int iGrey)
{
    return iPixel == QColor(iGrey, iGrey, iGrey);
}

} // namespace

TEST(GridLayer, thins_its_labels_to_what_fits_and_draws_coarse_lines_in_the_grid_colour_and_fine_ones_faded)
{
    ShownWidget shown(800, 600);
    LabelRecorder recorder(shown);

    // One unit is 8 pixels on x and a tenth is 6 pixels on y: fine lines at 1 and 0.1.
    recorder.paint(Rect(0, 0, 100, 10));

    // Three-digit labels do not fit 8 pixels apart, so they stand ten units apart; on y the
    // label strip is taller than a tenth, so they stand one unit apart, with no decimals left.
    EXPECT_EQ(
        recorder.texts(true), (std::vector<std::string> { "10", "20", "30", "40", "50", "60", "70", "80", "90" }));
    EXPECT_EQ(recorder.texts(false), (std::vector<std::string> { "1", "2", "3", "4", "5", "6", "7", "8", "9" }));
    const LabelRecorder::Label ten = recorder.labels.front();
    EXPECT_NEAR(ten.x, 80 - QFontMetrics(shown.widget->getFont()).horizontalAdvance("10") / 2, 1)
        << "centred under its line";
    EXPECT_EQ(ten.y, 598);

    // The text is there on screen, in the grid colour lightened, above its baseline.
    const QImage image = shown.widget->grabFramebuffer();
    EXPECT_GT(CountLit(image, QRect(ten.x, ten.y - 10, 12, 10), 100), 5);

    // Row 303 lies between horizontal lines (every 6 pixels). A coarse vertical line stands at
    // x = 20, window 160; a fine one at x = 19, window 152; window 164 is bare background.
    const int row = 303;
    EXPECT_TRUE(IsGrey(image.pixelColor(160, row), 81) || IsGrey(image.pixelColor(159, row), 81));
    EXPECT_TRUE(IsGrey(image.pixelColor(164, row), 46));
    // Lines 8 pixels apart fade 0.306 of the way from the background to the grid colour.
    const QColor fine
        = IsGrey(image.pixelColor(152, row), 46) ? image.pixelColor(151, row) : image.pixelColor(152, row);
    EXPECT_TRUE(IsGrey(fine, 56)) << fine.red();

    // Fine spacings keep their decimals, two and never one, and negative values their sign.
    recorder.paint(Rect(-0.5, -0.5, 1, 100));
    const std::vector<std::string> x = recorder.texts(true);
    ASSERT_FALSE(x.empty());
    EXPECT_EQ(x.front().find('-'), 0u);
    EXPECT_EQ(x.front().size(), std::string("-0.40").size());
}

TEST(GridLayer, draws_an_axis_only_where_zero_is_in_view)
{
    ShownWidget shown(400, 400);
    Viewport& viewport = *shown.widget->getViewport();
    viewport.setWorldBounds(Rect(-50, -50, 100, 100));
    const QImage centred = shown.grab();
    viewport.setWorldBounds(Rect(10, 10, 100, 100));
    const QImage away = shown.grab();

    // The vertical axis is two pixels wide at window x 200, in the grid colour.
    const int row = 123; // clear of horizontal lines
    auto axisAt = [&](const QImage& image) {
        return IsGrey(image.pixelColor(199, row), 81) && IsGrey(image.pixelColor(200, row), 81);
    };
    EXPECT_TRUE(axisAt(centred));
    EXPECT_FALSE(axisAt(away));
}

TEST(GridLayer, a_view_of_no_size_draws_no_grid_and_one_beyond_double_precision_ends)
{
    ShownWidget shown(300, 200);
    Viewport& viewport = *shown.widget->getViewport();
    LabelRecorder recorder(shown);

    const double infinity = std::numeric_limits<double>::infinity();
    for (const Rect& bounds : { Rect(5, 5, 0, 0), Rect(-infinity, 0, infinity, infinity) }) {
        viewport.setWorldBounds(bounds);
        EXPECT_EQ(shown.grab().pixelColor(150, 100), QColor(46, 46, 46));
    }
    EXPECT_TRUE(recorder.labels.empty());

    // An axis turned inside out has no grid; the other axis keeps its own.
    recorder.paint(Rect(0, 0, -10, 2));
    EXPECT_TRUE(recorder.texts(true).empty());
    EXPECT_FALSE(recorder.texts(false).empty());

    // Spacings below the precision of a position a million units out: the walk of lines and
    // labels stops instead of adding nothing for ever.
    recorder.paint(Rect(1e6, 0.5, 1e-12, 1e-12));
    EXPECT_LT(recorder.labels.size(), 20u);
}

TEST(FocusLayer, frames_the_view_while_the_mouse_is_over_it_in_the_snapping_colour)
{
    ShownWidget shown(300, 200);
    // Where the real pointer is must not matter: what is pending is delivered first, and the
    // frame's state is then set by the events below alone.
    QCoreApplication::processEvents();
    auto edgeColour = [&] { return shown.widget->grabFramebuffer().pixelColor(0, 100); };
    auto send = [&](QEvent::Type iType) {
        QEvent event(iType);
        QApplication::sendEvent(shown.widget.get(), &event);
    };

    send(QEvent::Leave);
    const QColor without = edgeColour();
    send(QEvent::Enter);
    const QColor snapping = edgeColour();
    SnapSettings off = shown.widget->getSnapSettings();
    off.setSnappingX(false);
    shown.widget->setSnapSettings(off);
    const QColor notSnapping = edgeColour();
    send(QEvent::Leave);

    EXPECT_EQ(without, QColor(46, 46, 46));
    EXPECT_EQ(snapping, QColor(255, 255, 51));
    EXPECT_EQ(notSnapping, QColor(0, 255, 51));
    EXPECT_EQ(edgeColour(), without);
}
