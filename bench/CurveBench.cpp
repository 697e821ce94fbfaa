// Timings of the curve model at the sizes that a host may reach: lookups, evaluation and edits
// on a curve of a million keys, sampling for drawing, copies and swaps for undo, and the
// memory that each key costs.

#include "splinorlib/SplinorLib.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <malloc.h>
#include <memory>
#include <random>
#include <vector>

namespace {

using namespace Ovantis::SplinorLib::v19;

constexpr std::size_t cLargeKeyCount = 1000000;
constexpr std::size_t cMediumKeyCount = 100000;
// A power of two, so that the position in the table wraps with a mask; large enough that the
// lookups do not settle into a few cache lines of the index.
constexpr std::size_t cRandomCount = 1 << 16;
constexpr std::uint64_t cSeed = 0x5eed'c0ffeeULL;

using Clock = std::chrono::steady_clock;

double seconds(Clock::time_point iStart, Clock::time_point iStop)
{
    return std::chrono::duration<double>(iStop - iStart).count();
}

double keyValue(double iX)
{
    return std::sin(iX * 0.1) * 10.0;
}

// Every tangent type appears, with the in and out tangents of a key out of step, so that
// evaluation goes through each rule for automatic slopes and through fixed handles as well.
void assignTangentTypes(Splinor& ioCurve)
{
    std::size_t index = 0;
    for (Segment& segment : ioCurve) {
        if (Tangent* out = segment.getOutTangent())
            out->setType(static_cast<unsigned char>(index % cTangentTypeCount));
        if (Tangent* in = segment.getInTangent())
            in->setType(static_cast<unsigned char>((index * 3 + 1) % cTangentTypeCount));
        ++index;
    }
}

std::shared_ptr<Splinor> buildCurve(std::size_t iKeyCount)
{
    std::shared_ptr<Splinor> curve = Splinor::create();
    // One interpolator for every segment, as a host would share it, so that its cost is not
    // counted a million times over.
    std::shared_ptr<Interpolator> bezier = Bezier::create();
    for (std::size_t i = 0; i < iKeyCount; ++i) {
        const double x = double(i);
        curve->insertSegment(Keyframe(x, keyValue(x)), bezier);
    }
    assignTangentTypes(*curve);
    return curve;
}

// Function-local statics: each large curve is built once, outside any timed region, and
// shared by the benchmarks that only read it or leave it as they found it.
Splinor& largeCurve()
{
    static const std::shared_ptr<Splinor> curve = buildCurve(cLargeKeyCount);
    return *curve;
}

Splinor& mediumCurve()
{
    static const std::shared_ptr<Splinor> curve = buildCurve(cMediumKeyCount);
    return *curve;
}

Splinor& otherMediumCurve()
{
    static const std::shared_ptr<Splinor> curve = buildCurve(cMediumKeyCount);
    return *curve;
}

std::vector<double> randomPositions(double iFrom, double iTo)
{
    std::mt19937_64 random(cSeed);
    std::uniform_real_distribution<double> distribution(iFrom, iTo);
    std::vector<double> positions(cRandomCount);
    for (double& x : positions)
        x = distribution(random);
    return positions;
}

// Keys between the first and the last, so that each has a segment on both sides.
std::vector<std::size_t> randomInteriorKeys()
{
    std::mt19937_64 random(cSeed + 1);
    std::uniform_int_distribution<std::size_t> distribution(1, cLargeKeyCount - 2);
    std::vector<std::size_t> keys(cRandomCount);
    for (std::size_t& key : keys)
        key = distribution(random);
    return keys;
}

// Splitting a segment and removing the new key again leaves the curve as it was except for
// the split segment's in tangent, which goes back to its default state. Choosing only
// segments whose in tangent is already in that state keeps the shared curve unchanged without
// putting any repair work inside the timed region.
std::vector<double> randomFreePositions(Splinor& iCurve)
{
    std::vector<double> positions;
    positions.reserve(cRandomCount);
    for (std::size_t key : randomInteriorKeys()) {
        for (std::size_t k = key; k + 1 < cLargeKeyCount; ++k) {
            const Tangent* in = iCurve.findSegment(double(k))->getInTangent();
            if (in && in->getType() == cTangentSmooth && !in->isWeighted() && !in->isWeightLocked()) {
                positions.push_back(double(k) + 0.5);
                break;
            }
        }
    }
    return positions;
}

struct TangentState
{
    unsigned char type = cTangentSmooth;
    Vector2D<double> value;
};

TangentState saveTangent(const Tangent& iTangent)
{
    return {iTangent.getType(), iTangent.get()};
}

void restoreTangent(Tangent& ioTangent, const TangentState& iState)
{
    if (iState.type == cTangentFixed)
        ioTangent.set(iState.value);
    else
        ioTangent.setType(iState.type);
}

// --- Lookups and evaluation -----------------------------------------------------------------

void FindSegmentRandom(benchmark::State& state)
{
    Splinor& curve = largeCurve();
    const std::vector<double> positions = randomPositions(0.0, double(cLargeKeyCount - 1));
    std::size_t i = 0;
    for (auto _ : state) {
        Splinor::iterator found = curve.findSegment(positions[i++ & (cRandomCount - 1)]);
        benchmark::DoNotOptimize(found);
    }
}
BENCHMARK(FindSegmentRandom)->Unit(benchmark::kMicrosecond);

void EvalRandom(benchmark::State& state)
{
    const Splinor& curve = largeCurve();
    const std::vector<double> positions = randomPositions(0.0, double(cLargeKeyCount - 1));
    std::size_t i = 0;
    for (auto _ : state) {
        double value = curve.eval(positions[i++ & (cRandomCount - 1)]);
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(EvalRandom)->Unit(benchmark::kMicrosecond);

// --- Edits ----------------------------------------------------------------------------------

// Both edits timed together: no clock reads of our own, so the figure is the pair's cost.
void InsertThenRemoveRandom(benchmark::State& state)
{
    Splinor& curve = largeCurve();
    const std::vector<double> positions = randomFreePositions(curve);
    const std::shared_ptr<Interpolator> bezier = curve.findSegment(1.0)->getInterpolator();
    std::size_t i = 0;
    for (auto _ : state) {
        const double x = positions[i++ % positions.size()];
        Splinor::iterator inserted = curve.insertSegment(Keyframe(x, keyValue(x)), bezier);
        Splinor::iterator next = curve.removeSegment(inserted);
        benchmark::DoNotOptimize(next);
    }
    if (curve.getKeyCount() != cLargeKeyCount)
        state.SkipWithError("the curve did not keep its size");
}
BENCHMARK(InsertThenRemoveRandom)->Unit(benchmark::kMicrosecond);

// Only the insertion is timed; the removal that restores the curve is left out.
void InsertRandom(benchmark::State& state)
{
    Splinor& curve = largeCurve();
    const std::vector<double> positions = randomFreePositions(curve);
    const std::shared_ptr<Interpolator> bezier = curve.findSegment(1.0)->getInterpolator();
    std::size_t i = 0;
    for (auto _ : state) {
        const double x = positions[i++ % positions.size()];
        const Keyframe key(x, keyValue(x));
        const Clock::time_point start = Clock::now();
        Splinor::iterator inserted = curve.insertSegment(key, bezier);
        benchmark::DoNotOptimize(inserted);
        const Clock::time_point stop = Clock::now();
        curve.removeSegment(inserted);
        state.SetIterationTime(seconds(start, stop));
    }
    if (curve.getKeyCount() != cLargeKeyCount)
        state.SkipWithError("the curve did not keep its size");
}
BENCHMARK(InsertRandom)->UseManualTime()->Unit(benchmark::kMicrosecond);

// Only the removal is timed. The key goes back with the tangent types it had, so that the
// shared curve keeps its mix of tangent rules for the benchmarks that follow.
void RemoveRandom(benchmark::State& state)
{
    Splinor& curve = largeCurve();
    const std::vector<std::size_t> keys = randomInteriorKeys();
    std::size_t i = 0;
    for (auto _ : state) {
        const double x = double(keys[i++ & (cRandomCount - 1)]);
        Splinor::iterator segment = curve.findSegment(x);
        const Keyframe key(*segment->getLeftKey());
        const std::shared_ptr<Interpolator> interpolator = segment->getInterpolator();
        const TangentState before = saveTangent(*segment->getPrevious()->getInTangent());
        const TangentState out = saveTangent(*segment->getOutTangent());
        const TangentState in = saveTangent(*segment->getInTangent());

        const Clock::time_point start = Clock::now();
        Splinor::iterator next = curve.removeSegment(segment);
        benchmark::DoNotOptimize(next);
        const Clock::time_point stop = Clock::now();

        Splinor::iterator restored = curve.insertSegment(key, interpolator);
        restoreTangent(*restored->getPrevious()->getInTangent(), before);
        restoreTangent(*restored->getOutTangent(), out);
        restoreTangent(*restored->getInTangent(), in);
        state.SetIterationTime(seconds(start, stop));
    }
    if (curve.getKeyCount() != cLargeKeyCount)
        state.SkipWithError("the curve did not keep its size");
}
BENCHMARK(RemoveRandom)->UseManualTime()->Unit(benchmark::kMicrosecond);

// --- Sampling for drawing -------------------------------------------------------------------

constexpr int cSampleCount = 2000;

// A segment drawn at a high zoom: many samples, one curve piece.
void SampleOneSegment(benchmark::State& state)
{
    const Splinor& curve = largeCurve();
    const Segment& segment = *curve.findSegment(double(cLargeKeyCount / 2) + 0.5);
    const double x0 = segment.getLeftKey()->getX();
    const double x1 = segment.getRightKey()->getX();
    std::vector<Vector2D<double>> points;
    for (auto _ : state) {
        segment.getInterpolator()->sampleValues(segment, x0, x1, cSampleCount, points);
        benchmark::DoNotOptimize(points.data());
        benchmark::ClobberMemory();
    }
    if (points.size() != std::size_t(cSampleCount))
        state.SkipWithError("wrong number of samples");
}
BENCHMARK(SampleOneSegment)->Unit(benchmark::kMicrosecond);

// A view zoomed out over a thousand segments: the same number of samples, each needing its
// own lookup and its own segment's control points.
void SampleAcrossSegments(benchmark::State& state)
{
    const Splinor& curve = largeCurve();
    constexpr double cSpan = 1000.0;
    const double x0 = double(cLargeKeyCount / 2) - cSpan / 2.0;
    std::vector<Vector2D<double>> points;
    points.reserve(cSampleCount);
    for (auto _ : state) {
        points.clear();
        for (int i = 0; i < cSampleCount; ++i) {
            const double x = x0 + cSpan * (double(i) / double(cSampleCount - 1));
            points.emplace_back(x, curve.eval(x));
        }
        benchmark::DoNotOptimize(points.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(SampleAcrossSegments)->Unit(benchmark::kMicrosecond);

// --- Copies, swaps and destruction ----------------------------------------------------------

// Only the copy is timed; freeing it is measured by itself below.
void CreateCopy(benchmark::State& state)
{
    const Splinor& source = mediumCurve();
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        std::shared_ptr<Splinor> copy = Splinor::createCopy(source);
        benchmark::DoNotOptimize(copy.get());
        const Clock::time_point stop = Clock::now();
        state.SetIterationTime(seconds(start, stop));
        if (copy->getKeyCount() != cMediumKeyCount)
            state.SkipWithError("the copy lost keys");
    }
}
BENCHMARK(CreateCopy)->UseManualTime()->Unit(benchmark::kMillisecond);

void DestroyCopy(benchmark::State& state)
{
    const Splinor& source = mediumCurve();
    for (auto _ : state) {
        std::shared_ptr<Splinor> copy = Splinor::createCopy(source);
        const Clock::time_point start = Clock::now();
        copy.reset();
        benchmark::ClobberMemory();
        const Clock::time_point stop = Clock::now();
        state.SetIterationTime(seconds(start, stop));
    }
}
BENCHMARK(DestroyCopy)->UseManualTime()->Unit(benchmark::kMillisecond);

void Swap(benchmark::State& state)
{
    Splinor& a = mediumCurve();
    Splinor& b = otherMediumCurve();
    for (auto _ : state) {
        a.swap(b);
        benchmark::DoNotOptimize(a.size());
    }
}
BENCHMARK(Swap)->Unit(benchmark::kMicrosecond);

// --- Selection ------------------------------------------------------------------------------

// The selection's state lives in the items, so asking is a bit test, whatever the curve's size.
void IsSelectedRandom(benchmark::State& state)
{
    Splinor& curve = largeCurve();
    auto container = SplinorContainer::create();
    container->addCurve(curve.getShared());
    Selection selection(container);
    const std::vector<double> positions = randomPositions(0.0, double(cLargeKeyCount - 1));
    std::vector<const Keyframe*> keys;
    for (double x : positions)
        keys.push_back(curve.findSegment(x)->getLeftKey());
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(selection.isSelected(*keys[i]));
        i = (i + 1) & (cRandomCount - 1);
    }
}
BENCHMARK(IsSelectedRandom)->Unit(benchmark::kNanosecond);

// A thousand keys scattered over a million: the walk must cost the thousand, not the million.
void WalkSelectedKeyframes(benchmark::State& state)
{
    Splinor& curve = largeCurve();
    auto container = SplinorContainer::create();
    container->addCurve(curve.getShared());
    Selection selection(container);
    const std::vector<double> positions = randomPositions(0.0, double(cLargeKeyCount - 1));
    for (std::size_t i = 0; selection.begin() == selection.end() || i < 1000; ++i)
        selection.select(*curve.findSegment(positions[i])->getLeftKey());
    std::size_t count = 0;
    for (auto _ : state) {
        count = 0;
        for (auto it = BeginSelectedKeyframes(selection); it != EndSelectedKeyframes(selection); ++it)
            ++count;
        benchmark::DoNotOptimize(count);
    }
    state.counters["keys"] = double(count);
    selection.clear();
}
BENCHMARK(WalkSelectedKeyframes)->Unit(benchmark::kMicrosecond);

// Selecting and clearing a whole curve of a hundred thousand keys, timed apart.
void SelectCurveCompletelyThenClear(benchmark::State& state)
{
    Splinor& curve = mediumCurve();
    auto container = SplinorContainer::create();
    container->addCurve(curve.getShared());
    Selection selection(container);
    double selectSeconds = 0.0;
    double clearSeconds = 0.0;
    for (auto _ : state) {
        const Clock::time_point start = Clock::now();
        SelectCurveCompletely(selection, curve);
        const Clock::time_point selected = Clock::now();
        selection.clear();
        const Clock::time_point cleared = Clock::now();
        selectSeconds += seconds(start, selected);
        clearSeconds += seconds(selected, cleared);
        state.SetIterationTime(seconds(start, cleared));
    }
    state.counters["select_ms"] = benchmark::Counter(selectSeconds * 1000.0, benchmark::Counter::kAvgIterations);
    state.counters["clear_ms"] = benchmark::Counter(clearSeconds * 1000.0, benchmark::Counter::kAvgIterations);
}
BENCHMARK(SelectCurveCompletelyThenClear)->UseManualTime()->Unit(benchmark::kMillisecond);

// --- Memory ---------------------------------------------------------------------------------

// Bytes in use by the allocator, from the heap arenas and from blocks mapped on their own.
double bytesInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return double(info.uordblks) + double(info.hblkhd);
}

// Run once: the time is the build of a million-key curve, the counters what it holds in
// memory per key (segment, key, tangents and index entry together) and what freeing it costs.
void BuildLargeCurve(benchmark::State& state)
{
    for (auto _ : state) {
        const double before = bytesInUse();
        std::shared_ptr<Splinor> curve = buildCurve(cLargeKeyCount);
        const double after = bytesInUse();
        state.PauseTiming();
        state.counters["bytes_per_key"] = (after - before) / double(cLargeKeyCount);
        const Clock::time_point start = Clock::now();
        curve.reset();
        const Clock::time_point stop = Clock::now();
        state.counters["destroy_ms"] = seconds(start, stop) * 1000.0;
        state.ResumeTiming();
    }
}
BENCHMARK(BuildLargeCurve)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
