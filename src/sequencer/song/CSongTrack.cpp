#include "sequencer/song/CSongTrack.h"

#include "base/Numbers.h"
#include "engine/CFreezeItem.h"
#include "engine/CMIDIQ.h"
#include "engine/CUndo.h"
#include "engine/GraphHold.h"
#include "sequencer/play/AudioVoices.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>

namespace {
constexpr int songTrackType = 5;
}

CSongTrack::CSongTrack(CSeqProg* program, CTrack* songTrack)
    : noteOffsNext(new CMIDIQ(nullptr)), noteOffs(new CMIDIQ(nullptr)), prog(program),
      track(songTrack) {
    type = songTrackType;
    const bool drums = track->kind == trackDrum;
    if (drums || track->kind == trackAudio) voices = std::make_unique<AudioVoices>(this, drums);
}

CSongTrack::~CSongTrack() {
    deleteAll(parts);
    deleteAll(freezeItems);
    delete noteOffsNext;
    delete noteOffs;
}

bool CSongTrack::acceptPart(const CPart* part) const {
    switch (track->kind) {
    case trackMIDI:
        return part->type == partMIDI;
    case trackAudio:
        return part->type == partAudio;
    case trackDrum:
        return part->type == partDrum;
    default:
        return false;
    }
}

bool CSongTrack::takesEdits(const CPart* part) const {
    return !track->locked && acceptPart(part);
}

CPart* CSongTrack::addPart(CPart* part, CUndo* undo) {
    if (!acceptPart(part)) {
        delete part;
        return nullptr;
    }
    part->reserveSlots(track->slotsInUse(undo));
    if (undo) {
        undo->effects.song = true; // puts the list in order
        undo->asAdd(part, &parts);
        return part;
    }
    GraphHold hold(track->host);
    parts.add(part);
    prog->seq->orderParts(&parts, nullptr, false);
    index.reserve(parts.getCount());
    requests.ask(requestSetup);
    return part;
}

CPart* CSongTrack::linkPart(CPart* part) {
    if (!acceptPart(part)) {
        delete part;
        return nullptr;
    }
    part->reserveSlots(track->slotsInUse());
    parts.add(part);
    index.reserve(parts.getCount());
    return part;
}

int CSongTrack::duration() {
    int64_t end = 0;
    for (auto* part : parts) end = std::max(end, int64_t(part->pos) + prog->seq->getTicks(part));
    return saturate(end);
}
