#include "notes/DrumStrip.h"

#include "audiofiles/AudioImport.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/CSamplePreview.h"
#include "engine/ForgetHooks.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/CDrag.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/PanZoom.h"
#include "gui/Senders.h"
#include "gui/controls/CPopup.h"
#include "gui/dialogs/CFileWin.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSynthProg.h"
#include "instruments/DrumKit.h"
#include "notes/NoteEdits.h"
#include "notes/NoteState.h"
#include "project/PresetFiles.h"
#include "sequencer/edit/KitEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/RowLoops.h"
#include "sequencer/song/TrackValues.h"
#include "ui/NameField.h"
#include "ui/PlaceText.h"
#include "ui/PresetMenu.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

namespace {

constexpr int gap = 4, signWidth = 16, switchWidth = 17;
constexpr int headHeight = CDrumSound::closedHeight;
constexpr int pressVelocity = 100;
constexpr double mostHeard = 60; ///< seconds of a file that is heard before it is chosen
constexpr const char* params[] = {"Volume", "Pan", "Pitch"};
constexpr const char* kitExt = ".qvd|.qvs";
constexpr int stepCounts[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 24, 32};

enum Entry : int { renameRow, chooseFile, addRows, removeRow, muteRow, soloRow, loadKit, keepKit };
struct EntryText {
    Entry entry;
    const char* text;
    bool onRow; ///< about one sound
    bool behindLine;
};
constexpr EntryText entries[] = {
    {renameRow, "Rename", true, false},       {chooseFile, "Choose sample...", true, false},
    {removeRow, "Delete sound", true, false}, {muteRow, "Mute", true, true},
    {soloRow, "Solo", true, false},           {addRows, "New sound...", false, true},
    {loadKit, "Load kit...", false, false},   {keepKit, "Save kit...", false, false}};

} // namespace

/// Files are heard one at a time, and none once it goes.
class DrumStrip::Hearing {
public:
    explicit Hearing(CQV* root) : host(root) {}
    ~Hearing() { stop(); }
    Hearing(const Hearing&) = delete;
    Hearing& operator=(const Hearing&) = delete;

    void play(const CStr& file) {
        stop();
        CSamplePreview* player = CSamplePreview::of(host);
        const bool brief = audioLength(file).seconds <= mostHeard; // it is read while one waits
        clip = player && brief ? openClip(file) : nullptr;
        if (clip) player->play(clip.get(), 0, clip->frames, false);
    }

private:
    void stop() {
        CSamplePreview* player = clip ? CSamplePreview::of(host) : nullptr;
        if (player) {
            player->stop();
            player->forget(ForgetSet(clip.get()));
        }
        clip.reset();
    }

    CQV* host;
    std::unique_ptr<CSampleClip> clip;
};

/// A row on its way to another place; a click plays it.
class DrumStrip::RowDrag : public DragHandler {
public:
    RowDrag(DrumStrip& over, int pressed) : strip(over), from(pressed) {}

    void dragBegin(const DragPoint&) override { strip.play(-1); }
    void dragMove(const DragPoint& point) override {
        const EventRows rows = strip.state.rows();
        const int y = point.at.y + strip.state.edit.scrollY, over = rows.rowAt(y);
        const bool behind = y >= rows.top(over) + rows.height(over) / 2;
        before = over + behind;
        show(rows.top(before) - strip.state.edit.scrollY);
    }
    void dragEnd(const DragPoint&) override {
        show(-1);
        strip.move(from, before > from ? before - 1 : before);
    }
    void dragClick(const DragPoint&) override { strip.play(-1); }
    void dragCancel() override {
        show(-1);
        strip.play(-1);
    }
    CPoint dragScroll(CPoint by) override {
        NoteState& state = strip.state;
        const int was = state.edit.scrollY;
        state.scrollTo(state.axis().scroll(), was + by.y);
        return asPoint(0, state.edit.scrollY - was);
    }

private:
    void show(int y) {
        strip.mark = y;
        strip.redraw();
    }

    DrumStrip& strip;
    const int from;
    int before = 0; ///< row that it goes in front of
};

DrumStrip::DrumStrip(CWin* owner, NoteState& shared)
    : CGroup(owner, "drums", 0, 0, stripWidth, 1), state(shared) {
    tabStop = true;
    hint = "Press plays, a drag moves the sound, a double click renames it; right click for more";
}

DrumStrip::~DrumStrip() = default;

void DrumStrip::idle() {
    NameField::dropLeft(field);
}

// Where everything is.

CDrumSound* DrumStrip::sound(int row) const {
    return state.part && state.track ? state.track->drumSound(row) : nullptr;
}

int DrumStrip::rowAt(int y) const {
    if (!state.part || !state.seq()) return -1;
    const EventRows rows = state.rows();
    const int at = y + state.edit.scrollY;
    return at < 0 || at >= rows.total() ? -1 : rows.rowAt(at);
}

CRect DrumStrip::rowBox(const EventRows& rows, int row) const {
    const int y = rows.top(row) - state.edit.scrollY;
    return asRect(0, y, width, y + rows.height(row));
}

CRect DrumStrip::zoneBox(const EventRows& rows, int row, Zone zone) const {
    const int y = rowBox(rows, row).top, right = width - 1;
    const int foot = asMin(y + headHeight - 1, rowBox(rows, row).bottom);
    const auto box = [&](int from, int to) { return asRect(from, y, to, foot); };
    switch (zone) {
    case onLane:
        return box(0, signWidth);
    case onMute:
        return box(right - 2 * switchWidth, right - switchWidth);
    case onSolo:
        return box(right - switchWidth, right);
    default:
        return box(signWidth, right - 2 * switchWidth);
    }
}

DrumStrip::Zone DrumStrip::zoneAt(CPoint at, int row) const {
    const EventRows rows = state.rows();
    for (const Zone zone : {onLane, onMute, onSolo}) {
        const CRect box = zoneBox(rows, row, zone);
        if (at.x >= box.left && at.x < box.right && at.y < box.bottom) return zone;
    }
    return onName;
}

void DrumStrip::paint(CGraphic* g, CRect rect) {
    const CRect asked = intersect(g->asked(), clientRect());
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(palette.panel, asked);
    if (state.part && state.seq()) {
        const EventRows rows = state.rows();
        for (int row = 0; row < rows.count(); row++)
            if (!intersect(rowBox(rows, row), asked).empty()) paintRow(g, rows, row);
    }
    if (mark >= 0) g->fillRect(palette.accent, asRect(0, mark - 1, width, mark + 1));
    g->fillLine(palette.frame, asRect(width - 1, 0, width, height));
    CGroup::paint(g, rect);
}

void DrumStrip::paintRow(CGraphic* g, const EventRows& rows, int row) const {
    const CPalette& palette = win->app->gui->palette;
    CDrumSound* shown = sound(row);
    if (!shown) return;
    const CRect box = rowBox(rows, row), name = zoneBox(rows, row, onName);
    const bool plays = row == sounding;
    if (plays || row == chosen) g->fillRect(plays ? palette.accent : palette.raised, box);
    const bool silent = state.track->drumLayer()->soundMuted(shown);
    const int text = plays ? textOn(palette.accent) : silent ? palette.dimText : palette.text;
    g->drawText(text, shown->opened() ? "-" : "+", zoneBox(rows, row, onLane), 0);
    g->drawText(text, shown->getId(), name, textLeft);
    paintSwitch(g, zoneBox(rows, row, onMute), "M", shown->mute, palette.mute);
    paintSwitch(g, zoneBox(rows, row, onSolo), "S", shown->solo, palette.solo);
    if (shown->opened())
        g->drawText(plays ? text : palette.dimText,
                    params[asMinMax(int(shown->shownParam), 0, int(std::size(params)) - 1)],
                    asRect(name.left, name.bottom, width - gap, box.bottom), textLeft);
    g->fillLine(clGridSnap.fillCol, asRect(0, box.bottom - 1, width, box.bottom));
    if (row == chosen && hasKeyFocus())
        g->frameRect(palette.accent, asRect(0, box.top, width - 1, box.bottom));
}

void DrumStrip::paintSwitch(CGraphic* g, CRect box, const char* letter, bool on, int fill) const {
    const CPalette& palette = win->app->gui->palette;
    const CRect inner = asRect(box.left + 1, box.top + 2, box.right - 1, box.bottom - 1);
    g->fillRect(on ? fill : palette.raised, inner);
    g->frameRect(palette.frame, inner);
    g->drawText(on ? textOn(fill) : palette.dimText, letter, inner, 0);
}

// The mouse.

void DrumStrip::play(int row) {
    if (row == sounding) return;
    state.track->preview.mute();
    recordStep(state, sounding, 0);
    sounding = row;
    recordStep(state, row, pressVelocity);
    if (row >= 0) state.track->preview.addNote(firstDrumKey + row, pressVelocity);
    redraw();
}

void DrumStrip::choose(int row) {
    chosen = row;
    redraw();
}

void DrumStrip::mouseDown(int x, int y, int btn) {
    CGroup::mouseDown(x, y, btn);
    const int row = rowAt(y);
    if (row < 0) return;
    win->setKeyCtrl(this);
    choose(row);
    if (!(btn & modLeft)) return;
    const Zone zone = zoneAt(asPoint(x, y), row);
    if (zone != onName) return act(row, zone);
    if (btn & modDouble) return rename(row);
    play(row);
    drag = std::make_unique<RowDrag>(*this, row);
    win->app->drag.start(this, drag.get(), asPoint(x, y), btn);
}

void DrumStrip::mouseUp(int x, int y, int btn) {
    CGroup::mouseUp(x, y, btn);
    if ((btn & modRight) && inside(x, y)) contextMenu();
}

bool DrumStrip::mouseWheel(int, int, int, int dy, int) {
    if (!state.part || dy == 0) return false;
    state.scrollTo(state.axis().scroll(),
                   state.edit.scrollY + dy * PanZoom::notchPixels / PanZoom::notch);
    return true;
}

void DrumStrip::act(int row, Zone zone) {
    CDrumSound* of = sound(row);
    ValueDoor& values = *state.qv->values;
    if (zone == onLane) return openLane(row);
    if (zone == onName) return play(row);
    if (zone == onMute)
        values.set(muteOf(of), of->mute ? 0.0 : 1.0);
    else
        values.set(soloOf(of), of->solo ? 0.0 : 1.0);
    redraw();
}

void DrumStrip::openLane(int row) {
    sound(row)->toggleLane();
    state.shownChanged();
}

// The keys.

bool DrumStrip::keyDown(int key, int mods) {
    const int rows = state.part && state.seq() ? state.rows().count() : 0;
    if (chosen >= rows) chosen = asMax(0, rows - 1);
    if (!sound(chosen)) return CGroup::keyDown(key, mods);
    const int by = (key == ::keyDown) - (key == ::keyUp);
    const bool along = key == keyLeft || key == keyRight;
    if (by != 0 && mods == modControl) {
        move(chosen, asMinMax(chosen + by, 0, rows - 1));
    } else if (by != 0 && mods == 0) {
        choose(nextShown(by));
        state.scrollInView(asInt(state.place().ticksOf(state.axis(), state.gridWidth() / 2)),
                           chosen);
        pressPart(chosen * zones);
    } else if (along && mods == 0) {
        if (sound(chosen)->opened() != (key == keyRight)) openLane(chosen);
    } else if (mods == 0 && key == keyReturn) {
        rename(chosen);
    } else if (mods == 0 && key == keyDelete) {
        remove(chosen);
    } else if (mods == 0 && upperKey(key) == 'M') {
        act(chosen, onMute);
    } else if (mods == 0 && upperKey(key) == 'S') {
        act(chosen, onSolo);
    } else {
        return CGroup::keyDown(key, mods);
    }
    return true;
}

/// The row before or behind the chosen one that is not folded away; itself without one.
int DrumStrip::nextShown(int by) const {
    const EventRows rows = state.rows();
    for (int row = chosen + by; row >= 0 && row < rows.count(); row += by)
        if (rows.height(row) > 0) return row;
    return chosen;
}

// Edits.

void DrumStrip::rename(int row) {
    CDrumSound* of = sound(row);
    if (!of || state.track->locked || (field && field->visible)) return;
    NameField::dropLeft(field);
    field = new NameField(this, zoneBox(state.rows(), row, onName), of->getId(),
                          "Name of the sound", this);
    field->onName = [this, of](const CStr& name) {
        const CLayer* layer = state.track ? state.track->drumLayer() : nullptr;
        if (layer && layer->sounds.contains(of)) renameObject(state.seq(), of, name);
    };
}

void DrumStrip::move(int row, int to) {
    if (!sound(row) || row == to) return;
    moveDrum(state.seq(), sound(row), to);
    choose(to);
}

void DrumStrip::remove(int row) {
    if (sound(row)) removeDrum(state.seq(), sound(row));
}

void DrumStrip::tellUnread(const char* path) const {
    showMsg(state.workspace.mainWindow(), "Error", CStr("Could not read ") + extractFileName(path));
}

void DrumStrip::chooseSample() {
    CFileWin dialog(state.workspace.mainWindow(), "Choose sample", audioFileExt,
                    state.workspace.dialogFolder(), "", false);
    Hearing hearing(state.qv);
    dialog.onMarked = [&](const CStr& file) { hearing.play(file); };
    dialog.showModal();
    if (!dialog.result || !sound(chosen)) return;
    state.workspace.projectFolder = dialog.folder;
    if (!setDrumSample(state.seq(), sound(chosen), dialog.path)) tellUnread(dialog.path.asChar());
}

void DrumStrip::newSounds() {
    CFileWin dialog(state.workspace.mainWindow(), "New sound", audioFileExt,
                    state.workspace.dialogFolder(), "", false);
    Hearing hearing(state.qv);
    dialog.onMarked = [&](const CStr& file) { hearing.play(file); };
    dialog.showModal();
    if (!dialog.result || !state.part) return;
    state.workspace.projectFolder = dialog.folder;
    const CStr unread = addDrums(state.seq(), state.track, {dialog.path});
    if (!unread.empty()) tellUnread(unread.asChar());
}

void DrumStrip::openKit() {
    CFileWin dialog(state.workspace.mainWindow(), "Load kit", kitExt,
                    state.workspace.dialogFolder(), "", false);
    dialog.showModal();
    if (!dialog.result) return;
    state.workspace.projectFolder = dialog.folder;
    takeKit(dialog.path);
}

void DrumStrip::takeKit(const CStr& path) {
    if (!state.part || state.track->locked) return;
    if (countKitSounds(path) == 0) return tellUnread(path.asChar());
    loadPreset(state.seq(), state.track->drumLayer(), state.track, path);
}

void DrumStrip::saveKitAs() {
    CFileWin dialog(state.workspace.mainWindow(), "Save kit", ".qvs",
                    state.workspace.dialogFolder(), state.track->synthProg->id, true);
    dialog.showModal();
    if (!dialog.result || !state.part) return;
    state.workspace.projectFolder = dialog.folder;
    saveKit(state.track, dialog.path);
}

// The menu.

bool DrumStrip::contextMenu() {
    if (!state.part || !state.seq()) return false;
    auto* menu = new CPopup(win->app, win);
    menu->autoDelete = true;
    fillMenu(menu);
    const CPoint at = win->app->menuPoint();
    menu->popup(at.x, at.y);
    return true;
}

void DrumStrip::fillMenu(CPopup* menu) {
    const CDrumSound* of = sound(chosen);
    for (const EntryText& e : entries) {
        if (e.behindLine) menu->addSeparator();
        if (e.entry == loadKit && !state.track->locked)
            addPresetMenu(menu, "Kits", state.qv, ".qvd",
                          [this](const CStr& path) { takeKit(path); });
        CMenuItem* item =
            menu->add(e.text, new _COnChange<DrumStrip>(this, &DrumStrip::menuChosen));
        item->tag = e.entry;
        item->enabled = (!e.onRow || of) && (!state.track->locked || e.entry == keepKit);
        item->checked =
            of && ((e.entry == muteRow && of->mute) || (e.entry == soloRow && of->solo));
        if (e.entry != soloRow || !of) continue;
        menu->addSeparator();
        CPopup* lane = menu->addSub("Lane");
        for (int i = 0; i < int(std::size(params)); i++) {
            CMenuItem* param =
                lane->add(params[i], new _COnChange<DrumStrip>(this, &DrumStrip::paramChosen));
            param->tag = i;
            param->checked = of->opened() && of->shownParam == i;
        }
        fillLengths(menu->addSub("Row length"));
    }
}

/// Of the grid, and what it is now.
void DrumStrip::fillLengths(CPopup* menu) {
    const RowLoops* loops = rowLoops(state.part);
    const int now = loops ? loops->of(chosen) : 0, step = asMax(1, state.place().grid.step);
    lengths = {0};
    for (const int count : stepCounts) lengths.push_back(step * count);
    if (std::ranges::find(lengths, now) == lengths.end()) lengths.push_back(now);
    for (size_t i = 0; i < lengths.size(); i++) {
        const int ticks = lengths[i], count = ticks / step;
        const CStr steps = asStr(count) + (count == 1 ? " step" : " steps");
        const CStr text = ticks == 0          ? CStr("As the part")
                          : ticks % step == 0 ? steps
                                              : lengthText(state.seq(), ticks);
        CMenuItem* item =
            menu->add(text, new _COnChange<DrumStrip>(this, &DrumStrip::lengthChosen));
        item->tag = int(i);
        item->checked = ticks == now;
        item->enabled = !state.track->locked;
    }
}

void DrumStrip::menuChosen(CObject* sender) {
    if (!state.part || !state.seq()) return;
    switch (tagOf(sender)) {
    case renameRow:
        return rename(chosen);
    case chooseFile:
        return chooseSample();
    case removeRow:
        return remove(chosen);
    case muteRow:
        return act(chosen, onMute);
    case soloRow:
        return act(chosen, onSolo);
    case addRows:
        return newSounds();
    case loadKit:
        return openKit();
    case keepKit:
        return saveKitAs();
    default:
        break;
    }
}

void DrumStrip::paramChosen(CObject* sender) {
    CDrumSound* of = sound(chosen);
    if (!of) return;
    of->shownParam = tagOf(sender);
    if (!of->opened()) of->toggleLane();
    state.shownChanged();
}

void DrumStrip::lengthChosen(CObject* sender) {
    const auto index = size_t(tagOf(sender));
    if (state.part && index < lengths.size())
        setRowLoop(state.seq(), state.part, chosen, lengths[index]);
}

// What it tells.

int DrumStrip::accessParts() const {
    return state.part && state.seq() && state.rows().drums() ? state.rows().count() * zones : 0;
}

int DrumStrip::partAround(int part) const {
    return part % zones == onName ? int(wholeCtrl) : part / zones * zones;
}

int DrumStrip::focusedPart() const {
    return chosen * zones < accessParts() ? chosen * zones : int(wholeCtrl);
}

void DrumStrip::describe(Description& d, int part) const {
    d.role = Role::list;
    d.name = "Sounds";
    if (part == wholeCtrl) return;
    const int row = part / zones;
    const auto zone = Zone(part % zones);
    CDrumSound* of = sound(row);
    const std::string name = of->getId().asChar();
    const EventRows rows = state.rows();
    d.bounds =
        intersect(zone == onName ? rowBox(rows, row) : zoneBox(rows, row, zone), clientRect());
    d.role = zone == onName ? Role::listRow : Role::toggle;
    d.action = zone == onName ? "play" : "press";
    d.name = zone == onName   ? name
             : zone == onLane ? "Lane, " + name
             : zone == onMute ? "Mute, " + name
                              : "Solo, " + name;
    if (zone == onName) {
        const RowLoops* loops = rowLoops(state.part);
        if (const int ticks = loops ? loops->of(row) : 0)
            d.text = (CStr("repeats after ") + lengthText(state.seq(), ticks)).asChar();
        d.set(stateSelected, row == chosen);
    } else {
        d.set(statePressed, zone == onLane   ? of->opened()
                            : zone == onMute ? of->mute != 0
                                             : of->solo != 0);
    }
}

bool DrumStrip::pressPart(int part) {
    if (part == wholeCtrl || part >= accessParts()) return false;
    choose(part / zones);
    act(part / zones, Zone(part % zones));
    if (part % zones == onName) {
        recordStep(state, part / zones, 0);
        sounding = -1; // it rings out by itself
    }
    redraw();
    return true;
}
