#pragma once

#include "gui/controls/CListbox.h"

class CAAM;

/// What the device bridge lets one choose by check boxes, and where the choice is kept.
struct PortKind {
    const char *section, *key; ///< each port has the key with its number behind
    int kept;                  ///< ports that the settings have places for
    int (*count)(const CAAM* bridge);
    CStr (CAAM::*name)(int);
    bool (CAAM::*enabled)(int);
    void (CAAM::*enable)(int, int);
};
extern const PortKind audioInputs, audioOutputs, midiInputs, midiOutputs;

/// Keeps which ports of the kind are enabled. Those that are not there now keep their place.
void savePorts(CAAM* bridge, const PortKind& kind);

/// The ports of one kind, checked where they are enabled. Return and a double click check as well.
class PortList : public CListbox {
public:
    /// The bridge outlives it.
    PortList(CWin* win, const char* name, CAAM* bridge, const PortKind& kind);

    void apply(); ///< enables what is checked, and keeps it

private:
    void toggled(CObject* sender);

    CAAM* bridge;
    const PortKind& kind;
};
