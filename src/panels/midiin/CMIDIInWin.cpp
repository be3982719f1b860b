#include "panels/midiin/CMIDIInWin.h"

#include "engine/DeviceComps.h"
#include "engine/MidiInSettings.h"
#include "panels/PanelBody.h"
#include "panels/midiin/PianoKeys.h"
#include "ui/SettingPanel.h"

namespace {

const CRect usualPlace = asRect(160, 160, 160 + 720, 160 + 280);
constexpr int margin = 8, pianoHeight = 96;

} // namespace

CMIDIInWin::CMIDIInWin(Workspace& space, CMIDIIn& edited)
    : PanelWin(space, edited, usualPlace, std::nullopt), in(edited) {
    follow();
}

CMIDIInWin::~CMIDIInWin() = default;

PanelWin::Shape CMIDIInWin::shape() const {
    return {{&in}, {}};
}

void CMIDIInWin::build() {
    piano = new PianoKeys(this);
    piano->onKey = [this](int key, bool down) { in.playNote(key, down); };
    settings = new SettingPanel(this, "settings", workspace);
    settings->show({{midiInSettings(), &in, -1, "", {}, {}}});
    body->inner->addControl(piano);
    body->inner->addControl(settings);
}

void CMIDIInWin::arrange(int wide) {
    piano->setBounds(margin, margin, wide - 2 * margin, pianoHeight);
    settings->top = pianoHeight + margin;
    settings->fit(wide);
}

void CMIDIInWin::refresh() {
    settings->refresh();
}
