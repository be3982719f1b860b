#pragma once

#include "engine/StoredValue.h"
#include "shell/CFigures.h"

class CQV;

/// Milliseconds from the start of the song to its present position, by the tempo map.
double songTimeMs(CQV* host);

/// The song's position as bar, beat and ticks, or as minutes, seconds and milliseconds; a press
/// or Return changes the form.
class CPositionDisplay : public CFigures {
public:
    enum Form : int { bars = 0, clock = 1 };
    static constexpr int displayWidth = 148;

    CPositionDisplay(CWin* win, int left, CQV* host);
    void mouseDown(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    Form getForm() const { return form; }
    void setForm(int newForm); ///< `bars` for anything unknown
    void describe(Description& d, int part) const override;
    bool pressPart(int part) override;

protected:
    CStr figures() const override;
    void accept(const CStr& text) override;
    void stepBy(int by, int mods) override;
    void toEnd(bool last) override;
    void reset() override { toEnd(false); } ///< to the start

private:
    void turnForm();
    void goToMs(int64_t ms);
    CStr barText() const;
    CStr clockText() const;

    Form form = bars;
};

/// The song's time signature; a press or Return offers others.
class CSignatureDisplay : public CFigures {
public:
    static constexpr int displayWidth = 84;

    CSignatureDisplay(CWin* win, int left, CQV* host);
    void mouseDown(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    void describe(Description& d, int part) const override;
    bool pressPart(int part) override;

protected:
    CStr figures() const override;
    void accept(const CStr& text) override;
    void stepBy(int by, int mods) override;
    void toEnd(bool last) override;
    void reset() override { set(4, 4); }

private:
    void offer(bool fromKeys);
    void set(int num, int den);
    void chosen(CObject* sender);
};

/// Beats per minute at the song's position. The wheel, a vertical drag and the arrow keys change
/// it, finely with Shift; it is also typed after a double click.
class CTempoDisplay : public CFigures {
public:
    CTempoDisplay(CWin* win, int left, CQV* host);
    static constexpr int displayWidth = 92;

    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    void describe(Description& d, int part) const override;
    bool enterNumber(int part, double to) override;

protected:
    CStr figures() const override;
    void accept(const CStr& text) override;
    void stepBy(int by, int mods) override;
    void toEnd(bool last) override;
    void reset() override;

private:
    StoredValue value() const;

    int dragFrom = 0;
    StoredValue dragged{}; ///< what the drag has taken hold of
    double dragTempo = 0.0;
};
