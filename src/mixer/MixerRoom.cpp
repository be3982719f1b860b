#include "mixer/MixerRoom.h"

#include "engine/CGroupCh.h"
#include "engine/CMixer.h"
#include "mixer/CGroupWin.h"
#include "mixer/CMixerWin.h"
#include "ui/Commands.h"
#include "ui/EditorTable.h"
#include "ui/Workspace.h"

MixerRoom::MixerRoom(Workspace& space, EditorTable& editors, CMixer& mixer) {
    editors.enter(mixer, [&mixer](Workspace& around, CComp&) {
        return std::make_unique<CMixerWin>(around, mixer);
    });
    editors.enter(compGroupCh, [&mixer](Workspace& around, CComp& comp) {
        return std::make_unique<CGroupWin>(around, mixer, static_cast<CGroupCh&>(comp));
    });
    Commands& commands = space.commands();
    commands.bind(
        "mixer", [&space, &mixer] { space.openEditor(&mixer); }, {},
        [&space, &mixer] { return space.isOpen(&mixer); });
    for (const char* name : {"mixmute", "mixsolo", "solosafe", "unsolo", "narrowstrips",
                             "widestrips", "addgroup", "addsend", "groupstrips", "find"})
        commands.leave(name);
}
