#pragma once

#include "setup/SetupPage.h"

class CAAM;
class CDropdown;
class CStr;
class CValue;
class PortList;

/// The MIDI ports of the device bridge, and where MIDI clock, time code and a control surface are.
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
    void addCode();
    void codeOutChanged(CObject* sender);
    void codeInChanged(CObject* sender);
    void codeRateChanged(CObject* sender);
    void codeHourChanged(CObject* sender);
    void midiInChecked(CObject* sender);
    void midiOutChecked(CObject* sender);

    CDropdown *clockOut = nullptr, *clockIn = nullptr;
    CDropdown *codeOut = nullptr, *codeIn = nullptr, *codeRate = nullptr;
    CValue* codeHour = nullptr;
    CDropdown *controlIn = nullptr, *controlOut = nullptr;
    PortList *ins = nullptr, *outs = nullptr;
};
