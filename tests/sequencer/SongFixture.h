#pragma once

#include "audiofiles/CSample.h"
#include "engine/Cables.h"
#include "engine/MidiBytes.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/Points.h"
#include "support/RtTrap.h"
#include "support/TestHost.h"
#include "support/Told.h"

#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// A host with one sequencer; no audio runs by itself. Whatever a test does, its blocks may neither
/// take memory nor wait.
struct SongFixture {
    TestHost device;
    CQV& host = *device.host;
    bool readsDisk = false; ///< what starts from disk may wait for its first frames
    CSeq* seq = device.add(new CSeq(&host)); ///< owned by the host

    SongFixture() { rtReset(); }
    ~SongFixture() { EXPECT_TRUE(readsDisk || rtViolations() == 0); }

    CSeqProg* prog() { return seq->getProg(); }
    CSongTrack* track(int kind) { return seq->addTrack(kind, prog(), nullptr); }
    void tempoAt(int tick, float bpm) {
        auto* point = new CTempoPart;
        point->pos = tick;
        point->setTempo(bpm);
        prog()->addTempo(point, nullptr);
    }
    /// A sample in the pool, mono, 16 bits, of `value(frame)`.
    template <class F>
    CSample* addSample(int frames, F value, int rate = 44100) {
        auto* s = new CSample;
        s->setFormat(rate, 16, 1);
        auto* bytes = static_cast<short*>(std::malloc(size_t(frames) * 2));
        for (int i = 0; i < frames; i++) bytes[i] = short(std::lround(value(i) * 32767));
        s->takeData(reinterpret_cast<unsigned char*>(bytes), frames);
        const GraphHold hold(&host);
        host.samples.add(s);
        return s;
    }
    /// Cables from the track to the instrument, and on to the audio out, where it may be already.
    template <class T>
    T* connect(CSongTrack* from, T* instrument) {
        if (!getAudioCable(device.out, instrument->output(), nullptr)) device.connect(instrument);
        const GraphHold hold(&host);
        instrument->addMIDICable(from->track->outPort(), nullptr);
        return instrument;
    }
    /// Runs `edit(undo)` as one step.
    template <class F>
    void step(F edit) {
        CUndo* undo = host.undoStart("Test", seq, {.song = true});
        edit(undo);
        host.undoEnd(undo, true);
    }
    void undo() { device.undo(); }
    void redo() { device.redo(); }
};

/// Stands where an instrument would: `play` is called once per block, with what came in its port.
class TestInstrument : public CComp {
public:
    explicit TestInstrument(CQV* root) : CComp(root) {}
    void init() override {
        inPorts.add(new CInputPort(this));
        outputs.add(new COutputChannel(this));
    }
    void process(int frames) override {
        const ProcessGuard guard(this);
        if (!guard.enter) return;
        mergeMIDI(frames);
        play(frames);
    }
    virtual void play(int) {}
};

inline CPart* midiPart(int pos, int length = barTicks) {
    auto* part = new CMIDIPart;
    part->pos = pos;
    part->length = length;
    return part;
}

inline CMIDIEvent* note(int number, int length = 240) {
    CMIDIEvent* event = createMIDIEvent();
    event->data = asData(midiNoteOn, number, 100);
    event->length = length;
    return event;
}

/// Ticks and second values of a list, in its order.
using Ticks = std::vector<std::pair<int, int>>;

inline Ticks notesOf(CPart* part) {
    Ticks list;
    int tick = 0;
    for (CBaseEvent* e = part->getEvents(); e; e = e->next)
        list.emplace_back(tick += e->delta, static_cast<CMIDIEvent*>(e)->data >> 8 & 127);
    return list;
}

/// Values in percent.
inline Ticks pointsOf(CPart* part, int slot) {
    Ticks list;
    int tick = 0;
    for (CBaseEvent* e = part->getParam(slot); e; e = e->next)
        list.emplace_back(tick += e->delta, int(static_cast<CEnvEvent*>(e)->value * 100.0f + 0.5f));
    return list;
}

/// The whole model as text: what two states must share to be the same song.
std::string dump(CSeq* seq);
