#include "surfaces/CMIDIMapWin.h"

#include "base/Numbers.h"
#include "engine/CMap.h"
#include "engine/CQV.h"
#include "engine/MapEdits.h"
#include "engine/MidiBytes.h"
#include "engine/MidiRouting.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CListbox.h"
#include "gui/controls/CPopup.h"
#include "gui/controls/CTabs.h"
#include "gui/dialogs/CTextWin.h"
#include "surfaces/CMapPanel.h"
#include "surfaces/TransportPanel.h"
#include "ui/MenuDeed.h"
#include "ui/Workspace.h"

namespace {

constexpr int winWide = 720, winHigh = 360;
constexpr int margin = 8, gap = 4, fieldHeight = 20, barHeight = 36, headHeight = 20;
constexpr int programsWide = 160, learnWide = 88, addWide = 48, scrollWide = 16, leastRow = 480;

} // namespace

CMIDIMapWin::CMIDIMapWin(Workspace& space, CQV& host)
    : CCompEditor(space.mainWindow()->app, space.mainWindow(), "MIDI controllers", 0, 0, winWide,
                  winHigh, winCaption | winSizable | winMaxButton | winDockable, &host,
                  &space.commands()),
      workspace(space), qv(&host) {
    dock = &host.mapStruct;
    addBar();
    addHead();
    transport = new TransportPanel(this, qv);
    addControl(transport);
    list = new CScrollPanel(this, "maps", 0, 0, 1, 1);
    addControl(list);
    rebuild();
    CMIDIMapWin::resized();
}

CMIDIMapWin::~CMIDIMapWin() = default;

void CMIDIMapWin::addBar() {
    programs = new CDropdown(this, "programs", margin, margin, programsWide, fieldHeight);
    programs->dropMode = CDropdown::dropLeft;
    programs->spokenName = "Program";
    programs->hint = "The list of controllers in force; the sign at its right offers more";
    programs->tabStop = true;
    wire(programs->onChange, new _COnChange<CMIDIMapWin>(this, &CMIDIMapWin::programChanged));
    wire(programs->onIconClick,
         new _COnChange<CMIDIMapWin>(this, &CMIDIMapWin::programMenuClicked));
    addControl(programs);
    int x = margin + programsWide + gap;
    const auto button = [&](const char* key, const char* text, const char* told, int wide,
                            void (CMIDIMapWin::*clicked)(CObject*)) {
        auto* made = new CButton(this, key, text, x, margin, wide, fieldHeight);
        x += wide + gap;
        made->hint = told;
        made->tabStop = made->hooverable = true;
        wire(made->onChange, new _COnChange<CMIDIMapWin>(this, clicked));
        addControl(made);
        return made;
    };
    learn = button("learn", "MIDI learn",
                   "MIDI learn on/off: move a control here, then a "
                   "controller of a MIDI device",
                   learnWide, &CMIDIMapWin::learnClicked);
    add = button("add", "Add", "Adds an empty row", addWide, &CMIDIMapWin::addMapClicked);
    display = new CLabel(this, "", x + gap, margin, 1, fieldHeight);
    addControl(display);
}

void CMIDIMapWin::addHead() {
    head = new CCtrl(this, "head", 0, 0, 1, headHeight);
    wire(head->onPaint, new _COnPaint<CMIDIMapWin>(this, &CMIDIMapWin::paintHead));
    addControl(head);
}

int CMIDIMapWin::rowsWidth() const {
    return asMax(clientGroup->width - scrollWide, leastRow);
}

void CMIDIMapWin::resized() {
    CCompEditor::resized();
    if (!list) return;
    const int w = clientGroup->width, h = clientGroup->height;
    display->setBounds(display->left, margin, asMax(w - display->left - margin, 1), fieldHeight);
    transport->setBounds(0, barHeight, w, TransportPanel::panelHeight);
    const int headTop = barHeight + TransportPanel::panelHeight;
    head->setBounds(0, headTop, w, headHeight);
    list->setBounds(0, headTop + headHeight, w, asMax(h - headTop - headHeight, 1));
    const int wide = rowsWidth();
    for (CMapPanel* row : rows) {
        row->setBounds(0, row->top, wide, CMapPanel::rowHeight);
        row->resized();
    }
    list->inner->setBounds(0, 0, wide, int(rows.size()) * CMapPanel::rowHeight);
    list->resized();
    redraw();
}

void CMIDIMapWin::paintHead(CObject*, CGraphic* g, CRect rect) {
    const CPalette& colours = app->gui->palette;
    g->fillRect(colours.window, rect);
    const int right = rowsWidth();
    using C = CMapPanel::Columns;
    for (const auto& [text, from] : {std::pair{"Controller", C::controller},
                                     {"Min", C::low},
                                     {"Max", C::high},
                                     {"Mode", C::mode}})
        g->drawText(colours.dimText, text, asRect(right - from, 0, right, headHeight), textLeft);
    g->drawText(colours.dimText,
                rows.empty() ? "No controllers yet: switch MIDI learn on" : "Leads to",
                asRect(margin, 0, right - C::controller, headHeight), textLeft);
}

void CMIDIMapWin::rebuild() {
    rows.clear();
    list->inner->clear();
    if (const CMapProg* program = currentMaps(qv))
        for (auto* map : program->items) {
            const auto tell = [this](const CStr& text) { workspace.setStatus(text); };
            rows.push_back(new CMapPanel(this, qv, map, int(rows.size()) * CMapPanel::rowHeight,
                                         winWide, tell));
            list->inner->addControl(rows.back());
        }
    resized();
}

// Interface tick.

/// The lists, and which of them is in force.
void CMIDIMapWin::followList() {
    if (!qv->maps.empty()) chooseMapProg(qv, qv->curMap);
    CStr names;
    for (const auto* program : qv->maps) names += program->name + "\n";
    if (!(names == shownNames)) {
        shownNames = names;
        programs->items.clear();
        for (const auto* program : qv->maps) programs->add(program->name);
        programs->index = -1;
    }
    if (programs->index != qv->curMap) programs->setIndex(qv->curMap);
}

void CMIDIMapWin::updateLeds() {
    for (CMapPanel* row : rows) row->updateLed();
}

void CMIDIMapWin::idle() {
    followList();
    const int last = qv->lastCC;
    if (last != shownCC && statusByte(last) == midiController) {
        shownCC = last;
        display->setText("Controller " + asStr(asByte1(last)) + " on channel " +
                         asStr(chByte(last) + 1) + ": " + asStr(asByte2(last)));
    }
    if (qv->learned.exchange(0)) redraw();
    transport->refresh();
    learn->setLit(qv->mapLearn != 0);
    updateLeds();
}

void CMIDIMapWin::hide() {
    qv->mapLearn = 0;
    CCompEditor::hide();
}

// What the user does.

void CMIDIMapWin::programChanged(CObject*) {
    chooseMapProg(qv, programs->index);
}

void CMIDIMapWin::programMenuClicked(CObject*) {
    auto* popup = new CPopup(app, this);
    popup->autoDelete = true;
    addDeed(popup, "Add program", [this] { addMapProg(qv); });
    addDeed(popup, "Delete program", [this] { deleteMapProg(qv); });
    addDeed(popup, "Rename...", [this] { rename(); });
    popup->popupBelow(programs);
}

void CMIDIMapWin::rename() {
    CMapProg* program = currentMaps(qv);
    if (!program) return;
    CTextWin dialog(workspace.mainWindow(), "Rename", program->name);
    dialog.showModal();
    if (dialog.result && program == currentMaps(qv)) renameMapProg(qv, program, dialog.text);
}

void CMIDIMapWin::learnClicked(CObject*) {
    qv->mapLearn = !qv->mapLearn;
    workspace.setStatus(qv->mapLearn ? "Move a control of the program, then a controller of a MIDI "
                                       "device"
                                     : "");
    learn->setLit(qv->mapLearn != 0);
}

void CMIDIMapWin::addMapClicked(CObject*) {
    addEmptyMap(qv);
}
