#pragma once

#include "engine/StoredValue.h"
#include "ui/RoundButton.h"

#include <optional>

class CMixerStrip;
struct MixerStrip;

enum class MixSwitch { mute, solo, arm };
constexpr int mixSwitches = 3;

/// The value behind a switch of a strip; none where there is nothing to arm.
std::optional<StoredValue> switchOf(MixSwitch which, const MixerStrip& strip);
const char* spokenOf(MixSwitch which); ///< "Mute"

/// A switch of a strip: a press switches it and what is selected with the strip, and a drag over
/// those of other strips brings all of them to the same state. A press with Control on solo makes
/// the strip safe from the solo of others.
class StripSwitch : public RoundButton {
public:
    StripSwitch(CMixerStrip& strip, MixSwitch which);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override; ///< all that a press does begins here
    void mouseUp(int, int, int) override { redraw(); }
    void click() override;
    void describe(Description& d, int part) const override;
    bool refresh();

private:
    CMixerStrip& owner;
    const MixSwitch kind;
    bool safe = false; ///< of a solo switch: no solo elsewhere silences the strip
};

/// What a strip records or plays, or leads to: its name, and a press offers others.
class StripChoice : public RoundButton {
public:
    enum Kind { source, target };

    StripChoice(CMixerStrip& strip, Kind what);

    void paint(CGraphic* g, CRect rect) override;
    void click() override;
    void describe(Description& d, int part) const override;
    bool refresh();

private:
    CStr present() const;

    CMixerStrip& owner;
    const Kind kind;
    CStr shown;
};

/// Whether a strip shows its inserts, the left half, or its equaliser.
class ModeButton : public CButton {
public:
    explicit ModeButton(CMixerStrip& strip);

    void paint(CGraphic* g, CRect rect) override;
    void mouseUp(int x, int y, int btn) override;
    void click() override; ///< the other one
    void describe(Description& d, int part) const override;

private:
    void choose(bool eq);

    CMixerStrip& owner;
};
