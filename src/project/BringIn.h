#pragma once

#include "base/CStr.h"

#include <functional>
#include <vector>

class CSeq;
class CSongTrack;

// How files come into a song: audio, MIDI files, clips, SoundFonts, programs of the sampler, kits,
// effects, arpeggios, tracks. Interface thread.

/// What a file is to a song, by the ending of its name.
enum class SongFile { none, audio, midi, clip, font, program, kit, effect, arpeggio, track };
SongFile songFileOf(const CStr& path);

// Endings as filters of file dialogs; those of audio are `audioFileExt`.
constexpr const char* midiFileExt = ".mid|.midi|.kar";
constexpr const char* soundFileExt = ".qvc|.sf2|.qvs|.qvd|.qve|.qva|.qvp";

/// Where a file goes: to the song track, if it suits what comes, else to a new one below it. Null
/// for new ones behind all others.
struct BringPlace {
    CSongTrack* onto = nullptr;
    int tick = 0; ///< of what has a place in time
    int row = 0;  ///< files that need a new track below the same one share it where this is equal
};

struct BringFile {
    CStr path;
    BringPlace place;
};

/// Told which file is worked on, and what part of all is done, 0 to 1; false cancels.
using BringWatch = std::function<bool(const CStr& name, float done)>;

/// Brings files into a song that has a program, as one step of the history; what opens in an
/// instrument, kit or arpeggio that is there is a step of its own. What comes to several tracks, as
/// audio of more than two channels does, makes new ones below its place. Parts that come are
/// selected. False, and nothing of the song has changed, without any `SongFile` among them, when
/// cancelled, or after a message about the first that can't come. Files of other kinds are left
/// out.
bool bringIn(CSeq* seq, const std::vector<BringFile>& files, const CStr& title,
             const BringWatch& watch = {});
