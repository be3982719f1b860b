#include "panels/PanelWin.h"

#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "panels/PanelBody.h"
#include "ui/Commands.h"
#include "ui/Workspace.h"

namespace {

constexpr int leastWidth = 360, leastHeight = 200;
constexpr int windowStyle = winCaption | winSizable | winMaxButton | winDockable;

/// With the strip of an insert.
CStr titleOf(const CComp& comp) {
    const COutputChannel* ch = comp.ownerChannel;
    return ch && ch->comp ? comp.id + " (" + ch->comp->id + ")" : comp.id;
}

} // namespace

PanelWin::PanelWin(Workspace& space, CComp& edited, const CRect& place,
                   std::optional<ProgramBar::Deeds> deeds, std::optional<MacroLook> look)
    : CCompEditor(space.mainWindow()->app, space.mainWindow(), titleOf(edited), place.left,
                  place.top, place.width(), place.height(), windowStyle, &edited,
                  &space.commands()),
      workspace(space), body(new PanelBody(this, "settings", 0, 0, 1, 1)) {
    minWidth = leastWidth;
    minHeight = leastHeight;
    if (deeds) {
        bar = new ProgramBar(this, space, &edited, std::move(*deeds));
        bar->setAlign(alignWidth, 0, 0);
        addControl(bar);
        contentFrom += ProgramBar::usualHeight;
    }
    if (look) {
        macros = new MacroRow(this, space, edited, std::move(*look));
        macros->setBounds(0, contentFrom, 1, MacroRow::usualHeight);
        macros->setAlign(alignWidth, 0, 0);
        addControl(macros);
        contentFrom += MacroRow::usualHeight;
    }
    body->setBounds(0, contentFrom, 1, 1);
    body->setAlign(alignWidth | alignHeight, 0, 0);
    body->arrange = [this](int wide) { arrange(wide); };
    addControl(body);
}

void PanelWin::compare(Compare::Values values, std::function<const void*()> subject) {
    constexpr int gap = 8, high = 24, y = (ProgramBar::usualHeight - high) / 2;
    comparing = new CompareBar(this, *comp->host->values, std::move(values), std::move(subject));
    comparing->setBounds(ProgramBar::contentWidth + gap, y, CompareBar::usualWidth, high);
    bar->addControl(comparing);
}

void PanelWin::follow() {
    Shape now = shape();
    if (now == shown) return;
    shown = std::move(now);
    body->inner->clear();
    build();
    body->resized();
}

void PanelWin::idle() {
    const CStr title = titleOf(*comp);
    if (title != id) setCaption(title);
    if (bar) bar->refresh();
    if (comparing) comparing->refresh();
    if (macros) macros->refresh();
    follow();
    refresh();
}
