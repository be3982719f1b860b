#include "panels/drums/CDrumWin.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "gui/controls/CListbox.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "panels/PanelBody.h"
#include "sequencer/song/CTrack.h"

namespace {

constexpr int gap = 8, listWidth = 200, rowHeight = 20;
const CRect usualPlace = asRect(120, 100, 120 + 900, 120 + 520);

} // namespace

CDrumWin::CDrumWin(Workspace& space, CTrack& of)
    : PanelWin(space, of, usualPlace, std::nullopt), track(of),
      content(this, space), list(new CListbox(this, "drums", gap, gap, 1, 1)) {
    list->itemHeight = rowHeight;
    list->tabStop = true;
    list->spokenName = "Drums";
    list->onChange = new _COnChange<CDrumWin>(this, &CDrumWin::rowChosen);
    list->setBounds(gap, gap, listWidth - 2 * gap, height - 2 * gap);
    list->setAlign(alignHeight, 0, gap);
    addControl(list);
    body->setBounds(listWidth, 0, width - listWidth, height);
    listSounds();
    follow();
}

CDrumSound* CDrumWin::sound() const {
    return track.drumSound(list->index);
}

void CDrumWin::listSounds() {
    std::vector<CStr> now;
    for (const auto* s : each<CDrumSound>(track.drumLayer()->sounds)) now.push_back(s->getId());
    if (now == names) return;
    names = std::move(now);
    const int current = list->index;
    list->clearRows();
    for (size_t i = 0; i < names.size(); i++) list->add(asStr(int(i) + 1) + "  " + names[i]);
    list->setIndex(asMinMax(current, names.empty() ? -1 : 0, int(names.size()) - 1));
    list->redraw();
}

void CDrumWin::rowChosen(CObject*) {
    follow();
    constexpr int velocity = 100;
    track.preview.mute();
    if (sound()) track.preview.addNote(firstDrumKey + list->index, velocity);
}

PanelWin::Shape CDrumWin::shape() const {
    const CDrumSound* current = sound();
    return {{current, current ? current->clips[0].load() : nullptr}, {}};
}

void CDrumWin::build() {
    content.clear();
    CDrumSound* current = sound();
    if (!current) return;
    const SoundContent::Subject subject{
        current, [this, current] { return track.drumLayer()->sounds.contains(current); }, {}, {}};
    content.buildSound(body->inner, subject);
}

void CDrumWin::arrange(int wide) {
    content.arrange(wide);
}

void CDrumWin::refresh() {
    listSounds();
    content.refresh();
}
