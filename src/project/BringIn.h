#pragma once

#include "base/CStr.h"
#include "engine/SamplePool.h"

class CSeq;
class CSongTrack;

// How files come into a song: audio, MIDI files, clips, SoundFonts, programs of the sampler, kits,
// effects, arpeggios. Interface thread.

/// What a file is to a song, by the ending of its name.
enum class SongFile { none, audio, midi, clip, font, program, kit, effect, arpeggio };
SongFile songFileOf(const CStr& path);

// Endings as filters of file dialogs; those of audio are `audioFileExt`.
constexpr const char* midiFileExt = ".mid|.midi|.kar";
constexpr const char* soundFileExt = ".qvc|.sf2|.qvs|.qvd|.qve|.qva";

/// Where it goes: to the song track, if it suits what comes, else to a new one behind all others.
struct BringPlace {
    CSongTrack* onto = nullptr;
    int tick = 0; ///< of what has a place in time
};

/// Brings a file into a song that has a program, as one step of the history. `watch` is called
/// while audio is converted. False, and nothing has changed, for what is no `SongFile`, or after a
/// message.
bool bringIn(CSeq* seq, const CStr& path, const BringPlace& place,
             const SamplePool::ImportWatch& watch = {});
