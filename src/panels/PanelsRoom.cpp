#include "panels/PanelsRoom.h"

#include "effects/CEffect.h"
#include "instruments/CArp.h"
#include "instruments/CSampler.h"
#include "panels/arp/CArpWin.h"
#include "panels/rack/CEffectWin.h"
#include "panels/sampler/CSamplerWin.h"
#include "ui/EditorTable.h"

PanelsRoom::PanelsRoom(EditorTable& editors) {
    editors.enter(compEffect, [](Workspace& space, CComp& comp) {
        return std::make_unique<CEffectWin>(space, static_cast<CEffect&>(comp));
    });
    editors.enter(compSampler, [](Workspace& space, CComp& comp) {
        return std::make_unique<CSamplerWin>(space, static_cast<CSampler&>(comp));
    });
    editors.enter(compArp, [](Workspace& space, CComp& comp) {
        return std::make_unique<CArpWin>(space, static_cast<CArp&>(comp));
    });
}
