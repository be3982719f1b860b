#pragma once

#include "gui/CCtrl.h"
#include "gui/PanZoom.h"

#include <memory>

class WaveGesture;
class WaveState;

/// What of the view of a wave can be taken hold of.
enum class WaveGrip { none, mark, pin, rangeStart, rangeEnd, fadeIn, fadeOut };

/// The waveform of a clip's sample, channel by channel, down to single frames, with what is
/// selected of it, where the part plays it, its fades and marks. Presses begin a gesture.
/// Interface thread.
class WaveView : public CCtrl, private ZoomView {
public:
    static constexpr int stripHeight = 14; ///< of the heads of marks, at the top

    COnChange* onMenu = nullptr; ///< owned; the context menu

    WaveView(CWin* win, WaveState& state);
    ~WaveView() override;

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    void mouseMove(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override;
    bool mouseWheel(int x, int y, int btn, int dy, int dx) override;
    bool touch(int x, int y, int btn, const TouchStep& step) override;
    bool contextMenu() override;
    void describe(Description& d, int part) const override;
    int accessParts() const override; ///< both ends of the range, the marks, the stretch markers
    int focusedPart() const override;
    bool pressPart(int part) override;
    bool enterNumber(int part, double to) override; ///< a frame; of a stretch marker a tick

    bool refresh(); ///< follows what plays and the image of the peaks; whether that shows

private:
    struct Held {
        WaveGrip grip = WaveGrip::none;
        int index = 0; ///< of a mark or stretch marker
    };

    CPoint panBy(CPoint pixels) override;
    void zoomAt(CPoint at, double factor, bool across) override;
    Held heldAt(CPoint at) const;
    int firstPin() const; ///< its part
    int frameOfPart(int part) const;
    void describePin(Description& d, int index) const;
    void hover(CPoint at);
    void choosePiece(int x);
    int standingEnd(WaveGrip grip, int frame, int btn) const;

    WaveState& state;
    PanZoom panZoom;
    std::unique_ptr<WaveGesture> gesture; ///< the latest; null before the first
    int shownX = -1;                      ///< of what plays
    int shownPeaks = 0;
};
