#include "panels/drums/CDrumWin.h"

#include "base/Numbers.h"
#include "engine/CQV.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "panels/PageRow.h"
#include "panels/PanelBody.h"
#include "panels/drums/DrumPads.h"
#include "sequencer/edit/KitEdits.h"
#include "sequencer/song/CTrack.h"

namespace {

constexpr int gap = 8, padsWidth = 400, pageWidth = 64, pageHeight = PageRow::usualHeight;
const CRect usualPlace = asRect(120, 100, 120 + 1040, 120 + 520);

/// What a drum has in its row of the note editor as well.
Settings rowSettings() {
    static const Setting table[] = {
        {"Level", *muteOf(nullptr).kind, 0.0, 1.0, 0.0, &onOffUnit, Setting::onOff},
        {"Level", *soloOf(nullptr).kind, 0.0, 1.0, 0.0, &onOffUnit, Setting::onOff}};
    return table;
}

} // namespace

CDrumWin::CDrumWin(Workspace& space, CTrack& of)
    : PanelWin(space, of, usualPlace, std::nullopt), track(of), content(this, space),
      pads(new DrumPads(this, of)) {
    pads->onChosen = [this] {
        if (pages) pages->turn(pads->shownPage());
        follow();
    };
    pads->onPlayed = [this](int velocity) {
        track.preview.mute();
        if (sound()) track.preview.addNote(firstDrumKey + pads->index(), velocity);
    };
    pads->setBounds(gap, gap, padsWidth - 2 * gap, height - 2 * gap);
    pads->setAlign(alignHeight, 0, gap);
    addControl(pads);
    body->setBounds(padsWidth, 0, width - padsWidth, height);
    followKit();
    follow();
}

CDrumSound* CDrumWin::sound() const {
    return track.drumSound(pads->index());
}

void CDrumWin::followKit() {
    pads->refresh();
    if (pads->pages() == pageCount) return;
    pageCount = pads->pages();
    if (pages) pages->visible = false; // it goes with the window
    pages = nullptr;
    const int below = pageCount > 1 ? pageHeight : 0;
    if (pageCount > 1) {
        std::vector<CStr> titles;
        for (int i = 0; i < pageCount; i++)
            titles.push_back(asStr(i * DrumPads::padsOnPage + 1) + " to " +
                             asStr((i + 1) * DrumPads::padsOnPage));
        pages = new PageRow(this, "pages", titles, pageWidth);
        pages->setBounds(0, 0, padsWidth, pageHeight);
        pages->onTurned = [this] { pads->turn(pages->page()); };
        addControl(pages);
    }
    pads->setBounds(gap, gap + below, padsWidth - 2 * gap, clientGroup->height - 2 * gap - below);
    redraw();
}

PanelWin::Shape CDrumWin::shape() const {
    const CDrumSound* current = sound();
    return {{current, current ? current->clips[0].load() : nullptr}, {}};
}

void CDrumWin::build() {
    content.clear();
    CDrumSound* current = sound();
    if (!current) return;
    SoundContent::Subject subject{
        current, [this, current] { return track.drumLayer()->sounds.contains(current); }, {}, {}};
    subject.more = rowSettings();
    content.buildSound(body->inner, subject);
}

void CDrumWin::arrange(int wide) {
    content.arrange(wide);
}

void CDrumWin::refresh() {
    followKit();
    content.refresh();
}
