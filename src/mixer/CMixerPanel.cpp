#include "mixer/CMixerPanel.h"

#include "base/Numbers.h"
#include "engine/CMixer.h"
#include "engine/CQV.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "engine/plan/GraphProbe.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Fonts.h"
#include "gui/Keys.h"
#include "gui/TouchStep.h"
#include "gui/controls/CScrollbar.h"
#include "mixer/CEqWin.h"
#include "mixer/CMixerStrip.h"
#include "mixer/InsertSlot.h"
#include "mixer/MixerDrags.h"
#include "sequencer/song/CSeq.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

constexpr int barSize = 14, sectionGap = 6;
constexpr int leastSlots = 3, mostSlots = 8;
constexpr int wheelPixels = 48;
constexpr double notchPixels = 48.0; ///< of a touchpad

} // namespace

/// The title of a section, over its strips.
class SectionTitle : public CCtrl {
public:
    SectionTitle(CWin* owner, StripSection which)
        : CCtrl(owner, "section", 0, 0, 1, CMixerPanel::titleHeight), section(which) {
        enabled = false;
    }

    int count = 0; ///< strips

    void paint(CGraphic* g, CRect rect) override {
        const CPalette& colours = win->app->gui->palette;
        g->fillRect(colours.window, rect);
        const TextScope small(g, {.size = TextSize::small, .bold = true});
        const CRect box = sizeRect(rect, 6, 0, -6, 0);
        g->drawText(colours.dimText, titleOf(section), box, textLeft);
        if (width > StripLayout::wideStrip)
            g->drawText(colours.dimText, asStr(count), box, textRight);
    }
    void describe(Description& d, int) const override {
        d.role = Role::label;
        d.name = titleOf(section);
    }

private:
    const StripSection section;
};

class CMixerPanel::Row : public CGroup {
public:
    Row(CWin* owner, const char* name) : CGroup(owner, name, 0, 0, 1, 1) {}
    void describe(Description& d, int) const override { d.role = Role::none; }
};

CMixerPanel::CMixerPanel(CWin* owner, Workspace& space, CMixer& mixer)
    : CGroup(owner, "mixer", 0, 0, 1, 1), state(space, mixer), moving(new Row(owner, "strips")),
      fixed(new Row(owner, "outputs")), across(new CScrollbar(owner, "across", 0, 0, 1, barSize)),
      down(new CScrollbar(owner, "down", 0, 0, barSize, 1)),
      probe(std::make_unique<GraphProbe>(space.host())) {
    across->vertical = false;
    across->spokenName = "Scroll along the strips";
    down->spokenName = "Scroll the strips up and down";
    addControl(fixed); // before what it covers
    addControl(moving);
    for (CScrollbar* bar : {across, down}) {
        bar->onChange = new _COnChange<CMixerPanel>(this, &CMixerPanel::scrolled);
        addControl(bar);
    }
    for (int i = 0; i < stripSections; i++) {
        titles.push_back(new SectionTitle(owner, StripSection(i)));
        (StripSection(i) == StripSection::outputs ? fixed : moving)->addControl(titles.back());
    }
}

CMixerPanel::~CMixerPanel() = default;

// The strips that there are.

bool CMixerPanel::isStale() const {
    const CSeq* song = songOf(state.qv);
    return state.qv->hostNotices.raised(HostNotice::graph | HostNotice::step) ||
           (song && song->songNotices.raised(SeqNotice::tracks));
}

void CMixerPanel::follow() {
    const std::vector<MixerStrip> now = listStrips(state.qv);
    if (now == all && state.qv->sends.getCount() == state.plan.sends) return;
    reconcile(now);
    layout();
}

void CMixerPanel::followIfStale() {
    if (isStale()) follow();
}

CMixerStrip* CMixerPanel::stripOf(const COutputChannel* ch) const {
    const auto found =
        std::ranges::find_if(made, [ch](const CMixerStrip* s) { return s->strip().channel == ch; });
    return found == made.end() ? nullptr : *found;
}

void CMixerPanel::dropStrip(CMixerStrip* strip) {
    if (eqWin && eqWin->shown().channel == strip->strip().channel) {
        eqWin->hide();
        win->app->deleteLater(eqWin.release());
    }
    win->app->drag.cancel(); // it may be of something on it
    (strip->parent == fixed ? fixed : moving)->controls.remove(strip);
    win->app->deleteLater(strip);
}

/// Strips that stay are kept, so that what is done on one goes on.
void CMixerPanel::reconcile(const std::vector<MixerStrip>& wanted) {
    state.keepTo(wanted);
    shownBy.keepTo(wanted);
    scenes.follow();
    std::erase_if(made, [&](CMixerStrip* s) {
        const bool stays = std::ranges::any_of(wanted, [s](const MixerStrip& w) {
            return w.channel == s->strip().channel && w.comp == s->strip().comp;
        });
        if (!stays) dropStrip(s);
        return !stays;
    });
    all = wanted;
}

bool CMixerPanel::shows(StripSection section) const {
    const CMixProg* prog = state.mixer.getProg(-1);
    return everySection || !prog || (prog->sh & bitOf(section));
}

void CMixerPanel::show(StripSection section, bool on) {
    CMixProg* prog = state.mixer.getProg(-1);
    if (!prog || shows(section) == on) return;
    state.door()->set(sectionsOf(prog), prog->sh ^ bitOf(section));
    layout();
}

bool CMixerPanel::setFilter(StripFilter::Kind kind) {
    const std::vector<MixerStrip> selected = state.selection();
    const bool about = kind == StripFilter::routed || kind == StripFilter::chosen;
    if (about && selected.empty()) return false;
    shownBy.set(kind, selected);
    layout();
    return true;
}

void CMixerPanel::showRouted(const COutputChannel* to) {
    everySection = true;
    for (const MixerStrip& s : all)
        if (s.channel == to) shownBy.set(StripFilter::routed, {s});
    layout();
}

void CMixerPanel::setNameFilter(const CStr& part) {
    if (shownBy.namePart() == part.lowerCase()) return;
    shownBy.setName(part);
    layout();
}

bool CMixerPanel::showsRows(int rows) const {
    return (state.mixer.mxv & rows) != 0;
}

void CMixerPanel::showRows(int rows, bool on) {
    if (showsRows(rows) == on) return;
    state.mixer.mxv ^= rows;
    layout();
}

// Layout.

/// There is a free slot on every strip, as far as that goes.
void CMixerPanel::makePlan() {
    int most = 0;
    for (const MixerStrip& s : state.shown) most = std::max(most, s.channel->inserts.getCount());
    state.plan = {state.mixer.mxv, std::clamp(most + 1, leastSlots, std::max(most, mostSlots)),
                  state.qv->sends.getCount(), 0};
    const int least = StripLayout::leastHeight(state.plan);
    state.plan.height = std::max(least, viewHeight() - titleHeight);
}

/// Less where a bar has to be below.
int CMixerPanel::viewHeight() const {
    int wide = 0, sections = 0, last = -1;
    for (const MixerStrip& s : state.shown) {
        wide += state.isWide(s) ? StripLayout::wideStrip : StripLayout::narrowStrip;
        sections += last != int(s.section);
        last = int(s.section);
    }
    const bool fits = wide + std::max(0, sections - 1) * sectionGap <= width;
    return std::max(1, fits ? height : height - barSize);
}

void CMixerPanel::layout() {
    const Place focus = focusPlace();
    state.shown.clear();
    for (const MixerStrip& s : all)
        if (shows(s.section) && shownBy.passes(state.qv, s)) state.shown.push_back(s);
    const CMixProg* prog = state.mixer.getProg(-1);
    shownMask = prog ? int(prog->sh) : -1;
    makePlan();
    std::vector<CMixerStrip*> wanted;
    for (const MixerStrip& s : state.shown) {
        CMixerStrip* strip = stripOf(s.channel);
        if (!strip) {
            strip = new CMixerStrip(*this, s);
            (s.section == StripSection::outputs ? fixed : moving)->addControl(strip);
        }
        wanted.push_back(strip);
    }
    for (CMixerStrip* s : made) {
        if (std::ranges::find(wanted, s) != wanted.end()) continue;
        s->stopMeasuring();
        dropStrip(s);
    }
    made = std::move(wanted);
    placeSections();
    if (focus.found && !focusPlace().found) focusOn(focus);
    marked = nullptr;
    markStops();
    redraw();
}

void CMixerPanel::placeSections() {
    const int high = titleHeight + state.plan.height, view = viewHeight();
    int x = 0, fixedWidth = 0;
    size_t next = 0;
    for (int i = 0; i < stripSections; i++) {
        const bool out = StripSection(i) == StripSection::outputs;
        int& at = out ? fixedWidth : x;
        const int from = at;
        int count = 0;
        for (; next < made.size() && state.shown[next].section == StripSection(i); next++) {
            const bool wide = state.isWide(state.shown[next]);
            const int w = wide ? StripLayout::wideStrip : StripLayout::narrowStrip;
            made[next]->setBounds(at, titleHeight, w, state.plan.height);
            made[next]->place(state.shown[next], state.plan, wide);
            at += w;
            count++;
        }
        titles[size_t(i)]->visible = count > 0;
        titles[size_t(i)]->count = count;
        titles[size_t(i)]->setBounds(from, 0, at - from, titleHeight);
        if (!out && count > 0) at += sectionGap;
    }
    const bool tall = high > view;
    const int room = std::max(1, width - (tall ? barSize : 0));
    const int rest = std::max(1, room - fixedWidth);
    fixed->setBounds(std::min(x, rest), 0, fixedWidth, view);
    moving->setBounds(0, 0, std::min(x, rest), view);
    across->visible = view < height;
    down->visible = tall;
    across->setBounds(0, view, rest, barSize);
    down->setBounds(room, 0, barSize, view);
    across->setRange(x, rest);
    down->setRange(high, view);
    scrollTo(across->pos, down->pos);
}

void CMixerPanel::resized() {
    CGroup::resized();
    layout();
}

void CMixerPanel::paint(CGraphic* g, CRect rect) {
    g->fillRect(win->app->gui->palette.window, rect);
    CGroup::paint(g, rect);
}

// Scrolling.

void CMixerPanel::scrolled(CObject*) {
    scrollTo(across->pos, down->pos);
}

void CMixerPanel::scrollTo(int x, int y) {
    across->setPos(across->visible ? x : 0);
    down->setPos(down->visible ? y : 0);
    for (Row* row : {moving, fixed}) {
        const int toX = row == moving ? across->pos : 0;
        const int dx = row->scrollX - toX, dy = row->scrollY - down->pos;
        row->scrollX = toX;
        row->scrollY = down->pos;
        if (dx || dy) row->scrollArea(row->clientRect(), dx, dy);
    }
    across->redraw();
    down->redraw();
}

int CMixerPanel::scrollAcross(int by) {
    const int before = across->pos;
    scrollTo(before + by, down->pos);
    return across->pos - before;
}

/// Both by the wheel's amount.
bool CMixerPanel::mouseWheel(int x, int y, int btn, int dy, int dx) {
    if (CGroup::mouseWheel(x, y, btn, dy, dx)) return true;
    const int turned = dy ? dy : dx;
    const int by = turned > 0 ? -wheelPixels : turned < 0 ? wheelPixels : 0;
    if (x >= width - wheelEdge && dy)
        scrollTo(across->pos, down->pos + by);
    else
        scrollTo(across->pos + by, down->pos);
    return true;
}

bool CMixerPanel::touch(int, int, int btn, const TouchStep& step) {
    if ((btn & modControl) || step.zoom != 1) return false;
    scrollTo(across->pos - asRound(step.dx * notchPixels),
             down->pos - asRound(step.dy * notchPixels));
    return true;
}

void CMixerPanel::reveal(const CCtrl* ctrl) {
    int x = 0, y = 0;
    const CCtrl* at = ctrl;
    for (; at && at != moving && at != fixed; at = at->parent) {
        x += at->left;
        y += at->top;
    }
    if (!at) return;
    const int toX =
        at == moving ? asMin(x, asMax(across->pos, x + ctrl->width - moving->width)) : across->pos;
    scrollTo(toX, asMin(y, asMax(down->pos, y + ctrl->height - at->height)));
}

// What has no notice.

void CMixerPanel::refresh() {
    if (isStale()) return; // the strips are followed first
    int most = 0;
    for (const MixerStrip& s : state.shown) most = std::max(most, s.channel->inserts.getCount());
    const bool other =
        std::clamp(most + 1, leastSlots, std::max(most, mostSlots)) != state.plan.slots;
    const CMixProg* prog = state.mixer.getProg(-1);
    const bool sounds =
        shownBy.kind() == StripFilter::sounding && shownBy.listen(all, asTimeInMS());
    if (other || sounds || (prog && prog->sh != shownMask)) layout();
    for (CMixerStrip* s : made) {
        if (s->visibleRect().empty()) continue;
        s->refresh();
        s->followSound();
    }
    markStops();
    followLoad();
    if (eqWin && eqWin->visible) eqWin->refresh();
}

void CMixerPanel::followLoad() {
    constexpr int turnsApart = 12;
    if (!showsRows(rowsLoad)) return;
    if (probe->take())
        for (CMixerStrip* s : made) s->showLoad(*probe);
    if (++turns < turnsApart) return;
    turns = 0;
    probe->ask();
}

void CMixerPanel::followLoudness() {
    if (isStale()) return;
    for (CMixerStrip* s : made) s->followLoudness();
}

void CMixerPanel::stopMeasuring() {
    followIfStale();
    for (CMixerStrip* s : made) s->stopMeasuring();
}

void CMixerPanel::openEq(const MixerStrip& strip) {
    if (!eqWin)
        eqWin = std::make_unique<CEqWin>(state.workspace.mainWindow(), state.qv,
                                         [this] { followIfStale(); });
    eqWin->open(strip);
}

// The keys.

CMixerPanel::Place CMixerPanel::focusPlace() const {
    for (size_t i = 0; i < made.size(); i++) {
        int number = 0;
        const CCtrl* before = nullptr;
        for (const CCtrl* stop : made[i]->stops()) {
            number = before && before->id == stop->id ? number + 1 : 0;
            before = stop;
            if (stop == win->keyCtrl) return {i, stop->id, number, true};
        }
    }
    return {};
}

/// The same control of a strip, or the strip where it has none.
void CMixerPanel::focusOn(const Place& at) {
    if (made.empty()) return;
    CMixerStrip* strip = made[std::min(at.strip, made.size() - 1)];
    CCtrl* found = strip;
    int number = 0;
    for (CCtrl* stop : strip->stops())
        if (stop->id == at.stop && number++ == at.number) found = stop;
    win->setKeyCtrl(found);
    markStops();
}

/// Of the strip with the focus, else of the first selected, else of the first.
void CMixerPanel::markStops() {
    CMixerStrip* current = nullptr;
    for (const CCtrl* c = win->keyCtrl; c && !current; c = c->parent)
        if (c->parent == moving || c->parent == fixed)
            for (CMixerStrip* s : made) current = s == c ? s : current;
    for (CMixerStrip* s : made)
        if (!current && state.selected(s->strip())) current = s;
    if (!current && !made.empty()) current = made.front();
    if (current == marked) return;
    marked = current;
    for (CMixerStrip* s : made)
        for (CCtrl* stop : s->stops()) stop->tabStop = s == current;
}

bool CMixerPanel::keyInside(int key, int mods) {
    const Place focus = focusPlace();
    if (!focus.found || (mods & ~modShift)) return false;
    if (key == keyLeft || key == keyRight) {
        const size_t last = made.size() - 1;
        if (focus.strip == (key == keyLeft ? 0 : last)) return true;
        Place to = focus;
        to.strip += key == keyLeft ? size_t(-1) : 1;
        if (win->keyCtrl == made[focus.strip])
            choose(*made[to.strip], mods & modShift ? modControl : 0);
        focusOn(to);
        return true;
    }
    if (mods || (key != ::keyUp && key != ::keyDown)) return false;
    const std::vector<CCtrl*> stops = made[focus.strip]->stops();
    const int at = int(std::ranges::find(stops, win->keyCtrl) - stops.begin());
    win->setKeyCtrl(
        stops[size_t(asMinMax(at + (key == ::keyUp ? -1 : 1), 0, int(stops.size()) - 1))]);
    return true;
}

bool CMixerPanel::contextMenu() {
    menus.openAt(&StripMenus::fillStrips);
    return true;
}

void CMixerPanel::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = "Strips";
}

// Drags.

void CMixerPanel::swipe(MixSwitch which, CMixerStrip& strip, const CCtrl* from, CPoint at,
                        int btn) {
    win->app->drag.cancel();
    drag = swipeDrag(*this, which, strip.strip());
    const CPoint in = win->controlPos(from), corner = win->controlPos(this);
    win->setMouseCtrl(this);
    win->app->drag.start(this, drag.get(), asPoint(in.x - corner.x + at.x, in.y - corner.y + at.y),
                         btn);
}

std::vector<CMixerStrip*> CMixerPanel::stripsBetween(int from, int to) const {
    std::vector<CMixerStrip*> found;
    const CPoint corner = win->controlPos(this);
    for (CMixerStrip* s : made) {
        const int x = win->controlPos(s).x - corner.x;
        const bool covered = s->parent == moving && x >= moving->width;
        if (!covered && x <= to && x + s->width > from) found.push_back(s);
    }
    return found;
}
