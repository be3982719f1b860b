#include "ui/Invitation.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/controls/CButton.h"
#include "ui/Commands.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

namespace {

constexpr int lineHeight = 24, wayWidth = 152, wayHeight = 28, gap = 8;

} // namespace

Invitation::Invitation(CWin* owner, Workspace& space, const char* name)
    : CGroup(owner, name, 0, 0, 1, 1), workspace(space) {
    arrowsWalk = true;
}

void Invitation::set(const CStr& name, const CStr& text, const std::vector<Way>& ways) {
    title = name;
    told = text;
    clear();
    buttons.clear();
    for (const Way& way : ways) {
        auto* button = new CButton(win, way.action, way.text, 0, 0, wayWidth, wayHeight);
        button->tabStop = true;
        wire(button->onChange, new _COnChange(this, &Invitation::clicked));
        buttons.push_back(button);
        addControl(button);
    }
    resized();
    redraw();
}

void Invitation::clicked(CButton* sender) {
    workspace.runAction(workspace.commands().getAction(sender->id));
}

void Invitation::resized() {
    const int count = int(buttons.size()), wide = count * wayWidth + (count - 1) * gap;
    const bool stacked = wide + 2 * gap > width;
    int x = stacked ? (width - wayWidth) / 2 : (width - wide) / 2, y = height / 3;
    for (CButton* button : buttons) {
        button->setBounds(x, y, wayWidth, wayHeight);
        (stacked ? y : x) += stacked ? wayHeight + gap : wayWidth + gap;
    }
}

void Invitation::paint(CGraphic* g, CRect rect) {
    drawGuiItem(g, clientRect(), &clGrid);
    const int y = height / 3 - lineHeight - 2 * gap;
    g->drawText(win->app->gui->palette.dimText, told, asRect(gap, y, width - gap, y + lineHeight),
                0);
    CGroup::paint(g, rect);
}

void Invitation::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = title.asChar();
    d.help = told.asChar();
}
