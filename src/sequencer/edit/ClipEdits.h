#pragma once

#include "base/CStr.h"
#include "sequencer/edit/SampleEdits.h"

class CPart;
class CSeq;

/// Edits of the clips of the selected audio parts of the current program that no lock protects: of
/// a part of several its selected clips, of others all; once for each master. Each is one step;
/// where nothing changes there is none. Interface thread.

enum class ClipSetting {
    semitones, ///< within 120 to either side
    fine,      ///< semitones, within 1 to either side
    fadeIn,    ///< milliseconds, from 0 on
    fadeOut,
    gain, ///< factor, 0 to 4
    pan,  ///< -1 to 1
    mode, ///< PlayMode; the clip goes on to last as long as it does, if it follows the tempo then
};

/// "Pitch", "Fade In", "Fade Out", "Gain", "Pan" or "Play mode": the setting becomes `value`, or
/// changes by it. False if there are no such clips.
bool setClips(CSeq* seq, ClipSetting setting, float value);
bool changeClips(CSeq* seq, ClipSetting setting, float by);
/// "Gain": that of all is multiplied as one of them comes from `before` to `after`, both factors;
/// from silence on all take that of the one.
bool scaleClips(CSeq* seq, float before, float after);
/// A setting of one clip, whatever is selected.
bool setClip(CSeq* seq, const ClipPlace& place, ClipSetting setting, float value);
/// "Reverse": the range is played backward; or forward again where all of it is backward.
void reverseClips(CSeq* seq);

/// By how many ticks what the selected parts show can be moved under them, back and forth: clips
/// have the frames for that.
struct SlipRange {
    int least = 0, greatest = 0;
};
SlipRange slipRange(CSeq* seq);
/// "Slip": what the selected parts, of any class, show moves by so many ticks within `slipRange`,
/// and they stay where they are.
void slipParts(CSeq* seq, int ticks);

/// "Loop": so many ghosts of a part follow in a row behind it. Why nothing was done, empty if it
/// was or there is nothing to do.
CStr loopPart(CSeq* seq, CPart* part, int count);
