#include "browser/CBrowser.h"

#include "audiofiles/CSample.h"
#include "base/CIniFile.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "browser/BrowserTree.h"
#include "browser/CBrowserPreview.h"
#include "browser/CPreviewPanel.h"
#include "browser/ListedFiles.h"
#include "browser/PreviewWave.h"
#include "browser/SearchField.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Keys.h"
#include "gui/Selections.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CSplit.h"
#include "ui/IniFolders.h"
#include "ui/Workspace.h"

#include <utility>

namespace {

constexpr int margin = 8, gap = 4, fieldHeight = 24, searchWide = 56, doneWide = 24;
constexpr int splitHeight = 4;
constexpr int lookTicks = 10; ///< between two looks while files are still being found
constexpr int rightPressed = 2;
constexpr const char *section = "browser", *previewKey = "previewHeight";

} // namespace

CBrowser::CBrowser(CWin* owner, Workspace& space, BrowserDeeds known)
    : CGroup(owner, "browser", 0, 0, usualWidth, 1), workspace(space), qv(space.host()),
      deeds(std::move(known)), search(space), preview(CBrowserPreview::of(qv)), rangeFile(qv),
      tree(nullptr), results(nullptr), split(new CSplit(owner, "split", 0, 0, 1, splitHeight)),
      panel(new CPreviewPanel(owner, preview)) {
    addTop();
    tree = addTree("tree");
    results = addTree("results");
    results->visible = false;
    results->spokenName = "Found";
    tree->spokenName = "Browser";
    tree->fillTop();
    panel->height = asMax(0, iniReadInt(section, previewKey, usualPreview));
    split->horizontal = false;
    split->minSize = CPreviewPanel::leastHeight / 2;
    split->maxSize = CPreviewPanel::leastHeight;
    split->target = panel;
    split->spokenName = "Height of the preview";
    addControl(split);
    addControl(panel);
    panel->wave->onDragOut = [this] { dragRange(); };
    panel->wave->onBring = [this] { bring(&CBrowser::fillWithRange); };
    NoticeRouter& notices = workspace.notices();
    links = {notices.on({.host = HostNotice::folders}, [this] { foldersStale = true; }),
             notices.on({.host = HostNotice::pool}, [this] { poolStale = true; })};
}

CBrowser::~CBrowser() = default;

void CBrowser::addTop() {
    field = new SearchField(win);
    field->onTyped = [this] { look(); };
    field->onAccept = [this] { searchClicked(field); };
    field->onLeave = [this] { doneClicked(field); };
    addControl(field);
    const auto button = [this](const char* key, const char* text, const char* told) {
        auto* made = new CButton(win, key, text, 0, 0, 1, fieldHeight);
        made->hint = told;
        made->tabStop = made->hooverable = true;
        addControl(made);
        return made;
    };
    searchButton = button("find", "Search", "Shows what has the text in its name");
    doneButton = button("done", "...", "Shows all folders again");
    doneButton->spokenName = "End search";
    wire(searchButton->onChange, new _COnChange<CBrowser>(this, &CBrowser::searchClicked));
    wire(doneButton->onChange, new _COnChange<CBrowser>(this, &CBrowser::doneClicked));
}

BrowserTree* CBrowser::addTree(const char* key) {
    auto* made = new BrowserTree(win, key, qv, deeds);
    wire(made->onChange, new _COnChange<CBrowser>(this, &CBrowser::chosen));
    wire(made->onExecute, new _COnChange<CBrowser>(this, &CBrowser::executed));
    wire(made->onDrag, new _COnChange<CBrowser>(this, &CBrowser::dragged));
    wire(made->onRightClick, new _COnChange<CBrowser>(this, &CBrowser::rightClicked));
    wire(made->onKeyDown, new _COnKey<CBrowser>(this, &CBrowser::treeKey));
    addControl(made);
    return made;
}

BrowserTree* CBrowser::front() const {
    return searching ? results : tree;
}

// How it looks.

void CBrowser::resized() {
    const int right = width - margin, top0 = margin + fieldHeight + gap;
    doneButton->setBounds(right - doneWide, margin, doneWide, fieldHeight);
    searchButton->setBounds(doneButton->left - gap - searchWide, margin, searchWide, fieldHeight);
    field->setBounds(margin, margin, asMax(searchButton->left - gap - margin, 1), fieldHeight);
    const int tall = asMin(panel->height, asMax(height - top0 - splitHeight - fieldHeight, 0));
    panel->visible = tall > 0;
    panel->setBounds(0, height - tall, width, panel->height);
    split->setBounds(0, height - tall - splitHeight, width, splitHeight);
    for (BrowserTree* t : {tree, results}) {
        t->setBounds(margin, top0, asMax(width - 2 * margin, 1), asMax(split->top - gap - top0, 1));
        t->resized();
    }
    panel->resized();
}

void CBrowser::paint(CGraphic* g, CRect rect) {
    g->fillRect(win->app->gui->palette.panel, clientRect());
    CGroup::paint(g, rect);
}

void CBrowser::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = "Browser";
}

void CBrowser::shown() {
    search.readFolders();
}

void CBrowser::takeKeys() {
    win->setKeyCtrl(field);
    field->selectAll();
}

void CBrowser::writeSettings() const {
    CIniFile(inifile).writeInteger(section, previewKey, panel->height);
}

/// A menu that is open is about one of the nodes, which stay as long.
void CBrowser::idle() {
    if (!CCtrl::shown()) return;
    panel->idle();
    if (!win->app->dragList && !win->app->modalWin) rangeFile.idle();
    found = search.idle() || found;
    sinceLook++;
    if (!win->app->menus.empty()) return;
    tree->idle();
    if (std::exchange(poolStale, false)) tree->refreshNode(nodePool);
    if (std::exchange(foldersStale, false)) foldersChanged();
    if (!searching || !found || sinceLook < lookTicks) return;
    found = false;
    look();
}

void CBrowser::foldersChanged() {
    for (const BrowserKind& kind : browserKinds)
        if (kind.folders) tree->refreshNode(kind.kind);
    search.readFolders();
}

// The search.

void CBrowser::look() {
    if (field->text.trim().empty()) return endSearch();
    sinceLook = 0;
    searching = true;
    search.show(*results, field->text.trim());
    tree->visible = false;
    results->visible = true;
    redraw();
}

void CBrowser::endSearch() {
    searching = false;
    results->visible = false;
    results->clearNodes();
    tree->visible = true;
    redraw();
}

void CBrowser::searchClicked(CObject*) {
    if (!field->text.trim().empty()) look();
    BrowserTree* shows = front();
    win->setKeyCtrl(shows);
    auto* group = shows->root.children.getFirst();
    if (!searching || !group) return;
    auto* first = group->children.getFirst();
    shows->select(first ? first : group);
    chosen(shows);
}

void CBrowser::doneClicked(CObject*) {
    field->setText("");
    endSearch();
    win->setKeyCtrl(tree);
}

bool CBrowser::treeKey(CObject*, int& key, int mods) {
    if (mods || key != keyEscape) return false;
    if (preview->isOn())
        previewStop();
    else if (searching)
        doneClicked(nullptr);
    else
        return false;
    return true;
}

// What is chosen.

void CBrowser::chosen(CObject* sender) {
    if (win->app->lastMouseBtn == rightPressed) return;
    previewStart(static_cast<BrowserTree*>(sender)->current);
}

void CBrowser::previewStart(const CTreeNode* node) {
    if (!node || !panel->visible) return;
    const bool file = node->kind == nodeFile || node->kind == nodePoolSample;
    if (file && canPreview(node->path)) preview->play(node->path);
}

void CBrowser::previewStop() {
    preview->stop();
    panel->fileShown();
}

void CBrowser::executed(CObject* sender) {
    execute(static_cast<CTreeNode*>(sender));
}

void CBrowser::used(const CTreeNode* node) {
    if (!BrowserTree::isFile(node) || node->kind == nodePoolSample) return;
    putOnShelf(FileShelf::recent, node->path);
    tree->refreshNode(nodeRecent);
}

void CBrowser::execute(CTreeNode* node) {
    const CStr path = node->path;
    if (node->kind == nodeAction) {
        workspace.runAction(static_cast<CAction*>(node->data));
    } else if (node->kind == nodeComponent) {
        deeds.addComponent(static_cast<const BrowserDeeds::Component*>(node->data)->type);
    } else if (node->kind == nodePluginFile) {
        used(node);
        deeds.addPlugin(path);
    } else if (BrowserTree::isFile(node)) {
        front()->select(node);
        bring(&CBrowser::fillDragList);
    } else {
        front()->expcol(node);
    }
}

/// As if it were dropped beside the song.
void CBrowser::bring(void (CBrowser::*fill)()) {
    win->app->startDrag(this);
    (this->*fill)();
    if (!win->app->dragList->empty() && win->app->onStrayDrop) (*win->app->onStrayDrop)(this);
    win->app->endDrag();
}

// What is dragged out of it.

void CBrowser::fillDragList() {
    ListOf<CTreeNode> nodes;
    front()->selectedNodes(&nodes);
    std::vector<CStr> paths;
    for (const auto* node : nodes) {
        if (!BrowserTree::isFile(node) || !fileExists(node->path)) continue;
        const int kind = node->kind == nodePoolSample ? int(dropSample) : int(dropFile);
        auto* item = new CDropItem(extractFileName(node->path), kind);
        item->path = node->path;
        win->app->dragList->add(item);
        if (kind == dropFile) paths.push_back(node->path);
    }
    for (const CStr& path : paths) putOnShelf(FileShelf::recent, path);
    if (!paths.empty()) tree->refreshNode(nodeRecent);
}

void CBrowser::dragged(CObject* sender) {
    auto* from = static_cast<BrowserTree*>(sender);
    const bool any = from->current && BrowserTree::isFile(from->current);
    if (!any) return;
    win->app->startDrag(from);
    fillDragList();
    if (win->app->dragList->empty()) win->app->endDrag();
}

void CBrowser::fillWithRange() {
    const CSample* sample = preview->getSample();
    if (!sample || sample->chs > 2) return;
    const CStr path =
        rangeFile.write(*sample, preview->rangeFrom(), preview->rangeTo(), preview->getFilename());
    if (path.empty()) return workspace.setStatus("The range could not be written to a file");
    auto* item = new CDropItem(extractFileName(path), dropFile);
    item->path = path;
    win->app->dragList->add(item);
}

void CBrowser::dragRange() {
    win->app->startDrag(panel->wave);
    fillWithRange();
    if (win->app->dragList->empty()) win->app->endDrag();
}
