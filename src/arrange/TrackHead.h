#pragma once

#include "gui/CGroup.h"

#include <array>

class CButton;
class CMeter;
class CQV;
class CSongTrack;

/// Head of one track: name, mute, solo, and the level of the instrument that it plays.
class TrackHead : public CGroup {
public:
    static constexpr int headWidth = 236;

    TrackHead(CWin* win, CQV* host, CSongTrack* songTrack, int height, int colour);

    void paint(CGraphic* g, CRect rect) override;
    /// Selects the track, with Control beside others.
    void mouseDown(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override; ///< the right button opens the menu
    bool refresh();                               ///< whether what is heard of the track shows
    /// The cables are others.
    void findSound();
    CSongTrack* songTrack() const { return track; }
    static constexpr int stopCount = 4;
    /// What of it takes the keys, from the left: itself, mute, solo, and the meter.
    std::array<CCtrl*, stopCount> stops();
    void describe(Description& d, int part) const override;
    bool pressPart(int part) override;

private:
    void muteClicked(CObject*);
    void soloClicked(CObject*);

    CQV* qv;
    CSongTrack* track; ///< not owned
    int colour;
    CButton *muteButton, *soloButton;
    CMeter* meter;
    bool shownSelected = false, shownFrozen = false;
};
