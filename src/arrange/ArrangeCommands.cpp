#include "arrange/ArrangeView.h"
#include "arrange/LanePress.h"
#include "arrange/SongRange.h"
#include "engine/CQV.h"
#include "sequencer/CSeq.h"
#include "ui/Commands.h"
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

void ArrangeView::bindCommands() {
    bindZoom();
    Commands& commands = workspace.commands();
    const auto withSong = [this] { return seq() != nullptr; };
    const auto bindRipple = [&](const char* name, Ripple kind) {
        commands.bind(
            name, [this, kind] { ripple = ripple == kind ? Ripple::off : kind; }, withSong,
            [this, kind] { return ripple == kind; });
    };
    bindRipple("rippletrack", Ripple::track);
    bindRipple("rippleall", Ripple::all);
    commands.bind(
        "delete", [this] { deleteSelected(); }, [this] { return canDelete(); });
    commands.bind(
        "objectbar",
        [this] {
            objectsShown.toggle();
            layout();
        },
        withSong, [this] { return objectsShown.on(); });
}
