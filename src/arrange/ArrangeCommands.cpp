#include "arrange/ArrangeView.h"
#include "arrange/LanePress.h"
#include "arrange/SongRange.h"
#include "base/Messages.h"
#include "engine/CQV.h"
#include "sequencer/CSeq.h"
#include "sequencer/PartActions.h"
#include "ui/Commands.h"
#include "ui/Workspace.h"

namespace {

constexpr double zoomStep = 1.25;

} // namespace

/// The range that is chosen, else points of automation, if any are selected, else parts.
void ArrangeView::deleteSelected() {
    if (range.get()) {
        const CStr failure = deleteRange(seq(), *range.get());
        if (!failure.empty()) showMsg(win, "Error", failure);
        return;
    }
    const std::vector<PartSlot> points = selectedPoints(*this);
    if (points.empty())
        deleteParts(seq());
    else
        deletePoints(seq(), points);
}

bool ArrangeView::canDelete() const {
    if (!seq() || qv->recording || qv->recUndo) return false;
    return range.get() || seq()->getProg()->getFirstSelectedPart() ||
           !selectedPoints(*this).empty();
}

void ArrangeView::bindCommands() {
    Commands& commands = workspace.commands();
    const auto withSong = [this] { return seq() != nullptr; };
    commands.bind(
        "zoomin", [this] { zoom(edit.axis.zoom() * zoomStep); }, withSong);
    commands.bind(
        "zoomout", [this] { zoom(edit.axis.zoom() / zoomStep); }, withSong);
    commands.bind(
        "zoomselection", [this] { zoomToSelection(); }, withSong);
    commands.bind(
        "delete", [this] { deleteSelected(); }, [this] { return canDelete(); });
    commands.bind(
        "autoscroll", [this] { follows = !follows; }, withSong, [this] { return follows; });
}
