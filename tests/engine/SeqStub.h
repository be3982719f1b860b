#pragma once

#include "engine/CQV.h"

#include <string>
#include <vector>

/// Stands where a sequencer stands and takes down what the host tells it.
class SeqStub : public CComp {
public:
    explicit SeqStub(CQV* root) : CComp(root) {
        type = compSeq;
        log.reserve(1000); // short texts then need no memory in a block
    }
    void init() override {
        inPorts.add(new CInputPort(this));
        outPorts.add(new COutputPort(this));
        outputs.add(new COutputChannel(this));
    }
    void start() override { log.push_back("start"); }
    void stop() override { log.push_back("stop"); }
    void setPos(double ticks) override {
        at = ticks;
        log.push_back("pos " + std::to_string(long(ticks)));
    }
    double getPos() override { return at; }
    void afterRec() override { log.push_back("afterRec"); }
    void idle() override {
        ++idles;
        CComp::idle();
    }
    void process(int frames) override {
        const ProcessGuard guard(this);
        if (!guard.enter) return;
        ++blocks;
        jumped = host->positionJumped;
        if (host->playing) at = at + host->framesToTicks(frames);
    }
    void recParam(CObject* object, int param, float value) override {
        recorded = object;
        recordedParam = param;
        recordedValue = value;
    }
    CComp* getComp(CObject* object) override { return object == output() ? child : nullptr; }
    void getTempoMap(CMIDIQ* map) override { map->addMidiEvent(at, 0); }

    double at = 0.0;
    int blocks = 0, idles = 0;
    bool jumped = false;
    std::vector<std::string> log;
    CObject* recorded = nullptr;
    int recordedParam = 0;
    float recordedValue = 0.0f;
    CComp* child = nullptr; ///< the track that has the channel
};
