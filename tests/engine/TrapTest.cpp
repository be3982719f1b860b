#include "engine/CClick.h"
#include "engine/CMap.h"
#include "engine/MidiBytes.h"
#include "engine/MidiComps.h"
#include "engine/SeqStub.h"
#include "engine/StripFixture.h"
#include "engine/StripMeters.h"
#include "support/RtTrap.h"

/// Else the tests that look for violations could not fail.
TEST(RtTrap, CatchesAllocationInTheCallbackOnly) {
    if (!rtTrapActive()) GTEST_SKIP() << "the sanitizers lead these calls through themselves";
    StripFixture t;
    SignalComp* s = t.addSignal();
    rtReset();
    t.run();
    EXPECT_EQ(rtViolations(), 0);
    s->left = [](long at) {
        if (at == 2000) delete new volatile int(1);
        return 0.0f;
    };
    t.run();
    EXPECT_EQ(rtViolations(), 2) << "one for new, one for delete";
    rtReset();
}

/// Blocks with everything in them that a user can cause: no allocation, no lock, no file.
TEST(RtTrap, BlocksAreClean) {
    StripFixture t(256);
    CQV* q = t.host;
    SignalComp* signal = t.addSignal();
    auto* chs = t.add(new CMIDIChs(q));
    t.connectMIDI(t.midiIn, chs);
    for (CComp* c : std::initializer_list<CComp*>{signal, t.midiOut, t.add(new SeqStub(q))})
        t.connectMIDI(chs, c);
    t.connect(t.in);
    CGroupCh* bus = t.addBus();
    t.addInsert(signal->output(), new GainComp(q));
    signal->latency = 300;
    StripMeters& meters = t.out->output()->meters();
    meters.loudness.measure(true);
    meters.samples = 1;
    auto* map = new CMap;
    map->target = signal->output();
    map->cc = 7;
    q->maps.items(0)->items.add(map);
    q->click->enabled = 1;
    q->click->mode = clickPlay | clickRecord | clickCountIn;
    int number = 1;
    for (Shared<int>* binding :
         {&q->ctrlStart, &q->ctrlStop, &q->ctrlRewind, &q->ctrlRecord, &q->ctrlTempo})
        *binding = number++;
    CUndo* cut = q->undoStart("Cut", q, {.graph = true, .song = true});
    cut->asRemove(signal, &q->comps);
    cut->asRemove(bus, &q->sends);
    t.run();
    rtReset();
    for (number = 0; number < 10; ++number)
        for (const int value : {127, 3, 0}) {
            t.send(asData(midiController | 2, number, value));
            t.send(asData(midiNoteOn, 60 + number, value));
            t.send(asData(midiProgram, number, 0));
            t.midiIn->playNote(60 + number, value > 0);
            t.midiIn->setAutoq(number % 2 ? 16 : -1);
            for (auto* cable : each<CObject>(t.out->audioCables))
                setCableMute(cable, number % 2 != 0);
            t.out->listened = number % 3 ? nullptr : signal->output();
            t.run(20);
        }
    q->hostNotices.raise(HostNotice::delays);
    q->rec();
    t.run(300);
    q->stop();
    q->stop();
    t.run(2);
    q->undoEnd(cut, false);
    t.run();
    EXPECT_TRUE(q->sends.empty());
    q->undoClicked();
    t.run();
    EXPECT_FALSE(q->sends.empty());
    q->redoClicked();
    t.run(2);
    EXPECT_EQ(rtViolations(), 0);
    EXPECT_TRUE(std::ranges::any_of(t.left, [](float x) { return x != 0.0f; }));
}
