#include "browser/SearchField.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"

SearchField::SearchField(CWin* owner) : CEdit(owner, "search", 0, 0, 1, 1) {
    spokenName = "Search";
    hint = "Type a part of a name: of files, plug-ins, samples and actions";
    tabStop = selectOnFocus = true;
}

void SearchField::paint(CGraphic* g, CRect rect) {
    CEdit::paint(g, rect);
    if (text.empty() && !hasKeyFocus())
        g->drawText(win->app->gui->palette.dimText, "Search",
                    sizeRect(clientRect(), textMargin + 2, 0, 0, 0), textLeft);
}

bool SearchField::keyDown(int key, int mods) {
    if (mods == 0 && (key == keyReturn || key == Key::keyDown)) {
        onAccept();
        return true;
    }
    if (mods == 0 && key == keyEscape) {
        onLeave();
        return true;
    }
    const CStr before = text;
    const bool taken = CEdit::keyDown(key, mods);
    if (!(text == before)) onTyped();
    return taken;
}

bool SearchField::enterText(const std::string& to) {
    setText(to.c_str());
    onTyped();
    return true;
}
