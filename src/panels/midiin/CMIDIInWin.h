#pragma once

#include "panels/PanelWin.h"

class CMIDIIn;
class PianoKeys;
class SettingPanel;

/// The window of a MIDI input: a keyboard to play, and what becomes of the keys. Interface thread.
class CMIDIInWin : public PanelWin {
public:
    CMIDIInWin(Workspace& workspace, CMIDIIn& in);
    ~CMIDIInWin() override;

private:
    Shape shape() const override;
    void build() override;
    void arrange(int wide) override;
    void refresh() override;

    CMIDIIn& in;
    PianoKeys* piano = nullptr;       ///< among the controls
    SettingPanel* settings = nullptr; ///< the same
};
