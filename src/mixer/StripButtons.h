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
/// those of other strips brings all of them to the same state.
class StripSwitch : public RoundButton {
public:
    StripSwitch(CMixerStrip& strip, MixSwitch which);

    void mouseDown(int x, int y, int btn) override;
    void click() override;
    bool refresh();

private:
    CMixerStrip& owner;
    const MixSwitch kind;
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
