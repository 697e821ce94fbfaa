// Timings of the editor's drawing and picking on large scenes: a full paint of 100 curves,
// framed, with nothing and with everything selected, and a pick on a mouse move. Needs a
// display; run it under Xvfb where there is none.

#include "SplinorEditorQt.h"

#include <QApplication>
#include <QSurfaceFormat>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <random>

namespace {

using namespace Ovantis::SplinorEditorQtLib::v22;
using namespace Ovantis::SplinorLib::v19;

constexpr int cCurveCount = 100;

/// A widget whose paint can be timed by itself, without the compositing of a frame.
class TimedWidget : public GraphWidget
{
public:
    void paintOnce()
    {
        makeCurrent();
        paintGL();
        glFinish();
    }
};

std::shared_ptr<Splinor> Wave(std::size_t iKeys, int iIndex)
{
    auto curve = Splinor::create();
    auto bezier = Bezier::create();
    curve->setName(("curve" + std::to_string(iIndex)).c_str());
    for (std::size_t i = 0; i < iKeys; ++i) {
        const double x = double(i);
        curve->insertSegment(Keyframe(x, std::sin(x * 0.05 + iIndex) * 10.0 + iIndex), bezier);
    }
    return curve;
}

struct Scene
{
    explicit Scene(std::size_t iKeys)
    {
        widget = std::make_unique<TimedWidget>();
        widget->resize(1140, 926);
        widget->show();
        for (int i = 0; i < cCurveCount; ++i)
            widget->getCurves()->addCurve(Wave(iKeys, i));
        QApplication::processEvents();
    }
    void frame(double iWidth) { widget->getViewport()->setWorldBounds(Rectangle<double>(0.0, -15.0, iWidth, 130.0)); }
    void selectAll()
    {
        for (const auto& curve : *widget->getCurves())
            SelectCurveCompletely(*widget->getSelection(), *curve);
    }
    std::unique_ptr<TimedWidget> widget;
};

/// The scenes, built once each; they hold widgets, so they go before the application does.
std::map<std::size_t, std::unique_ptr<Scene>> gScenes;

Scene& SceneOf(std::size_t iKeys)
{
    auto& scene = gScenes[iKeys];
    if (!scene)
        scene = std::make_unique<Scene>(iKeys);
    return *scene;
}

void Paint(benchmark::State& state, std::size_t iKeys, double iViewWidth, bool iSelectAll)
{
    Scene& scene = SceneOf(iKeys);
    scene.frame(iViewWidth);
    scene.widget->getSelection()->clear();
    if (iSelectAll)
        scene.selectAll();
    for (auto _ : state)
        scene.widget->paintOnce();
    scene.widget->getSelection()->clear();
}

// The machines these run on are shared, and a paint's threads are at the mercy of the others';
// the least of several runs is the figure the code alone decides. The CPU time is that of every
// thread, the rasteriser's included.
void PaintSettings(benchmark::internal::Benchmark* ioBenchmark)
{
    ioBenchmark->Unit(benchmark::kMillisecond)
        ->MeasureProcessCPUTime()
        ->Repetitions(5)
        ->ComputeStatistics("min",
            [](const std::vector<double>& iValues) { return *std::min_element(iValues.begin(), iValues.end()); });
}
// Keys per curve, view width in keys, everything selected.
BENCHMARK_CAPTURE(Paint, Framed1000, 1000, 1000.0, false)->Apply(PaintSettings);
BENCHMARK_CAPTURE(Paint, Framed1000Selected, 1000, 1000.0, true)->Apply(PaintSettings);
BENCHMARK_CAPTURE(Paint, Framed10000, 10000, 10000.0, false)->Apply(PaintSettings);
BENCHMARK_CAPTURE(Paint, Framed10000Selected, 10000, 10000.0, true)->Apply(PaintSettings);
BENCHMARK_CAPTURE(Paint, WindowOf100000, 100000, 1000.0, false)->Apply(PaintSettings);
BENCHMARK_CAPTURE(Paint, WindowOf100000Selected, 100000, 1000.0, true)->Apply(PaintSettings);

// A pick on each mouse move over a large scene: only the segment under the pointer is looked at,
// and on selected curves the handles near it.
void Pick(benchmark::State& state, bool iSelectAll)
{
    Scene& scene = SceneOf(100000);
    scene.frame(1000.0);
    if (iSelectAll)
        scene.selectAll();
    std::mt19937 random(5);
    std::vector<Vector2D<double>> points(4096);
    for (auto& p : points)
        p = { double(random() % 1140), double(random() % 926) };
    std::size_t i = 0;
    for (auto _ : state) {
        HitRecord hit;
        benchmark::DoNotOptimize(PickPoint(*scene.widget->getCurves(), *scene.widget->getSelection(),
            *scene.widget->getViewport(), points[i++ & 4095], hit));
    }
    scene.widget->getSelection()->clear();
}
BENCHMARK_CAPTURE(Pick, OnMove, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Pick, OnMoveAllSelected, true)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    QSurfaceFormat::setDefaultFormat(GraphWidget::surfaceFormat());
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    gScenes.clear();
    return 0;
}
