#include "surfaces/CConfigWin.h"

#include "base/CIniFile.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CAAM.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CTabs.h"
#include "gui/controls/CTree.h"
#include "gui/controls/CValue.h"
#include "gui/dialogs/CFileWin.h"
#include "surfaces/CCS.h"
#include "surfaces/CCSWin.h"
#include "surfaces/SurfaceFields.h"
#include "surfaces/SurfacesRoom.h"
#include "ui/Workspace.h"

namespace {

constexpr int winWide = 640, winHigh = 508, leastWide = 480, leastHigh = 508;
constexpr int winStyle = winCaption | winSizable | winKeysToOwner | winCentre;
constexpr int margin = 8, gap = 4, high = 20, barHeight = 36, footHigh = 52;
constexpr int portWide = 64, mostPort = 65535;
constexpr int fieldsWide = 272, labelWide = 80, outsWide = 160;
constexpr const char* surfaceExt = ".qcs";

using Place = SurfacePlace;

constexpr const char* addTexts[] = {"Add",         "Add group", "Add control", "Add control",
                                    "Add section", "Add page",  "Add mapping", "Add mapping"};

} // namespace

CConfigWin::CConfigWin(Workspace& space, SurfacesRoom& owner)
    : CWin(space.mainWindow()->app, space.mainWindow(), "Control surface", 0, 0, winWide, winHigh,
           winStyle),
      workspace(space), room(owner), surface(owner.surface) {
    minWidth = leastWide;
    minHeight = leastHigh;
    addBar();
    tree = new CTree(this, "definition", margin, barHeight, 1, 1);
    tree->spokenName = "Definition";
    wire(tree->onChange, new _COnChange<CConfigWin>(this, &CConfigWin::nodeChosen));
    addControl(tree);
    addFields();
    heard = new CLabel(this, "", 0, 0, 1, high);
    addControl(heard);
    addFoot();
    fillOuts();
    rebuild();
    CConfigWin::resized();
}

template <class T>
CLabel* CConfigWin::footField(T* made, const char* text, const char* told,
                              void (CConfigWin::*changed_)(CObject*)) {
    made->spokenName = text;
    made->hint = told;
    made->tabStop = true;
    wire(made->onChange, new _COnChange<CConfigWin>(this, changed_));
    auto* label = new CLabel(this, text, 0, 0, labelWide, high);
    label->field = made;
    addControl(label);
    addControl(made);
    return label;
}

void CConfigWin::addFoot() {
    outs = new CDropdown(this, "feedback", 0, 0, outsWide, high);
    outsLabel =
        footField(outs, "Feedback to",
                  "The MIDI output of the device: its lights and motors show the parameters",
                  &CConfigWin::outChanged);
    oscPort = new CValue(this, "oscport", 0, 0, outsWide, high);
    oscPort->max = mostPort;
    oscPort->liveUpdate = false;
    oscPort->resetValue = 0;
    oscPort->showValue(iniReadInt("options", "oscport", 0));
    oscPortLabel =
        footField(oscPort, "OSC port", "Where Open Sound Control comes in by UDP; 0: nowhere",
                  &CConfigWin::oscPortChanged);
    oscTarget = new CEdit(this, "oscto", 0, 0, outsWide, high);
    oscTarget->setText(iniReadString("options", "oscto", ""));
    oscTargetLabel =
        footField(oscTarget, "OSC to", "Where Open Sound Control goes, as 192.168.1.20:9000",
                  &CConfigWin::oscTargetChanged);
}

void CConfigWin::oscPortChanged(CObject*) {
    workspace.setStatus(room.setOscPort(oscPort->value));
}

void CConfigWin::oscTargetChanged(CObject*) {
    workspace.setStatus(room.setOscTarget(oscTarget->text.trim()));
}

CButton* CConfigWin::addButton(const char* key, const char* text, const char* told, int wide,
                               void (CConfigWin::*clicked)(CObject*)) {
    auto* button = new CButton(this, key, text, nextLeft, margin, wide, high);
    nextLeft += wide + gap;
    button->hint = told;
    button->tabStop = button->hooverable = true;
    wire(button->onChange, new _COnChange<CConfigWin>(this, clicked));
    addControl(button);
    return button;
}

void CConfigWin::addBar() {
    constexpr int openWide = 60, shortWide = 52, teachWide = 64;
    nextLeft = margin;
    addButton("open", "Open...", "Opens the definition of a controller", openWide,
              &CConfigWin::openClicked);
    save = addButton("save", "Save...", "Writes it to a file", openWide, &CConfigWin::saveClicked);
    addButton("none", "None", "No controller is served", shortWide, &CConfigWin::closeClicked);
    teach = addButton("teach", "Teach", "Knobs that you move become controls of the chosen group",
                      teachWide, &CConfigWin::teachClicked);
    addButton("panel", "Panel", "Shows what the controls of the device do", openWide,
              &CConfigWin::panelClicked);
    file = new CLabel(this, "", nextLeft + gap, margin, 1, high);
    addControl(file);
}

void CConfigWin::addFields() {
    fields = new SurfaceFields(
        this, surface, {[this] { changed(); }, [this](const CStr& t) { workspace.setStatus(t); }});
    addControl(fields);
    constexpr int addWide = 112, deleteWide = 64;
    nextLeft = 0;
    addTo = addButton("add", "Add", "Adds to what is chosen", addWide, &CConfigWin::addClicked);
    del = addButton("delete", "Delete", "Deletes what is chosen", deleteWide,
                    &CConfigWin::deleteClicked);
}

void CConfigWin::resized() {
    CWin::resized();
    if (!heard) return;
    const int w = clientGroup->width, h = clientGroup->height;
    const int left0 = w - margin - fieldsWide, treeHigh = h - barHeight - footHigh;
    file->setBounds(file->left, margin, asMax(w - margin - file->left, 1), high);
    tree->setBounds(margin, barHeight, asMax(left0 - 2 * margin, 1), asMax(treeHigh, 1));
    tree->resized();
    const int foot = h - footHigh + gap;
    outs->setBounds(w - margin - outsWide, foot, outsWide, high);
    outsLabel->setBounds(outs->left - labelWide, foot, labelWide, high);
    heard->setBounds(margin, foot, asMax(outsLabel->left - 2 * margin, 1), high);
    const int last = foot + high + gap;
    oscTarget->setBounds(outs->left, last, outsWide, high);
    oscTargetLabel->setBounds(outsLabel->left, last, labelWide, high);
    oscPortLabel->setBounds(margin, last, labelWide, high);
    oscPort->setBounds(margin + labelWide, last, portWide, high);
    const int y = barHeight + high + margin;
    addTo->setBounds(left0, barHeight, addTo->width, high);
    del->setBounds(left0 + addTo->width + gap, barHeight, del->width, high);
    fields->setBounds(left0, y, fieldsWide, asMax(h - footHigh - y, 1));
    fields->resized();
    redraw();
}

// The tree.

CTreeNode* CConfigWin::add(CTreeNode* to, const CStr& text, Place what) {
    CTreeNode* node = to->add(text);
    node->kind = what.kind;
    node->path = asStr(what.a) + "/" + asStr(what.b) + "/" + asStr(what.c);
    node->expanded = true;
    return node;
}

Place CConfigWin::chosen() const {
    Place what;
    if (!tree->current) return what;
    what.kind = tree->current->kind;
    std::sscanf(tree->current->path.asChar(), "%d/%d/%d", &what.a, &what.b, &what.c);
    return what;
}

CStr CConfigWin::nodeText(const CControlMap& shown) const {
    CStr text = shown.label.empty() ? CStr("Mapping") : shown.label;
    if (shown.group >= 0 && shown.group < int(surface.def.groups.size()))
        text += ": " + surface.def.groups[size_t(shown.group)].name;
    return text;
}

void CConfigWin::rebuild() {
    const Place before = chosen();
    SurfaceDef& def = surface.def;
    tree->root.clear();
    tree->current = nullptr;
    add(&tree->root, "Device", {Place::ofDevice});
    CTreeNode* groups = add(&tree->root, "Groups of controls", {Place::ofGroups});
    for (int a = 0; a < int(def.groups.size()); a++) {
        CTreeNode* node = add(groups, def.groups[size_t(a)].name, {Place::ofGroup, a});
        int b = 0;
        for (const CHWCtrl& c : def.groups[size_t(a)].ctrls)
            add(node, c.name + " (" + controlSourceText(c.cc) + ")", {Place::ofCtrl, a, b++});
    }
    CTreeNode* sections = add(&tree->root, "Sections", {Place::ofSections});
    for (int a = 0; a < int(def.sections.size()); a++) {
        CControlPages& in = def.sections[size_t(a)];
        CTreeNode* node = add(sections, in.name, {Place::ofSection, a});
        for (int b = 0; b < int(in.pages.size()); b++) {
            CTreeNode* pages = add(node, in.pages[size_t(b)].name, {Place::ofPage, a, b});
            int c = 0;
            for (const CControlMap& m : in.pages[size_t(b)].maps)
                add(pages, nodeText(m), {Place::ofMap, a, b, c++});
        }
    }
    tree->update();
    shownTaught = surface.taught;
    choose(before);
}

void CConfigWin::choose(const Place& what) {
    const CStr path = asStr(what.a) + "/" + asStr(what.b) + "/" + asStr(what.c);
    CTreeNode* found = nullptr;
    const std::function<void(CTreeNode*)> look = [&](CTreeNode* below) {
        for (auto* node : below->children) {
            if (node->kind == what.kind && node->path == path) found = node;
            look(node);
        }
    };
    look(&tree->root);
    tree->select(found ? found : tree->root.children.getFirst());
    showFields();
}

// What is chosen.

void CConfigWin::nodeChosen(CObject*) {
    const Place what = chosen();
    if (what.kind == Place::ofGroup || what.kind == Place::ofCtrl) surface.editGroup = what.a;
    surface.learnGroup = surface.learnCtrl = -1;
    showFields();
}

void CConfigWin::showFields() {
    const Place what = chosen();
    fields->show(what);
    addTo->setText(addTexts[what.kind]);
    addTo->setEnabled(what.kind != Place::ofDevice);
    del->setEnabled(what.name(surface.def) != nullptr);
    redraw();
}

void CConfigWin::changed() {
    surface.changed = true;
    rebuild();
    follow();
}

void CConfigWin::addClicked(CObject*) {
    const Place made = addToSurface(surface.def, chosen());
    if (made.kind == Place::ofGroup || made.kind == Place::ofCtrl) surface.editGroup = made.a;
    surface.changed = true;
    rebuild();
    choose(made);
    follow();
}

void CConfigWin::deleteClicked(CObject*) {
    deleteFromSurface(surface.def, chosen());
    surface.editGroup = asMin(surface.editGroup, int(surface.def.groups.size()) - 1);
    surface.learnGroup = surface.learnCtrl = -1;
    changed();
}

// The file, and what comes in.

bool CConfigWin::mayDrop() {
    return !surface.changed ||
           showMsg(this, "Control surface", "Discard what is not saved?", mbYes | mbNo) == mbYes;
}

void CConfigWin::openClicked(CObject*) {
    if (!mayDrop()) return;
    CFileWin dialog(this, "Open", surfaceExt, folder, "", false);
    dialog.showModal();
    if (!dialog.result) return;
    folder = dialog.folder;
    if (!surface.open(dialog.path))
        showMsg(this, "Error", "Could not read " + extractFileName(dialog.path));
    rebuild();
    follow();
}

void CConfigWin::saveClicked(CObject*) {
    CFileWin dialog(this, "Save", surfaceExt, folder,
                    surface.path.empty() ? CStr("controller.qcs") : extractFileName(surface.path),
                    true);
    dialog.showModal();
    if (!dialog.result) return;
    folder = dialog.folder;
    if (!surface.save(dialog.path))
        showMsg(this, "Error", "There was an error saving " + dialog.path);
    follow();
}

void CConfigWin::closeClicked(CObject*) {
    if (!mayDrop()) return;
    surface.close();
    rebuild();
    follow();
}

void CConfigWin::teachClicked(CObject*) {
    surface.editing = !surface.editing;
    if (surface.editing && surface.def.groups.empty()) {
        surface.def.groups.push_back({"Group 1", {}});
        surface.editGroup = 0;
        surface.changed = true;
        rebuild();
    }
    follow();
}

void CConfigWin::panelClicked(CObject*) {
    if (!panel) panel = std::make_unique<CCSWin>(this, surface);
    if (panel->visible)
        panel->hide();
    else
        panel->open();
}

// Feedback.

void CConfigWin::fillOuts() {
    CAAM* driver = workspace.host()->aam;
    outs->items.clear();
    outs->add("None");
    for (int i = 0; driver && i < driver->getMIDIOutCount(); i++) outs->add(driver->midiOutName(i));
    outs->setIndex(surface.feedback + 1);
}

void CConfigWin::outChanged(CObject*) {
    surface.feedback = outs->index - 1;
    CIniFile(inifile).writeString("options", "surfaceout",
                                  surface.feedback < 0 ? CStr() : outs->getItemText(outs->index));
}

void CConfigWin::follow() {
    const CStr star = surface.changed ? " *" : "";
    file->setText(surface.path.empty() ? (surface.changed ? CStr("Not saved *") : CStr())
                                       : extractFileName(surface.path) + star);
    teach->setLit(surface.editing);
    CStr text = surface.getLastEventStr();
    for (int i = 0; i < int(surface.def.sections.size()); i++) {
        const CStr shows = surface.pageText(i);
        if (!shows.empty()) text += (text.empty() ? CStr() : CStr("    ")) + shows;
    }
    if (surface.waits()) text += "    Waits to be picked up";
    if (surface.bank > 0) text += "    Bank " + asStr(surface.bank + 1);
    heard->setText(text);
}

void CConfigWin::idle() {
    const bool learned = surface.taught != shownTaught;
    if (learned) rebuild();
    if (surface.preset.defined() != shownPreset) {
        shownPreset = surface.preset.defined();
        fields->refresh();
    }
    const bool same = surface.lastEvent == shownEvent && surface.waits() == shownWaits;
    if (panel && panel->visible) panel->idle();
    if (same && !learned) return;
    shownEvent = surface.lastEvent;
    shownWaits = surface.waits();
    follow();
}

CConfigWin::~CConfigWin() = default;

void CConfigWin::hide() {
    surface.editing = false;
    surface.learnGroup = surface.learnCtrl = -1;
    CWin::hide();
}
