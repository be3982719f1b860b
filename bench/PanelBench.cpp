#include "ProgramDesk.h"

#include "effects/CEffect.h"
#include "engine/CompTypes.h"
#include "instruments/CArp.h"
#include "modular/GraphEdits.h"

#include <functional>

// Windows of panels in a window of 1600 x 1000: from the wish to see one that has not been open yet
// to the moment at which the server has drawn its page. Milliseconds.

namespace {

constexpr int windows = 20;

class Program : public ProgramDesk {
public:
    /// Of new components, so many of a kind.
    void openAll(benchmark::State& state, const std::function<CComp*()>& make) {
        std::vector<CComp*> comps;
        for (int i = 0; i < windows; i++) comps.push_back(make());
        turn(20);
        for (auto _ : state) {
            StepTimes times;
            for (CComp* comp : comps)
                times.time([&] {
                    win->openEditor(comp);
                    win->onTimer();
                    app.dispatchEvents();
                    paint();
                });
            times.report(state);
        }
        win->pages->closeAll();
        turn(20);
    }
    CTrack* addTrack(int kind) { return seq()->addTrack(kind, seq()->getProg(), nullptr)->track; }
};

void open(benchmark::State& state, const std::function<CComp*(Program&)>& make) {
    static Program program;
    if (!program.ready()) return state.SkipWithError("no display");
    program.openAll(state, [&make] { return make(program); });
}

CComp* newRack(Program& p) {
    auto* rack = static_cast<CEffect*>(addComp(p.host.get(), compEffect, asPoint(40, 40)));
    for (const int kind : {fxDelay, fxReverb, fxChorus, fxFilter, fxCompressor}) {
        CUndo* step = p.host->undoStart("Fill", rack);
        if (CEffectProg* prog = rack->getProg())
            rack->addEffect(prog, kind, step, -1);
        else
            rack->addProg(kind, step);
        p.host->undoEnd(step, true);
    }
    return rack;
}

CComp* newKit(Program& p) {
    CTrack* track = p.addTrack(trackDrum);
    p.seq()->addStandardKit(track);
    return track;
}

BENCHMARK_CAPTURE(open, synthesizer, [](Program& p) {
    return addComp(p.host.get(), compSampler, asPoint(40, 40));
})->Iterations(1);
BENCHMARK_CAPTURE(open, effects, newRack)->Iterations(1);
BENCHMARK_CAPTURE(open, arpeggiator, [](Program& p) -> CComp* {
    return p.addTrack(trackMIDI)->arp.get();
})->Iterations(1);
BENCHMARK_CAPTURE(open, kit, newKit)->Iterations(1);
BENCHMARK_CAPTURE(open, group, [](Program& p) {
    return addComp(p.host.get(), compGroupCh, asPoint(40, 40));
})->Iterations(1);

} // namespace

BENCHMARK_MAIN();
