#pragma once

#include "arrange/RowHead.h"

#include <array>

class CMeter;
class COutputChannel;
class CStoredSlider;
class FoldButton;
class HeadSwitch;
class HeadTarget;
class NameField;

/// Head of a track: its colour, kind and name, what switches it, volume and pan of what it sounds
/// through, and the level of that. What has no room in a low row is left out: first the second line
/// with monitor, volume and pan; in a high one there is a line with what the track leads to.
class TrackHead : public RowHead {
public:
    static constexpr int headWidth = RowHead::headWidth;

    TrackHead(HeadList& list, const ArrangeRow& row);

    void paint(CGraphic* g, CRect rect) override;
    /// Selects the track, with Control beside others, with Shift up to it; a drag moves it. On the
    /// stripe it asks for the colour, on the lower edge it drags the height, and a double click
    /// renames.
    void mouseDown(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override; ///< the right button opens the menu
    void show(const ArrangeRow& row) override;
    void refresh() override;
    bool followSound() override;
    void findSound() override;
    std::vector<CCtrl*> stops() override;
    void rename(); ///< opens a field in place of the name
    void describe(Description& d, int part) const override;
    bool pressPart(int part) override;

private:
    /// What is painted, beside the controls.
    struct Shown {
        CStr name;
        int colour = 0;
        bool selected = false, frozen = false, locked = false, heard = true;
        bool operator==(const Shown&) const = default;
    };

    Shown present() const;
    CRect nameBox() const;
    void paintName(CGraphic* g, int ground) const;
    void nameControls();
    void placeControls();
    void bindSliders();

    COutputChannel* sound = nullptr; ///< not owned; null where it is not heard
    FoldButton* fold;
    HeadTarget* target;
    std::array<HeadSwitch*, 4> switches; ///< by `TrackSwitch`
    CStoredSlider *volume, *pan;
    CMeter* meter;
    NameField* field = nullptr; ///< while it is renamed
    Shown shown;
    int number = 0, inset = 0, rowHeight = 0; ///< of the row
};
