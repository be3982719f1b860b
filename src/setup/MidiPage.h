#pragma once

#include "setup/SetupPage.h"

class CAAM;
class CDropdown;
class CStr;
class PortList;

/// The MIDI ports of the device bridge, and where MIDI clock and a control surface are.
class MidiPage : public SetupPage {
public:
    MidiPage(CSetupWin* window, CRect place);

private:
    CDropdown* addPortList(const char* label, const char* name, int chosen, int count,
                           CStr (CAAM::*nameOf)(int), bool all = false);
    void controlInChanged(CObject* sender);
    void controlOutChanged(CObject* sender);
    void clockOutChanged(CObject* sender);
    void clockInChanged(CObject* sender);
    void midiInChecked(CObject* sender);
    void midiOutChecked(CObject* sender);

    CDropdown *clockOut = nullptr, *clockIn = nullptr;
    CDropdown *controlIn = nullptr, *controlOut = nullptr;
    PortList *ins = nullptr, *outs = nullptr;
};
