#include "panels/arp/CArpWin.h"

#include "engine/CQV.h"
#include "engine/ProgramEdits.h"
#include "gui/controls/CPopup.h"
#include "instruments/ArpEdits.h"
#include "instruments/ArpSettings.h"
#include "instruments/CArp.h"
#include "panels/PanelBody.h"
#include "project/PresetFiles.h"
#include "ui/SettingPanel.h"

namespace {

const CRect usualPlace = asRect(140, 140, 140 + 640, 140 + 380);

} // namespace

CArpWin::CArpWin(Workspace& space, CArp& edited)
    : PanelWin(space, edited, usualPlace, deeds(edited)), arp(edited) {
    follow();
}

ProgramBar::Deeds CArpWin::deeds(CArp& of) {
    ProgramBar::Deeds can;
    can.add = [&of] { addArpProgram(&of); };
    can.open = [&of](const CStr& path) { of.openProg(path); };
    can.save = [&of](const CStr& path) { saveProgram(&of, path); };
    can.extension = ".qva";
    return can;
}

PanelWin::Shape CArpWin::shape() const {
    return {{arp.getProg()}, {}};
}

void CArpWin::build() {
    settings = new SettingPanel(this, "settings", workspace);
    std::vector<SettingPanel::Section> sections = {{arpSettings(), &arp, -1, "", {}, {}}};
    if (arp.getProg()) sections.push_back({arpProgSettings(), &arp, arp.curProg, "", {}, {}});
    settings->show(sections);
    body->inner->addControl(settings);
}

void CArpWin::arrange(int wide) {
    if (settings) settings->fit(wide);
}

void CArpWin::refresh() {
    if (settings) settings->refresh();
}
