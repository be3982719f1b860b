#include "app/CCompEditor.h"

#include "app/CAction.h"
#include "engine/CComp.h"
#include "gui/CApp.h"

CCompEditor::CCompEditor(CApp* application, CWin* owner, const CStr& title, int l, int t, int w,
                         int h, int windowStyle, CComp* edited, const ActionTable* table)
    : CWin(application, owner, title, l, t, w, h, windowStyle), comp(edited), actions(table),
      dock(&edited->editorStruct) {
}

CCompEditor::~CCompEditor() {
    CCompEditor::hide();
    delete onHide;
}

void CCompEditor::hide() {
    if (visible && onHide) (*onHide)(this);
    CWin::hide();
}

bool CCompEditor::keyDown(int key, int mods) {
    return CWin::keyDown(key, mods) || doAction(key, mods);
}

bool CCompEditor::doAction(int key, int mods) {
    if (app->modalWin && app->modalWin != this) return false;
    CAction* action = actions->find(key, mods, editorType);
    return action && onAction(action);
}
