#include "StripFixture.h"
#include "engine/CMIDIQ.h"

#include <gtest/gtest.h>

namespace {

/// Doubles the sound; may lack ends, and finds events of its own in its queue each block.
class PartialInsert : public GainComp {
public:
    bool hasIn = true, hasOut = true, hasPort = true;
    int ownEvents = 0, runs = 0;

    explicit PartialInsert(CQV* root) : GainComp(root) { gain = 2.0f; }
    void init() override {
        if (hasPort) inPorts.add(new CInputPort(this));
        if (hasIn) inputs.add(new CInputChannel(this));
        if (hasOut) outputs.add(new COutputChannel(this));
    }
    void prepare(int frames) override {
        GainComp::prepare(frames);
        for (int i = 0; hasPort && i < ownEvents; ++i) inPort()->addMidiEvent(0, i);
    }
    void process(int frames) override {
        ++runs;
        GainComp::process(frames);
    }
};

} // namespace

TEST(Inserts, OneThatLacksAnEndIsSkipped) {
    struct Case {
        bool in, out, port;
    };
    for (const Case& c : {Case{false, true, true},
                          {true, false, true},
                          {false, false, true},
                          {true, true, false},
                          {true, true, true}}) {
        StripFixture f;
        COutputChannel* ch = f.addSignal()->output();
        auto* insert = new PartialInsert(f.host);
        insert->hasIn = c.in;
        insert->hasOut = c.out;
        insert->hasPort = c.port;
        f.addInsert(ch, insert);
        auto* next = new GainComp(f.host);
        next->offset = 0.25f;
        f.addInsert(ch, next);
        f.block(64);
        const bool runs = c.in && c.out;
        EXPECT_EQ(insert->runs, runs) << c.in << c.out << c.port;
        EXPECT_EQ(ch->bufL[63], (runs ? 2.0f : 1.0f) + 0.25f) << c.in << c.out << c.port;
    }
}

/// The strip's events reach each insert as they are, those beyond the block too; what a full queue
/// has no room for is lost.
TEST(Inserts, GetTheEventsOfTheStrip) {
    for (const int own : {0, CMIDIQ::maxEvents - 2}) {
        StripFixture f;
        SignalComp* signal = f.addSignal();
        auto* first = new PartialInsert(f.host);
        auto* second = new PartialInsert(f.host);
        first->ownEvents = own;
        f.addInsert(signal->output(), first);
        f.addInsert(signal->output(), second);
        const double times[] = {-3, 0, 17.5, 17.5, 64, 1e9};
        for (const double time : times)
            signal->moves.push_back({time, first, int(signal->moves.size()), 0.5f});
        f.block(64);
        for (const PartialInsert* insert : {first, second}) {
            const CMIDIQ* port = static_cast<CMIDIQ*>(insert->inPorts.getFirst());
            const int before = insert->ownEvents, come = before ? 2 : int(std::size(times));
            ASSERT_EQ(port->count, before + come);
            for (int i = 0; i < come; ++i) {
                const CMIDIBytes& e = port->events[before + i];
                EXPECT_EQ(e.time, times[i]);
                EXPECT_EQ(e.param, i);
                EXPECT_EQ(e.value, 0.5f);
                EXPECT_EQ(e.owner, first);
            }
        }
        f.block(64);
        EXPECT_EQ(second->inPort()->count, 0) << "of the block before";
    }
}
