#include "notes/NoteObjects.h"

#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/controls/CButton.h"
#include "notes/EventChange.h"
#include "notes/NoteEdits.h"
#include "notes/NoteState.h"
#include "sequencer/song/CSeq.h"
#include "ui/NameField.h"
#include "ui/ProgramItems.h"

namespace {

constexpr int cellTop = 2, cellHeight = 18, titleWidth = 50, gap = 4;

} // namespace

NoteObjects::NoteObjects(CWin* owner, NoteState& shared)
    : CGroup(owner, "noteobjects", 0, 0, 1, int(barHeight)), state(shared) {
    arrowsWalk = true;
}

void NoteObjects::rebuild() {
    partType = state.part->type;
    NameField::dropLeft(field);
    clear();
    field = nullptr; // it was one of them
    cells.clear();
    int x = gap;
    for (const EventColumn column : noteColumns(partType)) {
        if (column == EventColumn::type) continue;
        x += titleWidth;
        auto* cell =
            new CButton(win, columnTitle(column), "", x, cellTop, columnWidth(column), cellHeight);
        cell->tag = int(column);
        cell->spokenName = columnTitle(column);
        cell->hint = "Types over it for all that is selected; the wheel steps it";
        cell->skin = &clTrackControls;
        cell->litSkin = &clTrackControlsPushed;
        cell->onChange = new _COnChange(this, &NoteObjects::clicked);
        addControl(cell);
        cells.push_back(cell);
        x += columnWidth(column) + gap;
    }
    endX = x + gap;
    redraw();
}

void NoteObjects::refresh() {
    if (!visible || !state.part || !state.seq()) return;
    if (partType != state.part->type) rebuild();
    const NotePlace place = state.place();
    const NoteEvent first = selectedEvent(place, false);
    for (CButton* cell : cells) {
        const CStr text =
            first.event ? cellText(place, first.event, first.facts.tick, EventColumn(cell->tag))
                        : CStr();
        cell->enabled = !text.empty();
        cell->setText(text);
    }
    const CStr now = state.edit.mode == editIdle ? selectedChord(state.parts()) : chord;
    if (now == chord) return;
    chord = now;
    redraw();
}

void NoteObjects::dropField() {
    NameField::dropLeft(field);
}

void NoteObjects::callOff() {
    if (field) field->callOff();
}

void NoteObjects::clicked(CButton* cell) {
    if (cell->text.empty()) return;
    NameField::dropLeft(field);
    const auto column = EventColumn(cell->tag);
    field = new NameField(this, ctrlBounds(cell), cell->text, columnTitle(column), cell);
    field->onName = [this, column](const CStr& name) { typed(column, name); };
}

void NoteObjects::typed(EventColumn column, const CStr& text) {
    const NoteEvent first = selectedEvent(state.place(), false);
    if (first.event) typeCells(state, {first.event, first.facts.tick}, column, text);
}

bool NoteObjects::mouseWheel(int x, int, int, int dy, int) {
    const NoteEvent first =
        state.part && state.seq() ? selectedEvent(state.place(), false) : NoteEvent{};
    for (CButton* cell : cells)
        if (first.event && dy != 0 && x >= cell->left && x < cell->left + cell->width)
            stepCells(state, {first.event, first.facts.tick}, EventColumn(cell->tag),
                      dy > 0 ? -1 : 1);
    return true;
}

void NoteObjects::paint(CGraphic* g, CRect rect) {
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(palette.panel, clientRect());
    g->fillLine(palette.frame, asRect(0, height - 1, width, height));
    for (const CButton* cell : cells)
        g->drawText(palette.dimText, columnTitle(EventColumn(cell->tag)),
                    asRect(cell->left - titleWidth, 0, cell->left - gap, height - 1), textRight);
    if (!chord.empty())
        g->drawText(palette.text, CStr("Chord ") + chord, asRect(endX, 0, width, height - 1),
                    textLeft);
    CGroup::paint(g, rect);
}

void NoteObjects::describe(Description& d, int) const {
    d.role = Role::toolBar;
    d.name = "Object bar of the editor";
    if (!chord.empty()) d.text = (CStr("Chord ") + chord).asChar();
}
