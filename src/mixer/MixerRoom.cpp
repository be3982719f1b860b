#include "mixer/MixerRoom.h"

#include "engine/CMixer.h"
#include "mixer/CMixerWin.h"
#include "ui/Commands.h"
#include "ui/EditorTable.h"
#include "ui/Workspace.h"

MixerRoom::MixerRoom(Workspace& space, EditorTable& editors, CMixer& mixer) {
    editors.enter(mixer, [&mixer](Workspace& around, CComp&) {
        return std::make_unique<CMixerWin>(around, mixer);
    });
    Commands& commands = space.commands();
    commands.bind(
        "mixer", [&space, &mixer] { space.openEditor(&mixer); }, {},
        [&space, &mixer] { return space.isOpen(&mixer); });
    for (const char* name : {"mixmute", "mixsolo", "solosafe", "unsolo", "narrowstrips",
                             "widestrips", "addgroup", "addsend", "groupstrips", "find"})
        commands.leave(name);
}
