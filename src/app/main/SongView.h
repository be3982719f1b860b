#pragma once

#include "gui/CGroup.h"

#include <memory>
#include <vector>

class CBitmap;
class CButton;
class CMeter;
class CQV;
class CSeq;
class CSongTrack;

/// The song at a glance: its sections and parts on one line of time, with the play position. A
/// press jumps there.
class CTimeline : public CCtrl {
public:
    static constexpr int rulerHeight = 28;

    CTimeline(CWin* win, CQV* host, int left, int top, int width, int height, int rowHeight);
    ~CTimeline() override;

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    /// Moves the play position if that shows.
    void refresh();
    /// The song has changed: it is drawn anew at the next paint.
    void songChanged();

private:
    int xOf(double tick) const;
    void drawSong(CGraphic* g);
    void drawSections(CGraphic* g, CSeq* seq);
    void drawRow(CGraphic* g, CSongTrack* songTrack, int top, int colour);
    int playX() const;
    void drawPointer(CGraphic* g) const;
    void paintAround(int from, int to);
    void jumpTo(int x);

    CQV* qv;
    int rowHeight;
    int shownX = -1;
    int songTicks = 1;                ///< length of the song in the picture
    std::unique_ptr<CBitmap> picture; ///< the song without the play position
};

/// Head of one track: name, mute, solo, and the level of the instrument that it plays.
class CTrackRow : public CGroup {
public:
    static constexpr int rowWidth = 236;

    CTrackRow(CWin* win, CQV* host, CSongTrack* songTrack, int top, int height, int colour);

    void paint(CGraphic* g, CRect rect) override;
    /// Selects the track, with Control beside others.
    void mouseDown(int x, int y, int btn) override;
    void refresh();

private:
    void muteClicked(CObject*);
    void soloClicked(CObject*);

    CQV* qv;
    CSongTrack* track; ///< not owned
    int colour;
    CButton *muteButton, *soloButton;
    CMeter* meter;
    bool shownSelected = false;
};

/// The rows of all tracks beside the timeline.
class SongView : public CGroup {
public:
    static constexpr int rowHeight = 44;

    SongView(CWin* win, CQV* host, int top, int width, int height);

    void paint(CGraphic* g, CRect rect) override;
    void resized() override;
    void refresh();
    /// Builds the rows anew from the song.
    void songChanged();
    /// The song is about to be deleted: shows nothing until `songChanged`.
    void forgetSong();

private:
    CQV* qv;
    CTimeline* timeline = nullptr;
    std::vector<CTrackRow*> rows; ///< among `controls`
};

/// One of sixteen colours of even lightness for a track or part.
int trackColour(int index);
