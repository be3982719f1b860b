#include "arrange/TakeMenu.h"

#include "arrange/SongRange.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "gui/Senders.h"
#include "gui/controls/CPopup.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/SongValues.h"
#include "sequencer/take/Takes.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

namespace {

/// The selected part, if it is the only one.
CPart* onlyPart(CSeq* seq) {
    ListOf<CPart> parts;
    seq->getProg()->getSelectedParts(&parts);
    return parts.getCount() == 1 ? parts.getFirst() : nullptr;
}

} // namespace

TakeMenu::TakeMenu(Workspace& space, const SongRange& songRange)
    : range(songRange), qv(space.host()) {
}

CSeq* TakeMenu::seq() const {
    return playableSongOf(qv);
}

void TakeMenu::fill(CPopup* popup) {
    if (!seq() || qv->recording || qv->recUndo) return;
    CPart* part = onlyPart(seq());
    const Takes* takes = part ? takesOf(part) : nullptr;
    if (!takes) return;
    popup->addSeparator();
    CPopup* list = popup->addSub("Play take");
    for (int i = 0; i < int(takes->takes.size()); i++)
        list->add(asStr(i + 1), new _COnChange<TakeMenu>(this, &TakeMenu::takeClicked))->tag = i;
}

void TakeMenu::takeClicked(CObject* sender) {
    CPart* part = onlyPart(seq());
    if (!part) return;
    int from = part->pos, to = limitTicks(int64_t(from) + seq()->getTicks(part));
    if (const TimeRange* chosen = range.get()) {
        from = chosen->from;
        to = chosen->to;
    }
    compTake(seq(), part, tagOf(sender), from, to);
}

void TakeMenu::fillPreRoll(CPopup* popup) {
    if (!seq()) return;
    const int present = asInt(preRollOf(seq()).get()[0]);
    for (const int bars : {0, 1, 2, 4, 8}) {
        const CStr text = bars == 0 ? CStr("None") : asStr(bars);
        CMenuItem* item =
            popup->add(text, new _COnChange<TakeMenu>(this, &TakeMenu::preRollClicked));
        item->tag = bars;
        item->checked = bars == present;
    }
}

void TakeMenu::preRollClicked(CObject* sender) {
    qv->values->set(preRollOf(seq()), double(tagOf(sender)));
}
