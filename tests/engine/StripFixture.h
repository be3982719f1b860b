#pragma once

#include "engine/CGroupCh.h"
#include "engine/CUndo.h"
#include "support/TestHost.h"

#include <functional>
#include <vector>

/// Plays a signal on its one output: `left` and `right` give the sample at a running frame. Events
/// of the coming block arrive at its input port, for its strip and inserts, and leave at its output
/// port.
class SignalComp : public CComp {
public:
    struct Move {
        double time;
        void* owner;
        int param;
        float value;
    };
    std::function<float(long)> left = [](long) { return 1.0f; };
    std::function<float(long)> right = [](long) { return 1.0f; };
    std::vector<Move> moves; ///< served in the next block, then empty
    long at = 0;             ///< running frame
    int latency = 0;         ///< frames that it reports

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
        for (int i = 0; i < frames; ++i, ++at) {
            output()->bufL[i] = input()->bufL[i] + left(at);
            output()->bufR[i] = input()->bufR[i] + right(at);
        }
    }
};

/// An insert: `y = x * gain + offset`.
class GainComp : public CComp {
public:
    float gain = 1.0f, offset = 0.0f;

    explicit GainComp(CQV* root) : CComp(root) { id = "Gain"; }
    void init() override {
        inPorts.add(new CInputPort(this));
        inputs.add(new CInputChannel(this));
        outputs.add(new COutputChannel(this));
    }
    CComp* copy() override {
        auto* twin = new GainComp(host);
        twin->gain = gain;
        twin->offset = offset;
        twin->copyIO(this);
        return twin;
    }
    void process(int frames) override {
        const ProcessGuard guard(this);
        if (!guard.enter) return;
        for (int i = 0; i < frames; ++i) {
            output()->bufL[i] = input()->bufL[i] * gain + offset;
            output()->bufR[i] = input()->bufR[i] * gain + offset;
        }
    }
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
    /// A signal that is cabled to the audio out.
    SignalComp* addSignal() {
        auto* c = add(new SignalComp(host));
        connect(c);
        return c;
    }
    CGroupCh* addBus() {
        auto* bus = new CGroupCh(host);
        bus->init();
        bus->createBuffers(host->frames);
        const GraphHold hold(host);
        host->sends.add(bus);
        connect(bus);
        return bus;
    }
    CComp* addInsert(COutputChannel* ch, CComp* insert) {
        insert->init();
        insert->createBuffers(host->frames);
        const GraphHold hold(host);
        ch->inserts.add(insert);
        return insert;
    }
};
