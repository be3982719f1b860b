#include "mixer/CMixerWin.h"

#include "engine/CMixer.h"
#include "engine/CQV.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/CApp.h"
#include "gui/Keys.h"
#include "gui/Senders.h"
#include "gui/controls/CMenu.h"
#include "gui/controls/CPopup.h"
#include "mixer/CMixerPanel.h"
#include "mixer/CMixerStrip.h"
#include "mixer/MixerBar.h"
#include "ui/ActionItems.h"
#include "ui/Commands.h"
#include "ui/MenuTags.h"
#include "ui/Workspace.h"

#include <optional>

namespace {

constexpr const char* title = "Mixer";
constexpr int windowWidth = 1000, windowHeight = 560; ///< of the screen, when it is no page
constexpr int leastWidth = 320, leastHeight = 160;
constexpr int windowStyle = winCaption | winSizable | winMaxButton | winDockable;

} // namespace

CMixerWin::CMixerWin(Workspace& space, CMixer& kept) : CMixerWin(space, kept, kept, title, true) {
}

CMixerWin::CMixerWin(Workspace& space, CMixer& kept, CComp& edited, const CStr& name)
    : CMixerWin(space, kept, edited, name, false) {
}

CMixerWin::CMixerWin(Workspace& space, CMixer& kept, CComp& edited, const CStr& name, bool whole)
    : CCompEditor(space.mainWindow()->app, space.mainWindow(), name, 120, 120, windowWidth,
                  windowHeight, windowStyle, &edited, &space.commands()),
      workspace(space), mixer(kept), panel(new CMixerPanel(this, space, kept)),
      bar(whole ? new MixerBar(this, *panel) : nullptr), own(space.commands()) {
    editorType = groupMixer;
    minWidth = leastWidth;
    minHeight = leastHeight;
    const int w = clientGroup->width, h = clientGroup->height;
    const int from = bar ? MixerBar::barHeight : 0;
    if (bar) {
        bar->setBounds(0, 0, w, from);
        bar->setAlign(alignWidth, 0, 0);
        addControl(bar);
    }
    panel->setBounds(0, from, w, h - from);
    panel->setAlign(alignWidth | alignHeight, 0, 0);
    addControl(panel);
    bindOwn();
    links = {space.notices().on(
        {.host = HostNotice::graph | HostNotice::step, .song = SeqNotice::tracks},
        [this] { panel->follow(); })};
    panel->follow();
    idle();
}

CMixerWin::~CMixerWin() = default;

void CMixerWin::bindOwn() {
    const auto some = [this] { return !panel->state.selection().empty(); };
    own.bind(
        "mixmute", [this] { panel->toggleSelected(MixSwitch::mute); }, some);
    own.bind(
        "mixsolo", [this] { panel->toggleSelected(MixSwitch::solo); }, some);
    own.bind(
        "solosafe", [this] { panel->toggleSafe(panel->state.selection().front()); }, some,
        [this] {
            const auto selected = panel->state.selection();
            return !selected.empty() && selected.front().channel->soloSafe;
        });
    own.bind(
        "unsolo", [this] { panel->unSolo(); }, [this] { return panel->anySolo(); });
    const auto kit = [this]() -> std::optional<MixerStrip> {
        for (const MixerStrip& s : panel->state.selection())
            if (s.hasDrums()) return s;
        return std::nullopt;
    };
    own.bind(
        "drumstrips", [this, kit] { panel->foldDrums(*kit()); },
        [kit] { return kit().has_value(); },
        [kit] {
            const auto strip = kit();
            return strip && drumsUnfolded(*strip);
        });
    own.bind("narrowstrips", [this] { panel->setWide(false); });
    own.bind("widestrips", [this] { panel->setWide(true); });
    own.bind("addgroup", [this] { workspace.host()->addGroupClicked(); });
    own.bind("addsend", [this] { workspace.host()->addSendClicked(); });
    if (bar) own.bind("find", [this] { bar->find(); });
    own.bind(
        "groupstrips", [this] { panel->groupSelected(); }, some);
}

/// What the song does elsewhere; true when it is one of these.
bool CMixerWin::runOnStrips(const CStr& name) {
    if (name == "rename")
        panel->renameSelected();
    else if (name == "delete")
        panel->deleteSelected();
    else if (name == "selectAll")
        panel->state.selectAll();
    else if (name == "priorprog" || name == "nextprog")
        stepProg(name == "nextprog" ? 1 : -1);
    else
        return false;
    return true;
}

// What comes in.

void CMixerWin::mouseDown(int x, int y, int btn) {
    panel->followIfStale();
    CCompEditor::mouseDown(x, y, btn);
}

void CMixerWin::mouseMove(int x, int y, int btn) {
    panel->followIfStale();
    CCompEditor::mouseMove(x, y, btn);
}

void CMixerWin::mouseUp(int x, int y, int btn) {
    panel->followIfStale();
    CCompEditor::mouseUp(x, y, btn);
}

bool CMixerWin::mouseWheel(int x, int y, int btn, int dy, int dx) {
    panel->followIfStale();
    return CCompEditor::mouseWheel(x, y, btn, dy, dx);
}

bool CMixerWin::keyDown(int key, int mods) {
    panel->followIfStale();
    return CCompEditor::keyDown(key, mods);
}

void CMixerWin::show(bool activate) {
    panel->follow();
    CCompEditor::show(activate);
}

void CMixerWin::hide() {
    if (visible) panel->stopMeasuring();
    CCompEditor::hide();
}

void CMixerWin::idle() {
    if (bar) {
        if (mixer.notices.take(CompNotice::program)) programChanged();
        bar->refresh();
    }
    if (mapped) panel->refresh();
    panel->followLoudness();
}

// Actions.

bool CMixerWin::canRun(const CAction* action) const {
    const bool ofStrips = action->name == "rename" || action->name == "delete";
    if (ofStrips && panel->state.selection().empty()) return false;
    return ofStrips || action->name == "selectAll" || action->name == "priorprog" ||
           action->name == "nextprog" || own.isReady(action);
}

bool CMixerWin::isOn(const CAction* action) const {
    return own.isOn(action);
}

bool CMixerWin::onAction(CAction* action) {
    panel->followIfStale();
    return runOnStrips(action->name) || own.run(action) || workspace.commands().run(action);
}

void CMixerWin::stepProg(int by) {
    const int count = mixer.progs.getCount();
    if (count == 0) return;
    workspace.host()->values->set(programOfComp(&mixer), (mixer.curProg + by + count) % count);
}

void CMixerWin::programChanged() {
    panel->layout();
}

// Menus.

void CMixerWin::mergeMenu(CMenu* menuBar) {
    menuBar->add("Mixer", new _COnChange(this, &CMixerWin::menuClicked), menuChannel);
    menuBar->add("Sections", new _COnChange(this, &CMixerWin::sectionsClicked), menuOptions);
}

void CMixerWin::menuClicked(CPopup* sender) {
    panel->menus.fillStrips(sender);
}

void CMixerWin::sectionsClicked(CPopup* popup) {
    for (int i = 0; i < stripSections; i++) {
        CMenuItem* item =
            popup->add(titleOf(StripSection(i)),
                       new _COnChange<CMixerWin>(this, &CMixerWin::showSectionClicked));
        item->tag = i;
        item->checked = panel->shows(StripSection(i));
    }
    popup->addSeparator();
    for (const auto& [text, rows] : {std::pair{"Inserts", rowsInserts},
                                     {"Sends of strips", rowsSends},
                                     {"Routing", rowsRouting},
                                     {"Loudness", rowsLoudness},
                                     {"Load", rowsLoad}}) {
        CMenuItem* item =
            popup->add(text, new _COnChange<CMixerWin>(this, &CMixerWin::showRowsClicked));
        item->tag = rows;
        item->checked = panel->showsRows(rows);
    }
    addActionItems(popup, workspace, {"priorprog", "nextprog"});
}

void CMixerWin::showRowsClicked(CObject* sender) {
    const int rows = tagOf(sender);
    panel->showRows(rows, !panel->showsRows(rows));
}

void CMixerWin::showSectionClicked(CObject* sender) {
    const auto which = StripSection(tagOf(sender));
    panel->show(which, !panel->shows(which));
}
