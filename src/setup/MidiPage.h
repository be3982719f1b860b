#pragma once

#include "setup/SetupPage.h"

class PortList;

/// The MIDI ports of the device bridge.
class MidiPage : public SetupPage {
public:
    MidiPage(CSetupWin* window, CRect place);

private:
    void midiInChecked(CObject* sender);
    void midiOutChecked(CObject* sender);

    PortList *ins = nullptr, *outs = nullptr;
};
