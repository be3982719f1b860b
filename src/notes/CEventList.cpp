#include "notes/CEventList.h"

#include "base/Numbers.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/controls/CEdit.h"
#include "gui/controls/CScrollbar.h"
#include "notes/EventCells.h"
#include "notes/EventChange.h"
#include "notes/NoteState.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/play/Audition.h"
#include "sequencer/song/CSeq.h"
#include "ui/NameField.h"
#include "ui/ProgramItems.h"

#include <optional>

namespace {

constexpr int rowHeight = 18, fieldHeight = 20, headHeight = 18, barSize = 14, margin = 4;
constexpr int labelWidth = 66;
constexpr int listTop = fieldHeight + headHeight, wheelRows = 3;

} // namespace

CEventList::CEventList(CWin* owner, NoteState& shared)
    : CGroup(owner, "eventlist", 0, 0, int(listWidth), 1), state(shared),
      ruleField(new CEdit(owner, "rule", 0, 0, 1, fieldHeight)),
      bar(new CScrollbar(owner, "listscroll", 0, 0, barSize, 1)) {
    tabStop = true;
    hint = "A press selects, Return types over a cell, Ctrl with Up and Down steps it";
    ruleField->spokenName = "Show only";
    ruleField->hint = CStr("Show only: ") + EventRule::help;
    ruleField->commitOnEnter = true;
    ruleField->onChange = new _COnChange<CEventList>(this, &CEventList::ruleTyped);
    bar->onChange = new _COnChange<CEventList>(this, &CEventList::scrolled);
    bar->spokenName = "Scroll the list";
    addControl(ruleField);
    addControl(bar);
}

// The rows.

const std::vector<CEventList::Row>& CEventList::rows() const {
    if (!stale) return shown;
    stale = false;
    shown.clear();
    if (!state.part || !state.seq()) return shown;
    const NotePlace place = state.place();
    eachEvent(state.part->getEvents(), [&](CBaseEvent* e, int tick) {
        if (rule.holds(place, e, tick)) shown.push_back({e, tick});
    });
    return shown;
}

void CEventList::contentChanged() {
    stale = true;
    if (!visible) return;
    bar->setRange(asMax(1, int(rows().size())), rowsHigh());
    current = asMin(current, int(rows().size()) - 1);
    redraw();
}

void CEventList::ruleTyped(CObject*) {
    if (!state.part || !state.seq()) return;
    const std::optional<EventRule> read = EventRule::read(state.place(), ruleField->text);
    if (!read) return state.workspace.setStatus(CStr("Words that it knows: ") + EventRule::help);
    rule = *read;
    contentChanged();
    state.workspace.setStatus(asStr(int(rows().size())) + " events");
}

void CEventList::resized() {
    CGroup::resized();
    ruleField->setBounds(labelWidth, 1, asMax(1, width - labelWidth - 1), fieldHeight - 2);
    bar->setBounds(width - barSize, listTop, barSize, asMax(1, height - listTop));
    bar->setRange(asMax(1, int(shown.size())), rowsHigh()); // the rows stay as they are
}

int CEventList::rowsHigh() const {
    return asMax(1, (height - listTop) / rowHeight);
}

void CEventList::scrolled(CObject*) {
    dropField();
    redraw();
}

bool CEventList::listWheel(int dy) {
    if (dy == 0) return false;
    bar->setPos(bar->pos - (dy > 0 ? wheelRows : -wheelRows));
    scrolled(nullptr);
    return true;
}

void CEventList::bringIntoView(int row) {
    if (row < bar->pos) bar->setPos(row);
    if (row >= bar->pos + rowsHigh()) bar->setPos(row - rowsHigh() + 1);
    bar->redraw();
}

CRect CEventList::cellBox(int row, int number) const {
    const auto columns = eventColumns(state.part->type);
    int x = 0;
    for (int i = 0; i < number; i++) x += columnWidth(columns[size_t(i)]);
    const int y = listTop + (row - bar->pos) * rowHeight;
    return asRect(x, y, x + columnWidth(columns[size_t(number)]), y + rowHeight);
}

int CEventList::columnAt(int x) const {
    const int last = int(eventColumns(state.part->type).size()) - 1;
    for (int i = 0; i < last; i++)
        if (x < cellBox(0, i).right) return i;
    return last;
}

// Painting.

CStr CEventList::rowText(const Row& row) const {
    const NotePlace place = state.place();
    CStr text;
    for (const EventColumn c : eventColumns(state.part->type)) {
        const CStr cell = cellText(place, row.event, row.tick, c);
        if (cell.empty()) continue;
        text += (text.empty() ? CStr() : CStr(", ")) + columnTitle(c) + " " + cell;
    }
    return text;
}

void CEventList::paintRow(CGraphic* g, int row) const {
    const CPalette& palette = win->app->gui->palette;
    const Row& at = rows()[size_t(row)];
    const bool selected = isSelected(at.event);
    const CRect line = asRect(0, cellBox(row, 0).top, width - barSize, cellBox(row, 0).bottom);
    if (selected) g->fillRect(clListboxSelected.fillCol, line);
    const NotePlace place = state.place();
    const auto columns = eventColumns(state.part->type);
    for (size_t i = 0; i < columns.size(); i++) {
        CRect box = cellBox(row, int(i));
        if (row == current && int(i) == column && hasKeyFocus()) g->frameRect(palette.accent, box);
        box.left += margin;
        g->drawText(selected ? clListboxSelected.textCol : palette.text,
                    cellText(place, at.event, at.tick, columns[i]), box, textLeft);
    }
}

void CEventList::paint(CGraphic* g, CRect rect) {
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(palette.panel, clientRect());
    g->drawText(palette.dimText, "Show only", asRect(margin, 0, labelWidth, fieldHeight), textLeft);
    if (state.part && state.seq()) {
        const auto columns = eventColumns(state.part->type);
        for (size_t i = 0; i < columns.size(); i++) {
            const CRect cell = cellBox(0, int(i));
            g->drawText(palette.dimText, columnTitle(columns[i]),
                        asRect(cell.left + margin, fieldHeight, cell.right, listTop), textLeft);
        }
        const int last = asMin(int(rows().size()), bar->pos + rowsHigh() + 1);
        for (int i = bar->pos; i < last; i++) paintRow(g, i);
        if (rows().empty())
            g->drawText(palette.dimText, "No events", asRect(0, listTop, width - barSize, height),
                        0);
    }
    g->fillLine(palette.frame, asRect(0, listTop - 1, width, listTop));
    CGroup::paint(g, rect);
}

void CEventList::setFocus(bool on) {
    CGroup::setFocus(on);
    redraw();
}

// Selecting.

void CEventList::mouseDown(int x, int y, int btn) {
    CGroup::mouseDown(x, y, btn);
    win->setKeyCtrl(this);
    if (!state.part || !state.seq() || y < listTop) return;
    const int row = bar->pos + (y - listTop) / rowHeight;
    if (row >= int(rows().size())) return;
    column = columnAt(x);
    if ((btn & modDouble) && row == current) return openField();
    choose(row, btn);
    playEvent(state.track, state.part, rows()[size_t(row)].event, 0);
}

/// Alone, or with what is selected: Control turns it over, Shift takes all from the last one.
void CEventList::choose(int row, int mods) {
    const std::vector<Row>& all = rows();
    if (!(mods & (modControl | modShift))) NoteMouse::unselect(state.part);
    if (mods & modShift && anchor >= 0)
        for (int i = asMin(anchor, row); i <= asMax(anchor, row); i++)
            if (i < int(all.size())) select(all[size_t(i)].event, true);
    CBaseEvent* at = all[size_t(row)].event;
    select(at, !(mods & modControl) || !isSelected(at));
    current = row;
    if (!(mods & modShift)) anchor = row;
    bringIntoView(row);
    state.scrollInView(all[size_t(row)].tick, factsOf(state.part, at, 0).row);
    state.workspace.setStatus(rowText(all[size_t(row)]));
    state.shownChanged();
}

void CEventList::selectShown() {
    NoteMouse::unselect(state.part);
    for (const Row& row : rows()) select(row.event, true);
    state.shownChanged();
}

void CEventList::moveTo(int row, int mods) {
    if (rows().empty()) return;
    choose(asMinMax(row, 0, int(rows().size()) - 1), mods & modShift);
}

bool CEventList::listKeyDown(int key, int mods) {
    if (!state.part || !state.seq()) return false;
    if (mods == modControl && key == 'a') return selectShown(), true;
    const int page = asMax(1, rowsHigh() - 1);
    if (!(mods & ~modShift)) switch (key) {
        case ::keyUp:
            return moveTo(current - 1, mods), true;
        case ::keyDown:
            return moveTo(current + 1, mods), true;
        case keyPageUp:
            return moveTo(current - page, mods), true;
        case keyPageDown:
            return moveTo(current + page, mods), true;
        case keyHome:
            return moveTo(0, mods), true;
        case keyEnd:
            return moveTo(int(rows().size()) - 1, mods), true;
        default:
            break;
        }
    return columnKey(key, mods);
}

/// What is done to the cell.
bool CEventList::columnKey(int key, int mods) {
    const int last = int(eventColumns(state.part->type).size()) - 1;
    const int along = (key == keyRight) - (key == keyLeft);
    const int up = (key == ::keyUp) - (key == ::keyDown);
    if (along != 0 && mods == 0) {
        column = asMinMax(column + along, 0, last);
        redraw();
        return true;
    }
    if (current < 0 || current >= int(rows().size())) return false;
    if (key == keyReturn && mods == 0) return openField(), true;
    if (up == 0 || mods != modControl) return false;
    const Row& row = rows()[size_t(current)];
    changed(stepCells(state, {row.event, row.tick}, eventColumns(state.part->type)[size_t(column)],
                      up));
    return true;
}

// Changing.

void CEventList::dropField() {
    if (field && field->visible) win->setKeyCtrl(this);
    NameField::dropLeft(field);
}

void CEventList::callOff() {
    if (field) field->callOff();
}

void CEventList::openField() {
    const EventColumn at = eventColumns(state.part->type)[size_t(column)];
    const Row& row = rows()[size_t(current)];
    const CStr text = cellText(state.place(), row.event, row.tick, at);
    if (at == EventColumn::type || text.empty()) return;
    dropField();
    bringIntoView(current);
    field = new NameField(this, cellBox(current, column), text, columnTitle(at), this);
    field->onName = [this](const CStr& name) { typed(name); };
}

void CEventList::typed(const CStr& text) {
    if (current >= int(rows().size())) return;
    const Row& row = rows()[size_t(current)];
    changed(typeCells(state, {row.event, row.tick}, eventColumns(state.part->type)[size_t(column)],
                      text));
}

/// The row of that event is the current one from now on; null: nothing has changed.
void CEventList::changed(const CBaseEvent* event) {
    if (!event) return;
    contentChanged();
    for (size_t i = 0; i < rows().size(); i++)
        if (rows()[i].event == event) current = anchor = int(i);
    if (current >= 0) bringIntoView(current);
}

// What it tells.

int CEventList::accessParts() const {
    return asMinMax(int(rows().size()) - bar->pos, 0, rowsHigh());
}

int CEventList::focusedPart() const {
    const int part = current - bar->pos;
    return current >= 0 && part >= 0 && part < accessParts() ? part : wholeCtrl;
}

void CEventList::describe(Description& d, int part) const {
    d.role = part == wholeCtrl ? Role::list : Role::listRow;
    d.name = "Events";
    if (part == wholeCtrl) return;
    const int row = bar->pos + part;
    d.name = rowText(rows()[size_t(row)]).asChar();
    d.action = "select";
    d.bounds = asRect(0, cellBox(row, 0).top, width - barSize, cellBox(row, 0).bottom);
    d.set(stateSelectable, true);
    d.set(stateSelected, isSelected(rows()[size_t(row)].event));
}

bool CEventList::pressPart(int part) {
    if (part == wholeCtrl || part >= accessParts()) return false;
    win->setKeyCtrl(this);
    choose(bar->pos + part, 0);
    return true;
}
