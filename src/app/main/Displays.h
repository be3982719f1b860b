#pragma once

#include "gui/CCtrl.h"

class CQV;
class CSeq;

/// The song of the host, null when there is none. Interface thread.
CSeq* songOf(CQV* host);
/// Milliseconds from the start of the song to its present position, by the tempo map.
double songTimeMs(CQV* host);

/// What the transport's displays have in common: a title over large figures in a sunken field,
/// painted anew only when the figures change.
class CFigures : public CCtrl {
public:
    CFigures(CWin* win, const CStr& name, const CStr& title, int left, int width, CQV* host);

    void paint(CGraphic* g, CRect rect) override;
    /// Paints at once if the figures have changed.
    void refresh();

protected:
    virtual CStr figures() const = 0;
    CQV* qv;

private:
    CStr title;
    CStr shownText;
};

/// Bar, beat and ticks of the song.
class CPositionDisplay : public CFigures {
public:
    CPositionDisplay(CWin* win, int left, CQV* host);
    static constexpr int displayWidth = 148;

protected:
    CStr figures() const override;
};

/// Minutes, seconds and milliseconds from the start of the song.
class CTimeDisplay : public CFigures {
public:
    CTimeDisplay(CWin* win, int left, CQV* host);
    static constexpr int displayWidth = 128;

protected:
    CStr figures() const override;
};

/// Beats per minute. The wheel and a vertical drag change it, finely with Shift.
class CTempoDisplay : public CFigures {
public:
    CTempoDisplay(CWin* win, int left, CQV* host);
    static constexpr int displayWidth = 92;

    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;

protected:
    CStr figures() const override;

private:
    int dragFrom = 0;
    float dragTempo = 0.0f;
};
