#include "project/CompTable.h"

#include "effects/CEffect.h"
#include "engine/CGroupCh.h"
#include "engine/CompTypes.h"
#include "engine/DeviceComps.h"
#include "instruments/CArp.h"
#include "instruments/CSampler.h"
#include "plugins/CVST.h"
#include "sequencer/song/CSeq.h"

namespace {

template <class T>
CComp* make(CQV* qv) {
    return new T(qv);
}

} // namespace

void enterCompTypes() {
    enterCompType(compVST, make<CVST>);
    enterCompType(compSampler, make<CSampler>);
    enterCompType(compArp, make<CArp>);
    enterCompType(compEffect, make<CEffect>);
    enterCompType(compGroupCh, make<CGroupCh>);
    enterCompType(compMIDIIn, make<CMIDIIn>);
    enterCompType(compMIDIOut, make<CMIDIOut>);
    enterCompType(compAudioIn, make<CAudioIn>);
    enterCompType(compAudioOut, make<CAudioOut>);
    enterSequencer();
}
