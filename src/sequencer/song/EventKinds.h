#pragma once

#include "engine/MidiBytes.h"
#include "sequencer/song/CPart.h"

/// Parts and events as what they are. A record does not tell; the part that has it does (PartType),
/// and who asks for a class has looked.
inline CMIDIEvent* asMessage(CBaseEvent* event) {
    return static_cast<CMIDIEvent*>(event);
}
inline const CMIDIEvent* asMessage(const CBaseEvent* event) {
    return static_cast<const CMIDIEvent*>(event);
}
inline CDrumEvent* asHit(CBaseEvent* event) {
    return static_cast<CDrumEvent*>(event);
}
inline const CDrumEvent* asHit(const CBaseEvent* event) {
    return static_cast<const CDrumEvent*>(event);
}
inline CAudioEvent* asClip(CBaseEvent* event) {
    return static_cast<CAudioEvent*>(event);
}
inline const CAudioEvent* asClip(const CBaseEvent* event) {
    return static_cast<const CAudioEvent*>(event);
}
inline CEnvEvent* asLanePoint(CBaseEvent* event) {
    return static_cast<CEnvEvent*>(event);
}
inline const CEnvEvent* asLanePoint(const CBaseEvent* event) {
    return static_cast<const CEnvEvent*>(event);
}

/// Whether an event of a part of that class is a note of MIDI.
inline bool isNote(int partType, const CBaseEvent* event) {
    return partType == partMIDI && noteOn(asMessage(event)->data);
}

/// An audio part as that; null for one of another class.
inline CAudioPart* asAudio(CPart* part) {
    return part->type == partAudio ? static_cast<CAudioPart*>(part) : nullptr;
}
/// The first clip of a part; null without one, for other classes, and without a part.
inline CAudioEvent* firstClip(CPart* part) {
    return part && part->type == partAudio ? asClip(part->getEvents()) : nullptr;
}
/// The clip of a part that is edited as one with it; null where it has several.
inline CAudioEvent* onlyClip(CPart* part) {
    const CAudioPart* audio = asAudio(part->content());
    return audio && !audio->multiclip ? firstClip(part) : nullptr;
}
/// Clip `index` of an audio part; null past the last one.
inline CAudioEvent* clipAt(CPart* part, int index) {
    CBaseEvent* event = part->getEvents();
    for (; event && index > 0; index--) event = event->next;
    return asClip(event);
}
