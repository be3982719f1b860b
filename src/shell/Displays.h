#pragma once

#include "engine/StoredValue.h"
#include "gui/CCtrl.h"
#include "ui/Digits.h"

class CQV;

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
    CStr title;

private:
    Digits digits;
    CStr shownText;
};

/// The song's position as bar, beat and ticks, or as minutes, seconds and milliseconds; a press
/// changes the form.
class CPositionDisplay : public CFigures {
public:
    enum Form : int { bars = 0, clock = 1 };
    static constexpr int displayWidth = 148;

    CPositionDisplay(CWin* win, int left, CQV* host);
    void mouseDown(int x, int y, int btn) override;
    Form getForm() const { return form; }
    void setForm(int newForm); ///< `bars` for anything unknown

protected:
    CStr figures() const override;

private:
    CStr barText() const;
    CStr clockText() const;

    Form form = bars;
};

/// The song's time signature; a press offers others.
class CSignatureDisplay : public CFigures {
public:
    static constexpr int displayWidth = 84;

    CSignatureDisplay(CWin* win, int left, CQV* host);
    void mouseDown(int x, int y, int btn) override;

protected:
    CStr figures() const override;

private:
    void chosen(CObject* sender);
};

/// Beats per minute at the song's position. The wheel, a vertical drag and the arrow keys change
/// it, finely with Shift; after a double click, or with the focus, it can be typed: Return or the
/// loss of the focus takes it, Escape does not.
class CTempoDisplay : public CFigures {
public:
    CTempoDisplay(CWin* win, int left, CQV* host);
    static constexpr int displayWidth = 92;

    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool keyDown(int key, int mods) override;
    void setFocus(bool on) override;
    void paint(CGraphic* g, CRect rect) override;

protected:
    CStr figures() const override;

private:
    StoredValue value() const;
    void step(int by, int mods);
    bool typeKey(int key);
    void endTyping(bool take);

    int dragFrom = 0;
    StoredValue dragged{}; ///< what the drag has taken hold of
    double dragTempo = 0.0;
    bool typing = false;
    CStr typed;
};
