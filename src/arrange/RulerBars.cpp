#include "arrange/RulerBars.h"

#include "arrange/ArrangeState.h"
#include "arrange/MarkerBar.h"
#include "arrange/SignatureLane.h"
#include "arrange/TempoLane.h"
#include "arrange/TimeRuler.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Drawing.h"
#include "gui/Senders.h"
#include "gui/controls/CPopup.h"
#include "sequencer/song/CSeq.h"
#include "ui/ActionItems.h"
#include "ui/Commands.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

#include <cstdlib>

namespace {

constexpr int pointerReach = 4; ///< of the head of the play position to each side
constexpr const char* menuActions[] = {"addmarker",    "timesig-add",   "", "leftlocator",
                                       "rightlocator", "loopselection", "", "markers",
                                       "tempo-track",  "timesig"};

} // namespace

RulerBars::RulerBars(CWin* owner, ArrangeState& shared)
    : CGroup(owner, "bars", 0, 0, 1, 1), state(shared), clock(shared.qv, "ruler-clock", 0),
      markersShown(shared.qv, "ruler-markers", 1), temposShown(shared.qv, "ruler-tempo", 0),
      timesigsShown(shared.qv, "ruler-timesig", 0), ruler(new TimeRuler(owner, shared)),
      bars{{new MarkerBar(owner, shared), &markersShown, "markers"},
           {new TempoLane(owner, shared), &temposShown, "tempo-track"},
           {new SignatureLane(owner, shared), &timesigsShown, "timesig"}} {
    addControl(ruler);
    for (const Bar& bar : bars) {
        bar.lane->visible = bar.shown->on();
        addControl(bar.lane);
    }
    ruler->clock = clock.on();
    ruler->fillMenu = [this](CPopup* popup) { fillMenu(popup); };
    bindCommands();
}

RulerBars::~RulerBars() = default;

void RulerBars::bindCommands() {
    for (const Bar& bar : bars)
        state.actions.bind(
            bar.action,
            [this, &bar] {
                bar.shown->toggle();
                bar.lane->visible = bar.shown->on();
                state.rowsChanged();
            },
            [this] { return state.seq() != nullptr; }, [&bar] { return bar.shown->on(); });
}

int RulerBars::wantedHeight() const {
    int sum = ruler->height;
    for (const Bar& bar : bars)
        if (bar.lane->visible) sum += bar.lane->height;
    return sum;
}

void RulerBars::resized() {
    int y = 0;
    for (CCtrl* bar : controls) {
        bar->setBounds(0, y, width, bar->height);
        if (bar->visible) y += bar->height;
    }
}

int RulerBars::playX() const {
    CSeq* seq = state.seq();
    return seq ? state.axis().xOf(seq->getPos()) : -1;
}

/// All that the pointer touches, with a pixel to spare where its edges lie between two.
CRect RulerBars::pointerRect(int x) const {
    constexpr int reach = pointerReach + 1;
    return asRect(x - reach, 0, x + reach + 1, height);
}

void RulerBars::idle() {
    ruler->refresh();
    for (const Bar& bar : bars)
        if (bar.lane->visible) bar.lane->refresh();
}

bool RulerBars::refresh() {
    const int before = shownX;
    shownX = playX();
    if (shownX == before) return false;
    redraw(pointerRect(before));
    redraw(pointerRect(shownX));
    return true;
}

void RulerBars::scrolled(int dx) {
    if (std::abs(dx) >= width) return redraw();
    shownX += dx;
    scrollArea(clientRect(), dx, 0);
}

void RulerBars::paint(CGraphic* g, CRect rect) {
    CGroup::paint(g, rect);
    if (!state.seq()) return;
    const int accent = win->app->gui->palette.accent;
    g->fillLine(accent, asRect(shownX, 0, shownX + 1, height));
    drawArrow(g, accent, asRect(shownX - pointerReach, -1, shownX + pointerReach + 1, 5), dirDown,
              pointerReach);
}

// The menu.

void RulerBars::fillMenu(CPopup* popup) {
    const char* const modes[] = {"Bars", "Clock"};
    for (int i = 0; i < 2; i++) {
        CMenuItem* item =
            popup->add(modes[i], new _COnChange<RulerBars>(this, &RulerBars::modeClicked));
        item->tag = i;
        item->checked = ruler->clock == (i == 1);
    }
    popup->addSeparator();
    for (const char* name : menuActions)
        if (*name)
            addActionItem(popup, state.workspace, name);
        else
            popup->addSeparator();
}

void RulerBars::modeClicked(CObject* sender) {
    clock.set(tagOf(sender));
    ruler->clock = clock.on();
    ruler->redraw();
}

void RulerBars::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = "Timeline";
}
