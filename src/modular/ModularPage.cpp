#include "modular/ModularPage.h"

#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/Cables.h"
#include "engine/CompTypes.h"
#include "engine/plan/GraphProbe.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/GuiItem.h"
#include "gui/Selections.h"
#include "gui/controls/CScrollbar.h"
#include "modular/AnswerList.h"
#include "modular/AskGraph.h"
#include "modular/FindField.h"
#include "modular/GraphEdits.h"
#include "modular/GraphSide.h"
#include "modular/ModularView.h"
#include "plugins/PluginFile.h"
#include "sequencer/edit/StripEdits.h"
#include "ui/Invitation.h"
#include "ui/NameField.h"
#include "ui/PluginMenu.h"
#include "ui/ProgramItems.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

#include <set>
#include <utility>

namespace {

constexpr int barSize = 16, inviteHeight = 132;
constexpr int frame = 1;         ///< around the canvas, while it has the keys
constexpr int leastBeside = 560; ///< the width from which on there is room for the side
constexpr int ticksApart = 12;   ///< from one question to the probe to the next
constexpr double zoomStep = 1.25;

/// What a host has before anything is added.
bool isBare(CQV* host) {
    for (const auto* comp : host->comps)
        if (comp->type != compMIDIIn && comp->type != compMIDIOut && comp->type != compAudioIn &&
            comp->type != compAudioOut)
            return false;
    return true;
}

bool anyCovered(CQV* host) {
    std::set<std::pair<int, int>> places;
    for (const auto* comp : host->comps)
        if (!places.emplace(comp->posX, comp->posY).second) return true;
    return false;
}

} // namespace

ModularPage::ModularPage(CWin* owner, Workspace& space)
    : CGroup(owner, "modularpage", 0, 0, 1, 1), workspace(space),
      view(new ModularView(owner, space)),
      across(new CScrollbar(owner, "graph-across", 0, 0, 1, barSize)),
      down(new CScrollbar(owner, "graph-down", 0, 0, barSize, 1)),
      empty(new Invitation(owner, space, "desk")), side(new GraphSide(owner, *view)),
      sideShown(space.host(), "graph-side", 1), midiShown(space.host(), "graph-midi", 1),
      audioShown(space.host(), "graph-audio", 1), otherShown(space.host(), "graph-others", 1),
      probe(std::make_unique<GraphProbe>(space.host())), graphMenus(space, *view),
      actions(space.commands()) {
    across->vertical = false;
    across->spokenName = "Scroll the graph across";
    down->spokenName = "Scroll the graph down";
    empty->visible = false;
    empty->set("No song", "There is no song here. Begin one, or open a project.",
               {{"new", "New..."}, {"open", "Open..."}, {"openlast", "Open last"}});
    for (CCtrl* ctrl : std::initializer_list<CCtrl*>{empty, view, across, down, side})
        addControl(ctrl);
    for (CScrollbar* bar : {across, down})
        wire(bar->onChange, new _COnChange<ModularPage>(this, &ModularPage::scrolled));
    view->onScrolled = [this] { updateScrollbars(); };
    view->onRedraw = [this] { side->viewChanged(); };
    graphMenus.onAsk = [this](GraphQuestion question, CObject* about) { ask(question, about); };
    sideShown.onChange = [this] {
        resized();
        redraw();
    };
    for (Option* option : {&midiShown, &audioShown, &otherShown})
        option->onChange = [this] { showKinds(); };
    view->onMenu = [this](CPoint at, CObject* item) { graphMenus.show(at, item); };
    wire(view->onDrop, new _COnMouse<ModularPage>(this, &ModularPage::dropped));
    links = {
        space.notices().on({.host = HostNotice::graph | HostNotice::step}, [this] { changed(); })};
    bindActions();
}

void ModularPage::changed() {
    const GraphModel before = view->graph();
    view->rebuild();
    if (!before.same(view->graph())) side->graphChanged();
    showKinds();
    showInvitation();
}

void ModularPage::showKinds() {
    view->showKinds(midiShown.on(), audioShown.on(), otherShown.on());
}

void ModularPage::ask(GraphQuestion question, const CObject* about) {
    const AskGraph answers(workspace.host(), view->graph(), *probe);
    if (!sideShown.on()) sideShown.set(1);
    side->answers()->set(answers.title(question, about), answers.ask(question, about));
    win->setKeyCtrl(side->answers());
}

ModularPage::~ModularPage() = default;

void ModularPage::bindActions() {
    CQV* host = workspace.host();
    const auto any = [host] { return !host->comps.empty(); };
    const auto one = [host] { return selectedComps(host).size() == 1; };
    // What the song would do with its parts, which do not show here.
    for (const char* name : {"cut", "copy", "paste"})
        actions.preempt(
            name, [] {}, [] { return false; });
    actions.preempt(
        "selectAll",
        [this, host] {
            for (auto* comp : host->comps) comp->setFlag(compSelected, true);
            view->redraw();
        },
        any);
    actions.bind(
        "rename", [this] { rename(); }, one);
    actions.bind(
        "delete", [this] { deleteChosen(); }, [this] { return canDelete(); });
    actions.preempt(
        "edit", [host] { selectedComps(host).front()->edit(true); },
        [this, host] {
            const auto comps = selectedComps(host);
            return comps.size() == 1 && workspace.hasEditor(comps.front());
        });
    actions.preempt(
        "duplicate",
        [this, host] {
            constexpr int beside = 24;
            duplicateComps(host, selectedComps(host), asPoint(beside, beside));
            view->rebuild();
        },
        [host] {
            for (const auto* comp : selectedComps(host))
                if (mayDuplicate(comp)) return true;
            return false;
        });
    actions.bind(
        "pullout",
        [this, host] {
            pullOutComp(host, selectedComps(host).front(), {});
            view->rebuild();
        },
        [host, one] { return one() && canPullOut(host, selectedComps(host).front()); });
    actions.bind(
        "tidygraph",
        [this, host] {
            tidyComps(host);
            view->rebuild();
        },
        any);
    bindItem();
    bindView();
}

/// What is done with what the keys act on, be it a box, a port or a cable.
void ModularPage::bindItem() {
    const auto watchable = [this] { return view->canWatch(view->item()); };
    actions.bind(
        "graphmute", [this] { toggleMute(workspace.host(), view->item()); },
        [this] { return muteOfItem(view->item()).has_value(); },
        [this] {
            const auto value = muteOfItem(view->item());
            return value && value->get()[0] != 0.0;
        });
    actions.bind(
        "graphlisten", [this] { view->listenTo(view->item()); }, watchable,
        [this] { return view->item() && view->watched().listened() == view->item(); });
    actions.bind(
        "graphmeter", [this] { view->toggleMeter(view->item()); }, watchable,
        [this] { return view->watched().isMetered(view->item()); });
}

void ModularPage::bindView() {
    const auto any = [this] { return !workspace.host()->comps.empty(); };
    const auto bindOption = [this](const char* name, Option& option) {
        actions.bind(
            name, [&option] { option.toggle(); }, {}, [&option] { return option.on(); });
    };
    bindOption("graphside", sideShown);
    bindOption("midicables", midiShown);
    bindOption("audiocables", audioShown);
    bindOption("othercables", otherShown);
    actions.bind("find", [this] {
        if (!sideShown.on()) sideShown.set(1);
        side->find()->begin();
    });
    actions.bind(
        "fitgraph", [this] { view->zoomToFit(); }, any);
    const auto zoom = [this](double by) {
        view->zoomTo(view->zoom() * by, asPoint(view->width / 2, view->height / 2));
    };
    actions.bind("zoomin", [zoom] { zoom(zoomStep); });
    actions.bind("zoomout", [zoom] { zoom(1 / zoomStep); });
}

// Layout.

void ModularPage::resized() {
    const int from = invites ? inviteHeight : 0;
    const int beside = sideShown.on() && width > leastBeside ? int(GraphSide::sideWidth) : 0;
    const int wide = width - beside;
    empty->setBounds(0, 0, width, from);
    empty->visible = invites;
    view->setBounds(frame, from + frame, asMax(1, wide - barSize - 2 * frame),
                    asMax(1, height - from - barSize - 2 * frame));
    across->setBounds(0, height - barSize, asMax(1, wide - barSize), barSize);
    down->setBounds(wide - barSize, from, barSize, asMax(1, height - from - barSize));
    side->visible = beside > 0;
    side->setBounds(wide, from, beside, asMax(1, height - from));
    CGroup::resized();
    view->scroll(view->scrollX, view->scrollY);
    updateScrollbars();
}

void ModularPage::paint(CGraphic* g, CRect rect) {
    drawGuiItem(g, asRect(0, height - barSize, width, height), &clComps);
    const CRect around = sizeRect(ctrlBounds(view), -frame, -frame, frame, frame);
    g->frameRect(view->hasKeyFocus() ? win->app->gui->palette.accent : clComps.fillCol, around);
    CGroup::paint(g, rect);
}

void ModularPage::updateScrollbars() {
    const CRect all = view->plain();
    across->setRange(all.right, view->width);
    across->setPos(view->scrollX);
    down->setRange(all.bottom, view->height);
    down->setPos(view->scrollY);
    across->redraw();
    down->redraw();
    side->viewChanged();
}

void ModularPage::scrolled(CObject*) {
    view->scroll(across->pos, down->pos);
}

void ModularPage::showInvitation() {
    const bool wanted = !songOf(workspace.host()) && isBare(workspace.host());
    if (wanted == invites) return;
    invites = wanted;
    resized();
    redraw();
}

void ModularPage::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = "Modular";
}

// The project.

void ModularPage::idle() {
    NameField::dropLeft(field);
    view->follow();
    showInvitation();
    showMeasured();
    if (!fitWanted || !CCtrl::shown() || view->graph().boxes.empty()) return;
    fitWanted = false;
    view->zoomToFit();
}

void ModularPage::showMeasured() {
    if (probe->take()) view->showMeasured(*probe);
    if (!CCtrl::shown() || ++ticks < ticksApart) return;
    ticks = 0;
    probe->ask();
}

void ModularPage::forget() {
    view->forget();
    side->graphChanged();
}

/// Components that a song brings without places of their own all stand at the same one.
void ModularPage::opened() {
    fitWanted = true;
    if (anyCovered(workspace.host())) tidyNewGraph(workspace.host());
    view->rebuild();
    resized();
}

void ModularPage::takeKeys() {
    win->setKeyCtrl(view);
}

// What is done with what is selected.

void ModularPage::rename() {
    CComp* comp = selectedComps(workspace.host()).front();
    const int box = view->graph().boxOf(comp);
    if (box < 0) return;
    view->reveal(view->graph().boxes[size_t(box)].area);
    const CRect area = view->graph().boxes[size_t(box)].area;
    const CPoint corner = view->toControl(asPoint(area.left, area.top));
    constexpr int wide = 160, high = 24;
    NameField::dropLeft(field);
    field = new NameField(this,
                          asRect(view->left + corner.x, view->top + corner.y,
                                 view->left + corner.x + wide, view->top + corner.y + high),
                          comp->id, "Name", view);
    field->onName = [this, comp](const CStr& name) {
        if (workspace.host()->comps.contains(comp)) renameComp(comp, name);
        view->rebuild();
    };
}

bool ModularPage::canDelete() const {
    const CObject* item = view->item();
    if (item && item->category == categoryCable) return true;
    for (const auto* comp : selectedComps(workspace.host()))
        if (mayDeleteComp(workspace.host(), comp)) return true;
    return false;
}

void ModularPage::deleteChosen() {
    CObject* item = view->item();
    if (item && item->category == categoryCable)
        deleteCable(workspace.host(), item);
    else
        deleteComps(workspace.host(), selectedComps(workspace.host()));
    view->rebuild();
}

// What comes from elsewhere.

CPoint ModularPage::middle() const {
    return view->toGraph(asPoint(view->width / 2, view->height / 2));
}

void ModularPage::show(CComp* added) {
    view->rebuild();
    view->goTo(added);
}

void ModularPage::add(int kind) {
    show(addComp(workspace.host(), kind, middle()));
}

void ModularPage::addPlugin(const CStr& path) {
    if (std::unique_ptr<CComp> made = makePlugin(workspace, path))
        show(addComp(workspace.host(), std::move(made), middle()));
}

// Drops.

void ModularPage::dropped(CObject*, int x, int y, int) {
    if (workspace.takesDrop()) return;
    std::vector<CStr> presets, plugins;
    for (const auto* item : *win->app->dragList) {
        if (item->type != dropFile) continue;
        if (presetType(item->path) != 0) presets.push_back(item->path);
        if (PluginFile::isOne(item->path)) plugins.push_back(item->path);
    }
    const CPoint at = view->toGraph(asPoint(x, y));
    for (const CStr& path : plugins)
        if (std::unique_ptr<CComp> made = makePlugin(workspace, path))
            show(addComp(workspace.host(), std::move(made), at));
    if (presets.empty()) { // what is for the song goes there, as beside every window
        if (plugins.empty() && win->app->onStrayDrop) (*win->app->onStrayDrop)(this);
        return;
    }
    addPresets(workspace.host(), presets, at);
    view->rebuild();
}
