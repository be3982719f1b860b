#include "panels/plugins/CVSTWin.h"

#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/Setting.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/XConnection.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CPopup.h"
#include "gui/dialogs/CFileWin.h"
#include "panels/MacroRow.h"
#include "panels/plugins/EditorFrame.h"
#include "panels/plugins/ParamList.h"
#include "plugins/CVST.h"
#include "plugins/PluginFile.h"
#include "ui/Commands.h"
#include "ui/MenuDeed.h"
#include "ui/PluginShelf.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

constexpr int gap = 8, high = 24, barTop = (ProgramBar::usualHeight - high) / 2;
constexpr int powerWidth = 40, channelWidth = 64, listWidth = 88, keysWidth = 64, macrosWidth = 64;
constexpr int moreWidth = 24, insteadWidth = 96;
enum : int { inProgram, inHelper, loadAgain }; ///< entries of the menu
constexpr int leastWidth = 720, leastHeight = 160;
constexpr int midiChannels = 16;
constexpr int windowStyle = winCaption | winSizable | winMaxButton | winDockable;
const CRect usualPlace = asRect(120, 120, 120 + leastWidth, 120 + 420);

CStr titleOf(const CVST& plugin) {
    const COutputChannel* ch = plugin.ownerChannel;
    const CStr name = ch && ch->comp ? plugin.id + " (" + ch->comp->id + ")" : plugin.id;
    if (plugin.failed()) return name + ": " + plugin.loaded()->whyFailed();
    const unsigned faults = plugin.faults;
    return faults == 0 ? name : name + ", " + asStr(faults) + (faults == 1 ? " fault" : " faults");
}

MacroLook lookOf(CVST& of) {
    return {[&of](int param) -> std::optional<StoredValue> {
                if (param >= of.numParams()) return std::nullopt;
                return parameterOf(&of, param);
            },
            [&of](int, int param) { return of.paramName(param); }};
}

bool turnsAny(CVST& of) {
    for (int i = 0; i < CComp::macroCount; i++)
        if (of.getMacroParam(i) != -1) return true;
    return false;
}

bool isProgramFile(const CStr& path) {
    return sameText(extractFileExt(path), ".fxp");
}

} // namespace

CVSTWin::CVSTWin(Workspace& space, CVST& of)
    : CCompEditor(space.mainWindow()->app, space.mainWindow(), titleOf(of), usualPlace.left,
                  usualPlace.top, usualPlace.width(), usualPlace.height(), windowStyle, &of,
                  &space.commands()),
      workspace(space), plugin(of), programs(new ProgramBar(this, space, &of, deeds())),
      macros(new MacroRow(this, space, of, lookOf(of))), listed(!of.hasEditor()) {
    minWidth = leastWidth;
    minHeight = leastHeight;
    if (dock->page < 0) dock->visible = 1; // a window of its own until the user docks it
    programs->setAlign(alignWidth, 0, 0);
    addControl(programs);
    macros->setBounds(0, barHeight, 1, MacroRow::usualHeight);
    macros->setAlign(alignWidth, 0, 0);
    macros->visible = turnsAny(of);
    addControl(macros);
    power = addButton("power", "On", "The plug-in is on", powerWidth, &CVSTWin::powerClicked);
    channel = addButton("channel", "", "MIDI channel that it hears", channelWidth,
                        &CVSTWin::channelClicked);
    list = addButton("list", "Parameters", "All parameters in place of its own window", listWidth,
                     &CVSTWin::listClicked);
    keys = addButton("keys", "Keys", "Gives all keys to the plug-in, Space and F1 to F12 too",
                     keysWidth, &CVSTWin::keysClicked);
    turned = addButton("turned", "Macros", "Eight knobs that turn parameters of your choice",
                       macrosWidth, &CVSTWin::macrosClicked);
    turned->setLit(macros->visible);
    locate = addButton("locate", "Locate...", "Its file was not found: choose it", listWidth,
                       &CVSTWin::locateClicked);
    instead =
        addButton("instead", "Other format", "Its file was not found; another format of it is",
                  insteadWidth, &CVSTWin::insteadClicked);
    again = addButton("again", "Restart", "Loads it anew, as it was", listWidth,
                      &CVSTWin::restartClicked);
    more = addButton("more", "...", "Where it runs", moreWidth, &CVSTWin::moreClicked);
    layBar();
}

CVSTWin::~CVSTWin() {
    empty();
}

CButton* CVSTWin::addButton(const char* name, const CStr& text, const char* help, int wide,
                            void (CVSTWin::*clicked)(CObject*)) {
    auto* made = new CButton(this, name, text, 0, barTop, wide, high);
    made->skin = &clTrackControls;
    made->litSkin = &clTrackControlsPushed;
    made->hint = help;
    made->tabStop = true;
    made->onChange = new _COnChange<CVSTWin>(this, clicked);
    programs->addControl(made);
    return made;
}

// What it shows.

/// The buttons that mean something for the plug-in, beside each other.
void CVSTWin::layBar() {
    const bool there = plugin.opened();
    power->visible = channel->visible = there;
    failed = plugin.failed();
    list->visible = keys->visible = there && plugin.hasEditor() && !failed;
    locate->visible = !there;
    instead->visible = !there && !otherFormats().empty();
    again->visible = failed;
    more->visible = turned->visible = there;
    int x = ProgramBar::contentWidth + gap;
    for (CButton* b : {power, channel, list, keys, turned, locate, instead, again, more}) {
        if (!b->visible) continue;
        b->setBounds(x, barTop, b->width, high);
        x += b->width + gap;
    }
    redraw();
}

void CVSTWin::fill() {
    empty();
    shownFile = plugin.fileName;
    CGroup* made = nullptr;
    if (plugin.hasEditor() && !listed) {
        made = editor = new EditorFrame(this, plugin);
        editor->keysToPlugin = keys->lit;
        editor->onChange = new _COnChange<CVSTWin>(this, &CVSTWin::fitEditor);
    } else {
        made = params = new ParamList(this, workspace, plugin);
    }
    made->setAlign(alignWidth | alignHeight, 0, 0);
    addControl(made);
    layContent();
}

int CVSTWin::contentTop() const {
    return barHeight + (macros->visible ? MacroRow::usualHeight : 0);
}

void CVSTWin::layContent() {
    CGroup* content = editor ? static_cast<CGroup*>(editor) : params;
    const int from = contentTop();
    content->setBounds(0, from, clientGroup->width, clientGroup->height - from);
    content->resized();
    if (editor) fitEditor(nullptr);
    redraw();
}

/// The plug-in has closed its editor when this returns.
void CVSTWin::empty() {
    if (editor) editor->close();
    for (CCtrl* shown : std::initializer_list<CCtrl*>{editor, params}) {
        if (!shown) continue;
        clientGroup->controls.remove(shown);
        app->deleteLater(shown);
    }
    editor = nullptr;
    params = nullptr;
}

/// As large as the editor, as far as the screen allows; a page keeps its size.
void CVSTWin::fitEditor(CObject*) {
    if (!editor || !editor->isSized() || isPage() || hasStyle(winMaximized)) return;
    const CPoint content = editor->content();
    const int around = width - clientGroup->width, above = height - clientGroup->height;
    const CRect screen = getDesktopBounds();
    const int wide = std::clamp(content.x + around, minWidth, screen.width());
    const int tall = std::clamp(content.y + contentTop() + above, minHeight, screen.height());
    if (wide != width || tall != height) setSize(wide, tall);
}

void CVSTWin::show(bool activate) {
    if (!editor && !params) fill();
    CCompEditor::show(activate);
}

void CVSTWin::hide() {
    CCompEditor::hide();
    empty();
}

void CVSTWin::idle() {
    if (!editor && !params) return;
    if (!(shownFile == plugin.fileName)) { // by a step of the history
        empty();
        return refill();
    }
    plugin.notices.take(CompNotice::program);
    programs->refresh();
    if (macros->visible) macros->refresh();
    power->setLit(plugin.enabled != 0);
    const CStr heard = "Ch " + plugin.channelSetting().text(&plugin, double(plugin.mch));
    if (heard != channel->text) {
        channel->setText(heard);
        channel->spokenName = "MIDI channel, " + heard;
    }
    list->setLit(listed);
    if (failed != plugin.failed()) layBar();
    if (const CStr title = titleOf(plugin); !(title == id)) setCaption(title);
    if (editor) editor->refresh();
    if (params) params->refresh();
}

// Programs and files.

ProgramBar::Deeds CVSTWin::deeds() {
    ProgramBar::Deeds can;
    can.rename = [this](const CStr& name) {
        plugin.setProgName(plugin.curProg, name);
        plugin.host->setModified();
    };
    can.extension = ".fxp|.fxb";
    can.open = [this](const CStr& path) { openFile(path); };
    can.save = [this](const CStr& path) { saveFile(path); };
    return can;
}

void CVSTWin::openFile(const CStr& path) {
    isProgramFile(path) ? plugin.openProgram(path) : plugin.openBank(path);
}

void CVSTWin::saveFile(const CStr& path) {
    isProgramFile(path) ? plugin.saveProgram(path) : plugin.saveBank(path);
}

// The bar.

void CVSTWin::powerClicked(CObject*) {
    plugin.host->values->set(parameterOf(&plugin, paramPower), plugin.enabled ? 0.0 : 1.0);
    idle();
}

void CVSTWin::channelClicked(CObject*) {
    auto* popup = new CPopup(app, this);
    popup->autoDelete = true;
    const Setting& heard = plugin.channelSetting();
    for (int i = -1; i < midiChannels; i++) {
        CMenuItem* item = popup->add(heard.text(&plugin, double(i)),
                                     new _COnChange(this, &CVSTWin::channelChosen));
        item->tag = i;
        item->checked = i == plugin.mch;
    }
    popup->popupBelow(channel);
}

void CVSTWin::channelChosen(CMenuItem* sender) {
    const int to = sender->tag;
    plugin.host->values->set(plugin.channelSetting().of(&plugin), double(to));
    idle();
}

void CVSTWin::listClicked(CObject*) {
    listed = !listed;
    fill();
    idle();
}

void CVSTWin::keysClicked(CObject*) {
    keys->setLit(!keys->lit);
    if (editor) editor->keysToPlugin = keys->lit;
}

void CVSTWin::macrosClicked(CObject*) {
    macros->visible = !macros->visible;
    turned->setLit(macros->visible);
    if (!macros->visible) macros->learn(-1);
    layContent();
    idle();
}

// Where it runs.

void CVSTWin::restartClicked(CObject*) {
    plugin.loaded()->restart();
    idle();
}

void CVSTWin::moreClicked(CObject*) {
    auto* popup = new CPopup(app, this);
    popup->autoDelete = true;
    const auto add = [&](int place, const CStr& text, bool checked) {
        CMenuItem* item = popup->add(text, new _COnChange(this, &CVSTWin::placeChosen));
        item->tag = place;
        item->checked = checked;
    };
    const bool apart = plugin.loaded()->isolated();
    add(inHelper, "In a process of its own", apart);
    add(inProgram, "In the program: trusted", !apart);
    popup->addSeparator();
    add(loadAgain, "Load anew", false);
    addFormats(popup);
    popup->popupBelow(more);
}

/// The other formats that there are of it.
void CVSTWin::addFormats(CPopup* popup) {
    using Entry = PluginList::Entry;
    popup->addSeparator();
    for (const PluginList::Effect& effect : workspace.pluginShelf().list.effects()) {
        if (std::ranges::find(effect, plugin.fileName, &Entry::path) == effect.end()) continue;
        for (const Entry* other : effect)
            if (!(other->path == plugin.fileName)) addFormat(popup, *other);
    }
}

void CVSTWin::addFormat(CPopup* popup, const PluginList::Entry& other) {
    addDeed(popup, CStr("As ") + formatName(other.format()),
            [this, path = other.path] { become(path); });
}

/// Of one that was not found.
std::vector<const PluginList::Entry*> CVSTWin::otherFormats() const {
    const PluginIdentity was = plugin.missing();
    if (!was.known()) return {};
    return workspace.pluginShelf().list.formatsOf(was.name, was.vendor);
}

void CVSTWin::insteadClicked(CObject*) {
    auto* popup = new CPopup(app, this);
    popup->autoDelete = true;
    for (const PluginList::Entry* other : otherFormats()) addFormat(popup, *other);
    popup->popupBelow(instead);
}

void CVSTWin::become(const CStr& path) {
    empty();
    plugin.opened() ? plugin.become(path) : plugin.becomeMissing(path);
    refill();
}

/// It is another plug-in than before, or runs elsewhere.
void CVSTWin::refill() {
    listed = !plugin.hasEditor();
    layBar();
    fill();
    idle();
}

/// The user's word holds for the plug-in wherever it is loaded from now on.
void CVSTWin::placeChosen(CMenuItem* sender) {
    const int place = sender->tag;
    if (place != loadAgain)
        workspace.pluginShelf().processes->trust.set(plugin.fileName, place == inProgram);
    empty();
    plugin.reload();
    layBar();
    fill();
    idle();
}

void CVSTWin::locateClicked(CObject*) {
    CFileWin dialog(this, "Locate plug-in", PluginFile::pickable, workspace.dialogFolder(),
                    extractFileName(PluginFile(plugin.fileName).file), false);
    dialog.showModal();
    if (!dialog.result || !plugin.locate(PluginFile::ofPicked(dialog.path))) return;
    listed = !plugin.hasEditor();
    layBar();
    fill();
}
