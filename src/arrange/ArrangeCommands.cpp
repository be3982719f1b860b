#include "arrange/ArrangeView.h"
#include "ui/Commands.h"
#include "ui/Workspace.h"

namespace {

constexpr double zoomStep = 1.25;

} // namespace

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
        "autoscroll", [this] { follows = !follows; }, withSong, [this] { return follows; });
}
