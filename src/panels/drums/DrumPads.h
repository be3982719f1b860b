#pragma once

#include "gui/CCtrl.h"

#include <functional>
#include <vector>

class CSampleClip;
class CTrack;

/// The sounds of a kit as pads, sixteen at a time, each with its wave and the level that it has
/// now. A press plays one, the harder the higher it is hit, and chooses it. By keys the arrows go
/// from pad to pad, Return plays, Page Up and Page Down turn to other pads. Interface
/// thread.
class DrumPads : public CCtrl {
public:
    static constexpr int across = 4, down = 4, padsOnPage = across * down;

    std::function<void()> onChosen;             ///< another sound is chosen
    std::function<void(int velocity)> onPlayed; ///< the chosen one is to sound

    DrumPads(CWin* win, CTrack& track);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;
    int accessParts() const override;
    int focusedPart() const override { return chosen - page * padsOnPage; }
    bool pressPart(int part) override;

    int index() const { return chosen; } ///< of the sound that is chosen; -1 without any
    int pages() const;
    int shownPage() const { return page; }
    void turn(int to);
    bool refresh(); ///< takes the present kit and its levels; whether that shows

private:
    /// What a pad shows.
    struct Pad {
        const void* sound = nullptr;
        const CSampleClip* clip = nullptr;
        CStr name;
        bool muted = false;
        int level = 0; ///< in steps that can be told apart
        bool operator==(const Pad&) const = default;
    };

    std::vector<Pad> present() const;
    void choose(int to);
    void paintPad(CGraphic* g, int index) const;
    void paintWave(CGraphic* g, const Pad& pad, const CRect& at) const;
    CRect rectOf(int index) const;
    int padAt(int x, int y) const; ///< -1 none

    CTrack& track;
    std::vector<Pad> pads;
    int chosen = -1, page = 0;
};
