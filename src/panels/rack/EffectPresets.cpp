#include "panels/rack/EffectPresets.h"

#include "common/fx/CFX.h"
#include "effects/CEffect.h"
#include "effects/EffectKinds.h"
#include "effects/RackEdits.h"
#include "gui/CWin.h"
#include "gui/controls/CPopup.h"
#include "gui/dialogs/CFileWin.h"
#include "project/PresetFiles.h"
#include "ui/MenuDeed.h"
#include "ui/Workspace.h"

namespace {

constexpr const char* extension = ".qve";

} // namespace

void fillEffectPresets(CPopup* popup, Workspace& workspace, CEffect& rack, CFX* fx,
                       const std::function<bool()>& alive) {
    const auto choose = [&workspace, fx, alive](bool save, const auto& then) {
        if (!alive()) return;
        CFileWin dialog(workspace.mainWindow(), save ? "Save preset" : "Open preset", extension,
                        workspace.dialogFolder(), save ? effectName(fx->type) : CStr(), save);
        dialog.showModal();
        if (!dialog.result || !alive()) return;
        workspace.projectFolder = dialog.folder;
        then(dialog.path);
    };
    addDeed(popup, "Usual settings", [&rack, fx, alive] {
        if (alive()) resetEffect(&rack, fx);
    });
    popup->addSeparator();
    addDeed(popup, "Open preset...", [&workspace, &rack, fx, choose] {
        choose(false, [&](const CStr& path) {
            if (!openEffect(&rack, fx, path))
                workspace.setStatus("The preset has no " + effectName(fx->type));
        });
    });
    addDeed(popup, "Save preset...",
            [fx, choose] { choose(true, [&](const CStr& path) { saveEffect(fx, path); }); });
}
