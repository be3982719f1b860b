#include "sequencer/take/TrackTake.h"

#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/TempoMap.h"
#include "sequencer/take/CRecThread.h"
#include "sequencer/take/LiveEdits.h"
#include "sequencer/take/RecQueue.h"
#include "sequencer/take/Takes.h"

#include <algorithm>
#include <climits>
#include <memory>

namespace {

constexpr int newPartTicks = 1920;
constexpr double shortestTake = 0.05; ///< seconds
constexpr int highestNote = 127;
constexpr int viewMargin = 20; ///< pixels between a row and the edge of the view
constexpr int viewFoot = 21;   ///< pixels more at the bottom

} // namespace

int64_t recordLatency(const CTrack* track) {
    const int outside = track->fromDevice ? std::max(0, track->host->recLatency) : 0;
    return int64_t(track->takeLatency) + outside;
}

CDrumEvent* drumHit(int msg) {
    CDrumEvent* event = createDrumEvent();
    event->sound = asByte1(msg) - firstDrumKey;
    event->velocity = float(asByte2(msg)) / float(highestNote);
    return event;
}

CSeq* TrackTake::seq() const {
    return track->seq;
}

CSeqProg* TrackTake::prog() const {
    return track->recSongTrack->prog;
}

void TrackTake::begin() {
    forget();
    active = true;
    pass = prog()->loopCount;
    punch = seq()->recorder.takeStart;
    if (CPart* part = track->recPart) part->setSelected(true);
}

void TrackTake::forget() {
    for (const Pending& note : pendingNotes) freeEvent(note.event);
    for (const Played& one : played) freeEvent(one.event);
    pendingNotes.clear();
    played.clear();
    former.reset();
    params.clear();
    lanes.clear();
    active = swapped = false;
}

void TrackTake::idle(CUndo* step) {
    if (!active) {
        // What is played in the count-in waits for the take.
        if (!track->host->recording && track->recQueue) track->recQueue->clear();
        return;
    }
    if (!step) return;
    if (track->kind == trackAudio) {
        if (track->takesAudio) attachAudio(step, seq()->recorder.recThread.fileOf(track));
    } else {
        if (!track->recQueue->empty() || !params.empty()) attachNotes(step);
        if (track->recAttached) addEvents(step);
    }
    addParams(step);
}

void TrackTake::finish(CUndo* step, RecFile* file) {
    if (track->takesAudio && file) closeAudio(step, file);
    idle(step);
    endHeldNotes();
    placeNoteTakes();
    forget();
}

/// Places a new part on the track at once; the step takes it away.
void TrackTake::link(CPart* part, CUndo* step) {
    CSongTrack* on = track->recSongTrack;
    part->setSelected(true);
    part->reserveSlots(track->slotsInUse(step));
    track->recPart = part;
    track->recAttached = 1;
    swapped = true;
    step->add2(part, &on->parts, nullptr);
    auto staging = std::make_shared<CList>();
    staging->add(part);
    auto room = std::make_shared<PartIndex::Room>(PartIndex::roomFor(on->parts.getCount() + 1));
    seq()->recorder.edits.add([on, part, staging, room] {
        on->parts.move(staging.get(), part, -1);
        on->prog->seq->orderParts(&on->parts, nullptr, false);
        on->index.takeRoom(*room);
    });
    seq()->songNotices.raise(SeqNotice::parts);
}

/// Before the first change of a part that was there: the step keeps a copy, to swap it in.
void TrackTake::keepContent(CUndo* step) {
    if (swapped) return;
    swapped = true;
    CPart* part = track->recPart;
    for (Shared<int>* field : {&part->pos, &part->offset, &part->length})
        step->asInt(field->address());
    CPart* content = part->content();
    CPart* before = content->copy();
    if (keepsPasses()) {
        // Takes change sides with the rest only where both have some.
        if (!before->takes) before->takes = new Takes;
        const std::unique_ptr<CPart> copied(content->copy(1));
        former = std::make_shared<TakeNotes>(content->type, copied->events.exchange(nullptr));
    }
    swapUndoPart(step, content, before);
    step->lastItem->linked = true;
}

int TrackTake::tickOf(double songTick) const {
    const CPart* part = track->recPart;
    return limitTicks(asRound64(songTick - part->pos - part->offset));
}

// Notes and drums.

void TrackTake::attachNotes(CUndo* step) {
    if (track->recAttached) return;
    if (track->recPart) {
        track->recAttached = 1;
        return keepContent(step);
    }
    CPart* part = track->kind == trackDrum ? static_cast<CPart*>(new CDrumPart) : new CMIDIPart;
    part->id = track->id;
    part->pos = asInt(seq()->recorder.takeStart) / quarterTicks * quarterTicks;
    part->length = newPartTicks;
    if (prog()->looping && seq()->recorder.takeStart >= prog()->leftLocator) {
        part->pos = prog()->leftLocator.load();
        part->length = prog()->rightLocator - prog()->leftLocator;
    }
    link(part, step);
}

void TrackTake::addEvents(CUndo*) {
    RecEvent e;
    while (track->recQueue->take(e)) {
        if (track->kind == trackDrum)
            addDrum(e);
        else if (noteOff(e.msg))
            endNote(e);
        else
            addMessage(e);
    }
}

void TrackTake::addDrum(const RecEvent& e) {
    if (!noteOn(e.msg)) return;
    const int tick = tickOf(e.tick);
    addToPart(seq()->autoQuantize ? snapped(seq()->gridTicks(), tick, true) : tick, drumHit(e.msg),
              e.pass);
}

void TrackTake::addMessage(const RecEvent& e) {
    CMIDIEvent* event = createMIDIEvent();
    event->data = e.msg;
    if (noteOn(e.msg))
        pendingNotes.push_back({event, tickOf(e.tick), e.heard, e.tick != e.heard, e.pass});
    else
        addToPart(tickOf(e.tick), event, e.pass);
}

void TrackTake::endNote(const RecEvent& e) {
    const auto found = std::ranges::find_if(pendingNotes, [&e](const Pending& note) {
        return asByte1(note.event->data) == asByte1(e.msg) &&
               chByte(note.event->data) == chByte(e.msg);
    });
    if (found == pendingNotes.end()) return;
    const Pending note = *found;
    pendingNotes.erase(found);
    const CPart* part = track->recPart;
    const int off = tickOf(e.tick);
    if (note.moved && e.heard >= note.heard) // both before the wrap
        note.event->length = std::max(1, asRound(e.heard - note.heard));
    else if (note.tick <= off)
        note.event->length = std::max(1, off - note.tick);
    else
        note.event->length =
            std::max(1, prog()->rightLocator - (note.tick + part->pos + part->offset));
    const bool quantize = seq()->autoQuantize != 0;
    addToPart(quantize ? snapped(seq()->gridTicks(), note.tick, true) : note.tick, note.event,
              note.pass);
    if (track->open()) showRow(asByte1(note.event->data));
}

/// What is still held ends with what was heard last of the take.
void TrackTake::endHeldNotes() {
    double end = seq()->recorder.takeEnd;
    const double limit = seq()->recorder.limit();
    const double late = track->host->framesToTicks(double(recordLatency(track)));
    if (limit < 0.0 || end < limit) end = std::max(end - late, seq()->recorder.takeStart.load());
    while (!pendingNotes.empty()) endNote({end, end, pendingNotes.front().event->data});
}

void TrackTake::addToPart(int tick, CBaseEvent* event, int ofPass) {
    CPart* part = track->recPart;
    if (keepsPasses()) played.push_back({ofPass, tick, copyEvent(part->type, event)});
    seq()->recorder.edits.add([on = track->recSongTrack.load(), part, tick, event] {
        addLiveEvent(on, part, tick, event);
    });
    seq()->songNotices.raise(SeqNotice::parts);
}

// Takes of notes.

bool TrackTake::keepsPasses() const {
    return seq()->recorder.loopNoteTakes && track->kind != trackAudio;
}

/// What was played in a pass that goes from tick to tick of the part.
Takes::Take TrackTake::passTake(int index, int from, int to) const {
    EventCollector notes;
    for (const Played& one : played)
        if (one.pass == index)
            notes.add(asMinMax(one.tick - from, 0, to - from - 1),
                      copyEvent(track->recPart->type, one.event));
    Takes::Take take{from, to - from, 0, 0};
    if (!notes.empty())
        take.notes = std::make_shared<TakeNotes>(track->recPart->type, notes.takeList());
    return take;
}

/// The part plays the last whole pass; what it had where the passes were is a take as well.
void TrackTake::placeNoteTakes() {
    const LoopPasses& passes = seq()->recorder.passes;
    if (!keepsPasses() || played.empty() || passes.count < 1) return;
    CPart* part = track->recPart;
    CPart* content = part->content();
    auto takes = std::make_unique<Takes>();
    if (const Takes* known = takesOf(part)) takes->takes = known->takes;
    const size_t before = takes->takes.size();
    for (int i = 0; i <= passes.count && takes->takes.size() < Takes::most; i++) {
        const int from = tickOf(i ? passes.tick[i - 1] : seq()->recorder.takeStart.load());
        const int to = tickOf(i < passes.count ? double(prog()->rightLocator)
                                               : seq()->recorder.takeEnd.load());
        if (to <= from) continue;
        const Takes::Take take = passTake(i, from, to);
        if (take.notes) takes->takes.push_back(take);
    }
    if (takes->takes.size() == before) return;
    if (former && former->list && before == 0) {
        const Takes::Take& first = takes->takes.front();
        takes->takes.insert(takes->takes.begin(), {0, first.to(), 0, 0, former});
    }
    takes->chooseLast();
    track->takesShown = true;
    const std::shared_ptr<CPart> built(content->copy(1));
    const TakeNotes* had = former.get();
    EventCollector events;
    eachEvent(had ? had->list : nullptr,
              [&](const CBaseEvent* e, int tick) { events.add(tick, copyEvent(part->type, e)); });
    built->setEvents(events.takeList());
    for (const Takes::Piece& piece : takes->comp)
        playNotes(built.get(), takes->takes[size_t(piece.take)], piece.from, piece.to);
    delete built->takes.exchange(takes.release());
    seq()->recorder.edits.add([content, built, on = track->recSongTrack.load()] {
        built->events = content->events.exchange(built->events);
        built->takes = content->takes.exchange(built->takes);
        on->index.expire();
        on->requests.ask(requestLanes);
    });
}

void TrackTake::showRow(int note) {
    const int height = track->noteHeight, top = (highestNote - note) * height;
    const int lowest = track->scroll + track->openHeight - viewMargin - height - viewFoot;
    if (top < track->scroll + viewMargin)
        track->setScroll(top - viewMargin);
    else if (top > lowest)
        track->setScroll(track->scroll + top - lowest);
}

// Audio.

void TrackTake::attachAudio(CUndo* step, RecFile* file) {
    if (!file || file->state.loadAcquire() != RecFile::made) return;
    CSample* sample = file->sample;
    const int frames = sample->frames;
    if (frames < 1) return;
    if (track->recAttached) return growAudio(frames);
    sample->takePending = true;
    CAudioEvent* event = createAudioEvent();
    event->sample = sample;
    event->start = std::min(int(seq()->recorder.takeLead), frames - 1);
    event->end = frames - 1;
    auto* part = new CAudioPart;
    part->id = extractFileName(sample->filename);
    part->chs = sample->chs;
    part->pos = asInt(seq()->recorder.takeStart);
    part->addEvent(0, event);
    link(part, step);
    step->asAdd(sample, &track->host->samples);
}

/// Of sound, until the take ends by itself.
int64_t TrackTake::wantedFrames() const {
    const double from = seq()->recorder.takeStart, to = seq()->recorder.limit();
    if (to < 0.0) return INT_MAX;
    const int rate = asRound(double(track->host->rate));
    return asRound64(seq()->ticksToFrames(asInt(from), asRound(to - from), rate));
}

/// The passes of a loop, in time from where the take began; null when there is one alone.
std::unique_ptr<Takes> TrackTake::loopTakes(int first, int last) const {
    const LoopPasses& passes = seq()->recorder.passes;
    if (!seq()->recorder.loopTakes || passes.count < 1) return nullptr;
    const int begin = asInt(seq()->recorder.takeStart), latency = first - seq()->recorder.takeLead;
    const int shortest = asRound(double(track->host->rate) * shortestTake);
    auto made = std::make_unique<Takes>();
    for (int i = 0; i <= passes.count; i++) {
        Takes::Take t{};
        t.at = i ? passes.tick[i - 1] - begin : 0;
        t.start = i ? passes.frame[i - 1] + latency : first;
        const bool whole = i < passes.count;
        t.end = std::min(whole ? passes.frame[i] + latency - 1 : last, last);
        t.ticks = asRound(whole ? double(prog()->rightLocator) - begin - t.at
                                : seq()->recorder.takeEnd - begin - t.at);
        if (t.end - t.start >= shortest && t.ticks > 0) made->takes.push_back(t);
    }
    made->chooseLast();
    return made->takes.empty() ? nullptr : std::move(made);
}

/// The part spans all takes, and plays the last.
void TrackTake::placeTakes(std::unique_ptr<Takes> takes) {
    CPart* part = track->recPart;
    const int begin = part->pos;
    int from = 0, to = 0;
    for (const Takes::Take& t : takes->takes) {
        from = std::min(from, t.at);
        to = std::max(to, t.to());
    }
    std::shared_ptr<CAudioPart> built(asAudio(part->copy(1)));
    built->takes = takes.release();
    track->takesShown = true;
    built->pos = begin + from;
    built->offset = -from;
    built->length = to - from;
    playComp(seq(), built.get(), begin);
    seq()->recorder.edits.add([part, built, on = track->recSongTrack.load()] {
        auto* audio = asAudio(part);
        built->events = audio->events.exchange(built->events);
        built->takes = audio->takes.exchange(built->takes);
        audio->multiclip = 1;
        audio->pos = built->pos.load();
        audio->offset = built->offset.load();
        audio->length = built->length.load();
        on->prog->seq->orderParts(&on->parts, nullptr, false);
        on->index.expire();
        on->requests.ask(requestLanes);
    });
}

void TrackTake::growAudio(int frames) {
    CPart* part = track->recPart;
    seq()->recorder.edits.add([part, frames] {
        if (CAudioEvent* clip = firstClip(part)) clip->end = frames - 1;
    });
    seq()->songNotices.raise(SeqNotice::parts);
}

void TrackTake::closeAudio(CUndo* step, RecFile* file) {
    seq()->recorder.recThread.make(*file);
    if (file->state != RecFile::made) return;
    CSample* sample = file->sample;
    sample->flushBuffers(true);
    sample->writeHeader();
    sample->finalize();
    sample->keep = false;
    sample->needsPeaks = false;
    attachAudio(step, file);
    if (!track->recAttached) return; // not a frame came through
    track->takesAudio = 0;
    track->recSample = nullptr; // the step's from now on
    sample->takePending = false;
    const int64_t end = int64_t(sample->frames) - 1;
    const int first = int(std::min(recordLatency(track) + seq()->recorder.takeLead, end));
    const int last = int(std::clamp<int64_t>(first + wantedFrames() - 1, first, end));
    if (std::unique_ptr<Takes> takes = loopTakes(first, last)) return placeTakes(std::move(takes));
    seq()->recorder.edits.add([part = track->recPart.load(), first, last] {
        auto* event = firstClip(part);
        if (!event) return;
        event->start = first;
        event->end = last;
    });
}
