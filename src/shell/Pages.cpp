#include "shell/Pages.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/XConnection.h"
#include "gui/controls/CDocker.h"
#include "instruments/CArp.h"
#include "sequencer/song/CEditorComp.h"
#include "sequencer/song/CSeq.h"
#include "shell/CMainWin.h"
#include "shell/DockBar.h"
#include "shell/PageRecords.h"
#include "shell/ProjectFlows.h"
#include "ui/Song.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int newPage = -1, unDock = -2;        ///< of `dockWin`
constexpr int leastSide = 64, mostSide = 16384; ///< of a place from a file
constexpr const char* firstName = "Modular";

/// The docker whose menu makes steps that can be undone.
class StepDocker : public CDocker {
public:
    StepDocker(CMainWin* around, Pages* owner)
        : CDocker(around->app, around, "docker", 0, 0, leastSide, leastSide), main(around),
          pages(owner) {}
    void dockWin(CWin* page, int where) override {
        for (auto* editor : main->editors)
            if (editor == page) return pages->dockWin(editor, where, true);
    }

private:
    CMainWin* main;
    Pages* pages;
};

/// On the screen, as left, top, width, height: numbers of a file may be any.
CRect placeOf(const CEditorStruct& record) {
    const CRect screen = getDesktopBounds();
    const int w = asMinMax(record.width, leastSide, asMin(mostSide, screen.width()));
    const int h = asMinMax(record.height, leastSide, asMin(mostSide, screen.height()));
    return asRect(asMinMax(record.left, screen.left, screen.right - w),
                  asMinMax(record.top, screen.top, screen.bottom - h), w, h);
}

/// Enters a number of a record into a step and changes it.
void change(CUndo* undo, int& field, int value) {
    if (field == value) return;
    undo->asInt(&field);
    std::atomic_ref(field).store(value, std::memory_order_relaxed);
}

} // namespace

Pages::Pages(CMainWin* mainWin, CQV* host, CCtrl* firstPage, int topInside, int belowInside)
    : docker(std::make_unique<StepDocker>(mainWin, this)), window(mainWin), qv(host),
      first(firstPage),
      bar(new DockBar(mainWin, docker.get(), topInside, mainWin->clientGroup->width)),
      top(topInside), below(belowInside) {
    docker->getDock(0)->name = firstName;
    docker->tabAlwaysShow = window->options().tabsAlways.on();
    docker->onChange = new _COnChange<Pages>(this, &Pages::docksChanged);
    window->addControl(bar);
    docksChanged(nullptr);
}

Pages::~Pages() {
    docker->disableChanges(true);
    closeAll();
}

// Where editors belong.

void Pages::eachRecord(const std::function<void(CEditorStruct&)>& visit) const {
    const auto own = [&visit](CComp* c) { visit(c->editorStruct); };
    for (const auto* list : listsOf(qv->comps, qv->sends))
        for (auto* c : *list) {
            own(c);
            c->eachInsert(own);
        }
    visit(qv->mapStruct);
    visit(window->flows->mixer.editorStruct);
    const CSeq* seq = songOf(qv);
    if (!seq) return;
    visit(seq->editorComp->editorStruct);
    for (auto* track : seq->tracks) {
        own(track);
        track->eachInsert(own);
        if (track->arp) own(track->arp.get());
    }
}

/// The open editors by page and place.
std::vector<CCompEditor*> Pages::inOrder() const {
    std::vector<CCompEditor*> editors;
    for (auto* editor : window->editors) editors.push_back(editor);
    std::stable_sort(editors.begin(), editors.end(), [](const auto* a, const auto* b) {
        return std::pair(a->dock->page, a->dock->pageItem) <
               std::pair(b->dock->page, b->dock->pageItem);
    });
    return editors;
}

int Pages::lastPlace(int page) const {
    int last = -1;
    eachRecord([&](const CEditorStruct& r) {
        if (r.page == page) last = asMax(last, r.pageItem);
    });
    return last;
}

bool Pages::deserted(int page, const CEditorStruct* leaver) const {
    bool found = false;
    eachRecord([&](const CEditorStruct& r) { found = found || (r.page == page && &r != leaver); });
    return page > 0 && !found;
}

void Pages::removeDock(CUndo* undo, int page) {
    undo->asRemove(docker->getDock(page), &docker->docks);
    eachRecord([&](CEditorStruct& r) {
        if (r.page > page) change(undo, r.page, r.page - 1);
    });
}

void Pages::dockWin(CCompEditor* editor, int where, bool maximize, CUndo* undo) {
    CEditorStruct& record = *editor->dock;
    const int count = docker->docks.getCount(), from = record.page;
    const bool alone = deserted(from, &record);
    const bool acts = where == newPage  ? !alone
                      : where == unDock ? from > 0
                                        : where > 0 && where < count && where != from;
    if (!acts) return;
    store(editor);
    CUndo* step = undo ? undo : qv->undoStart(where == unDock ? "Un-dock" : "Dock", qv);
    step->effects.host = step->effects.host | HostNotice::pages;
    if (!undo) step->viewOnly = true;
    if (where == newPage) step->asAdd(new CDock(docker.get(), editor->id), &docker->docks);
    const int to = where == newPage ? count : where == unDock ? -1 : where;
    change(step, record.pageItem, to < 0 ? 0 : lastPlace(to) + 1);
    change(step, record.page, to);
    change(step, record.maximized, to > 0 && maximize);
    if (alone) removeDock(step, from);
    if (undo) return;
    qv->undoEnd(step, true);
    update();
    bringToFront(editor);
}

// The windows follow.

void Pages::update() {
    const CDock* front = docker->getDock(-1);
    docker->disableChanges(true);
    std::vector<int> placed(size_t(docker->docks.getCount()), 0);
    for (CCompEditor* editor : inOrder()) {
        const int page = editor->dock->page;
        const bool docked = page > 0 && page < docker->docks.getCount();
        follow(editor, docked ? placed[size_t(page)]++ : -1);
    }
    const int at = wantedPage >= 0 ? wantedPage : docker->docks.indexed(front);
    wantedPage = -1;
    docker->setActive(at);
    docker->disableChanges(false);
    docker->changed();
}

/// Puts a window on its page, `order` behind its first, or for -1 on the screen.
void Pages::follow(CCompEditor* editor, int order) {
    const CEditorStruct record = *editor->dock;
    if (order < 0) {
        if (editor->isPage()) placeFloating(editor);
        return;
    }
    CDock* dock = docker->getDock(record.page);
    const bool fresh = !editor->isPage();
    if (docker->dockOf(editor) != dock || docker->orderOf(editor) != order)
        docker->attach(editor, dock, order);
    if (fresh) placeInside(editor);
    if (editor->hasStyle(winMaximized) != (record.maximized != 0)) editor->toggleMaximized();
    if (!record.maximized) docker->keepInside(editor);
}

/// Where it goes back to from being maximized. As a page already: a window manager may carry out
/// what was asked of it for a window on the screen when that has become a page.
void Pages::placeInside(CCompEditor* editor) {
    if (editor->hasStyle(winMaximized)) return editor->fillOwner();
    const CRect at = placeOf(*editor->dock);
    editor->move(at.left, at.top, at.right, at.bottom);
}

void Pages::placeFloating(CCompEditor* editor) {
    const CRect at = placeOf(*editor->dock);
    if (editor->isPage())
        docker->detach(editor, at);
    else
        editor->move(at.left, at.top, at.right, at.bottom);
}

/// Brings the record of an open editor up to date, unless it asks for what the window has still to
/// follow: a copy may be saved between a step and `update`.
void Pages::store(CCompEditor* editor) {
    CEditorStruct& record = *editor->dock;
    record.visible = editor->visible;
    if (editor->isPage() != (record.page > 0)) return;
    const bool large = editor->hasStyle(winMaximized);
    const CRect back = editor->restoreRect;
    const CPoint at = large ? asPoint(back.left, back.top) : editor->getPos(false);
    const CPoint extent = large ? asPoint(back.right, back.bottom) : editor->getSize();
    record.left = at.x;
    record.top = at.y;
    record.width = extent.x;
    record.height = extent.y;
    record.maximized = large;
}

void Pages::addPage(CCompEditor* editor) {
    if (docker->docks.getCount() >= mostPages) return;
    CEditorStruct& record = *editor->dock;
    store(editor);
    record.page = docker->docks.getCount();
    record.pageItem = 0;
    record.maximized = 1;
    docker->docks.add(new CDock(docker.get(), editor->id));
}

void Pages::open(CCompEditor* editor) {
    const CEditorStruct& record = *editor->dock;
    window->editors.addUnique(editor);
    wire(editor->onHide, new _COnChange(this, &Pages::editorHidden));
    const bool docked = record.page > 0 && record.page < docker->docks.getCount();
    if (!docked) placeFloating(editor);
    const int waiting = wantedPage;
    update();
    wantedPage = waiting;
    editor->show(true);
    store(editor);
}

void Pages::editorHidden(CCompEditor* editor) {
    store(editor);
    editor->dock->visible = 0;
    window->editors.remove(editor);
    names.erase(editor);
}

void Pages::closeDocked() {
    for (CCompEditor* editor : inOrder())
        if (editor->isPage()) editor->hide();
}

void Pages::closeAll() {
    for (CCompEditor* editor : inOrder()) editor->hide();
}

// What is in front.

void Pages::docksChanged(CObject*) {
    for (CCompEditor* editor : inOrder())
        if (editor->isPage()) editor->dock->maximized = editor->hasStyle(winMaximized);
    const bool had = bar->visible;
    first->visible = docker->activeIndex == 0; // what is covered takes no keys
    bar->refresh();
    layout();
    if (had != bar->visible) window->redraw();
    window->mdiChanged();
}

void Pages::leaveRoom(int wide) {
    left = wide;
}

void Pages::layout() {
    const CGroup* client = window->clientGroup;
    const int from = bar->visible ? top + DockBar::barHeight : top;
    const int h = client->height - from - below;
    const int wide = asMax(client->width - left, 1);
    bar->setBounds(left, top, wide, DockBar::barHeight);
    bar->resized();
    first->setBounds(left, from, wide, h);
    if (first->category == catGroup) static_cast<CGroup*>(first)->resized();
    const CRect now = ctrlBounds(docker.get());
    const CRect wanted = asRect(client->left + left, client->top + from, client->left + left + wide,
                                client->top + from + h);
    if (now == wanted) return;
    docker->move(wanted.left, wanted.top, wanted.width(), wanted.height());
    docker->resized();
}

void Pages::followNames() {
    bool any = false;
    for (CCompEditor* editor : inOrder()) {
        const auto [known, fresh] = names.try_emplace(editor, editor->id);
        if (fresh || known->second == editor->id) continue;
        CDock* dock = docker->dockOf(editor);
        const bool follows = dock && dock->name == known->second;
        if (follows) dock->name = editor->id;
        any = any || follows;
        known->second = editor->id;
    }
    if (!any) return;
    bar->refresh();
    bar->redraw();
}

void Pages::showFirst() {
    docker->setActive(0);
}

bool Pages::firstInFront() const {
    return docker->activeIndex == 0;
}

void Pages::nextDock(int by) {
    docker->nextDock(by);
}

void Pages::showTabs(bool always) {
    docker->tabAlwaysShow = always;
    update();
}

bool Pages::canTurn() const {
    return docker->tabCount() > 1;
}

CCompEditor* Pages::current() const {
    for (auto* editor : window->editors)
        if (editor == docker->current) return editor;
    return nullptr;
}

CCompEditor* Pages::editorOf(const CComp* comp) const {
    for (auto* editor : window->editors)
        if (editor->comp == comp) return editor;
    return nullptr;
}

void Pages::bringToFront(CCompEditor* editor) {
    if (const CDock* dock = docker->dockOf(editor)) docker->setActive(docker->docks.indexed(dock));
    editor->raise(!editor->isPage());
}

// The project.

void Pages::write(WindowRecords& records) {
    for (CCompEditor* editor : inOrder()) store(editor);
    records.pages.clear();
    for (int i = 1; i < docker->docks.getCount(); i++)
        records.pages.push_back(pageRecord(docker->getDock(i)->name));
    records.currentPage = docker->activeIndex;
    records.modularPage = docker->activeIndex == 0;
}

void Pages::read(const WindowRecords& records) {
    clear();
    for (const auto& bytes : records.pages)
        if (docker->docks.getCount() < mostPages)
            docker->docks.add(new CDock(docker.get(), pageName(bytes)));
    const int count = docker->docks.getCount();
    eachRecord([count](CEditorStruct& r) {
        if (r.page < 1 || r.page >= count) r.page = -1;
        r.pageItem = asMinMax(r.pageItem, 0, mostSide);
    });
    const int page = asMin(records.currentPage, count - 1);
    wantedPage = records.modularPage ? 0 : page > 0 ? page : -1;
}

void Pages::clear() {
    closeAll();
    docker->clearDocks();
    wantedPage = -1;
}
