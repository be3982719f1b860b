#include "sequencer/edit/PartActions.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"

#include <algorithm>

namespace {

/// One step, in which `edit(songTrack, part, undo)` is called for each selected part, and what it
/// collects in `change` is recorded.
template <class F>
void eachSelected(CSeq* seq, const char* title, F&& edit, PartChange* change = nullptr) {
    if (!seq->getProg()) return;
    CUndo* undo = seq->host->undoStart(title, seq, {.song = true, .seq = SeqNotice::parts});
    for (auto* songTrack : seq->getProg()->tracks)
        for (CPart* part : selectedParts(songTrack)) edit(songTrack, part, undo);
    if (change) change->record(undo);
    seq->host->undoEnd(undo, false);
}

/// The first two selected audio parts with a clip.
std::vector<CPart*> twoAudioParts(CSeq* seq) {
    std::vector<CPart*> found;
    for (CPart* part : selectedParts(seq->getProg()))
        if (found.size() < 2 && firstClip(part)) found.push_back(part);
    return found;
}

double overlapMs(CSeq* seq, int tick, int ticks) {
    const int rate = asRound(double(seq->host->rate));
    return seq->ticksToFrames(tick, ticks, rate) / rate * 1000.0;
}

} // namespace

void removeSelected(CSeq* seq, const char* title) {
    eachSelected(seq, title, [](CSongTrack* songTrack, CPart* part, CUndo* undo) {
        undo->asRemove(part, &songTrack->parts);
    });
}

void duplicateParts(CSeq* seq) {
    if (!seq->getProg()) return;
    int64_t from = maxTicks, to = -maxTicks;
    for (CPart* part : selectedParts(seq->getProg())) {
        from = std::min(from, int64_t(part->pos));
        to = std::max(to, int64_t(part->pos) + seq->getTicks(part));
    }
    PartChange change;
    eachSelected(
        seq, "Duplicate",
        [&](CSongTrack* songTrack, CPart* part, CUndo*) {
            std::unique_ptr<CPart> copied(part->copy(0));
            copied->pos = limitTicks(part->pos + to - from);
            change.add(songTrack, std::move(copied));
            part->setSelected(false);
        },
        &change);
}

void toggleMutes(CSeq* seq) {
    if (!seq->getProg()) return;
    const std::vector<CPart*> parts = selectedParts(seq->getProg());
    const bool all = std::ranges::all_of(parts, &CPart::muted);
    eachSelected(seq, "Mute part", [all](CSongTrack*, CPart* part, CUndo* undo) {
        if (part->muted() == all) recordMuteToggle(undo, part);
    });
}

void unghostParts(CSeq* seq) {
    eachSelected(seq, "Un-ghost", [](CSongTrack*, CPart* part, CUndo* undo) {
        if (!part->ghostOf) return;
        swapUndoPart(undo, part, part->content()->copy(0));
        undo->asPtr(reinterpret_cast<void**>(part->ghostOf.address()));
        part->ghostOf.storeRelease(nullptr);
    });
}

void CSeq::crossfadeClicked(CObject*) {
    if (!getProg()) return;
    CUndo* undo = host->undoStart("Crossfade", this, {.seq = SeqNotice::parts});
    std::vector<CPart*> parts = twoAudioParts(this);
    if (parts.size() == 2 && parts[1]->pos < parts[0]->pos) std::swap(parts[0], parts[1]);
    const int64_t overlap =
        parts.size() == 2 ? int64_t(parts[0]->pos) + getTicks(parts[0]) - parts[1]->pos : 0;
    const float ms =
        overlap > 0 ? float(asInt(overlapMs(this, parts[1]->pos, int(overlap)))) : 0.0f;
    const bool done = overlap > 0 && firstClip(parts[0]->content())->fadeOutMs == ms &&
                      firstClip(parts[1]->content())->fadeInMs == ms;
    if (overlap > 0 && !done) {
        CPart *left = parts[0]->content(), *right = parts[1]->content();
        CPart* leftEdited = left->copy(0);
        CPart* rightEdited = right == left ? leftEdited : right->copy(0);
        firstClip(leftEdited)->fadeOutMs = ms;
        firstClip(rightEdited)->fadeInMs = ms;
        swapUndoPart(undo, left, leftEdited);
        if (right != left) swapUndoPart(undo, right, rightEdited);
    }
    host->undoEnd(undo, false);
}
