#pragma once

#include "gui/CCtrl.h"

#include <functional>

/// A keyboard to play: a press sounds the key under it, a drag those that it comes to. With the
/// keys of the computer, Left and Right choose one, with Control by octaves, and Return plays it
/// for as long as that is held. Interface thread.
class PianoKeys : public CCtrl {
public:
    static constexpr int keys = 128;
    /// A key goes down, or comes up.
    std::function<void(int key, bool down)> onKey;

    explicit PianoKeys(CWin* win);
    ~PianoKeys() override;

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    void mouseUp(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    bool keyUp(int key, int mods) override;
    void setFocus(bool on) override;
    void describe(Description& d, int part) const override;
    bool pressPart(int part) override;
    int sounding() const { return held; } ///< -1 none

private:
    CRect keyRect(int key) const;
    int keyAt(int x, int y) const;
    void sound(int key); ///< in place of the one that sounds; -1 none
    void choose(int key);

    int held = -1;
    int chosen = 60;
};
