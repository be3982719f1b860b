#include "ProgramDesk.h"

#include "engine/CGroupCh.h"
#include "engine/Cables.h"
#include "gui/Keys.h"
#include "modular/GraphEdits.h"
#include "modular/GraphLayout.h"
#include "modular/ModularView.h"

#include <random>

// The page of the graph with 200 boxes and 600 cables in a window of 1600 x 1000: how long a tidy
// layout takes to be found, and from an event in the program to the moment at which the server has
// drawn what it changed. Milliseconds.

namespace {

constexpr int boxCount = 200, cableCount = 600, steps = 200;

/// Boxes in rows, each cabled to some of the rows below: as graphs are that grow by hand.
LayoutGraph sampleGraph() {
    std::mt19937 random(7);
    LayoutGraph graph;
    graph.boxes.assign(boxCount, {144, 40});
    while (int(graph.cables.size()) < cableCount) {
        const int from = int(random() % boxCount), to = from + 1 + int(random() % 40);
        if (to < boxCount) graph.cables.push_back({from, to, 4, 4});
    }
    return graph;
}

void layout(benchmark::State& state) {
    const LayoutGraph graph = sampleGraph();
    std::vector<CPoint> places;
    for (auto _ : state) {
        places = layGraph(graph);
        benchmark::DoNotOptimize(places.data());
    }
    state.counters["crossings"] = countCrossings(graph, places);
}

class Program : public ProgramDesk {
public:
    Program() {
        if (!ready()) return;
        const LayoutGraph graph = sampleGraph();
        std::vector<CComp*> comps;
        {
            GraphHold hold(host.get());
            for (int i = 0; i < boxCount; i++) {
                auto* group = new CGroupCh(host.get());
                group->init();
                group->createBuffers(host->frames);
                comps.push_back(group);
                host->comps.add(group);
            }
            for (const auto& cable : graph.cables) {
                CComp* to = comps[size_t(cable.to)];
                if (getAudioCable(to, comps[size_t(cable.from)]->output(), nullptr)) continue;
                to->audioCables.add(
                    createAudioCable(to, comps[size_t(cable.from)]->output(), nullptr));
            }
        }
        tidyNewGraph(host.get());
        win->runAction(win->getAction("modular"));
        host->hostNotices.raise(HostNotice::graph);
        turn(20);
        view()->zoomTo(0.5, {});
        paint();
    }
    ModularView* view() {
        return find<ModularView>("modular", find<CGroup>("modularpage", win->clientGroup));
    }
};

Program& program() {
    static Program made;
    return made;
}

template <class F>
void measure(benchmark::State& state, F&& step) {
    Program& p = program();
    if (!p.ready()) return state.SkipWithError("no display");
    for (auto _ : state) {
        StepTimes times;
        for (int i = 0; i < steps; i++)
            times.time([&] {
                step(p, i);
                p.paint();
            });
        times.report(state);
    }
}

void wholeRepaint(benchmark::State& state) {
    measure(state, [](Program& p, int) { p.view()->redraw(); });
}

void hover(benchmark::State& state) {
    measure(state, [](Program& p, int i) {
        const auto& box = p.view()->graph().boxes[size_t(i * 13 % boxCount)];
        const CPoint at = p.view()->toControl({box.area.left + 20, box.area.top + 20});
        p.view()->mouseMove(at.x, at.y, 0);
    });
}

void dragOneBox(benchmark::State& state) {
    measure(state, [](Program& p, int i) {
        if (i == 0) selectOnly(p.host.get(), p.view()->graph().boxes[boxCount / 2].comp);
        p.view()->shiftSelected({i % 50, i % 50});
    });
}

void scrollStep(benchmark::State& state) {
    measure(state, [](Program& p, int i) { p.view()->scroll(i % 2 * 24, i % 100 * 2); });
}

BENCHMARK(layout)->Unit(benchmark::kMillisecond);
BENCHMARK(wholeRepaint)->Iterations(1);
BENCHMARK(hover)->Iterations(1);
BENCHMARK(dragOneBox)->Iterations(1);
BENCHMARK(scrollStep)->Iterations(1);

} // namespace

BENCHMARK_MAIN();
