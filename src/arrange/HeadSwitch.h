#pragma once

#include "engine/StoredValue.h"
#include "ui/RoundButton.h"

class CSongTrack;
class HeadList;
class HeadSigns;

enum class TrackSwitch { arm, mute, solo, monitor };
constexpr int trackSwitches = 4;

/// The value behind a switch of a track.
StoredValue switchOf(TrackSwitch which, CSongTrack* track);

/// A switch on the head of a track: a press switches it, and a drag over those of other tracks
/// brings all of them to the same state.
class HeadSwitch : public RoundButton {
public:
    HeadSwitch(HeadList& list, TrackSwitch which, CSongTrack* track);

    void mouseDown(int x, int y, int btn) override;
    void click() override;
    bool refresh();                  ///< whether it has become another
    void nameAfter(const CStr& row); ///< tells screen readers whose it is

private:
    HeadList& list;
    const TrackSwitch kind;
    CSongTrack* track; ///< not owned
};

/// Opens and closes a folder, or the lanes of a track.
class FoldButton : public CButton {
public:
    FoldButton(HeadList& list, CSongTrack* track);

    void paint(CGraphic* g, CRect rect) override;
    void click() override;
    void describe(Description& d, int part) const override;

private:
    HeadList& list;
    CSongTrack* track; ///< not owned
};
