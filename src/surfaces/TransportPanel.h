#pragma once

#include "gui/CGroup.h"

class CButton;
class CQV;

/// "Transporter": the controllers that play, stop, rewind, record and set the tempo. A press on one
/// awaits the next controller, another gives it up, and with it the controller. Interface thread.
class TransportPanel : public CGroup {
public:
    static constexpr int panelHeight = 52;

    TransportPanel(CWin* win, CQV* host);

    void paint(CGraphic* g, CRect rect) override;
    void describe(Description& d, int part) const override;
    void refresh(); ///< shows what the host has now

private:
    static constexpr int count = 5;

    int binding(int index) const;
    void clicked(CObject* sender);

    CQV* host;
    CButton* buttons[count] = {};
    int shown[count] = {};
};
