#include "arrange/ArrangeView.h"
#include "arrange/LanePoints.h"
#include "arrange/SongRange.h"
#include "base/Numbers.h"
#include "engine/CQV.h"
#include "engine/ValueDoor.h"
#include "sequencer/edit/EventEdits.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/ParamLanes.h"
#include "ui/Workspace.h"

/// The range that is chosen, else points of automation, if any are selected, else parts.
void ArrangeView::deleteSelected() {
    if (range.get()) return tell(deleteRange(seq(), *range.get(), ripple));
    const std::vector<PartSlot> points = selectedPoints(*this);
    if (points.empty())
        tell(deleteParts(seq(), ripple));
    else
        deletePoints(seq(), points);
}

bool ArrangeView::canDelete() const {
    if (!seq() || qv->recording || qv->recUndo) return false;
    return range.get() || seq()->getProg()->getFirstSelectedPart() ||
           !selectedPoints(*this).empty();
}

bool ArrangeView::canShowTouched() const {
    CObject* object = qv->values->touched().object;
    return seq() && object && !qv->recording && !qv->recUndo && trackOfParam(seq(), object);
}

/// The lane of the control that was moved last.
void ArrangeView::showTouched() {
    const ParamRef touched = qv->values->touched();
    const CSubTrack* lane = showParamLane(seq(), touched.object, touched.param);
    rowsChanged();
    for (const ArrangeRow& row : rows.all()) {
        if (!lane || row.lane != lane) continue;
        scrollTo(edit.axis.scroll(), asMinMax(edit.scrollY, row.bottom() - gridHeight(), row.top));
        seq()->unselectTracks();
        seq()->selectTrack(row.songTrack, true);
        workspace.setStatus(lane->id + ", lane of " + row.songTrack->track->id);
    }
}

void ArrangeView::bindCommands() {
    bindZoom();
    const auto withSong = [this] { return seq() != nullptr; };
    const auto bindRipple = [&](const char* name, Ripple kind) {
        actions.bind(
            name, [this, kind] { ripple = ripple == kind ? Ripple::off : kind; }, withSong,
            [this, kind] { return ripple == kind; });
    };
    bindRipple("rippletrack", Ripple::track);
    bindRipple("rippleall", Ripple::all);
    actions.bind(
        "showtouched", [this] { showTouched(); }, [this] { return canShowTouched(); });
    actions.bind(
        "addpoint", [this] { addPointHere(*this); },
        [this] { return !qv->recording && !qv->recUndo && canAddPoint(*this); });
    actions.bind(
        "delete", [this] { deleteSelected(); }, [this] { return canDelete(); });
}
