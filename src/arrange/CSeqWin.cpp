#include "arrange/CSeqWin.h"

#include "arrange/ArrangeRoom.h"
#include "arrange/ArrangeView.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/Keys.h"
#include "sequencer/song/CSeq.h"
#include "ui/Commands.h"
#include "ui/Workspace.h"

namespace {

constexpr const char* title = "Arrangement";
constexpr int windowWidth = 1000, windowHeight = 600; ///< of the screen, when it is no page
constexpr int leastWidth = 480, leastHeight = 240;
constexpr int windowStyle = winCaption | winSizable | winMaxButton | winDockable;

} // namespace

CSeqWin::CSeqWin(Workspace& space, ArrangeRoom& around, CSeq& seq)
    : CCompEditor(space.mainWindow()->app, space.mainWindow(), title, 100, 100, windowWidth,
                  windowHeight, windowStyle, &seq, &space.commands()),
      workspace(space), room(around), view(new ArrangeView(this, space, around.range)),
      menus(space, around, *view) {
    editorType = groupArrange;
    minWidth = leastWidth;
    minHeight = leastHeight;
    addControl(view);
    wire(view->onDrop, new _COnMouse<CSeqWin>(this, &CSeqWin::dropped));
    view->onMenus(new _COnChange<ArrangeMenus>(&menus, &ArrangeMenus::showTrack),
                  new _COnChange<ArrangeMenus>(&menus, &ArrangeMenus::showPart));
    app->follow(this);
}

CSeqWin::~CSeqWin() = default;

bool CSeqWin::keyDown(int key, int mods) {
    if (CCompEditor::keyDown(key, mods) || view->arrowKey(key, mods)) return true;
    if (key != keyEscape || mods != 0 || !keyCtrl) return false;
    setKeyCtrl(nullptr);
    return true;
}

bool CSeqWin::canRun(const CAction* action) const {
    return view->isForNotes(action->name) || view->ownActions().isReady(action);
}

bool CSeqWin::isOn(const CAction* action) const {
    return view->ownActions().isOn(action);
}

bool CSeqWin::onAction(CAction* action) {
    return view->runOnNotes(action->name) || view->ownActions().run(action) ||
           workspace.commands().run(action);
}

void CSeqWin::mergeMenu(CMenu* bar) {
    menus.merge(bar);
}

/// What the view follows may be gone once the graph or the song has changed, which the next tick
/// tells it.
bool CSeqWin::onFrame() {
    auto* seq = static_cast<CSeq*>(comp);
    if (!mapped) return false; // another page is in front
    if (seq->songNotices.raised(SeqNotice::tracks) ||
        seq->host->hostNotices.raised(HostNotice::graph | HostNotice::step))
        return false;
    return view->refresh();
}

void CSeqWin::idle() {
    view->idle();
    view->refresh();
}

void CSeqWin::dropped(CObject*, int x, int y, int btn) {
    const DropPlan plan = view->dropsAt(x, y, btn);
    if (!workspace.takesDrop()) room.imports.dropped(plan);
}
