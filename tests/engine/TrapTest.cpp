#include "engine/CClick.h"
#include "engine/CMap.h"
#include "engine/MidiBytes.h"
#include "engine/MidiComps.h"
#include "engine/SeqStub.h"
#include "engine/StripFixture.h"
#include "support/RtTrap.h"

#include <gtest/gtest.h>

namespace {

/// Does something forbidden in its `process`.
class CNaughty : public CComp {
public:
    explicit CNaughty(CQV* root) : CComp(root) {}
    void init() override { outputs.add(new COutputChannel(this)); }
    void process(int) override {
        if (allocate) delete new volatile int(1);
    }
    bool allocate = false;
};

constexpr int bindStart = 1, bindStop = 2, bindRewind = 3, bindRecord = 4, bindTempo = 5;

/// A host with one of everything that a block can run through.
struct Studio : StripFixture {
    Studio() : StripFixture(256) {
        signal = addSignal();
        auto* chs = add(new CMIDIChs(host));
        connectMIDI(midiIn, chs);
        connectMIDI(chs, signal);
        connectMIDI(chs, midiOut);
        connectMIDI(midiIn, add(new SeqStub(host)));
        connect(in);
        addBus();
        addInsert(signal->output(), new GainComp(host));
        signal->latency = 300;
        auto* map = new CMap;
        map->target = signal->output();
        map->cc = 7;
        static_cast<CMapProg*>(host->maps.items(0))->items.add(map);
        host->click->enabled = 1;
        host->click->mode = clickPlay | clickRecord | clickCountIn;
        host->ctrlStart = bindStart;
        host->ctrlStop = bindStop;
        host->ctrlRewind = bindRewind;
        host->ctrlRecord = bindRecord;
        host->ctrlTempo = bindTempo;
    }
    SignalComp* signal;
};

} // namespace

/// Else the tests that look for violations could not fail.
TEST(RtTrap, CatchesAllocationInTheCallbackOnly) {
    if (!rtTrapActive()) GTEST_SKIP() << "the sanitizers lead these calls through themselves";
    TestHost t;
    auto* c = t.add(new CNaughty(t.host));
    t.connect(c);
    rtReset();
    t.run();
    EXPECT_EQ(rtViolations(), 0);
    c->allocate = true;
    t.run();
    EXPECT_EQ(rtViolations(), 2) << "one for new, one for delete";
    rtReset();
}

/// Blocks with everything in them that a user can cause: no allocation, no lock, no file.
TEST(RtTrap, BlocksAreClean) {
    Studio t;
    CUndo* cut = t.host->undoStart("Cut", t.host, undoGraph | undoSongChanged);
    cut->asRemove(t.signal, &t.host->comps);
    cut->asRemove(static_cast<CComp*>(t.host->sends.items(0)), &t.host->sends);
    t.run();
    rtReset();
    for (int number = 0; number < 10; ++number)
        for (const int value : {127, 3, 0}) {
            t.send(asData(midiController | 2, number, value));
            t.send(asData(midiNoteOn, 60 + number, value));
            t.send(asData(midiProgram, number, 0));
            t.midiIn->playNote(60 + number, value > 0);
            t.midiIn->setAutoq(number % 2 ? 16 : -1);
            t.run(20);
        }
    t.host->update(updateDelays);
    t.host->rec();
    t.run(300);
    t.host->stop();
    t.host->stop();
    t.run(2);
    t.host->undoEnd(cut, false);
    t.run();
    EXPECT_EQ(t.host->sends.getCount(), 0);
    t.host->undoClicked();
    t.run();
    EXPECT_EQ(t.host->sends.getCount(), 1);
    t.host->redoClicked();
    t.run(2);
    EXPECT_EQ(rtViolations(), 0);
    EXPECT_TRUE(std::ranges::any_of(t.left, [](float x) { return x != 0.0f; }));
}
