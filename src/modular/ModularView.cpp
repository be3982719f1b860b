#include "modular/ModularView.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/Cables.h"
#include "engine/ObjectKinds.h"
#include "engine/plan/GraphProbe.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/GuiItem.h"
#include "gui/Keys.h"
#include "gui/Shapes.h"
#include "modular/BoxDrags.h"
#include "modular/CableDrag.h"
#include "modular/GraphEdits.h"
#include "modular/GraphNames.h"
#include "modular/GraphPaths.h"
#include "plugins/CVST.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

constexpr int revealMargin = 32;
constexpr int modifiedWidth = 96, modifiedHeight = 20, modifiedInset = 8;
constexpr double bandStrength = 0.3;
constexpr double leastDelay = 0.05; ///< ms that are told
constexpr double leastLoad = 0.1;   ///< percent that are told
constexpr float lowestDb = -48;     ///< where the meter of a cable begins
constexpr int levelSteps = 12;      ///< that a meter on a cable shows

constexpr const char* freeHint = "Drag selects; the right button adds components";
constexpr const char* boxHint = "Drag moves, Ctrl copies, Alt pulls out of its cables; double "
                                "click opens; right click for more";
constexpr const char* cableHint = ": M mutes it, H lets it be heard alone, V meters it";
constexpr const char* portHint = ": drag leads a cable; right click lists its cables";

const HostNotice changes[] = {HostNotice::graph, HostNotice::step};

/// In steps that can be told apart.
float levelOf(const GraphModel::Cable& cable) {
    if (isMuted(cable.cable)) return 0;
    float level;
    if (cable.midi) {
        level = asMidiCable(cable.cable)->fromPort->hasData;
    } else {
        const COutputChannel* ch = asAudioCable(cable.cable)->fromChannel;
        const float peak = std::max<float>(ch->peakL, ch->peakR);
        level = peak > 0 ? 1 + 20 * std::log10(peak) / -lowestDb : 0;
    }
    return std::ceil(std::clamp(level, 0.0f, 1.0f) * levelSteps - 0.1f) / levelSteps;
}

/// Of a plug-in that has failed, also in a strip, the strip of a box with a single one, and what is
/// listened to there.
template <class F>
unsigned char boxTags(const GraphModel& model, const GraphModel::Box& box, F&& heard) {
    int tags = heard(box.comp) | (isFailedPlugin(box.comp) ? tagFailed : 0);
    box.comp->eachInsert(
        [&](const CComp* insert) { tags |= isFailedPlugin(insert) ? tagFailed : 0; });
    for (int i = box.firstPort; i < box.firstPort + box.portCount; i++)
        tags |= heard(model.ports[size_t(i)].io);
    if (box.comp->outputs.getCount() == 1) {
        const COutputChannel* strip = box.comp->output();
        tags |= (strip->mute ? tagMuted : 0) | (strip->solo ? tagSolo : 0);
    }
    return static_cast<unsigned char>(tags);
}

CStr withDigits(double value, const char* unit) {
    char text[32];
    std::snprintf(text, sizeof text, value < 10 ? "%.1f%s" : "%.0f%s", value, unit);
    return text;
}

} // namespace

ModularView::ModularView(CWin* owner, Workspace& space)
    : CCanvas(owner, "modular", 0, 0, 1, 1), workspace(space), panZoom(this, this),
      watch(space.host()) {
    tabStop = true;
    hooverable = true;
    hint = freeHint;
    spokenName = "Modular view";
    owner->app->follow(this);
}

ModularView::~ModularView() = default;

CQV* ModularView::host() const {
    return workspace.host();
}

GraphPainter ModularView::painter() const {
    return {model, shown, watch, win->app->gui->palette};
}

// What is shown.

bool ModularView::stale() const {
    return host()->hostNotices.raised(changes[0] | changes[1]);
}

/// Shows another graph. What was under way was about the former one, which may be gone.
void ModularView::take(GraphModel fresh) {
    CObject* item = shown.focus;
    const double zoomNow = shown.zoom;
    model = std::move(fresh);
    shown = GraphShown();
    shown.zoom = zoomNow;
    if (model.has(item)) shown.focus = item;
    watch.keepTo(model);
    linking = false;
    hovered = nullptr;
    if (win->app->drag.of(this)) win->app->drag.cancel();
    band = {};
    redraw();
}

/// A drag, or a cable that the keys lead, goes on where nothing that shows has changed.
void ModularView::rebuild() {
    if (closed) return;
    GraphModel fresh(host());
    if (fresh.same(model)) return redraw();
    take(std::move(fresh));
    scroll(scrollX, scrollY);
    if (onScrolled) onScrolled();
}

void ModularView::forget() {
    closed = true;
    take({});
}

void ModularView::follow() {
    if (closed) {
        closed = false;
        rebuild();
    }
    if (!CCtrl::shown()) watch.listenTo(nullptr);
    if (stale()) return;
    if (modified == host()->modified()) return;
    modified = !modified;
    redraw(modifiedArea());
}

/// What is followed may be gone once the graph has changed.
bool ModularView::onFrame() {
    if (model.boxes.empty() || !CCtrl::shown()) return false;
    bool any = stale();
    if (any) rebuild();
    any = followLevels() || any;
    any = followTags() || any;
    return followMeters() || any;
}

bool ModularView::followLevels() {
    bool any = false;
    shown.levels.resize(model.cables.size(), 0);
    for (size_t i = 0; i < model.cables.size(); i++) {
        const float level = levelOf(model.cables[i]);
        if (level == shown.levels[i]) continue;
        shown.levels[i] = level;
        contentChanged(painter().marksArea(int(i)));
        any = true;
    }
    return any;
}

bool ModularView::followTags() {
    bool any = false;
    shown.cableTags.resize(model.cables.size());
    shown.boxTags.resize(model.boxes.size());
    const auto follow = [&](unsigned char& tags, unsigned char now, auto area) {
        if (tags == now) return;
        tags = now;
        contentChanged(area());
        any = true;
    };
    const auto heard = [this](const CObject* item) {
        return watch.listened() == item ? int(tagHeard) : 0;
    };
    for (size_t i = 0; i < model.cables.size(); i++) {
        const CObject* cable = model.cables[i].cable;
        const int tags = heard(cable) | (isMuted(cable) ? tagMuted : 0);
        follow(shown.cableTags[i], static_cast<unsigned char>(tags),
               [&] { return painter().cableArea(int(i)); });
    }
    for (size_t i = 0; i < model.boxes.size(); i++)
        follow(shown.boxTags[i], boxTags(model, model.boxes[i], heard),
               [&] { return painter().boxArea(int(i)); });
    return any;
}

bool ModularView::followMeters() {
    bool any = false;
    for (size_t i = 0; i < watch.meterCount(); i++) {
        if (!watch.follow(i)) continue;
        redrawItem(watch.metered(i));
        any = true;
    }
    return any;
}

/// The cable, or the box that it belongs to.
void ModularView::redrawItem(const CObject* item) {
    if (item->category == categoryCable)
        return contentChanged(painter().marksArea(model.cableOf(item)));
    const int box = item->category == categoryComp ? model.boxOf(item)
                                                   : model.ports[size_t(model.portOf(item))].box;
    contentChanged(painter().boxArea(box));
}

void ModularView::listenTo(CObject* item) {
    watch.listenTo(watch.listened() == item ? nullptr : item);
    tell(watch.listened() ? "You hear " + itemName(model, watch.listened()) +
                                " alone; H or another page ends that"
                          : CStr());
}

void ModularView::toggleMeter(CObject* item) {
    watch.toggleMeter(item);
    redrawItem(item);
}

void ModularView::showKinds(bool midi, bool audio, bool others) {
    midiStrong = midi;
    audioStrong = audio;
    othersStrong = others;
    redraw();
}

void ModularView::fadeCables() {
    shown.faintCables.assign(model.cables.size(), false);
    const auto chosen = [this](int port) {
        return model.boxes[size_t(model.ports[size_t(port)].box)].comp->hasFlag(compSelected);
    };
    const bool any = !othersStrong && !selectedComps(host()).empty();
    for (size_t i = 0; i < model.cables.size(); i++) {
        const GraphModel::Cable& cable = model.cables[i];
        const bool other = any && !chosen(cable.from) && !chosen(cable.to);
        shown.faintCables[i] = other || !(cable.midi ? midiStrong : audioStrong);
    }
}

/// Only what has changed is painted.
void ModularView::showMeasured(const GraphProbe& probe) {
    shown.delays.resize(model.cables.size());
    shown.loads.resize(model.boxes.size());
    const double perMs = double(host()->rate) / 1000;
    for (size_t i = 0; i < model.cables.size(); i++) {
        const GraphProbe::Delay delay = probe.delayOf(model.cables[i].cable);
        const bool told = probe.knows(model.cables[i].cable) && !model.toKey(model.cables[i]);
        if (told && model.noteLoop(int(i), delay.loop)) contentChanged(painter().cableArea(int(i)));
        const double ms = (delay.path + delay.added) / perMs;
        const CStr text = ms >= leastDelay ? withDigits(ms, " ms") : CStr();
        if (text == shown.delays[i]) continue;
        shown.delays[i] = text;
        contentChanged(painter().marksArea(int(i)));
    }
    for (size_t i = 0; i < model.boxes.size(); i++) {
        const double block = probe.blockNs();
        const double mean = double(probe.workOf(model.boxes[i].comp).mean);
        const double share = block > 0 ? mean / block * 100 : 0;
        const CStr text = share >= leastLoad ? withDigits(share, " %") : CStr();
        if (text == shown.loads[i]) continue;
        shown.loads[i] = text;
        contentChanged(painter().boxArea(int(i)));
    }
}

CRect ModularView::modifiedArea() const {
    return asRect(width - modifiedWidth - modifiedInset, modifiedInset, width - modifiedInset,
                  modifiedInset + modifiedHeight);
}

void ModularView::paintContent(CGraphic* g, CRect asked) {
    drawGuiItem(g, inView(), &clComps);
    fadeCables();
    const GraphPainter paints = painter();
    if (!band.empty()) {
        const CRect area = GraphPainter::scaled(band, shown.zoom);
        const int grey = asColor(192, 192, 192);
        fillAlpha(g, intersect(area, asked), grey, bandStrength);
        g->frameRect(grey, area);
    }
    paints.paint(g, asked);
    const CRect corner = sizeRect(modifiedArea(), scrollX, scrollY, scrollX, scrollY);
    if (modified) g->drawText(asColor(128, 128, 128), "(Modified)", corner, textRight | textTop);
}

// Where it is seen.

CRect ModularView::plain() const {
    const CRect all = GraphPainter::scaled(model.extent(), shown.zoom);
    return unite(all, asRect(0, 0, asMax(width, scrollX + width), asMax(height, scrollY + height)));
}

void ModularView::scroll(int x, int y) {
    const CRect all = plain();
    const int toX = asMinMax(x, 0, all.right - width), toY = asMinMax(y, 0, all.bottom - height);
    const int dx = scrollX - toX, dy = scrollY - toY;
    if (dx == 0 && dy == 0) return;
    scrollTo(toX, toY);
    if (modified) { // it stays where it is
        redraw(modifiedArea());
        redraw(sizeRect(modifiedArea(), dx, dy, dx, dy));
    }
    if (onScrolled) onScrolled();
}

CPoint ModularView::scrollBy(CPoint by) {
    const CPoint before = asPoint(scrollX, scrollY);
    scroll(before.x + by.x, before.y + by.y);
    return asPoint(scrollX - before.x, scrollY - before.y);
}

CPoint ModularView::panBy(CPoint pixels) {
    const CPoint by = scrollBy(asPoint(-pixels.x, -pixels.y));
    return asPoint(-by.x, -by.y);
}

void ModularView::zoomAt(CPoint at, double factor, bool) {
    zoomTo(shown.zoom * factor, at);
}

void ModularView::zoomTo(double factor, CPoint around) {
    const double before = shown.zoom;
    shown.zoom = std::clamp(factor, leastZoom, mostZoom);
    if (shown.zoom == before) return;
    const double x = (scrollX + around.x) / before, y = (scrollY + around.y) / before;
    scrollX = asMax(asRound(x * shown.zoom - around.x), 0);
    scrollY = asMax(asRound(y * shown.zoom - around.y), 0);
    if (onScrolled) onScrolled();
    redraw();
}

void ModularView::zoomToFit() {
    const CRect all = model.extent();
    const double fits =
        std::min(double(width) / asMax(all.right, 1), double(height) / asMax(all.bottom, 1));
    zoomTo(std::min(fits, 1.0), {});
    scroll(0, 0);
}

CPoint ModularView::toGraph(CPoint inControl) const {
    const CPoint at = toContent(inControl);
    return asPoint(asInt(std::floor(at.x / shown.zoom)), asInt(std::floor(at.y / shown.zoom)));
}

CPoint ModularView::toControl(CPoint ofGraph) const {
    return asPoint(asRound(ofGraph.x * shown.zoom) - scrollX,
                   asRound(ofGraph.y * shown.zoom) - scrollY);
}

void ModularView::reveal(CRect ofGraph) {
    const CRect area = sizeRect(GraphPainter::scaled(ofGraph, shown.zoom), -revealMargin,
                                -revealMargin, revealMargin, revealMargin);
    const int x = area.left < scrollX            ? area.left
                  : area.right > scrollX + width ? asMin(area.right - width, area.left)
                                                 : scrollX;
    const int y = area.top < scrollY               ? area.top
                  : area.bottom > scrollY + height ? asMin(area.bottom - height, area.top)
                                                   : scrollY;
    scroll(x, y);
}

// What drags show.

void ModularView::showLink(int from, int to) {
    contentChanged(painter().linkArea());
    shown.fromPort = from;
    shown.toPort = to;
    shown.linkText =
        to < 0 ? CStr()
               : fullPortName(model, to) + " (" + portKindName(model.ports[size_t(to)]) + ")";
    contentChanged(painter().linkArea());
}

void ModularView::showInto(int cable) {
    if (cable == shown.intoCable) return;
    const int before = shown.intoCable;
    shown.intoCable = cable;
    for (const int i : {before, cable})
        if (i >= 0) contentChanged(painter().cableArea(i));
}

void ModularView::showBand(CRect ofGraph) {
    const CRect both = unite(band, ofGraph);
    band = ofGraph;
    contentChanged(sizeRect(GraphPainter::scaled(both, shown.zoom), -1, -1, 1, 1));
}

/// Boxes and their cables.
CRect ModularView::selectedArea() const {
    CRect area;
    const GraphPainter paints = painter();
    const auto moves = [this](int port) {
        return model.boxes[size_t(model.ports[size_t(port)].box)].comp->hasFlag(compSelected);
    };
    for (size_t i = 0; i < model.boxes.size(); i++)
        if (model.boxes[i].comp->hasFlag(compSelected)) area = unite(area, paints.boxArea(int(i)));
    for (size_t i = 0; i < model.cables.size(); i++)
        if (moves(model.cables[i].from) || moves(model.cables[i].to))
            area = unite(area, paints.cableArea(int(i)));
    return area;
}

void ModularView::shiftSelected(CPoint by) {
    const CRect before = selectedArea();
    model.shiftSelected(by);
    contentChanged(unite(before, selectedArea()));
    if (onScrolled) onScrolled();
}

void ModularView::tell(const CStr& text) {
    workspace.setStatus(text);
}

// The mouse.

void ModularView::beginDrag(std::unique_ptr<DragHandler> begun, CPoint at, int btn) {
    drag = std::move(begun);
    win->app->drag.start(this, drag.get(), at, btn, 0);
}

void ModularView::mouseDown(int x, int y, int btn) {
    CCtrl::mouseDown(x, y, btn);
    if (closed) return;
    if (stale()) rebuild();
    if (panZoom.press(x, y, btn)) return;
    win->setKeyCtrl(this);
    linking = false;
    const CPoint at = asPoint(x, y), ofGraph = toGraph(at);
    if (btn & modRight) {
        drag = std::make_unique<MenuPress>(*this);
        return win->app->drag.start(this, drag.get(), at, btn);
    }
    if (btn & modShift) return beginDrag(std::make_unique<BandDrag>(*this, at, true), at, btn);
    const int box = model.boxAt(ofGraph);
    const int port = box < 0 ? portUnder(ofGraph) : -1;
    if (port >= 0) {
        setItem(model.ports[size_t(port)].io);
        return beginDrag(std::make_unique<CableDrag>(*this, port), at, btn);
    }
    if (box < 0) {
        const int cable = model.cableAt(ofGraph, cableReach / shown.zoom);
        setItem(cable >= 0 ? model.cables[size_t(cable)].cable : nullptr);
        return beginDrag(std::make_unique<BandDrag>(*this, at, false), at, btn);
    }
    CComp* comp = model.boxes[size_t(box)].comp;
    if ((btn & modDouble) && workspace.hasEditor(comp)) return comp->edit(true);
    if (!comp->hasFlag(compSelected)) selectOnly(host(), comp);
    setItem(comp);
    redraw();
    if (btn & modControl)
        beginDrag(std::make_unique<CopyDrag>(*this, at), at, btn);
    else
        beginDrag(std::make_unique<BoxDrag>(*this, at, (btn & modAlt) != 0), at, btn);
}

/// Below 100 % the squares are hit as if they were of their full size.
int ModularView::portUnder(CPoint ofGraph) const {
    const int exact = model.portAt(ofGraph);
    if (exact >= 0 || shown.zoom >= 1) return exact;
    const int reach = asRound((1 / shown.zoom - 1) * 2);
    for (const CPoint by : {asPoint(0, -reach), asPoint(0, reach)})
        if (const int near = model.portAt(addPos(ofGraph, by)); near >= 0) return near;
    return -1;
}

void ModularView::mouseMove(int x, int y, int btn) {
    CCtrl::mouseMove(x, y, btn);
    if (!isPushed() && !stale()) hover(asPoint(x, y));
}

void ModularView::mouseOver(bool enter, int x, int y) {
    CCtrl::mouseOver(enter, x, y);
    if (!enter) hover(asPoint(-1, -1));
}

CObject* ModularView::itemAt(CPoint ofGraph) const {
    if (const int box = model.boxAt(ofGraph); box >= 0) return model.boxes[size_t(box)].comp;
    if (const int port = portUnder(ofGraph); port >= 0) return model.ports[size_t(port)].io;
    const int cable = model.cableAt(ofGraph, cableReach / shown.zoom);
    return cable >= 0 ? model.cables[size_t(cable)].cable : nullptr;
}

CStr ModularView::hintOf(const CObject* over) const {
    if (!over) return freeHint;
    if (const CComp* box = asComp(over)) {
        const CStr health = pluginHealth(box);
        return boxName(box) + ": " + (health.empty() ? health : health + ". ") + boxHint;
    }
    if (over->category == categoryCable) return cableName(model, model.cableOf(over)) + cableHint;
    return fullPortName(model, model.portOf(over)) + portHint;
}

void ModularView::hover(CPoint at) {
    CObject* over = inside(at.x, at.y) ? itemAt(toGraph(at)) : nullptr;
    if (over == hovered) return;
    hovered = over;
    const bool port = over && over->category != categoryComp && over->category != categoryCable;
    shown.hotPort = port ? model.portOf(over) : -1;
    hint = hintOf(over);
    win->app->updateHint(this);
    lightPath(over);
}

void ModularView::lightPath(const CObject* from) {
    if (!from) return showLit({}, {});
    GraphPath path(model, from);
    showLit(std::move(path.cables), std::move(path.boxes));
}

void ModularView::showLit(std::vector<bool> cables, std::vector<bool> boxes) {
    const bool other = cables != shown.litCables || boxes != shown.litBoxes;
    shown.litCables = std::move(cables);
    shown.litBoxes = std::move(boxes);
    if (other) redraw();
}

bool ModularView::mouseWheel(int x, int y, int btn, int dy, int dx) {
    return panZoom.wheel(x, y, btn, dy, dx);
}

bool ModularView::touch(int x, int y, int btn, const TouchStep& step) {
    return panZoom.touch(x, y, btn, step);
}

bool ModularView::contextMenu() {
    if (!onMenu || closed) return false;
    if (stale()) rebuild();
    CPoint at = toGraph(asPoint(width / 2, height / 2));
    if (const int i = partOf(shown.focus); i >= 0) {
        const CRect area = partArea(i);
        at = asPoint((area.left + area.right) / 2, (area.top + area.bottom) / 2);
    }
    onMenu(at, shown.focus);
    return true;
}

void ModularView::redraw() {
    CCanvas::redraw();
    if (onRedraw) onRedraw();
}

void ModularView::setFocus(bool on) {
    CCtrl::setFocus(on);
    parent->redraw();
}
