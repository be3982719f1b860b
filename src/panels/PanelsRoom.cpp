#include "panels/PanelsRoom.h"

#include "effects/CEffect.h"
#include "engine/DeviceComps.h"
#include "instruments/CArp.h"
#include "instruments/CSampler.h"
#include "panels/arp/CArpWin.h"
#include "panels/drums/CDrumWin.h"
#include "panels/midiin/CMIDIInWin.h"
#include "panels/plugins/CVSTWin.h"
#include "panels/rack/CEffectWin.h"
#include "panels/sampler/CSamplerWin.h"
#include "plugins/CVST.h"
#include "sequencer/song/CTrack.h"
#include "ui/EditorTable.h"

PanelsRoom::PanelsRoom(EditorTable& editors) {
    editors.enter(compEffect, [](Workspace& space, CComp& comp) {
        return std::make_unique<CEffectWin>(space, static_cast<CEffect&>(comp));
    });
    editors.enter(compVST, [](Workspace& space, CComp& comp) {
        return std::make_unique<CVSTWin>(space, static_cast<CVST&>(comp));
    });
    editors.enter(compSampler, [](Workspace& space, CComp& comp) {
        return std::make_unique<CSamplerWin>(space, static_cast<CSampler&>(comp));
    });
    editors.enter(
        compTrack,
        [](Workspace& space, CComp& comp) {
            return std::make_unique<CDrumWin>(space, static_cast<CTrack&>(comp));
        },
        [](const CComp& comp) { return static_cast<const CTrack&>(comp).kind == trackDrum; });
    editors.enter(compMIDIIn, [](Workspace& space, CComp& comp) {
        return std::make_unique<CMIDIInWin>(space, static_cast<CMIDIIn&>(comp));
    });
    editors.enter(compArp, [](Workspace& space, CComp& comp) {
        return std::make_unique<CArpWin>(space, static_cast<CArp&>(comp));
    });
}
