#include "notes/CEditorWin.h"

#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/controls/CMenu.h"
#include "gui/controls/CPopup.h"
#include "notes/EditorBar.h"
#include "notes/RollBody.h"
#include "notes/WaveBody.h"
#include "sequencer/song/CEditorComp.h"
#include "sequencer/song/CSeq.h"
#include "ui/ActionItems.h"
#include "ui/Commands.h"
#include "ui/MenuTags.h"

#include <algorithm>

namespace {

constexpr int windowWidth = 900, windowHeight = 560;

} // namespace

CEditorWin::CEditorWin(Workspace& space, CEditorComp& edited)
    : CCompEditor(space.mainWindow()->app, space.mainWindow(), edited.id, 200, 200, windowWidth,
                  windowHeight, winCaption | winSizable | winDockable, &edited, &space.commands()),
      EditedPart(space), editor(edited),
      bar(new EditorBar(this, *this)), bodies{new RollBody(this, space), new WaveBody(this, space)},
      body(bodies.front()) {
    editorType = groupArrange;
    addControl(bar);
    for (EditorBody* b : bodies) {
        b->visible = b == body;
        addControl(b);
    }
    bar->setBody(*body);
    links = {workspace.notices().on(
        {.host = HostNotice::graph, .song = SeqNotice::tracks | SeqNotice::parts},
        [this] { songChanged(); })};
    app->follow(this);
    layout();
    setKeyCtrl(body->keyCtrl());
}

CEditorWin::~CEditorWin() = default;

void CEditorWin::resized() {
    CCompEditor::resized();
    layout();
}

void CEditorWin::layout() {
    const int w = clientGroup->width, h = clientGroup->height;
    bar->setBounds(0, 0, w, EditorBar::barHeight);
    body->setBounds(0, EditorBar::barHeight, w, std::max(1, h - EditorBar::barHeight));
}

bool CEditorWin::onFrame() {
    if (!visible) return false;
    const CSeq* song = seq();
    if (!song || song->songNotices.raised(SeqNotice::tracks | SeqNotice::parts) ||
        qv->hostNotices.raised(HostNotice::graph | HostNotice::step))
        return false;
    return part && body->onFrame();
}

void CEditorWin::idle() {
    if (editor.part() != part) songChanged();
    if (part) body->idle();
    bar->refresh();
}

void CEditorWin::songChanged() {
    if (editor.part() && (!seq() || !seq()->partToTrack(editor.part()))) editor.setPart(nullptr);
    if (editor.part() != part)
        showPart(editor.part());
    else
        body->songChanged();
}

void CEditorWin::showPart(CPart* wanted) {
    const auto fit = std::ranges::find_if(
        bodies, [wanted](const EditorBody* b) { return wanted && b->shows(wanted); });
    EditorBody* next = fit != bodies.end() ? *fit : body;
    part = fit != bodies.end() ? wanted : nullptr;
    track = part ? seq()->partToTrack(part) : nullptr;
    if (next != body) {
        body->setPart(nullptr, nullptr);
        body->visible = false;
        body = next;
        body->visible = true;
        bar->setBody(*body);
        layout();
        setKeyCtrl(body->keyCtrl());
        redraw();
    }
    body->setPart(part, track);
}

// Keys and actions.

bool CEditorWin::canRun(const CAction* action) const {
    return part && body->knowsAction(action->name);
}

/// What the body does with the part, then what the program does anywhere.
bool CEditorWin::onAction(CAction* action) {
    return (part && body->runAction(action->name)) || workspace.commands().run(action);
}

void CEditorWin::mergeMenu(CMenu* bars) {
    bars->add("Part", new _COnChange<CEditorWin>(this, &CEditorWin::fillPart), menuPart);
    bars->add("Options", new _COnChange(this, &CEditorWin::fillOptions), menuOptions);
}

void CEditorWin::fillPart(CObject* popup) {
    body->fillPart(static_cast<CPopup*>(popup));
}

void CEditorWin::fillOptions(CPopup* popup) {
    body->fillOptions(popup);
    addActionItems(popup, workspace,
                   {"snap", "snaprelative", "snapadaptive", "snapPrior", "snapNext"});
}
