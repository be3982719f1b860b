#pragma once

#include "gui/CCtrl.h"

#include <memory>
#include <vector>

class CBitmap;
class CPart;
class CQV;
class CSeq;
class CSongTrack;

/// The song at a glance: bars, sections and parts on one line of time, with the locators and the
/// play position. A press takes the position there; so do Left and Right by a beat, Page Up and
/// Down by a bar, Home and End.
class CTimeline : public CCtrl {
public:
    static constexpr int barsHeight = 20, rulerHeight = 2 * barsHeight;

    CTimeline(CWin* win, CQV* host, int left, int top, int width, int height, int rowHeight);
    ~CTimeline() override;

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    /// Follows the play position, the loop and what is heard of the tracks; whether that shows.
    bool refresh();
    /// The song has changed: it is drawn anew at the next paint.
    void songChanged();
    void setFirstRow(int row); ///< the first track that is shown
    int tickAt(int x) const;
    void describe(Description& d, int part) const override;

private:
    /// What the picture tells of the song that changes without a word.
    struct Look {
        int loopFrom = 0, loopTo = 0, loop = 0;
        std::vector<bool> heard; ///< of each track
        bool operator==(const Look&) const = default;
    };

    Look lookOf(CSeq* seq) const;
    int xOf(double tick) const;
    void drawSong(CGraphic* g);
    void drawBars(CGraphic* g, CSeq* seq);
    void drawLoop(CGraphic* g);
    void drawSections(CGraphic* g, CSeq* seq);
    void drawRow(CGraphic* g, CSongTrack* songTrack, int top, int colour, bool heard);
    void drawPart(CGraphic* g, CSeq* seq, CPart* part, CRect box, int colour, bool heard);
    int playX() const;
    void drawPointer(CGraphic* g) const;
    CRect pointerRect(int x) const;
    void jumpTo(int x);

    CQV* qv;
    int rowHeight, firstRow = 0;
    int shownX = -1;
    int songTicks = 1;                ///< length of the song in the picture
    Look look;                        ///< of the picture
    std::unique_ptr<CBitmap> picture; ///< the song without the play position
};
