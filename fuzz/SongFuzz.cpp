#include "audiofiles/CSample.h"
#include "base/CStream.h"
#include "effects/CEffect.h"
#include "engine/CQV.h"
#include "sequencer/song/CSeq.h"

// The blocks of a song: any bytes are read, tied to what they name, and written again.

namespace {

CQV* fuzzHost() {
    static CQV* host = [] {
        qv = new CQV;
        qv->settingsEnabled = false;
        qv->setFrames(64);
        enterSequencer();
        enterCompType(compEffect, [](CQV* root) -> CComp* { return new CEffect(root); });
        auto* sample = new CSample;
        sample->frames = 1000;
        qv->samples.add(sample);
        return qv;
    }();
    return host;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    CQV* host = fuzzHost();
    CMemoryStream in, out;
    in.write(data, int(size));
    in.setPos(0);
    {
        const GraphHold hold(host);
        auto* seq = new CSeq(host);
        host->comps.add(seq);
        seq->read(&in, int(size));
        seq->afterRead();
        seq->saving();
        seq->write(&out);
        host->comps.remove(seq);
        delete seq;
    }
    return 0;
}
