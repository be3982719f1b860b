#pragma once

#include "base/CStr.h"

#include <optional>
#include <span>

struct CBaseEvent;
struct CMIDIEvent;
struct NotePlace;

/// What the columns of the event list tell of an event of a MIDI or drum part, and how typing and
/// arrows change it. Interface thread.
enum class EventColumn {
    position,
    type,
    channel,
    key,
    value,
    length,
    sound,
    velocity,
    pan,
    tune,
    chance,
    repeats,
    flam
};

std::span<const EventColumn> eventColumns(int partType); ///< PartType
/// The same with what is of notes and hits alone: chance, repeats and flam.
std::span<const EventColumn> noteColumns(int partType);
const char* columnTitle(EventColumn column);
int columnWidth(EventColumn column); ///< pixels

/// The text of a cell; empty where the event has no such thing. `tick` is of the part's own time.
CStr cellText(const NotePlace& place, const CBaseEvent* event, int tick, EventColumn column);

/// An event of a draft, which a change may alter.
struct CellEvent {
    CBaseEvent* event;
    int tick; ///< in the part's own time
};
/// Takes a text over into a cell; false where it can't be read, or the event has no such thing.
bool setCell(const NotePlace& place, CellEvent& at, EventColumn column, const CStr& text);
/// A step up or down, by semitones, values, or the grid, as far as it goes.
void stepCell(const NotePlace& place, CellEvent& at, EventColumn column, int by);

/// 1 to 16, and the number that the column of values tells; none of what has no such thing.
std::optional<int> messageChannel(const CMIDIEvent* event);
std::optional<int> messageValue(const CMIDIEvent* event);

/// "Note-on", "C.Change" and so on; of a drum part "Hit".
const char* eventType(int partType, const CBaseEvent* event);
