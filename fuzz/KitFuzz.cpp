#include "base/CStream.h"
#include "engine/CQV.h"
#include "instruments/CDrumSound.h"
#include "instruments/CSampler.h"
#include "instruments/DrumKit.h"

// Drum kits and programs of the sampler, made of the same blocks: any bytes are read as both, and
// what came of them is written again.

namespace {

CQV* fuzzHost() {
    static CQV* host = [] {
        qv = new CQV;
        qv->settingsEnabled = false;
        qv->setFrames(64);
        return qv;
    }();
    return host;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static CSampler sampler(fuzzHost());
    CMemoryStream in, out;
    in.write(data, int(size));
    in.setPos(0);
    CSynthProg drums(fuzzHost(), nullptr);
    CLayer* layer = drums.addLayer();
    CList clips;
    DrumKit kit(fuzzHost(), layer, &sampler);
    kit.read(&in, int64_t(size));
    kit.take(clips, nullptr);
    writeDrumKit(&out, kit.name, *layer);
    in.setPos(0);
    SamplerContent content(fuzzHost(), &sampler);
    content.read(&in, int64_t(size));
    for (auto* prog : each<CSynthProg>(content.progs)) sampler.writeToStream(&out, prog);
    deleteAll<CObject>(clips);
    return 0;
}
