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
#include "surfaces/SurfacesRoom.h"
#include "ui/Workspace.h"

namespace {

constexpr int winWide = 560, winHigh = 420, leastWide = 420, leastHigh = 280;
constexpr int winStyle = winCaption | winSizable | winKeysToOwner | winCentre;
constexpr int margin = 8, gap = 4, high = 20, barHeight = 36, footHigh = 52;
constexpr int portWide = 64, mostPort = 65535;
constexpr int fieldsWide = 240, labelWide = 80, outsWide = 160, highest = 127, mostParams = 9999;
constexpr const char* surfaceExt = ".qcs";

/// What a node of the tree stands for.
enum NodeOf : int { ofGroups, ofGroup, ofCtrl, ofSections, ofSection, ofPage, ofMap };

constexpr const char* addTexts[] = {"Add group", "Add control", "Add control", "Add section",
                                    "Add page",  "Add mapping", "Add mapping"};

constexpr struct {
    int mode;
    const char* text;
} modeNames[] = {{surfaceParam, "Parameter"},
                 {surfaceBankDown, "Bank -"},
                 {surfaceBankUp, "Bank +"},
                 {surfaceTrackDown, "Prior track"},
                 {surfaceTrackUp, "Next track"},
                 {surfacePriorPage, "Prior page"},
                 {surfaceNextPage, "Next page"},
                 {surfacePageDown, "Page - of its section"},
                 {surfacePageUp, "Page + of its section"},
                 {surfaceStore, "Only shown"},
                 {surfaceProgram, "Program change"},
                 {surfaceText, "Text of the preset"}};

template <class T>
T* at(std::vector<T>& list, int i) {
    return i >= 0 && i < int(list.size()) ? &list[size_t(i)] : nullptr;
}

template <class T>
void erase(std::vector<T>& list, int i) {
    if (at(list, i)) list.erase(list.begin() + i);
}

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
    file = new CLabel(this, "", nextLeft + gap, margin, 1, high);
    addControl(file);
}

template <class T>
T* CConfigWin::field(T* made, const char* spoken, void (CConfigWin::*changed_)(CObject*)) {
    made->spokenName = spoken;
    made->tabStop = true;
    wire(made->onChange, new _COnChange<CConfigWin>(this, changed_));
    auto* label = new CLabel(this, spoken, 0, 0, labelWide, high);
    label->field = made;
    addControl(label);
    addControl(made);
    labels.push_back(label);
    fields.push_back(made);
    return made;
}

void CConfigWin::addFields() {
    name = field(new CEdit(this, "name", 0, 0, 1, high), "Name", &CConfigWin::nameChanged);
    cc = field(new CValue(this, "cc", 0, 0, 1, high), "Controller", &CConfigWin::numberChanged);
    cc->max = highest;
    sysex = field(new CEdit(this, "sysex", 0, 0, 1, high), "Sysex", &CConfigWin::sysexChanged);
    sysex->hint = "Bytes in hexadecimal, such as F0 43 10";
    mode = field(new CDropdown(this, "mode", 0, 0, 1, high), "Does", &CConfigWin::modeChanged);
    for (const auto& m : modeNames) mode->add(m.text);
    leads = field(new CDropdown(this, "group", 0, 0, 1, high), "Group", &CConfigWin::groupChanged);
    param =
        field(new CValue(this, "param", 0, 0, 1, high), "Parameter", &CConfigWin::numberChanged);
    param->max = mostParams;
    param->hint = "Of the first control of the group; the others follow";
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
    int row = 0;
    for (size_t i = 0; i < fields.size(); i++) {
        if (!fields[i]->visible) continue;
        const int top0 = y + row++ * (high + gap);
        labels[i]->setBounds(left0, top0, labelWide, high);
        fields[i]->setBounds(left0 + labelWide, top0, fieldsWide - labelWide, high);
    }
    redraw();
}

// The tree.

CTreeNode* CConfigWin::add(CTreeNode* to, const CStr& text, Chosen what) {
    CTreeNode* node = to->add(text);
    node->kind = what.kind;
    node->path = asStr(what.a) + "/" + asStr(what.b) + "/" + asStr(what.c);
    node->expanded = true;
    return node;
}

CConfigWin::Chosen CConfigWin::chosen() const {
    Chosen what;
    if (!tree->current) return what;
    what.kind = tree->current->kind;
    std::sscanf(tree->current->path.asChar(), "%d/%d/%d", &what.a, &what.b, &what.c);
    return what;
}

CStr CConfigWin::nodeText(const CControlMap& shown) const {
    CStr text = shown.label.empty() ? CStr("Mapping") : shown.label;
    if (const CHWCtrlGroup* of = at(surface.def.groups, shown.group)) text += ": " + of->name;
    return text;
}

void CConfigWin::rebuild() {
    const Chosen before = chosen();
    SurfaceDef& def = surface.def;
    tree->root.clear();
    tree->current = nullptr;
    CTreeNode* groups = add(&tree->root, "Groups of controls", {ofGroups});
    for (int a = 0; a < int(def.groups.size()); a++) {
        CTreeNode* node = add(groups, def.groups[size_t(a)].name, {ofGroup, a});
        int b = 0;
        for (const CHWCtrl& c : def.groups[size_t(a)].ctrls)
            add(node, c.name + " (" + asStr(c.cc) + ")", {ofCtrl, a, b++});
    }
    CTreeNode* sections = add(&tree->root, "Sections", {ofSections});
    for (int a = 0; a < int(def.sections.size()); a++) {
        CControlPages& in = def.sections[size_t(a)];
        CTreeNode* node = add(sections, in.name, {ofSection, a});
        for (int b = 0; b < int(in.pages.size()); b++) {
            CTreeNode* pages = add(node, in.pages[size_t(b)].name, {ofPage, a, b});
            int c = 0;
            for (const CControlMap& m : in.pages[size_t(b)].maps)
                add(pages, nodeText(m), {ofMap, a, b, c++});
        }
    }
    leads->items.clear();
    for (const CHWCtrlGroup& g : def.groups) leads->add(g.name);
    tree->update();
    shownCtrls = 0;
    for (const CHWCtrlGroup& g : def.groups) shownCtrls += g.ctrls.size();
    choose(before);
}

void CConfigWin::choose(Chosen what) {
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

CHWCtrlGroup* CConfigWin::group() const {
    const Chosen what = chosen();
    return what.kind == ofGroup || what.kind == ofCtrl ? at(surface.def.groups, what.a) : nullptr;
}

CHWCtrl* CConfigWin::ctrl() const {
    CHWCtrlGroup* in = group();
    return in && chosen().kind == ofCtrl ? at(in->ctrls, chosen().b) : nullptr;
}

CControlPages* CConfigWin::section() const {
    return chosen().kind >= ofSection ? at(surface.def.sections, chosen().a) : nullptr;
}

CControlSectionPage* CConfigWin::page() const {
    CControlPages* in = section();
    return in && chosen().kind >= ofPage ? at(in->pages, chosen().b) : nullptr;
}

CControlMap* CConfigWin::map() const {
    CControlSectionPage* in = page();
    return in && chosen().kind == ofMap ? at(in->maps, chosen().c) : nullptr;
}

CStr* CConfigWin::nameOf() const {
    if (CHWCtrl* c = ctrl()) return &c->name;
    if (CHWCtrlGroup* g = group()) return &g->name;
    if (CControlMap* m = map()) return &m->label;
    if (CControlSectionPage* p = page()) return &p->name;
    CControlPages* s = section();
    return s ? &s->name : nullptr;
}

// What is chosen.

void CConfigWin::nodeChosen(CObject*) {
    if (chosen().kind == ofGroup || chosen().kind == ofCtrl) surface.editGroup = chosen().a;
    showFields();
}

void CConfigWin::showFields() {
    const CHWCtrl* c = ctrl();
    const CControlMap* m = map();
    const CStr* text = nameOf();
    for (const auto& [shown, ctrlOf] : {std::pair<bool, CCtrl*>{text != nullptr, name},
                                        {c != nullptr, cc},
                                        {c != nullptr, sysex},
                                        {m != nullptr, mode},
                                        {m != nullptr, leads},
                                        {m && m->mode == surfaceParam, param}})
        ctrlOf->visible = shown;
    for (size_t i = 0; i < fields.size(); i++) labels[i]->visible = fields[i]->visible;
    if (text) name->setText(*text);
    if (c) {
        cc->showValue(c->cc);
        sysex->setText(c->sysexText.c_str());
    }
    if (m) {
        for (int i = 0; i < int(std::size(modeNames)); i++)
            if (modeNames[i].mode == m->mode) mode->setIndex(i);
        leads->setIndex(m->group);
        param->showValue(m->param);
    }
    addTo->setText(addTexts[chosen().kind]);
    del->setEnabled(text != nullptr);
    resized();
}

void CConfigWin::changed() {
    surface.changed = true;
    rebuild();
    follow();
}

void CConfigWin::nameChanged(CObject*) {
    if (CStr* text = nameOf()) *text = name->text;
    changed();
}

void CConfigWin::numberChanged(CObject* sender) {
    if (CHWCtrl* c = ctrl(); c && sender == cc) c->cc = cc->value;
    if (CControlMap* m = map(); m && sender == param) m->param = param->value;
    changed();
}

void CConfigWin::sysexChanged(CObject*) {
    CHWCtrl* c = ctrl();
    if (!c) return;
    c->sysexText = sysex->text.asChar();
    c->sysex.fromStr(sysex->text, false);
    surface.changed = true;
}

void CConfigWin::modeChanged(CObject*) {
    if (CControlMap* m = map()) m->mode = modeNames[asMax(mode->index, 0)].mode;
    changed();
}

void CConfigWin::groupChanged(CObject*) {
    if (CControlMap* m = map()) m->group = leads->index;
    changed();
}

void CConfigWin::addClicked(CObject*) {
    SurfaceDef& def = surface.def;
    Chosen what = chosen();
    const auto last = [](const auto& list) { return int(list.size()) - 1; };
    switch (what.kind) {
    case ofGroups:
        def.groups.push_back({"Group " + asStr(int(def.groups.size()) + 1), {}});
        surface.editGroup = last(def.groups);
        what = {ofGroup, last(def.groups)};
        break;
    case ofGroup:
    case ofCtrl:
        group()->addCtrl("cc", 0);
        what = {ofCtrl, what.a, last(group()->ctrls)};
        break;
    case ofSections: {
        CControlPages made;
        made.name = "Section " + asStr(int(def.sections.size()) + 1);
        def.sections.push_back(std::move(made));
        what = {ofSection, last(def.sections)};
        break;
    }
    case ofSection:
        section()->pages.push_back({"Page " + asStr(int(section()->pages.size()) + 1), {}});
        what = {ofPage, what.a, last(section()->pages)};
        break;
    default: {
        CControlMap made;
        made.group = def.groups.empty() ? -1 : 0;
        page()->maps.push_back(std::move(made));
        what = {ofMap, what.a, what.b, last(page()->maps)};
    }
    }
    surface.changed = true;
    rebuild();
    choose(what);
}

void CConfigWin::deleteClicked(CObject*) {
    const Chosen what = chosen();
    SurfaceDef& def = surface.def;
    switch (what.kind) {
    case ofGroup:
        erase(def.groups, what.a);
        // Mappings tell their group by its place.
        for (CControlPages& s : def.sections)
            for (CControlSectionPage& p : s.pages)
                for (CControlMap& m : p.maps)
                    m.group = m.group == what.a ? -1 : m.group - (m.group > what.a);
        surface.editGroup = asMin(surface.editGroup, int(def.groups.size()) - 1);
        break;
    case ofCtrl:
        erase(group()->ctrls, what.b);
        break;
    case ofSection:
        erase(def.sections, what.a);
        break;
    case ofPage:
        erase(section()->pages, what.b);
        break;
    case ofMap:
        erase(page()->maps, what.c);
        break;
    default:
        return;
    }
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
    if (surface.bank > 0) text += "    Bank " + asStr(surface.bank + 1);
    heard->setText(text);
}

void CConfigWin::idle() {
    size_t ctrls = 0;
    for (const CHWCtrlGroup& g : surface.def.groups) ctrls += g.ctrls.size();
    if (ctrls != shownCtrls) rebuild();
    if (surface.lastEvent == shownEvent) return;
    shownEvent = surface.lastEvent;
    follow();
}

void CConfigWin::hide() {
    surface.editing = false;
    CWin::hide();
}
