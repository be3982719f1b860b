#include "modular/GraphMenus.h"

#include "base/Delegates.h"
#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "engine/CompTypes.h"
#include "engine/DeviceComps.h"
#include "engine/ObjectKinds.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "gui/controls/CPopup.h"
#include "modular/AskGraph.h"
#include "modular/GraphEdits.h"
#include "modular/GraphNames.h"
#include "modular/ModularView.h"
#include "ui/ActionItems.h"
#include "ui/MenuDeed.h"
#include "ui/PluginMenu.h"
#include "ui/Workspace.h"

#include <utility>

namespace {

constexpr AddedKind kinds[] = {
    {"Sequencer", compSeq},    {"Synthesizer", compSampler}, {"Multi Effect", compEffect},
    {"Arpeggiator", compArp},  {"Group", compGroupCh},       {"MIDI In", compMIDIIn},
    {"MIDI Out", compMIDIOut}, {"Audio In", compAudioIn},    {"Audio Out", compAudioOut}};

/// Whether a new component of a type has an input and an output for a cable.
bool goesInto(int type, const CObject* cable) {
    return cable->type == cableMidi ? type == compArp : type == compEffect || type == compGroupCh;
}

} // namespace

std::span<const AddedKind> addedKinds() {
    return kinds;
}

GraphMenus::GraphMenus(Workspace& space, ModularView& shown) : workspace(space), view(shown) {
}

CMenuItem* GraphMenus::add(CPopup* popup, const CStr& text, std::function<void()> chosen) {
    return addDeed(popup, text, std::move(chosen));
}

void GraphMenus::addAction(CPopup* popup, const char* name) {
    addActionItem(popup, workspace, name);
}

void GraphMenus::show(CPoint at, CObject* item) {
    place = at;
    CApp* app = view.win->app;
    auto* popup = new CPopup(app, view.win);
    popup->autoDelete = true;
    const GraphModel& graph = view.graph();
    if (!item)
        fillNew(popup, nullptr);
    else if (CComp* box = asComp(item))
        fillComp(popup, box);
    else if (item->category == categoryCable)
        fillCable(popup, graph.cableOf(item));
    else
        fillPort(popup, graph.portOf(item));
    CPoint screen = app->menuPoint();
    if (app->menuCtrl)
        screen =
            addPos(addPos(view.win->getPos(true), view.win->controlPos(&view)), view.toControl(at));
    popup->popup(screen.x, screen.y, app->menuCtrl);
}

/// Of the canvas, or of a cable that what is added comes into.
void GraphMenus::fillNew(CPopup* popup, CObject* into) {
    if (!into) {
        addAction(popup, "undo");
        addAction(popup, "redo");
        popup->addSeparator();
    }
    for (const AddedKind& kind : kinds) {
        const int made = kind.type;
        if (into && !goesInto(made, into)) continue;
        add(popup, kind.text, [this, made, into] {
            CComp* comp = addComp(view.host(), made, place, into);
            view.rebuild();
            view.goTo(comp);
        });
    }
    if (!into || into->type == cableAudio)
        fillPluginMenu(popup->addSub("Plug-in"), workspace,
                       into ? PluginUse::effect : PluginUse::any,
                       [this, into](std::unique_ptr<CComp> made) {
                           CComp* comp = addComp(view.host(), std::move(made), place, into);
                           view.rebuild();
                           view.goTo(comp);
                       });
    if (into) return;
    popup->addSeparator();
    for (const char* name : {"selectAll", "tidygraph", "fitgraph"}) addAction(popup, name);
}

void GraphMenus::fillComp(CPopup* popup, CComp* comp) {
    if (!comp->hasFlag(compSelected)) selectOnly(view.host(), comp);
    view.setItem(comp);
    view.redraw();
    for (const char* name : {"edit", "rename", "duplicate", "pullout", "delete"})
        addAction(popup, name);
    fillSound(popup, comp);
    fillAsk(popup, comp);
    fillPorts(popup, comp);
    if (!windowMenu || !workspace.isOpen(comp)) return;
    popup->addSeparator();
    windowMenu(popup, comp);
}

/// What can be done with what sounds there: at a cable or output, or where a component has one.
void GraphMenus::fillSound(CPopup* popup, CObject* item) {
    const bool comp = item->category == categoryComp;
    if (!muteOfItem(item)) return;
    popup->addSeparator();
    addAction(popup, "graphmute");
    if (COutputChannel* strip = comp ? GraphWatch::soundOf(item) : nullptr)
        add(popup, "Solo", [strip] { strip->toggleSolo(); })->checked = strip->solo;
    if (!view.canWatch(item)) return;
    addAction(popup, "graphlisten");
    addAction(popup, "graphmeter");
}

namespace {

/// A number of a component that tells its device: all for -1.
Shared<int>* deviceOf(CComp* comp) {
    if (auto* in = compAs<CMIDIIn>(comp)) return &in->device;
    if (auto* out = compAs<CMIDIOut>(comp)) return &out->device;
    return nullptr;
}

} // namespace

/// The devices of a MIDI component.
void GraphMenus::fillPorts(CPopup* popup, CComp* comp) {
    Shared<int>* device = deviceOf(comp);
    CAAM* driver = view.host()->aam;
    if (!device) return;
    popup->addSeparator();
    const bool in = comp->type == compMIDIIn;
    CPopup* sub = popup->addSub(in ? "Input" : "Output");
    const int count = !driver ? 0 : in ? driver->getMIDIInCount() : driver->getMIDIOutCount();
    if (count == 0) {
        add(sub, "Empty", {})->enabled = false;
        return;
    }
    const auto entry = [&](const CStr& text, int index) {
        add(sub, text, [comp, device, index] { chooseDevice(comp, *device, index); })->checked =
            *device == index;
    };
    entry("All", -1);
    for (int i = 0; i < count; i++) entry(in ? driver->midiInName(i) : driver->midiOutName(i), i);
}

void GraphMenus::fillPort(CPopup* popup, int port) {
    const GraphModel& graph = view.graph();
    view.setItem(graph.ports[size_t(port)].io);
    bool any = false;
    for (size_t i = 0; i < graph.cables.size(); i++) {
        const auto& cable = graph.cables[i];
        if (cable.from != port && cable.to != port) continue;
        any = true;
        add(popup, "Delete " + cableName(graph, int(i)), [this, gone = cable.cable] {
            deleteCable(view.host(), gone);
            view.rebuild();
        });
    }
    if (!any) add(popup, "No cables", {})->enabled = false;
    fillSound(popup, graph.ports[size_t(port)].io);
    fillAsk(popup, graph.ports[size_t(port)].io);
}

void GraphMenus::fillCable(CPopup* popup, int cable) {
    CObject* object = view.graph().cables[size_t(cable)].cable;
    view.setItem(object);
    addAction(popup, "delete");
    if (!view.graph().toKey(view.graph().cables[size_t(cable)]))
        fillNew(popup->addSub("Insert"), object);
    fillSound(popup, object);
    fillAsk(popup, object);
}

void GraphMenus::fillAsk(CPopup* popup, CObject* about) {
    popup->addSeparator();
    for (const GraphQuestion question : {GraphQuestion::whySilent, GraphQuestion::whyLate,
                                         GraphQuestion::whyLoud, GraphQuestion::whatCosts})
        add(popup, questionText(question), [this, question, about] { onAsk(question, about); });
}
