#include "arrange/ArrangeRoom.h"

#include "arrange/CSeqWin.h"
#include "sequencer/song/CSeq.h"
#include "ui/Commands.h"
#include "ui/EditorTable.h"
#include "ui/Song.h"
#include "ui/Workspace.h"

ArrangeRoom::ArrangeRoom(Workspace& space, EditorTable& editors)
    : imports(space), process(space), takes(space, range), song(space, range),
      objectBar(space.host(), "object-bar", 1) {
    editors.enter(compSeq, [this](Workspace& around, CComp& comp) {
        return std::make_unique<CSeqWin>(around, *this, static_cast<CSeq&>(comp));
    });
    space.commands().bind(
        "objectbar", [this] { objectBar.toggle(); },
        [&space] { return playableSongOf(space.host()) != nullptr; },
        [this] { return objectBar.on(); });
    const auto open = [&space] {
        CSeq* seq = songOf(space.host());
        return seq && space.isOpen(seq);
    };
    space.commands().bind(
        "arrangement", [&space] { space.openEditor(songOf(space.host())); },
        [&space] { return songOf(space.host()) != nullptr; }, open);
}
