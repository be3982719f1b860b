#pragma once

#include "gui/controls/CListbox.h"

class CAAM;
struct PortKind;

/// The ports of one kind, checked where they are enabled. Return and a double click check as well.
class PortList : public CListbox {
public:
    /// The bridge outlives it.
    PortList(CWin* win, const char* name, CAAM* bridge, const PortKind& kind);

    void apply(); ///< enables what is checked

private:
    void toggled(CObject* sender);

    CAAM* bridge;
    const PortKind& kind;
};
