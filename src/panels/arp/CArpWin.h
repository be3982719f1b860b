#pragma once

#include "panels/PanelWin.h"

class ArpView;
class CArp;
class SettingPanel;

/// The window of an arpeggiator. Interface thread.
class CArpWin : public PanelWin {
public:
    CArpWin(Workspace& workspace, CArp& arp);

private:
    Shape shape() const override;
    void build() override;
    void arrange(int wide) override;
    void refresh() override;
    static ProgramBar::Deeds deeds(CArp& of);

    CArp& arp;
    SettingPanel* settings = nullptr; ///< among the controls, as the next
    ArpView* steps = nullptr;
};
