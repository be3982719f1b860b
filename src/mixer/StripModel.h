#pragma once

#include "base/CStr.h"

#include <vector>

class CComp;
class COutputChannel;
class CDrumSound;
class CQV;
class CTrack;

/// The kinds of strips, in the order of the mixer and of the bits of `CMixProg::sh`.
enum class StripSection { inputs, tracks, groups, sends, outputs };
constexpr int stripSections = 5;

/// Title of a section: "Tracks".
const char* titleOf(StripSection section);
constexpr int bitOf(StripSection section) {
    return 1 << int(section);
}

/// An output of a component of the project, as a strip of the mixer.
struct MixerStrip {
    COutputChannel* channel;
    CComp* comp; ///< that has it
    CTrack*
        track; ///< whose own it is, or the first whose notes are heard through it; null for none
    int row;   ///< of the track in the song, -1 none
    StripSection section;
    bool named; ///< after the track: it is its own, or that of an instrument of this one alone
    /// A single sound of the track's kit, whose level and switches it has; null for all others.
    CDrumSound* drum = nullptr;

    bool operator==(const MixerStrip&) const = default;
    bool ownsTrack() const; ///< it is the track's own, no instrument's
    bool hasDrums() const;  ///< it is that of a kit, whose sounds have strips as well
};

/// All strips of a project: the inputs, tracks with their instruments in the order of the song and
/// then what no track plays, groups, send buses, outputs. Behind that of a kit come those of its
/// sounds, where they are unfolded. Interface thread, as all below.
std::vector<MixerStrip> listStrips(CQV* host);
bool drumsUnfolded(const MixerStrip& strip);
void unfoldDrums(const MixerStrip& strip, bool on);
/// What the user has called it: the track, or the component, with a number if that has several.
CStr nameOf(const MixerStrip& strip);
/// The same by the channel; what the graph calls it for one that has no strip.
CStr nameOfStrip(CQV* host, const COutputChannel* channel);
/// What a tooltip tells beside the name: "Instrument of Bass".
CStr kindOf(const MixerStrip& strip);
/// The colour of its track as a pixel; -1 for what has none.
int colourOf(const MixerStrip& strip);
/// Whether a strip sounds at present: neither muted nor silenced by a solo elsewhere.
bool isHeard(const MixerStrip& strip);
