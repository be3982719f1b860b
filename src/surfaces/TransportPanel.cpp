#include "surfaces/TransportPanel.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/MapEdits.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/controls/CButton.h"

namespace {

constexpr int margin = 8, gap = 4, wide = 92, high = 20, titleHigh = 16;
constexpr int unbound = LeadingController::none, awaited = LeadingController::awaited, unknown = -3;

constexpr struct {
    const char *key, *text, *spoken;
} bindings[] = {{"play", "Play", "Play"},
                {"stop", "Stop", "Stop"},
                {"rew", "Rew", "Rewind"},
                {"rec", "Rec", "Record"},
                {"tempo", "Tempo", "Tempo"}};

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

int TransportPanel::binding(int index) const {
    return asInt(transportController(host, index).get()[0]);
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
    const int which = static_cast<CButton*>(sender)->tag;
    host->values->set(transportController(host, which),
                      binding(which) == awaited ? unbound : awaited);
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
