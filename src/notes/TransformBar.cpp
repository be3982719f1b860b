#include "notes/TransformBar.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/Colours.h"
#include "gui/Keys.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CDropdown.h"
#include "gui/controls/CValue.h"
#include "notes/NoteState.h"
#include "sequencer/edit/EventActions.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/play/Audition.h"
#include "sequencer/song/CSeq.h"
#include "ui/NameField.h"
#include "ui/ProgramItems.h"
#include "ui/ScaleItems.h"

namespace {

constexpr int gap = 4, ctrlTop = 3, ctrlHeight = 19, kindsWidth = 168, nameWidth = 66,
              fieldWidth = 44;

} // namespace

TransformBar::TransformBar(CWin* owner, NoteState& shared)
    : CGroup(owner, "transformbar", 0, 0, 1, int(barHeight)), state(shared),
      kinds(new CDropdown(owner, "transform", gap, ctrlTop, kindsWidth, ctrlHeight)) {
    nextX = gap + kindsWidth + gap;
    kinds->spokenName = "Transform";
    kinds->hint = "What is done to the selected events, or to all";
    kinds->onChange = new _COnChange<TransformBar>(this, &TransformBar::kindChosen);
    addControl(kinds);
    for (CValue*& field : fields) {
        nextX += nameWidth;
        field = new CValue(owner, "value", nextX, ctrlTop, fieldWidth, ctrlHeight);
        field->onChange = new _COnChange<TransformBar>(this, &TransformBar::valueTurned);
        addControl(field);
        nextX += fieldWidth + gap;
    }
    kept = addButton("Keep", "What was done stays", 44, &TransformBar::keepClicked);
    cancelled = addButton("Cancel", "Nothing was done", 52, &TransformBar::cancelClicked);
    saved = addButton("Save", "Stores the numbers under a name", 42, &TransformBar::saveClicked);
    removed = addButton("Delete", "Deletes what is stored under the name", 50,
                        &TransformBar::removeClicked);
    fillKinds();
    showValues();
}

TransformBar::~TransformBar() {
    delete onClosed;
}

CButton* TransformBar::addButton(const char* name, const char* tip, int wide,
                                 void (TransformBar::*pressed)(CObject*)) {
    auto* made = new CButton(win, name, name, nextX, ctrlTop, wide, ctrlHeight);
    made->hint = tip;
    made->skin = &clTrackControls;
    made->litSkin = &clTrackControlsPushed;
    made->onChange = new _COnChange<TransformBar>(this, pressed);
    addControl(made);
    nextX += wide + 2;
    return made;
}

CCtrl* TransformBar::firstCtrl() {
    return kinds;
}

// What it shows.

void TransformBar::fillKinds() {
    kinds->items.clear();
    for (const TransformShape& shape : transformShapes()) kinds->add(shape.title);
    for (const TransformPresets::Preset& p : presets.all()) kinds->add(p.name);
    kinds->setIndex(kind);
}

void TransformBar::showValues() {
    const TransformShape& shape = transformShapes()[size_t(kind)];
    for (size_t i = 0; i < fields.size(); i++) {
        const TransformValue& v = shape.values[i];
        fields[i]->visible = v.name != nullptr;
        if (!v.name) continue;
        fields[i]->min = v.least;
        fields[i]->max = v.most;
        fields[i]->resetValue = v.usual;
        fields[i]->spokenName = v.name;
        fields[i]->showValue(v.usual);
    }
    removed->enabled = kinds->index >= int(transformShapes().size());
    redraw();
}

TransformValues TransformBar::values() const {
    TransformValues told{};
    for (size_t i = 0; i < told.size(); i++)
        if (fields[i]->visible) told[i] = fields[i]->value;
    return told;
}

void TransformBar::paint(CGraphic* g, CRect rect) {
    const CPalette& palette = win->app->gui->palette;
    g->fillRect(palette.panel, clientRect());
    g->fillLine(palette.frame, asRect(0, height - 1, width, height));
    const TransformShape& shape = transformShapes()[size_t(kind)];
    for (size_t i = 0; i < fields.size(); i++)
        if (shape.values[i].name)
            g->drawText(palette.dimText, shape.values[i].name,
                        asRect(fields[i]->left - nameWidth, 0, fields[i]->left - gap, height - 1),
                        textRight);
    CGroup::paint(g, rect);
}

void TransformBar::describe(Description& d, int) const {
    d.role = Role::toolBar;
    d.name = "Transform";
}

// What it does.

void TransformBar::open() {
    done = nullptr;
    apply();
}

void TransformBar::keep() {
    done = nullptr;
}

/// Unless the history has gone on since.
void TransformBar::takeBack() {
    CQV* host = state.qv;
    host->settle();
    const bool last =
        done && host->undoList.last() == done && host->undoIndex == host->undoList.getCount() - 1;
    done = nullptr;
    if (!last) return;
    host->undoClicked();
    host->settle();
}

void TransformBar::apply() {
    takeBack();
    CSeq* seq = state.seq();
    if (!state.part || !seq || seq->isLocked(state.part)) return;
    const int most = asMax(1, state.rows().count()) - 1, grid = state.place().grid.step;
    const PartList parts = state.parts();
    const bool all = !anySelected(parts);
    const void* before = state.qv->undoList.last();
    const auto scaleAt = [seq](const CPart* part) {
        return [seq, origin = double(part->pos) + part->offset](int tick) {
            return seq->scales.at(origin + tick);
        };
    };
    changeParts(seq, parts, transformShapes()[size_t(kind)].title, [&](CPart* part, CPart* draft) {
        if (all || hasSelectedEvents(draft))
            transformEvents(draft, kind, values(), {grid, -part->offset, most, scaleAt(part)});
    });
    auto* after = state.qv->undoList.last();
    if (after != before) done = after;
    state.qv->settle();
    state.track->preview.mute();
    if (!seq->playing) playEvent(state.track, state.part, nullptr, 0);
    state.shownChanged();
}

void TransformBar::kindChosen(CObject*) {
    const int count = int(transformShapes().size()), index = kinds->index;
    if (index < 0) return;
    const auto preset = size_t(index - count);
    const bool stored = index >= count && preset < presets.all().size();
    kind = stored ? presets.all()[preset].kind : asMin(index, count - 1);
    showValues();
    if (stored)
        for (size_t i = 0; i < fields.size(); i++)
            fields[i]->showValue(presets.all()[preset].values[i]);
    apply();
}

void TransformBar::valueTurned(CObject*) {
    apply();
}

void TransformBar::keepClicked(CObject*) {
    keep();
    if (onClosed) (*onClosed)(this);
}

void TransformBar::cancelClicked(CObject*) {
    takeBack();
    if (onClosed) (*onClosed)(this);
}

bool TransformBar::keyInside(int key, int mods) {
    if (CGroup::keyInside(key, mods)) return true;
    if (mods || key != keyEscape) return false;
    cancelClicked(nullptr);
    return true;
}

// Presets.

void TransformBar::dropField() {
    NameField::dropLeft(naming);
}

void TransformBar::saveClicked(CObject*) {
    dropField();
    naming = new NameField(this, ctrlBounds(kinds), kinds->defaultText(), "Name", kinds);
    naming->onName = [this](const CStr& name) {
        for (const TransformShape& shape : transformShapes())
            if (name == shape.title)
                return state.workspace.setStatus("That is the name of a transform itself");
        if (!presets.store({name, kind, values()}))
            state.workspace.setStatus("The preset could not be written");
        fillKinds();
        kinds->setIndex(kinds->count() - 1);
        removed->enabled = true;
        redraw();
    };
}

void TransformBar::removeClicked(CObject*) {
    const int preset = kinds->index - int(transformShapes().size());
    if (preset < 0 || preset >= int(presets.all().size())) return;
    if (!presets.remove(presets.all()[size_t(preset)].name))
        state.workspace.setStatus("The preset could not be written");
    fillKinds();
    removed->enabled = false;
    redraw();
}
