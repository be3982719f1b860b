#pragma once

#include "engine/CQV.h"

#include <atomic>
#include <string>
#include <vector>

/// Stands for a sequencer and takes down what the host tells it.
class SeqStub : public CComp {
public:
    double at = 0.0;
    int idles = 0;
    bool jumped = false;
    std::vector<std::string> log;
    CObject* recorded = nullptr;
    int recordedParam = 0;
    float recordedValue = 0.0f;
    CComp* child = nullptr; ///< the track that has the channel
    Notices<SeqNotice> songNotices;
    int songs = 0; ///< times that its song was told to have changed

    explicit SeqStub(CQV* root) : CComp(root) {
        type = compSeq;
        log.reserve(longest); // short texts then need no memory in a block
    }
    void init() override {
        inPorts.add(new CInputPort(this));
        outPorts.add(new COutputPort(this));
        outputs.add(new COutputChannel(this));
    }
    void start() override { note("start"); }
    void stop() override { note("stop"); }
    void setPos(double ticks) override {
        at = ticks;
        note("pos " + std::to_string(long(ticks)));
    }
    double getPos() override { return at; }
    void afterRec() override { note(host->recUndo ? "afterRec within its step" : "afterRec"); }
    void idle() override { ++idles; }
    void doUpdate(int code) override { songs += code == updateSong; }
    void raiseSong(NoticeSet<SeqNotice> set) override { songNotices.raise(set); }
    void process(int frames) override {
        const ProcessGuard guard(this);
        if (!guard.enter) return;
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

private:
    static constexpr size_t longest = 100000;

    /// The interface tells of takes while a block tells of the transport.
    void note(const std::string& text) {
        while (writing.test_and_set(std::memory_order_acquire)) {
        }
        if (log.size() < longest) log.push_back(text);
        writing.clear(std::memory_order_release);
    }
    std::atomic_flag writing;
};
