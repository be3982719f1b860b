#include "panels/sampler/SoundList.h"

#include "audiofiles/AudioImport.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/KeyNames.h"
#include "gui/CApp.h"
#include "gui/CGraphic.h"
#include "gui/CWin.h"
#include "gui/controls/CButton.h"
#include "gui/controls/CListbox.h"
#include "gui/controls/CPopup.h"
#include "gui/dialogs/CFileWin.h"
#include "instruments/CSampler.h"
#include "instruments/SamplerEdits.h"
#include "ui/ProgramItems.h"
#include "ui/Workspace.h"

#include <algorithm>

namespace {

constexpr int gap = 8, rowButton = 24, rowHeight = 20;

} // namespace

SoundList::SoundList(CWin* owner, Workspace& space, CSampler& of)
    : CGroup(owner, "sounds", 0, 0, 1, 1), workspace(space), sampler(of),
      list(new CListbox(owner, "layers", gap, gap, 1, 1)),
      add(addButton("Add", "Add a sound or a layer", &SoundList::addClicked)),
      remove(addButton("Delete", "Delete the sound, or the layer with its sounds",
                       &SoundList::removeClicked)) {
    list->itemHeight = rowHeight;
    list->tabStop = true;
    list->spokenName = "Layers and sounds";
    list->onChange = new _COnChange<SoundList>(this, &SoundList::rowChosen);
    addControl(list);
    refresh();
}

CButton* SoundList::addButton(const char* text, const char* use,
                              void (SoundList::*clicked)(CObject*)) {
    auto* made = new CButton(win, text, text, 0, 0, 1, rowButton);
    made->hint = use;
    made->skin = &clTrackControls;
    made->tabStop = true;
    made->onChange = new _COnChange<SoundList>(this, clicked);
    addControl(made);
    return made;
}

void SoundList::resized() {
    const int bottom = height - gap - rowButton;
    list->setBounds(gap, gap, width - 2 * gap, bottom - 2 * gap);
    list->resized();
    const int half = (width - 3 * gap) / 2;
    add->setBounds(gap, bottom, half, rowButton);
    remove->setBounds(2 * gap + half, bottom, half, rowButton);
}

void SoundList::paint(CGraphic* g, CRect rect) {
    const CPalette& colours = win->app->gui->palette;
    g->fillRect(colours.panel, clientRect());
    g->fillLine(colours.frame, asRect(width - 1, 0, width, height));
    CGroup::paint(g, rect);
}

CLayer* SoundList::layer() const {
    CSynthProg* prog = sampler.getProg();
    if (!prog) return nullptr;
    CLayer* current = prog->layer;
    return prog->layers.contains(current) ? current : prog->layers.getFirst();
}

CSound* SoundList::sound() const {
    CLayer* of = layer();
    if (!of) return nullptr;
    CSound* current = of->sound;
    return of->sounds.contains(current) ? current : of->sounds.getFirst();
}

void SoundList::choose(CSound* wanted) {
    CSynthProg* prog = sampler.getProg();
    for (CLayer* l : prog->layers) {
        if (!l->sounds.contains(wanted)) continue;
        prog->layer = l;
        l->sound = wanted;
    }
    refresh();
    if (onChosen) onChosen();
}

std::vector<SoundList::Row> SoundList::present() const {
    std::vector<Row> all;
    CSynthProg* prog = sampler.getProg();
    if (!prog) return all;
    int number = 0;
    for (CLayer* l : prog->layers) {
        all.push_back({l, nullptr, CStr("Layer ") + asStr(++number)});
        int place = 0;
        for (CSound* s : l->sounds) {
            const bool whole = s->lowKey <= 0 && s->hiKey >= 127;
            const CStr zone =
                whole ? CStr() : "   " + noteToStr(s->lowKey) + " to " + noteToStr(s->hiKey);
            all.push_back(
                {l, s,
                 "    " + asStr(++place) + "  " + s->id + (s->mute ? " (muted)" : "") + zone});
        }
    }
    return all;
}

void SoundList::refresh() {
    std::vector<Row> now = present();
    if (now != rows) {
        rows = std::move(now);
        list->clearRows();
        for (const Row& row : rows) list->add(row.text);
        list->redraw();
    }
    const CLayer* in = layer();
    const CSound* shown = sound();
    const auto at = std::ranges::find_if(
        rows, [&](const Row& row) { return row.layer == in && row.sound == shown; });
    const int index = at == rows.end() ? -1 : int(at - rows.begin());
    if (index != list->index) list->setIndex(index);
    const bool last = rows.size() < 2;
    remove->setEnabled(shown || (in && !last && sampler.getProg()->layers.getCount() > 1));
    add->setEnabled(in != nullptr);
}

void SoundList::rowChosen(CObject*) {
    if (list->index < 0 || list->index >= int(rows.size())) return;
    const Row row = rows[size_t(list->index)];
    CSynthProg* prog = sampler.getProg();
    if (!prog || !prog->layers.contains(row.layer)) return;
    prog->layer = row.layer;
    if (row.sound && row.layer->sounds.contains(row.sound)) row.layer->sound = row.sound;
    refresh();
    if (onChosen) onChosen();
}

void SoundList::addClicked(CObject*) {
    auto* popup = new CPopup(win->app, win);
    popup->autoDelete = true;
    popup->add("Synthesizer sound", new _COnChange<SoundList>(this, &SoundList::synthChosen));
    popup->add("Sample...", new _COnChange<SoundList>(this, &SoundList::sampleChosen));
    popup->add("Layer", new _COnChange<SoundList>(this, &SoundList::layerChosen));
    const CSound* shown = sound();
    if (shown && shown->type == typeWavSound) {
        popup->addSeparator();
        popup->add("Replace sample...", new _COnChange<SoundList>(this, &SoundList::replaceChosen));
    }
    popup->popupBelow(add);
}

void SoundList::synthChosen(CObject*) {
    if (CLayer* to = layer()) choose(addSynthSound(&sampler, to));
}

CStr SoundList::askSample(const char* title) const {
    CFileWin dialog(workspace.mainWindow(), title, audioFileExt, workspace.dialogFolder(), "",
                    false);
    dialog.showModal();
    if (!dialog.result) return "";
    workspace.projectFolder = dialog.folder;
    return dialog.path;
}

void SoundList::sampleChosen(CObject*) {
    const CStr path = askSample("Add sample");
    CLayer* to = layer();
    if (path.empty() || !to) return;
    CSound* made = addSampleSound(&sampler, to, path);
    if (made)
        choose(made);
    else
        showMsg(win, "Add sample", CStr("Error reading file: ") + path);
}

void SoundList::replaceChosen(CObject*) {
    CSound* shown = sound();
    const CStr path = askSample("Replace sample");
    if (path.empty() || !shown || shown != sound()) return;
    if (!replaceSample(&sampler, shown, path))
        showMsg(win, "Replace sample", CStr("Error reading file: ") + path);
    refresh();
}

void SoundList::layerChosen(CObject*) {
    addLayer(&sampler);
    refresh();
    if (onChosen) onChosen();
}

void SoundList::removeClicked(CObject*) {
    CLayer* in = layer();
    if (CSound* shown = sound())
        removeSound(&sampler, in, shown);
    else if (in)
        removeLayer(&sampler, in);
    refresh();
    if (onChosen) onChosen();
}
