#include "notes/EventCells.h"

#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "instruments/CDrumSound.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/Bars.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/song/EventLanes.h"
#include "ui/NotePlace.h"
#include "ui/PlaceText.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

namespace {

using enum EventColumn;
constexpr EventColumn midiColumns[] = {position, type,   channel, key, value,
                                       length,   chance, repeats, flam};
constexpr EventColumn drumColumns[] = {position, sound,  velocity, pan, tune,
                                       length,   chance, repeats,  flam};
constexpr size_t styleColumns = 3; ///< at the end
constexpr int mostData = 127, mostBend = 16383, bendMiddle = 8192;
constexpr double percent = 100;

struct Heading {
    const char* title;
    int width;
};
constexpr Heading headings[] = {{"Position", 78}, {"Type", 68},   {"Ch", 26},     {"Key", 46},
                                {"Value", 46},    {"Length", 62}, {"Sound", 100}, {"Vel", 38},
                                {"Pan", 38},      {"Tune", 38},   {"Chance", 42}, {"Rep", 28},
                                {"Flam", 32}};

bool ofKeys(int data) {
    return statusByte(data) == midiNoteOn || statusByte(data) == midiAftertouch;
}

/// The values of a message that are typed: a key or number, -1 for none, and its value.
struct Data {
    int first = -1;
    std::optional<int> value;
};
Data dataOf(int data) {
    switch (statusByte(data)) {
    case midiNoteOn:
    case midiAftertouch:
    case midiController:
        return {asByte1(data), asByte2(data)};
    case midiProgram:
    case midiPressure:
        return {-1, asByte1(data)};
    case midiPitchBend:
        return {-1, (asByte1(data) | asByte2(data) << 7) - bendMiddle};
    default:
        return {};
    }
}

int packed(int data, const Data& to) {
    const int status = data & 0xFF;
    if (statusByte(data) == midiPitchBend) {
        const int bend = asMinMax(to.value.value_or(0) + bendMiddle, 0, mostBend);
        return asData(status, bend & 0x7F, bend >> 7);
    }
    const int least = statusByte(data) == midiNoteOn ? 1 : 0; // a note with none would be its end
    const int kept = asMinMax(to.value.value_or(0), least, mostData);
    if (to.first < 0) return asData(status, kept, asByte2(data));
    return asData(status, asMinMax(to.first, 0, mostData), kept);
}

/// 0 velocity, 1 pan, 2 tune of a hit; -1 for other columns.
int paramOf(EventColumn column) {
    return column == velocity ? 0 : column == pan ? 1 : column == tune ? 2 : -1;
}

/// The lane that shows what the column tells of notes and hits; 0 for other columns.
int styleLane(EventColumn column) {
    return column == chance    ? laneChance
           : column == repeats ? laneRepeats
           : column == flam    ? laneFlam
                               : 0;
}

/// -1 without one.
int styleNumber(int partType, const CBaseEvent* event, int lane) {
    const EventLane shown{lane, 0};
    return onLane(shown, partType, event) ? styleOf(lane, laneValue(shown, partType, event)) : -1;
}

bool setStyle(int partType, CBaseEvent* event, int lane, int number) {
    const EventLane shown{lane, 0};
    if (!onLane(shown, partType, event)) return false;
    setLaneValue(shown, partType, event, styleShare(lane, number));
    return true;
}

CStr midiText(const CMIDIEvent* event, EventColumn column) {
    const Data data = dataOf(event->data);
    if (!data.value) return {};
    if (column == channel) return asStr(*messageChannel(event));
    if (column == value) return asStr(*data.value);
    if (column != key || data.first < 0) return {};
    return ofKeys(event->data) ? noteToStr(data.first) : asStr(data.first);
}

CStr hitText(const NotePlace& place, const CDrumEvent* hit, EventColumn column) {
    if (column == sound) {
        const CDrumSound* told = place.track->drumSound(hit->sound);
        return told ? told->getId() : asStr(hit->sound + 1);
    }
    const int param = paramOf(column);
    return param < 0 ? CStr() : asStr(asRound(double(drumParam(hit, param)) * percent));
}

std::optional<int> numberOf(const CStr& text) {
    char* end = nullptr;
    const long number = std::strtol(text.asChar(), &end, 10);
    if (end == text.asChar() || *end) return std::nullopt;
    return int(std::clamp(number, -1L << 30, 1L << 30));
}

/// "5.2.120", of which beat and ticks may be left out; none for what is no place.
std::optional<int> placeOf(CSeq* seq, const CStr& text) {
    BarPlace at{0, 1, 0};
    const char* from = text.asChar();
    for (int* part : {&at.bar, &at.beat, &at.ticks}) {
        char* end = nullptr;
        *part = int(std::clamp(std::strtol(from, &end, 10), -1L, 1L << 30));
        if (end == from) return std::nullopt;
        from = *end == '.' ? end + 1 : end;
        if (*end == 0) break;
    }
    if (*from || at.bar < 1 || at.beat < 1 || at.ticks < 0) return std::nullopt;
    return tickOf(seq, at);
}

int kept(const NotePlace& place, int songTick) {
    const int64_t own = int64_t(songTick) - place.part->pos - place.part->offset;
    return int(std::clamp<int64_t>(own, -place.part->offset,
                                   int64_t(maxTicks) - place.part->pos - place.part->offset));
}

void setLength(CellEvent& at, int partType, int64_t ticks) {
    if (int* own = eventLength(partType, at.event))
        *own = int(std::clamp<int64_t>(ticks, 1, maxTicks));
}

bool setMidi(CMIDIEvent* event, EventColumn column, const CStr& text) {
    Data data = dataOf(event->data);
    std::optional<int> number = numberOf(text);
    if (column == key && ofKeys(event->data) && !number) {
        const int named = keyOf(text);
        if (named >= 0) number = named;
    }
    if (!number || !data.value || (column == key && data.first < 0)) return false;
    if (column == channel) {
        event->data = (event->data & ~0x0F) | (asMinMax(*number, 1, 16) - 1);
        return true;
    }
    if (column == key)
        data.first = *number;
    else
        data.value = *number;
    event->data = packed(event->data, data);
    return true;
}

bool setHit(const NotePlace& place, CDrumEvent* hit, EventColumn column, const CStr& text) {
    if (column == sound) {
        for (int i = 0; i < place.rows.count(); i++)
            if (const CDrumSound* s = place.track->drumSound(i); s && s->getId() == text)
                return hit->sound = i, true;
    }
    const std::optional<int> number = numberOf(text);
    if (!number) return false;
    if (column == sound)
        hit->sound = asMinMax(*number - 1, 0, asMax(0, place.rows.count() - 1));
    else
        setDrumParam(hit, paramOf(column), float(*number / percent));
    return true;
}

} // namespace

std::optional<int> messageChannel(const CMIDIEvent* event) {
    return dataOf(event->data).value ? std::optional(chByte(event->data) + 1) : std::nullopt;
}

std::optional<int> messageValue(const CMIDIEvent* event) {
    return dataOf(event->data).value;
}

std::span<const EventColumn> noteColumns(int partType) {
    return partType == partDrum ? std::span<const EventColumn>(drumColumns)
                                : std::span<const EventColumn>(midiColumns);
}

std::span<const EventColumn> eventColumns(int partType) {
    const std::span<const EventColumn> all = noteColumns(partType);
    return all.first(all.size() - styleColumns);
}

const char* columnTitle(EventColumn column) {
    return headings[int(column)].title;
}

int columnWidth(EventColumn column) {
    return headings[int(column)].width;
}

const char* eventType(int partType, const CBaseEvent* event) {
    if (partType == partDrum) return "Hit";
    switch (statusByte(asMessage(event)->data)) {
    case midiNoteOn:
        return "Note-on";
    case midiPressure:
        return "Ch.pre";
    case midiController:
        return "C.Change";
    case midiProgram:
        return "Prog.ch";
    case midiPitchBend:
        return "Pitch.wh";
    case midiAftertouch:
        return "Aftertouch";
    default:
        return "Unknown data";
    }
}

CStr cellText(const NotePlace& place, const CBaseEvent* event, int tick, EventColumn column) {
    const int partType = place.part->type;
    if (column == position) {
        const BarPlace at = barPlace(place.seq, place.part->pos + place.part->offset + tick);
        return asStr(at.bar) + "." + asStr(at.beat) + "." + asStr(at.ticks);
    }
    if (column == type) return eventType(partType, event);
    if (column == length) {
        const int* ticks = eventLength(partType, const_cast<CBaseEvent*>(event));
        return ticks ? spanText(place.seq, *ticks) : CStr();
    }
    if (const int lane = styleLane(column)) {
        const int number = styleNumber(partType, event, lane);
        return number < 0 ? CStr() : asStr(number);
    }
    return partType == partDrum ? hitText(place, asHit(event), column)
                                : midiText(asMessage(event), column);
}

bool setCell(const NotePlace& place, CellEvent& at, EventColumn column, const CStr& text) {
    const int partType = place.part->type;
    if (column == type) return false;
    if (column == position) {
        const std::optional<int> to = placeOf(place.seq, text);
        if (to) at.tick = kept(place, *to);
        return to.has_value();
    }
    if (column == length) {
        const int ticks = spanOf(place.seq, text);
        if (ticks <= 0 || !eventLength(partType, at.event)) return false;
        setLength(at, partType, ticks);
        return true;
    }
    if (const int lane = styleLane(column)) {
        const std::optional<int> number = numberOf(text);
        return number && setStyle(partType, at.event, lane, *number);
    }
    return partType == partDrum ? setHit(place, asHit(at.event), column, text)
                                : setMidi(asMessage(at.event), column, text);
}

void stepCell(const NotePlace& place, CellEvent& at, EventColumn column, int by) {
    const int partType = place.part->type, grid = asMax(1, place.grid.step);
    if (column == position) {
        at.tick = kept(place, saturate(int64_t(at.tick) + place.part->pos + place.part->offset +
                                       int64_t(by) * grid));
    } else if (column == length) {
        if (const int* own = eventLength(partType, at.event))
            setLength(at, partType, *own + int64_t(by) * grid);
    } else if (const int lane = styleLane(column)) {
        setStyle(partType, at.event, lane, styleNumber(partType, at.event, lane) + by);
    } else if (partType == partDrum) {
        auto* hit = asHit(at.event);
        if (column == sound)
            hit->sound = asMinMax(hit->sound + by, 0, asMax(0, place.rows.count() - 1));
        else
            setDrumParam(hit, paramOf(column),
                         drumParam(hit, paramOf(column)) + float(by / percent));
    } else if (column != type) {
        auto* event = asMessage(at.event);
        const Data data = dataOf(event->data);
        const int now = column == channel ? chByte(event->data) + 1
                        : column == key   ? data.first
                                          : data.value.value_or(0);
        setMidi(event, column, asStr(now + by));
    }
}
