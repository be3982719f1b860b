#include "project/PartDrop.h"

#include "base/CStream.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/MidiBytes.h"
#include "instruments/CDrumSound.h"
#include "project/ClipContent.h"
#include "project/KitDrop.h"
#include "sequencer/edit/KitEdits.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/midi/MidiImport.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/Points.h"

namespace {

constexpr float topVelocity = 127.0f;

/// One drop on its way.
class PartDrop {
public:
    PartDrop(const PartSpot& where, CUndo* step)
        : place(where), undo(step), coming(emptyPart(where.part->type)) {}

    void add(const CStr& path);
    void record();

    CStr left; ///< the first that could not come

private:
    bool addMidi(const CStr& path);
    bool addClip(const CStr& path);
    void addSamples();
    void addEvents(CPart* from, int shift);

    const PartSpot& place;
    CUndo* undo;
    std::unique_ptr<CPart> coming;
    EventCollector events;
    std::vector<CStr> samples;
};

void PartDrop::add(const CStr& path) {
    const SongFile kind = songFileOf(path);
    if (!partTakes(place.part, kind)) return;
    if (kind == SongFile::audio) return samples.push_back(path);
    const bool came = kind == SongFile::midi ? addMidi(path) : addClip(path);
    if (!came && left.empty()) left = path;
}

/// By the import of songs, into a step that is never done.
bool PartDrop::addMidi(const CStr& path) {
    CUndo scratch("", place.seq, {});
    const MidiWay asIs{.withPoints = false};
    const MidiImport read = openMIDIFile(place.seq, nullptr, path, &scratch, 0, asIs);
    if (read == MidiImport::unreadable || read == MidiImport::notMidi) return false;
    for (auto* item : scratch.items) {
        if (!item->object || item->object->category != categoryPart) continue;
        if (item->object->type != partMIDI) continue;
        auto* part = static_cast<CPart*>(item->object);
        addEvents(part, part->pos);
    }
    return true;
}

bool PartDrop::addClip(const CStr& path) {
    ClipContent clip(place.seq);
    CFileStream stream(path, 0);
    if (!clip.read(&stream) || clip.part->type == partAudio) return false;
    const bool drums = clip.part->type == partDrum;
    if (drums && place.part->type != partDrum) return false;
    if (drums && !takeDrums(clip, place.seq, place.track, undo)) return false;
    addEvents(clip.part.get(), 0);
    return true;
}

/// Those that are of use here; a note on a drum part becomes a hit.
void PartDrop::addEvents(CPart* from, int shift) {
    const bool toDrums = coming->type == partDrum;
    eachEvent(from->getEvents(), [&](const CBaseEvent* e, int tick) {
        const int at = limitTicks(int64_t(tick) + shift);
        if (from->type == coming->type) return events.add(at, copyEvent(from->type, e));
        const auto* note = asMessage(e);
        if (!toDrums || !noteOn(note->data)) return;
        CDrumEvent* hit = createDrumEvent();
        hit->sound = asByte1(note->data) - firstDrumKey;
        hit->length = note->length;
        hit->velocity = float(asByte2(note->data)) / topVelocity;
        if (!place.track->drumSound(hit->sound)) return freeEvent(hit);
        events.add(at, hit);
    });
}

void PartDrop::addSamples() {
    CDrumSound* sound = place.row >= 0 ? place.track->drumSound(place.row) : nullptr;
    if (sound && !samples.empty()) {
        const CStr first = samples.front();
        samples.erase(samples.begin());
        if (!recordSample(place.seq, sound, first, undo) && left.empty()) left = first;
    }
    const CStr unread = recordDrums(place.seq, place.track, samples, undo);
    if (left.empty()) left = unread;
}

void PartDrop::record() {
    if (!samples.empty()) addSamples();
    if (events.empty()) return;
    coming->setEvents(events.takeList());
    coming->length = maxTicks;
    place.seq->pasteData(undo, coming.get(), place.part, place.tick);
}

CStr titleOf(const std::vector<CStr>& paths) {
    CStr names;
    for (const CStr& path : paths) names += (names.empty() ? "" : ", ") + extractFileName(path);
    return "Drop " + names;
}

} // namespace

bool partTakes(const CPart* part, SongFile kind) {
    const bool notes = kind == SongFile::midi || kind == SongFile::clip;
    if (part->type == partMIDI) return notes;
    return part->type == partDrum && (notes || kind == SongFile::audio);
}

CStr dropOnPart(const PartSpot& place, const std::vector<CStr>& paths) {
    std::vector<CStr> taken;
    for (const CStr& path : paths)
        if (partTakes(place.part, songFileOf(path))) taken.push_back(path);
    if (taken.empty() || place.track->locked) return {};
    CUndo* undo = place.seq->host->undoStart(
        titleOf(taken), place.seq,
        {.song = true, .host = HostNotice::pool, .seq = SeqNotice::tracks | SeqNotice::parts});
    PartDrop drop(place, undo);
    for (const CStr& path : taken) drop.add(path);
    drop.record();
    place.seq->host->undoEnd(undo, false);
    return drop.left;
}
