// What operations on many overlays cost, with cold caches (something else has filled them, as rendering a frame does)
// and with warm ones (nothing happens in between). Behind the times stands, for each operation, how much more ten times
// the overlays cost. Where they stop to fit into a cache, warm times jump to the cold ones.
#include "OSGMaterialPool.h"
#include "ztOpenSGUtils.h"
#include "ztOverlayUtils.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <vector>

namespace
{

constexpr int decades[] = {100, 1000, 10000, 100000};

/// A scene of visible overlays that is the current one, with a viewport whose list holds as many other
/// entries.
class Scene
{
  public:
    explicit Scene(std::int64_t overlays)
    {
        osg::NodePtr const root = osg::create<osg::Node>();
        root->setCore(osg::create<osg::MaterialPool>());
        ztOpenSGUtils::setRoot(root);
        osg::NodePtr const poolRoot = ztOverlays::getOverlayPoolRoot();
        osg::addRef(viewport);
        viewport->pixelWidth = 1920;
        viewport->pixelHeight = 1080;
        for (std::int64_t i = 0; i < overlays; ++i)
        {
            auto const overlay = osg::dynamicCast<osg::Overlay>(ztOverlays::createOverlay(poolRoot)->core);
            overlay->dirty = false;
            overlay->anchor = {0.5f, float(i) / float(overlays)};
            viewport->foregrounds.push_back(viewport->foregrounds.empty() ? overlay->foreground
                                                                          : viewport->foregrounds.front());
        }
        ztOverlays::updateAllOverlays(viewport);
    }

    ~Scene()
    {
        osg::subRef(viewport);
        ztOpenSGUtils::setRoot(osg::NullFC);
    }

    osg::ViewportPtr viewport = osg::create<osg::Viewport>();
};

void fillCaches()
{
    constexpr std::size_t cacheLine = 64;
    static std::vector<char> memory(std::size_t(128) << 20);
    for (std::size_t i = 0; i < memory.size(); i += cacheLine)
        ++memory[i];
    benchmark::ClobberMemory();
}

/// Calls an operation once an iteration.
template <class Operation>
void measure(benchmark::State& state, bool isCold, Operation const& operation)
{
    for (auto _ : state)
    {
        state.PauseTiming();
        if (isCold)
            fillCaches();
        state.ResumeTiming();
        operation();
    }
}

void addAndRemove(benchmark::State& state, bool isCold)
{
    Scene scene(state.range(0));
    measure(state, isCold, [&] {
        ztOverlays::addOverlays(scene.viewport);
        ztOverlays::removeOverlays(scene.viewport);
    });
}

void quietFrame(benchmark::State& state, bool isCold)
{
    Scene const scene(state.range(0));
    measure(state, isCold, [&] { ztOverlays::updateAllOverlays(scene.viewport); });
}

void visibleWalk(benchmark::State& state, bool isCold)
{
    Scene const scene(state.range(0));
    std::int64_t visited = 0;
    measure(state, isCold, [&] { ztOverlays::traverseVisibleOverlays([&visited](osg::OverlayPtr&) { ++visited; }); });
    benchmark::DoNotOptimize(visited);
}

/// Prints the times as usual, and for each decade its ratio to the one before.
class RatioReporter : public benchmark::ConsoleReporter
{
  public:
    void ReportRuns(std::vector<Run> const& runs) override
    {
        ConsoleReporter::ReportRuns(runs);
        for (Run const& run : runs)
            _runs.push_back({run.run_name.function_name, run.run_name.args, run.GetAdjustedCPUTime()});
    }

    void Finalize() override
    {
        for (std::size_t i = 1; i < _runs.size(); ++i)
            if (_runs[i].function == _runs[i - 1].function)
                std::printf("%-17s %6s / %6s overlays: %5.1f times the time\n", _runs[i].function.c_str(),
                            _runs[i].overlays.c_str(), _runs[i - 1].overlays.c_str(),
                            _runs[i].time / _runs[i - 1].time);
    }

  private:
    struct Time
    {
        std::string function, overlays;
        double time;
    };

    std::vector<Time> _runs;
};

void overDecades(benchmark::internal::Benchmark* benchmark)
{
    for (int const overlays : decades)
        benchmark->Arg(overlays);
    benchmark->Unit(benchmark::kMicrosecond)->Iterations(100);
}

BENCHMARK_CAPTURE(addAndRemove, cold, true)->Apply(overDecades);
BENCHMARK_CAPTURE(addAndRemove, warm, false)->Apply(overDecades);
BENCHMARK_CAPTURE(quietFrame, cold, true)->Apply(overDecades);
BENCHMARK_CAPTURE(quietFrame, warm, false)->Apply(overDecades);
BENCHMARK_CAPTURE(visibleWalk, cold, true)->Apply(overDecades);
BENCHMARK_CAPTURE(visibleWalk, warm, false)->Apply(overDecades);

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
}
