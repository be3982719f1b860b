#pragma once

#include "data/presets/Clips.h"

#include <span>

class CPart;
class CQV;
class CSeq;
class CStr;
class CTrack;

/// Puts a song together in the host's empty project, out of lines of text. Places are sixteenths
/// from its start. Interface thread.
class TextSong {
public:
    explicit TextSong(CQV* host);
    explicit TextSong(CSeq* seq); ///< into one that is there

    CTrack* track(int kind, const CStr& name);
    CTrack* kitTrack(const CStr& name, const char* kit); ///< one of `presets::kits`
    /// A part that plays a line of `presets::parseLine`.
    CPart* line(CTrack* track, int step, const char* text);
    /// A part of a drum track, as long as its rows.
    CPart* beat(CTrack* track, int step, std::span<const presets::DrumRow> rows);
    void tempo(int step, float bpm, bool ramp);
    void signature(int step, int beats, int unit);
    void marker(int from, int to, const CStr& name);
    /// Puts everything in order and sets the locators around the song.
    CSeq* finish(int steps, float bpm);

    CQV* host;
    CSeq* seq; ///< owned by the host

private:
    CPart* add(CTrack* track, CPart* part, int step, int steps);
};
