#include "panels/arp/CArpWin.h"

#include "engine/CQV.h"
#include "engine/ProgramEdits.h"
#include "gui/controls/CPopup.h"
#include "instruments/ArpEdits.h"
#include "instruments/ArpSettings.h"
#include "instruments/CArp.h"
#include "panels/PanelBody.h"
#include "panels/arp/ArpView.h"
#include "project/PresetFiles.h"
#include "ui/SettingPanel.h"

namespace {

constexpr int gap = 8;
const CRect usualPlace = asRect(140, 140, 140 + 640, 140 + 380);

} // namespace

CArpWin::CArpWin(Workspace& space, CArp& edited)
    : PanelWin(space, edited, usualPlace, deeds(edited)), arp(edited) {
    compare(
        [this] {
            std::vector<SettingValue> all;
            if (arp.getProg())
                for (const Setting& s : arpProgSettings())
                    all.push_back({&s, s.of(&arp, arp.curProg)});
            return all;
        },
        [this] { return arp.getProg(); });
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
    steps = arp.getProg() ? new ArpView(this, arp) : nullptr;
    if (steps) body->inner->addControl(steps);
    body->inner->addControl(settings);
}

void CArpWin::arrange(int wide) {
    if (!settings) return;
    const int below = steps ? gap + ArpView::usualHeight : 0;
    if (steps) steps->setBounds(gap, gap, wide - 2 * gap, ArpView::usualHeight);
    settings->setBounds(0, below, 1, 1);
    settings->fit(wide);
}

void CArpWin::refresh() {
    if (settings) settings->refresh();
    if (steps) steps->refresh();
}
