#pragma once

#include "base/Delegates.h"
#include "base/Messages.h"
#include "engine/CGroupCh.h"
#include "engine/CUndo.h"
#include "support/RtTrap.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>

using Comps = std::vector<CComp*>;

/// Plays a signal on its one output: `left` and `right` give the sample at a running frame. Events
/// of the coming block arrive at its input port, for its strip and inserts, and leave at its output
/// port with the messages of every block.
class SignalComp : public CComp {
public:
    struct Move {
        double time;
        void* owner;
        int param;
        float value;
    };
    std::function<float(long)> left = [](long) { return 1.0f; }, right = left;
    std::vector<Move> moves;                      ///< served in the next block, then empty
    std::vector<std::pair<double, int>> messages; ///< time and data
    long at = 0;                                  ///< running frame
    int latency = 0;                              ///< frames that it reports

    explicit SignalComp(CQV* root) : CComp(root) { id = "Signal"; }
    void init() override {
        inPorts.add(new CInputPort(this));
        outPorts.add(new COutputPort(this));
        inputs.add(new CInputChannel(this));
        outputs.add(new COutputChannel(this));
    }
    int getDelay() override { return latency; }
    void process(int frames) override {
        const ProcessGuard guard(this);
        if (!guard.enter) return;
        mergeMIDI(frames);
        mergeAudio(frames);
        for (const Move& m : moves)
            for (CMIDIQ* port : {inPort(), outPort()})
                port->insert(m.time, 0, eventParam, m.value, m.param, m.owner, nullptr);
        moves.clear();
        for (const auto& [time, data] : messages) outPort()->addMidiEvent(time, data);
        for (int i = 0; i < frames; ++i, ++at) {
            output()->bufL[i] = input()->bufL[i] + left(at);
            output()->bufR[i] = input()->bufR[i] + right(at);
        }
    }
};

/// An insert: `y = x * gain + offset`.
class GainComp : public CComp {
public:
    float gain, offset;

    explicit GainComp(CQV* root, float factor = 1.0f, float constant = 0.0f)
        : CComp(root), gain(factor), offset(constant) {
        id = "Gain";
    }
    void init() override {
        inPorts.add(new CInputPort(this));
        inputs.add(new CInputChannel(this));
        outputs.add(new COutputChannel(this));
    }
    CComp* copy() override {
        auto* twin = new GainComp(host, gain, offset);
        twin->copyIO(this);
        return twin;
    }
    void process(int frames) override {
        for (int i = 0; i < frames; ++i) {
            output()->bufL[i] = input()->bufL[i] * gain + offset;
            output()->bufR[i] = input()->bufR[i] * gain + offset;
        }
    }
};

/// A function as a delegate.
class Call : public COnChange {
public:
    explicit Call(std::function<void()> function) : call(std::move(function)) {}
    void operator()(CObject*) override { call(); }

private:
    std::function<void()> call;
};

/// A test host with what strips are fed from and lead to.
class StripFixture : public TestHost {
public:
    using TestHost::TestHost;

    /// One more block; `left` and `right` are what the device got in it.
    void block(int frames = 256) {
        forget();
        run(1, frames);
    }
    /// With channels, ports and buffers, but not in the graph yet.
    template <class T>
    T* made(T* c) {
        c->init();
        c->createBuffers(host->frames);
        return c;
    }
    /// A signal that is cabled to the audio out.
    SignalComp* addSignal() {
        auto* c = add(new SignalComp(host));
        connect(c);
        return c;
    }
    CGroupCh* addBus() {
        auto* bus = made(new CGroupCh(host));
        const GraphHold hold(host);
        host->sends.add(bus);
        connect(bus);
        return bus;
    }
    template <class T>
    T* addInsert(COutputChannel* ch, T* insert) {
        made(insert);
        const GraphHold hold(host);
        ch->inserts.add(insert);
        return insert;
    }
    /// What `record` tells the step, of the host or of a component, is carried out on return.
    template <class F>
    void step(F&& record, const StepEffects& effects = {}, CComp* of = nullptr) {
        CUndo* u = host->undoStart("Edit", of ? of : host, effects);
        record(u);
        host->undoEnd(u, true);
    }
};

/// A host whose blocks go on while a test waits for a step, which allocates nothing in them, frees
/// nothing and waits for nothing.
class StepTest : public testing::Test, protected StripFixture {
protected:
    StepTest() {
        waiting = this;
        messageHooks().pumpIdle = [] { waiting->block(64); };
        block(64);
        rtReset();
    }
    ~StepTest() override {
        messageHooks().pumpIdle = nullptr;
        EXPECT_EQ(rtViolations(), 0) << "a step allocates, frees or locks";
    }

private:
    static inline StripFixture* waiting = nullptr;
};
