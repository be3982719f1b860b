#pragma once

#include "mixer/StripLayout.h"
#include "mixer/StripModel.h"

#include <functional>
#include <vector>

class CMixer;
class CSongTrack;
class CStr;
class ValueDoor;
class Workspace;

/// What the parts of the mixer share: the strips that there are and which of them are selected.
/// Interface thread.
///
/// A strip of a track is selected along with it; which of the others are is known here alone.
class MixerState {
public:
    Workspace& workspace;
    CQV* const qv;
    CMixer& mixer;
    std::vector<MixerStrip> shown; ///< from left to right
    StripPlan plan;

    MixerState(Workspace& space, CMixer& kept);

    ValueDoor* door() const;
    void tell(const CStr& text) const; ///< in the line of the program

    bool selected(const MixerStrip& strip) const;
    std::vector<MixerStrip> selection() const; ///< of those that show
    /// Selects by a press with these modifiers (ModFlag): alone, with Control besides or no more,
    /// with Shift all from the one chosen before.
    void choose(const MixerStrip& strip, int btn);
    void unselect();
    void selectAll();
    /// Those that a change on a strip reaches: the selected ones if it is one of them, else it
    /// alone; it comes first.
    std::vector<MixerStrip> together(const MixerStrip& strip) const;
    /// Lets go of strips that are no longer there.
    void keepTo(const std::vector<MixerStrip>& all);

    bool isWide(const MixerStrip& strip) const;
    /// How a strip shows its inserts: as slots, or the curve of its equaliser in their place.
    static bool showsEq(const MixerStrip& strip);
    static void showEq(const MixerStrip& strip, bool on);
    static void setWide(const MixerStrip& strip, bool wide);

private:
    CSongTrack* songTrackOf(const MixerStrip& strip) const;
    void select(const MixerStrip& strip, bool on);

    std::vector<const COutputChannel*> chosen; ///< of no track; only compared
    const COutputChannel* anchor = nullptr;    ///< only compared
};
