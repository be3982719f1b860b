#include "surfaces/TransportPanel.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/controls/CButton.h"

namespace {

constexpr int margin = 8, gap = 4, wide = 92, high = 20, titleHigh = 16;
constexpr int unbound = -1, awaited = -2, unknown = -3;

constexpr struct {
    const char *key, *text, *spoken;
    Shared<int> CQV::*field;
} bindings[] = {{"play", "Play", "Play", &CQV::ctrlStart},
                {"stop", "Stop", "Stop", &CQV::ctrlStop},
                {"rew", "Rew", "Rewind", &CQV::ctrlRewind},
                {"rec", "Rec", "Record", &CQV::ctrlRecord},
                {"tempo", "Tempo", "Tempo", &CQV::ctrlTempo}};

} // namespace

TransportPanel::TransportPanel(CWin* owner, CQV* root)
    : CGroup(owner, "transporter", 0, 0, 1, panelHeight), host(root) {
    for (int i = 0; i < count; i++) {
        auto* button = new CButton(owner, bindings[i].key, "", margin + i * (wide + gap),
                                   margin + titleHigh, wide, high);
        button->tag = i;
        button->hint = "Press, then move a controller of a MIDI device; press twice for none";
        button->tabStop = button->hooverable = true;
        wire(button->onChange, new _COnChange<TransportPanel>(this, &TransportPanel::clicked));
        addControl(button);
        buttons[i] = button;
        shown[i] = unknown;
    }
    refresh();
}

Shared<int>& TransportPanel::binding(int index) const {
    return host->*bindings[index].field;
}

void TransportPanel::refresh() {
    for (int i = 0; i < count; i++) {
        const int now = binding(i);
        if (now == shown[i]) continue;
        shown[i] = now;
        const CStr which = now == awaited   ? CStr("...")
                           : now == unbound ? CStr("-")
                                            : "CC " + asStr(now);
        buttons[i]->setText(CStr(bindings[i].text) + (i == count - 1 ? " bpm " : " ") + which);
        buttons[i]->spokenName = CStr(bindings[i].spoken) + ", " + which;
        buttons[i]->setLit(now == awaited);
    }
}

void TransportPanel::clicked(CObject* sender) {
    Shared<int>& which = binding(static_cast<CButton*>(sender)->tag);
    which = which == awaited ? unbound : awaited;
    host->setModified();
    refresh();
}

void TransportPanel::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.panel, clientRect());
    g->drawText(colours.dimText, "Transporter",
                asRect(margin, margin / 2, width, margin + titleHigh), textLeft);
    CGroup::paint(g, rect);
}

void TransportPanel::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = "Transporter";
}
