#include "arrange/TrackHead.h"

#include "arrange/ArrangeState.h"
#include "arrange/HeadList.h"
#include "arrange/HeadSwitch.h"
#include "arrange/HeadTarget.h"
#include "arrange/RowLayout.h"
#include "base/Numbers.h"
#include "engine/COutputChannel.h"
#include "engine/CQV.h"
#include "engine/StripValues.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Fonts.h"
#include "gui/Keys.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/FolderSum.h"
#include "sequencer/song/TrackValues.h"
#include "ui/CMeter.h"
#include "ui/CStoredSlider.h"
#include "ui/NameField.h"
#include "ui/ProgramItems.h"
#include "ui/TrackPalette.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int stripeReach = 8; ///< of a press, from the left
constexpr int foldLeft = 7, foldWidth = 14, signWidth = HeadTarget::signWidth, signRoom = 16;
constexpr int switchWidth = 22, switchHeight = 18, switchGap = 2;
constexpr int meterWidth = 6, meterLeft = RowHead::headWidth - meterWidth - 4;
constexpr int switchesLeft = meterLeft - 6 - 3 * switchWidth - 2 * switchGap;
constexpr int firstLine = 4, secondLine = 25, secondHeight = 15, twoLines = 44;
constexpr int thirdLine = 45, threeLines = 68;
constexpr int panWidth = 60, monitorWidth = 24;
constexpr double leastForText = 4.5; ///< contrast
constexpr double mutedShare = 0.45;  ///< of the ground in what is not heard

enum StripParam { paramVolume, paramPan };

/// The channel that makes a track heard: that of the first component which its output feeds, and of
/// a folder that is summed its group's.
COutputChannel* soundOf(CQV* qv, CTrack* track) {
    if (COutputChannel* own = track->output()) return own;
    if (track->kind == trackFolder) {
        CComp* group = folderGroup(track->seq, track);
        return group ? group->output() : nullptr;
    }
    for (CComp* c : qv->comps)
        if (c->output() && fedBy(c, track->outPort())) return c->output();
    return nullptr;
}

/// A colour for a sign: on light grounds those of tracks are too faint.
int legible(int colour, int ground) {
    constexpr double least = 3.0, share = 0.35;
    return contrast(colour, ground) < least ? fadeCol(colour, textOn(ground), share) : colour;
}

/// Of a fader, whose square is the gain.
double faderOfDb(double db) {
    return std::pow(10.0, db / 40.0);
}

} // namespace

TrackHead::TrackHead(HeadList& owner, const ArrangeRow& row)
    : RowHead(owner, "track", row), fold(new FoldButton(owner, track)),
      target(new HeadTarget(owner, track)), switches{},
      volume(new CStoredSlider(win, "volume", owner.door(), 0, 0, 1, secondHeight)),
      pan(new CStoredSlider(win, "pan", owner.door(), 0, 0, panWidth, secondHeight)),
      meter(new CMeter(win, 0, 0, meterWidth, 1)) {
    for (int i = 0; i < trackSwitches; i++)
        switches[size_t(i)] = new HeadSwitch(owner, TrackSwitch(i), track);
    volume->hint = "Volume: drag, with Shift finely, or type decibels; a double click gives 0 dB";
    pan->hint = "Pan: drag, with Shift finely, or type percent; a double click gives the middle";
    meter->hint = "Level of what the track sounds through; a press clears the peak";
    meter->item = &clTrackLed;
    meter->vertical = true;
    addControl(fold);
    addControl(target);
    for (HeadSwitch* s : switches) addControl(s);
    for (CCtrl* c : std::initializer_list<CCtrl*>{volume, pan, meter}) addControl(c);
    bindSliders();
    show(row);
}

void TrackHead::bindSliders() {
    pan->least = -1.0;
    pan->usual = 0.0;
    pan->origin = 0.0;
    struct Slider {
        CStoredSlider* slider;
        StoredValue (*valueOf)(COutputChannel*);
        int param;
    };
    for (const Slider& s : {Slider{volume, faderOf, paramVolume}, Slider{pan, panOf, paramPan}}) {
        s.slider->value = [this, valueOf = s.valueOf]() -> std::optional<StoredValue> {
            return sound ? std::optional(valueOf(sound)) : std::nullopt;
        };
        s.slider->values = [this, valueOf = s.valueOf] {
            std::vector<StoredValue> all;
            if (!sound) return all;
            all.push_back(valueOf(sound));
            for (CSongTrack* t : list.together(track)) {
                COutputChannel* other = soundOf(list.state.qv, t->track);
                if (other && std::find(all.begin(), all.end(), valueOf(other)) == all.end())
                    all.push_back(valueOf(other));
            }
            return all;
        };
        s.slider->text = [this, param = s.param] { return sound->paramText(param); };
        s.slider->onTold = [this, slider = s.slider](const CStr& text) {
            list.tell(slider->spokenName + ": " + text);
        };
    }
    volume->typedValue = faderOfDb;
    pan->typedValue = [](double percent) { return percent / 100; };
}

// Layout.

void TrackHead::show(const ArrangeRow& row) {
    number = row.track;
    inset = indentOf(row);
    rowHeight = row.height;
    shown = present();
    nameControls();
    findSound();
}

void TrackHead::placeControls() {
    const int kind = track->track->kind;
    const bool two = rowHeight >= twoLines && (kind != trackFolder || sound);
    const int line = two ? firstLine : (rowHeight - 1 - switchHeight) / 2;
    fold->visible = list.folds(track);
    fold->setBounds(foldLeft + inset, line, foldWidth, switchHeight);
    for (int i = 0; i < 3; i++)
        switches[size_t(i)]->setBounds(switchesLeft + i * (switchWidth + switchGap), line,
                                       switchWidth, switchHeight);
    HeadSwitch* arm = switches[size_t(TrackSwitch::arm)];
    HeadSwitch* monitor = switches[size_t(TrackSwitch::monitor)];
    arm->visible = kind != trackFolder;
    monitor->visible = two && kind != trackFolder;
    volume->visible = pan->visible = two;
    const int x = foldLeft + inset + foldWidth;
    monitor->setBounds(x, secondLine, monitorWidth, secondHeight);
    const int volumeLeft = x + monitorWidth + 2 * gap, panLeft = meterLeft - 6 - panWidth;
    volume->setBounds(volumeLeft, secondLine, panLeft - 2 * gap - volumeLeft, secondHeight);
    pan->setBounds(panLeft, secondLine, panWidth, secondHeight);
    const bool three = two && rowHeight >= threeLines;
    target->visible = kind != trackFolder;
    target->named = three;
    if (three)
        target->setBounds(x, thirdLine, meterLeft - 6 - x, switchHeight);
    else
        target->setBounds(x, line, HeadTarget::signWidth, switchHeight);
    meter->visible = kind != trackFolder || sound;
    meter->setBounds(meterLeft, gap, meterWidth, rowHeight - 1 - 2 * gap);
}

CRect TrackHead::nameBox() const {
    const int x = foldLeft + inset + foldWidth + signWidth;
    const int right = switches[size_t(track->track->kind == trackFolder)]->left - gap;
    return asRect(x, fold->top, right, fold->top + fold->height);
}

void TrackHead::nameControls() {
    const CStr& name = shown.name;
    fold->spokenName = (track->track->kind == trackFolder ? "Folder, " : "Lanes, ") + name;
    for (HeadSwitch* s : switches) s->nameAfter(name);
    target->nameAfter(name);
    volume->spokenName = "Volume, " + name;
    pan->spokenName = "Pan, " + name;
    meter->spokenName = "Level, " + name;
}

void TrackHead::findSound() {
    sound = soundOf(list.state.qv, track->track);
    meter->channel = sound;
    target->cablesChanged();
    volume->refresh();
    pan->refresh();
    placeControls();
}

std::vector<CCtrl*> TrackHead::stops() {
    std::vector<CCtrl*> all = {this};
    for (CCtrl* c : controls)
        if (c->visible && c->enabled) all.push_back(c);
    return all;
}

// What it shows.

TrackHead::Shown TrackHead::present() const {
    const CTrack* t = track->track;
    const int own = t->colour;
    return {t->id,          own < 0 ? trackColour(number) : hexColor(unsigned(own)),
            t->selected(),  !track->freezeItems.empty(),
            t->locked != 0, list.heard(track)};
}

void TrackHead::refresh() {
    Shown now = present();
    NameField::dropLeft(field);
    if (now != shown) {
        shown = std::move(now);
        nameControls();
        redraw();
    }
    for (HeadSwitch* s : switches) s->refresh();
    volume->refresh();
    pan->refresh();
}

bool TrackHead::followSound() {
    return meter->refresh();
}

void TrackHead::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = list.palette();
    const CGuiItem2& look = shown.selected ? clTrackSelected : clTrack;
    drawGuiItem(g, clientRect(), &look, drawBackground);
    const int colour = shown.heard ? shown.colour : fadeCol(shown.colour, look.fillCol, mutedShare);
    g->fillRect(colour, asRect(0, 0, stripe, height - 1));
    if (shown.selected) g->fillRect(colours.accent, asRect(stripe, 0, stripe + 2, height - 1));
    g->fillLine(colours.frame, asRect(0, height - 1, width, height));
    target->colour = shown.heard ? legible(shown.colour, look.fillCol) : colours.dimText;
    paintName(g, look.fillCol);
    if (hasKeyFocus()) g->frameRect(colours.accent, asRect(0, 0, width, height - 1));
    CGroup::paint(g, rect);
}

void TrackHead::paintName(CGraphic* g, int ground) const {
    const CPalette& colours = list.palette();
    CRect box = nameBox();
    if (!target->visible || target->named)
        list.signs.draw(g, HeadSigns::ofKind(track->track->kind),
                        asRect(box.left - signWidth, box.top, box.left - gap, box.bottom),
                        target->colour, ground);
    if (field && field->visible) return;
    const TextScope bold(g, {.bold = true});
    for (const auto& [on, sign] :
         {std::pair{shown.locked, HeadSigns::lock}, std::pair{shown.frozen, HeadSigns::frozen}}) {
        if (!on) continue;
        box.right -= signRoom;
        list.signs.draw(g, sign, asRect(box.right, box.top, box.right + signRoom, box.bottom),
                        colours.accent, ground);
    }
    const int text = shown.selected ? clTrackSelected.textCol : clTrack.textCol;
    const bool faint = !shown.heard && contrast(colours.dimText, ground) >= leastForText;
    g->drawText(faint ? colours.dimText : text,
                textFace({.bold = true})->shortened(shown.name, box.width()), box, textLeft);
}

// The mouse.

void TrackHead::mouseDown(int x, int y, int btn) {
    CGroup::mouseDown(x, y, btn);
    if (btn & modRight) {
        // The menu is about what is selected.
        if (!track->track->selected()) list.choose(track, 0);
        return;
    }
    if (!(btn & modLeft)) return;
    if (onEdge(y)) return list.size(*this, {this, x, y, btn});
    if ((btn & modDouble) && nameBox().contains(x, y)) return rename();
    list.pressed(track, x < stripeReach, {this, x, y, btn});
}

void TrackHead::mouseUp(int x, int y, int btn) {
    CGroup::mouseUp(x, y, btn);
    if ((btn & modRight) && inside(x, y)) list.contextMenu();
}

void TrackHead::rename() {
    if (field && field->visible) return;
    NameField::dropLeft(field);
    field = new NameField(this, nameBox(), shown.name, "Name of the track");
    field->onName = [this](const CStr& name) {
        renameObject(track->track->seq, track->track, name);
    };
    redraw();
}

void TrackHead::describe(Description& d, int) const {
    d.role = Role::group;
    d.name = shown.name.asChar();
    d.action = "select";
    d.set(stateSelectable, true);
    d.set(stateSelected, shown.selected);
}

bool TrackHead::pressPart(int) {
    list.choose(track, 0);
    return true;
}
