#pragma once

#include "sequencer/CSeq.h"
#include "sequencer/CSubTrack.h"
#include "sequencer/Points.h"
#include "support/TestHost.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// A host with one sequencer; no audio runs by itself.
struct SongFixture {
    TestHost device;
    CQV& host = *device.host;
    CSeq* seq = device.add(new CSeq(&host)); ///< owned by the host

    CSeqProg* prog() { return seq->getProg(); }
    CSongTrack* track(int kind) { return seq->addTrack(kind, prog(), nullptr); }
    /// Runs `edit(undo)` as one step.
    template <class F>
    void step(F edit) {
        CUndo* undo = host.undoStart("Test", seq, undoSongChanged);
        edit(undo);
        host.undoEnd(undo, true);
    }
    void undo() {
        host.undoClicked();
        host.settle();
    }
    void redo() {
        host.redoClicked();
        host.settle();
    }
};

inline CPart* midiPart(int pos, int length = barTicks) {
    auto* part = new CMIDIPart;
    part->pos = pos;
    part->length = length;
    return part;
}

inline CMIDIEvent* note(int number) {
    CMIDIEvent* event = createMIDIEvent();
    event->data = 0x640090 | number << 8;
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
