#include "ui/CCompEditor.h"

#include "engine/CComp.h"
#include "gui/CApp.h"
#include "gui/Keys.h"
#include "ui/Commands.h"

namespace {

/// What must not happen to the song while its user writes: of the keys that a text field leaves
/// alone those of the function row, and of files and transport, act.
bool heldBack(const CAction* action, const CCtrl* target) {
    if (!target || target->type != ctrlEdit) return false;
    const bool functionKey = action->key <= keyF1 && action->key >= keyF12;
    return !functionKey && (action->group == groupEdit || action->group >= groupGlobal);
}

} // namespace

CCompEditor::CCompEditor(CApp* application, CWin* owner, const CStr& title, int l, int t, int w,
                         int h, int windowStyle, CComp* edited, const Commands* table)
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
    const CWin* around = getMDIOwner(this); // of a page, whose keys come to it
    const CCtrl* target = around ? around->keyTarget() : keyTarget();
    return action && !heldBack(action, target) && onAction(action);
}
