#include "arrange/EmptySong.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/controls/CButton.h"
#include "ui/Commands.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

namespace {

constexpr const char* told = "No tracks yet. Add one, bring in a file, or drop files here.";
constexpr int lineHeight = 24, wayWidth = 152, wayHeight = 28, gap = 8;

struct Way {
    const char *action, *text;
};
constexpr Way ways[] = {{"addtrack", "Add instrument"},
                        {"addaudio", "Add audio track"},
                        {"adddrum", "Add drum track"},
                        {"importaudio", "Import audio..."},
                        {"importmidi", "Import MIDI file..."}};

} // namespace

EmptySong::EmptySong(CWin* owner, Workspace& space)
    : CGroup(owner, "empty", 0, 0, 1, 1), workspace(space) {
    for (const Way& way : ways) {
        auto* button = new CButton(owner, way.action, way.text, 0, 0, wayWidth, wayHeight);
        button->tabStop = true;
        wire(button->onChange, new _COnChange<EmptySong>(this, &EmptySong::clicked));
        buttons.push_back(button);
        addControl(button);
    }
    arrowsWalk = true;
}

void EmptySong::clicked(CObject* sender) {
    const Commands& commands = workspace.commands();
    commands.run(commands.getAction(static_cast<CButton*>(sender)->id));
}

void EmptySong::resized() {
    const int count = int(buttons.size()), wide = count * wayWidth + (count - 1) * gap;
    const bool stacked = wide + 2 * gap > width;
    int x = stacked ? (width - wayWidth) / 2 : (width - wide) / 2, y = height / 3;
    for (CButton* button : buttons) {
        button->setBounds(x, y, wayWidth, wayHeight);
        (stacked ? y : x) += stacked ? wayHeight + gap : wayWidth + gap;
    }
}

void EmptySong::paint(CGraphic* g, CRect rect) {
    drawGuiItem(g, clientRect(), &clGrid);
    const int y = height / 3 - lineHeight - 2 * gap;
    g->drawText(win->app->gui->palette.dimText, told, asRect(gap, y, width - gap, y + lineHeight),
                0);
    CGroup::paint(g, rect);
}

void EmptySong::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = "Empty song";
    d.help = told;
}
