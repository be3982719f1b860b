#include "audiofiles/CSample.h"
#include "base/BufferedWriter.h"
#include "engine/MidiBytes.h"
#include "sequencer/song/CPart.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/RowLoops.h"
#include "sequencer/songfile/FieldReading.h"
#include "sequencer/songfile/SongReading.h"
#include "sequencer/songfile/SongWriting.h"
#include "sequencer/take/Takes.h"

#include <algorithm>
#include <limits>

// What is in a part: its events, and its envelopes.

namespace {

constexpr int intBytes = 4;
constexpr int midiBytes = 9, noteBytes = intBytes; ///< of an event, and more of a note
constexpr int audioBytes = 80, shortAudioBytes = 69, oldAudioBytes = 51;
constexpr int drumBytes = 11, drumParamBytes = 5;
constexpr int pointBytes = 14;
constexpr int mostSounds = 256; ///< that the hits of files can name
constexpr int styleBytes = 7, rowBytes = 2 * intBytes, pinBytes = 4 * intBytes;
constexpr int dataBits = 0x7F7FFF; ///< of a message
constexpr float mostFade = 600000.0f;
constexpr float mostGain = 16.0f, mostTune = 16.0f;
constexpr int mostSemitones = 127;

/// Events in the order of a file, which is that of time: none goes before the one in front of it,
/// or beyond the last tick.
template <class E>
class Chain {
public:
    Chain() = default;
    ~Chain() { freeEvents(head); }
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;

    void add(E* event, int delta) {
        const int next = limitTicks(int64_t(tick) + (head ? asMax(delta, 0) : delta));
        event->delta = next - tick;
        tick = next;
        *link = event;
        link = &event->next;
    }
    E* take() {
        E* list = static_cast<E*>(head);
        head = nullptr;
        return list;
    }

private:
    CBaseEvent* head = nullptr;
    CBaseEvent** link = &head;
    int tick = 0;
};

/// Reads the events of a block whose count comes next, as many as there are whole ones left.
/// `readEvent(chain)` reads one, false when it is cut off; `least` is the shortest there can be.
template <class E, class F>
bool readList(SongReading& r, int least, Chain<E>& chain, F readEvent) {
    if (!r.in.has(intBytes)) return false;
    const int count = r.in.readInt();
    for (int i = 0; i < count; i++)
        if (!r.in.has(least) || !readEvent(chain)) return false;
    return count >= 0;
}

/// Reads a main list into the latest part, if that is of the class; else the block is skipped.
template <class E, class F>
bool readMain(SongReading& r, int size, PartType type, int least, F readEvent) {
    if (!r.part || r.part->type != type) {
        r.skip(size);
        return true;
    }
    Chain<E> chain;
    const bool whole = readList(r, least, chain, readEvent);
    r.part->setEvents(chain.take());
    return whole;
}

bool readMidiEvent(SongReading& r, Chain<CMIDIEvent>& chain) {
    const int delta = r.in.readInt(), flags = r.in.readByte(), data = r.in.readInt();
    if (noteOn(data) && !r.in.has(noteBytes)) return false;
    CMIDIEvent* event = createMIDIEvent();
    event->flags = (unsigned char)flags;
    event->data = data & dataBits;
    if (noteOn(data)) event->length = asMax(readTicks(r.in), 0);
    chain.add(event, delta);
    return true;
}

bool readMidi(SongReading& r, int size) {
    return readMain<CMIDIEvent>(r, size, partMIDI, midiBytes,
                                [&r](Chain<CMIDIEvent>& chain) { return readMidiEvent(r, chain); });
}

/// Brings the range into the sample, as far as that is known, and the length into being.
void limitAudio(CAudioEvent* event, const CPart* part) {
    const bool known = event->sample && event->sample->frames > 0;
    const int last = known ? event->sample->frames - 1 : std::numeric_limits<int>::max();
    event->end = asMinMax(event->end, 0, last);
    event->start = asMinMax(event->start, 0, event->end);
    if (event->mode != 0 && event->ticks < 1)
        event->ticks = part->length > 0 ? int(part->length) : quarterTicks;
}

void readGainPan(SongReading& r, CAudioEvent* event) {
    event->gain = readFloat(r.in, 0.0f, mostGain, 1.0f);
    event->pan = readFloat(r.in, -1.0f, 1.0f, 0.0f);
}

void readMode(SongReading& r, CAudioEvent* event) {
    event->mode = (unsigned char)asMinMax(r.in.readByte(), 0, 2);
    event->reverse = (unsigned char)readSwitch(r.in);
}

void readRange(SongReading& r, CAudioEvent* event) {
    event->start = r.in.readInt();
    event->end = r.in.readInt();
    event->ticks = readTicks(r.in);
    event->semitones = readLimited(r.in, -mostSemitones, mostSemitones);
    event->fine = readFloat(r.in, -1.0f, 1.0f, 0.0f);
}

void readFades(SongReading& r, CAudioEvent* event) {
    event->fadeInMs = readFloat(r.in, 0.0f, mostFade, 0.0f);
    event->fadeInCurve = readFloat(r.in, -1.0f, 1.0f, 0.0f);
    event->fadeOutMs = readFloat(r.in, 0.0f, mostFade, 0.0f);
    event->fadeOutCurve = readFloat(r.in, -1.0f, 1.0f, 0.0f);
}

/// Length of the events of "aevents2": a form that was announced, but is not ours, is shorter.
bool isShort(SongReading& r, int size) {
    const int64_t at = r.in.getPos();
    const int count = r.in.readInt();
    r.in.setPos(at);
    return count > 0 && (size - intBytes) / count == shortAudioBytes;
}

bool readAudio(SongReading& r, int size) {
    r.newerAudio = true;
    const bool brief = isShort(r, size);
    const int bytes = brief ? shortAudioBytes : audioBytes;
    return readMain<CAudioEvent>(r, size, partAudio, bytes, [&](Chain<CAudioEvent>& chain) {
        CAudioEvent* event = createAudioEvent();
        const int delta = r.in.readInt();
        event->flags = (unsigned char)(brief ? r.in.readByte() : r.in.readInt());
        event->sample = r.sampleAt(r.in.readInt());
        event->slice = r.in.readInt();
        readGainPan(r, event);
        readMode(r, event);
        r.skip(2);
        readRange(r, event);
        readFades(r, event);
        skipInts(r.in, brief ? 2 : 4);
        limitAudio(event, r.part);
        chain.add(event, delta);
        return true;
    });
}

bool readOldAudio(SongReading& r, int size) {
    if (r.newerAudio) {
        r.skip(size);
        return true;
    }
    return readMain<CAudioEvent>(r, size, partAudio, oldAudioBytes,
                                 [&r](Chain<CAudioEvent>& chain) {
                                     CAudioEvent* event = createAudioEvent();
                                     const int delta = r.in.readInt();
                                     event->flags = (unsigned char)r.in.readByte();
                                     event->sample = r.sampleAt(r.in.readInt());
                                     readGainPan(r, event);
                                     readMode(r, event);
                                     readRange(r, event);
                                     skipInts(r.in, 2);
                                     event->slice = r.in.readInt();
                                     limitAudio(event, r.part);
                                     chain.add(event, delta);
                                     return true;
                                 });
}

void setDrumParam(CDrumEvent* event, int id, SongReading& r) {
    if (id == 0)
        event->velocity = readFloat(r.in, 0.0f, 1.0f, 1.0f);
    else if (id == 1)
        event->pan = readFloat(r.in, -1.0f, 1.0f, 0.0f);
    else if (id == 2)
        event->tune = readFloat(r.in, 1.0f / mostTune, mostTune, 1.0f);
    else
        r.in.readFloat();
}

bool readHit(SongReading& r, Chain<CDrumEvent>& chain) {
    CDrumEvent* event = createDrumEvent();
    const int delta = r.in.readInt();
    event->sound = r.in.readByte();
    event->flags = (unsigned char)r.in.readByte();
    event->length = asMax(readTicks(r.in), 0);
    const int params = r.in.readByte();
    chain.add(event, delta);
    if (!r.in.has(params * drumParamBytes)) return false;
    for (int i = 0; i < params; i++) setDrumParam(event, r.in.readByte(), r);
    return true;
}

bool readDrums(SongReading& r, int size) {
    return readMain<CDrumEvent>(r, size, partDrum, drumBytes,
                                [&r](Chain<CDrumEvent>& chain) { return readHit(r, chain); });
}

/// The list that comes next, of a take.
template <class E, class F>
bool readTake(SongReading& r, Takes::Take& take, int least, F readEvent) {
    Chain<E> chain;
    const bool whole =
        readList(r, least, chain, [&](Chain<E>& events) { return readEvent(r, events); });
    take.notes = std::make_shared<TakeNotes>(r.part->type, chain.take());
    return whole;
}

bool readTakeNotes(SongReading& r, int size) {
    const int64_t at = r.in.getPos();
    if (!r.in.has(intBytes)) return false;
    const int index = r.in.readInt();
    Takes* takes = r.part ? r.part->takes.load() : nullptr;
    if (takes && index >= 0 && size_t(index) < takes->takes.size()) {
        Takes::Take& take = takes->takes[size_t(index)];
        if (r.part->type == partMIDI)
            return readTake<CMIDIEvent>(r, take, midiBytes, readMidiEvent);
        if (r.part->type == partDrum) return readTake<CDrumEvent>(r, take, drumBytes, readHit);
    }
    r.in.setPos(at + size);
    return true;
}

bool readPoints(SongReading& r, int size) {
    const int64_t at = r.in.getPos();
    if (!r.in.has(intBytes)) return false;
    const int slot = r.in.readInt();
    if (!r.part || slot < 0 || slot >= maxSlots || !r.reserveSlots(r.part, slot + 1)) {
        r.in.setPos(at + size);
        return true;
    }
    Chain<CEnvEvent> chain;
    const bool whole = readList(r, pointBytes, chain, [&r](Chain<CEnvEvent>& points) {
        const int delta = r.in.readInt(), flags = r.in.readByte();
        CEnvEvent* point = createEnvEvent(nullptr, readFloat(r.in, 0.0f, 1.0f, 0.0f));
        point->flags = (unsigned char)flags;
        point->curve = readFloat(r.in, -1.0f, 1.0f, 0.0f);
        point->shape = (unsigned char)readSwitch(r.in);
        points.add(point, delta);
        return true;
    });
    r.part->setParam(slot, chain.take());
    return whole;
}

/// Of the latest part: the events whose style is not the usual one, by their place in the list.
bool readStyles(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int count = r.in.readInt();
    CBaseEvent* event = r.part ? r.part->getEvents() : nullptr;
    for (int i = 0, at = 0; i < count; i++) {
        if (!r.in.has(styleBytes)) return false;
        const int index = r.in.readInt();
        HitStyle style;
        style.chance = (unsigned char)asMinMax(r.in.readByte(), 0, mostChance);
        style.repeats = (unsigned char)asMinMax(r.in.readByte(), 1, mostRepeats);
        style.flamMs = (unsigned char)(asMinMax(r.in.readByte(), 0, mostFlamMs) & 127);
        if (index < at) return false; // they are in order
        for (; event && at < index; at++) event = event->next;
        if (event) event->style = style;
    }
    return count >= 0;
}

/// Of the latest part: the places of muted events, in order, behind the styles.
bool readMuted(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int count = r.in.readInt();
    CBaseEvent* event = r.part ? r.part->getEvents() : nullptr;
    for (int i = 0, at = 0; i < count; i++) {
        if (!r.in.has(intBytes)) return false;
        const int index = r.in.readInt();
        if (index < at) return false;
        for (; event && at < index; at++) event = event->next;
        if (event) event->style.muted = 1;
    }
    return count >= 0;
}

/// Of the latest part: the stretch markers of clips, by their place in the list.
bool readPins(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int count = r.in.readInt();
    CBaseEvent* event = r.part && r.part->type == partAudio ? r.part->getEvents() : nullptr;
    for (int i = 0, at = 0; i < count; i++) {
        if (!r.in.has(2 * intBytes)) return false;
        const int index = r.in.readInt(), pins = r.in.readInt();
        if (index < at || pins < 0 || pins > ClipPins::most || !r.in.has(pins * pinBytes))
            return false;
        for (; event && at < index; at++) event = event->next;
        ClipPins read;
        for (; read.count < pins; read.count++) {
            ClipPin& pin = read.list[read.count];
            pin.frame = asMax(r.in.readInt(), 0);
            pin.pitch = readFloat(r.in, -ClipPins::mostPitch, ClipPins::mostPitch, 0.0f);
            const double share = r.in.readDouble();
            pin.share = std::isfinite(share) ? share : 0.0;
        }
        if (event) asClip(event)->pins = read;
    }
    return count >= 0;
}

bool readRows(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int count = r.in.readInt();
    RowLoops loops;
    for (int i = 0; i < count; i++) {
        if (!r.in.has(rowBytes)) return false;
        const int sound = r.in.readInt(), ticks = r.in.readInt();
        if (sound >= 0 && sound < mostSounds) loops.set(sound, ticks);
    }
    if (r.part && !r.part->ghostOf) setRowLoops(r.part, &loops);
    return count >= 0;
}

constexpr SongBlock blocks[] = {{"mevents", readMidi},     {"aevents2", readAudio},
                                {"aevents", readOldAudio}, {"devents", readDrums},
                                {"amevents", readPoints},  {"takeNotes", readTakeNotes},
                                {"hitStyles", readStyles}, {"mutedNotes", readMuted},
                                {"rowLoops", readRows},    {"stretchMarkers", readPins}};

int countEvents(const CBaseEvent* list) {
    int count = 0;
    for (; list; list = list->next) count++;
    return count;
}

/// Writes a list as a block; `writeEvent(stream, event)` writes what follows the event's delta.
template <class E, class F>
void writeList(SongWriting& w, const char* name, CBaseEvent* list, F writeEvent, int slot = -1) {
    {
        BufferedWriter s(&w.scratch());
        if (slot >= 0) s.writeInt(slot);
        s.writeInt(countEvents(list));
        for (; list; list = list->next) {
            s.writeInt(list->delta);
            writeEvent(s, static_cast<E*>(list));
        }
    }
    w.writeScratch(name);
}

void writeMidi(BufferedWriter& s, const CMIDIEvent* event) {
    s.writeByte(event->flags);
    s.writeInt(event->data);
    if (noteOn(event->data)) s.writeInt(event->length);
}

void writeRange(BufferedWriter& s, const CAudioEvent* event) {
    for (int v : {event->start, event->end, event->ticks, event->semitones}) s.writeInt(v);
    s.writeFloat(event->fine);
}

void writeAudio(BufferedWriter& s, const CAudioEvent* event, int sample) {
    s.writeInt(event->flags);
    s.writeInt(sample);
    s.writeInt(event->slice);
    s.writeFloat(event->gain);
    s.writeFloat(event->pan);
    for (unsigned char v : {event->mode, event->reverse}) s.writeByte(v);
    s.writeShort(0);
    writeRange(s, event);
    for (float v : {event->fadeInMs, event->fadeInCurve, event->fadeOutMs, event->fadeOutCurve})
        s.writeFloat(v);
    for (int i = 0; i < 4; i++) s.writeInt(0);
}

void writeOldAudio(BufferedWriter& s, const CAudioEvent* event, int sample) {
    s.writeByte(event->flags);
    s.writeInt(sample);
    s.writeFloat(event->gain);
    s.writeFloat(event->pan);
    for (unsigned char v : {event->mode, event->reverse}) s.writeByte(v);
    writeRange(s, event);
    for (int v : {0, 0, event->slice}) s.writeInt(v);
}

void writeDrum(BufferedWriter& s, CDrumEvent* event) {
    s.writeByte((unsigned char)event->sound);
    s.writeByte(event->flags);
    s.writeInt(event->length);
    const std::vector<DrumParam> params = drumParamList(event);
    s.writeByte((unsigned char)params.size());
    for (const DrumParam& param : params) {
        s.writeByte((unsigned char)param.id);
        s.writeFloat(*param.value);
    }
}

void writePoint(BufferedWriter& s, const CEnvEvent* point) {
    s.writeByte(point->flags);
    s.writeFloat(point->value);
    s.writeFloat(point->curve);
    s.writeByte(point->shape);
}

/// A block of the places of those events that `chosen` picks, each with what `writeEvent(stream,
/// event)` writes; nothing without any.
template <class C, class F>
void writePlaces(SongWriting& w, const char* name, const CBaseEvent* list, C chosen, F writeEvent) {
    int count = 0;
    for (const CBaseEvent* e = list; e; e = e->next) count += chosen(e);
    if (count == 0) return;
    {
        BufferedWriter s(&w.scratch());
        s.writeInt(count);
        for (int index = 0; list; list = list->next, index++) {
            if (!chosen(list)) continue;
            s.writeInt(index);
            writeEvent(s, list);
        }
    }
    w.writeScratch(name);
}

void writeStyles(SongWriting& w, const CBaseEvent* list) {
    const auto unusual = [](const CBaseEvent* e) {
        HitStyle style = e->style;
        style.muted = 0;
        return style != HitStyle();
    };
    writePlaces(w, "hitStyles", list, unusual, [](BufferedWriter& s, const CBaseEvent* e) {
        for (const unsigned char v :
             {e->style.chance, e->style.repeats, (unsigned char)e->style.flamMs})
            s.writeByte(v);
    });
    const auto muted = [](const CBaseEvent* e) { return e->style.muted != 0; };
    writePlaces(w, "mutedNotes", list, muted, [](BufferedWriter&, const CBaseEvent*) {});
}

void writePins(SongWriting& w, const CBaseEvent* list) {
    const auto pinsOf = [](const CBaseEvent* e) -> const ClipPins& { return asClip(e)->pins; };
    const auto pinned = [&](const CBaseEvent* e) { return pinsOf(e).count > 0; };
    writePlaces(w, "stretchMarkers", list, pinned, [&](BufferedWriter& s, const CBaseEvent* e) {
        s.writeInt(pinsOf(e).count);
        for (const ClipPin& pin : pinsOf(e)) {
            s.writeInt(pin.frame);
            s.writeFloat(pin.pitch);
            s.writeDouble(pin.share);
        }
    });
}

void writeRows(SongWriting& w, CPart* part) {
    const RowLoops* loops = rowLoops(part);
    if (!loops) return;
    const int most = int(loops->ticks.size());
    {
        BufferedWriter s(&w.scratch());
        s.writeInt(int(std::ranges::count_if(loops->ticks, [](int t) { return t > 0; })));
        for (int sound = 0; sound < most; sound++)
            if (const int ticks = loops->of(sound))
                for (const int v : {sound, ticks}) s.writeInt(v);
    }
    w.writeScratch("rowLoops");
}

} // namespace

std::span<const SongBlock> eventBlocks() {
    return blocks;
}

void writeEvents(SongWriting& w, CPart* part) {
    CBaseEvent* list = part->getEvents();
    if (part->type == partMIDI) writeList<CMIDIEvent>(w, "mevents", list, writeMidi);
    if (part->type == partDrum) writeList<CDrumEvent>(w, "devents", list, writeDrum);
    if (part->type == partMIDI || part->type == partDrum) writeStyles(w, list);
    writeRows(w, part);
    if (part->type == partAudio) {
        writeList<CAudioEvent>(w, "aevents2", list,
                               [&w](BufferedWriter& s, const CAudioEvent* event) {
                                   writeAudio(s, event, w.sampleIndex(event->sample));
                               });
        writeList<CAudioEvent>(w, "aevents", list,
                               [&w](BufferedWriter& s, const CAudioEvent* event) {
                                   writeOldAudio(s, event, w.sampleIndex(event->sample));
                               });
        writePins(w, list);
    }
    for (int slot = 0; slot < part->reservedSlots(); slot++)
        if (CEnvEvent* points = part->getParam(slot))
            writeList<CEnvEvent>(w, "amevents", points, writePoint, slot);
}

void writeTakeNotes(SongWriting& w, const Takes& takes) {
    for (size_t i = 0; i < takes.takes.size(); i++) {
        const TakeNotes* notes = takes.takes[i].notes.get();
        if (!notes) continue;
        if (notes->type == partMIDI)
            writeList<CMIDIEvent>(w, "takeNotes", notes->list, writeMidi, int(i));
        else
            writeList<CDrumEvent>(w, "takeNotes", notes->list, writeDrum, int(i));
    }
}
