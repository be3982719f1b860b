#pragma once

#include "sequencer/song/ClipPins.h"

#include <vector>

class CSample;

/// Bits of an event's `flags`.
constexpr unsigned char eventSelected = 1;

constexpr int defaultNoteTicks = 240;

constexpr int mostChance = 100, mostRepeats = 8, mostFlamMs = 60;

/// How a note or a hit plays; of other events it does not count.
struct HitStyle {
    unsigned char chance = mostChance; ///< percent of the times that it plays at all
    unsigned char repeats = 1;         ///< even ones within its length, 1 to 8
    unsigned char flamMs : 7 = 0;      ///< by which a soft one goes before it, 0 to 60; 0 none
    unsigned char muted : 1 = 0;       ///< it never plays, and no MIDI file has it

    bool operator==(const HitStyle&) const = default;
};

/// Header of every event record. Records are plain data from `malloc`, singly linked in order of
/// time; a list is owned by the part whose head it hangs on. A record that plays is never changed
/// in place, but for its `flags`, which belong to the interface thread.
struct CBaseEvent {
    int delta;           ///< ticks from the event before, for the head from tick 0 of the part
    unsigned char flags; ///< bit 0: selected
    HitStyle style;
    CBaseEvent* next; ///< null at the end
};
static_assert(sizeof(CBaseEvent) == 2 * sizeof(void*)); // a song has millions of them

inline bool isSelected(const CBaseEvent* event) {
    return event->flags & eventSelected;
}
void select(CBaseEvent* event, bool on);

/// A channel message. A note is one event: note-offs are not stored.
struct CMIDIEvent : CBaseEvent {
    int data;   ///< packed message (engine/MidiBytes.h)
    int length; ///< ticks; of note-ons only
};

/// A clip of audio.
struct CAudioEvent : CBaseEvent {
    CSample* sample; ///< in the host's pool, not owned; may be null
    float gain, pan;
    unsigned char mode;    ///< 0 own pitch and speed, 1 resampled to the tempo, 2 stretched to it
    unsigned char reverse; ///< 1 plays the range backward
    int start, end;        ///< frames in the sample, first and last, inclusive
    int ticks;             ///< length on the timeline in modes 1 and 2
    int semitones;
    float fine; ///< semitones
    int slice;
    float fadeInMs, fadeInCurve, fadeOutMs, fadeOutCurve;
    ClipPins pins; ///< in mode 2
};

struct CDrumEvent : CBaseEvent {
    int sound;  ///< index of the drum sound in the track's layer
    int length; ///< ticks
    float velocity, pan, tune;
};

/// A point of automation.
struct CEnvEvent : CBaseEvent {
    float value;         ///< 0 to 1
    float curve;         ///< bend of the segment that ends here, -1 to 1, 0 straight
    unsigned char shape; ///< 0 curve toward the next point, 1 hold
};

/// Each makes a record, owned by the caller until it is linked: a copy of `source` that has no
/// follower, or the defaults when there is none.
CMIDIEvent* createMIDIEvent(const CMIDIEvent* source = nullptr);
CAudioEvent* createAudioEvent(const CAudioEvent* source = nullptr);
CDrumEvent* createDrumEvent(const CDrumEvent* source = nullptr);
/// `value` counts only without a source; it is kept within 0 to 1.
CEnvEvent* createEnvEvent(const CEnvEvent* source, float value = 0.0f);

void freeEvent(CBaseEvent* event);
/// Frees a whole list; null is an empty one.
void freeEvents(CBaseEvent* head);

/// A parameter of a drum event that differs from its default: id (0 velocity, 1 pan, 2 tune) and
/// the field itself.
struct DrumParam {
    int id;
    float* value;
};
std::vector<DrumParam> drumParamList(CDrumEvent* event);

/// Collects events of any order and makes a list of them, the same that `CPart::addEvent` would
/// make of them one by one, in less than quadratic time.
class EventCollector {
public:
    EventCollector() = default;
    ~EventCollector();
    EventCollector(const EventCollector&) = delete;
    EventCollector& operator=(const EventCollector&) = delete;

    /// Takes the event; `tick` counts from tick 0 of the part.
    void add(int tick, CBaseEvent* event);
    bool empty() const { return items.empty(); }
    /// The list, in order of tick, owned by the caller, null without events; the collector is empty
    /// afterwards.
    CBaseEvent* takeList();

private:
    struct Item {
        int tick;
        CBaseEvent* event; ///< owned
    };
    std::vector<Item> items;
};
