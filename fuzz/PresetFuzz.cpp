#include "FuzzHost.h"
#include "base/CStream.h"
#include "effects/CEffect.h"
#include "engine/MidiBytes.h"
#include "instruments/ArpFiles.h"
#include "instruments/CArp.h"
#include "instruments/CSampler.h"
#include "instruments/DrumKit.h"
#include "project/SongSounds.h"
#include "sequencer/song/CSeq.h"

#include <cstdlib>

// Files of single programs: any bytes are opened as each kind, played for some blocks, written
// again, and taken back.

namespace {

struct Session {
    Session() {
        seq = addSequencer(host);
        drums = seq->addTrack(trackDrum, seq->getProg(), nullptr)->track;
        sampler = add(new CSampler(host));
        rack = add(new CEffect(host));
        arp = add(new CArp(host));
        const GraphHold hold(host);
        sampler->addMIDICable(arp->outPort(), nullptr);
        rack->addAudioCable(sampler->output(), nullptr);
        host->getAudioOut()->addAudioCable(rack->output(), nullptr);
    }

    CQV* host = fuzzHost();
    CSeq* seq;
    CTrack* drums;
    CSampler* sampler;
    CEffect* rack;
    CArp* arp;

    void play() {
        const GraphHold hold(host);
        for (int i = 0; i < 3; ++i) {
            host->prepare(host->frames);
            arp->inPort()->addMidiEvent(0.0, asData(midiNoteOn, 60, 100));
            host->process(host->frames);
        }
    }
    void openKit(CStream* in) {
        CUndo* step = host->undoStart("Open", seq, {.seq = SeqNotice::tracks});
        {
            DrumKit kit(host, drums->drumLayer(), seq);
            kit.read(in, in->getSize());
            seq->takeKit(kit, drums, step);
        }
        host->undoEnd(step, true);
    }

private:
    template <class T>
    T* add(T* c) {
        c->init();
        c->createBuffers(host->frames);
        const GraphHold hold(host);
        host->comps.add(c);
        return c;
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static Session session;
    CMemoryStream in, out;
    in.write(data, int(size));
    const auto rewound = [&in] {
        in.setPos(0);
        return &in;
    };
    session.sampler->openFromStream(rewound());
    session.rack->openFromStream(rewound());
    session.arp->openFromStream(rewound());
    session.openKit(rewound());
    session.play();
    if (CSynthProg* prog = session.sampler->getProg()) session.sampler->writeToStream(&out, prog);
    if (CEffectProg* prog = session.rack->getProg()) session.rack->saveProg(&out, prog);
    if (CArpProg* prog = session.arp->getProg()) writeProgram(&out, *prog);
    writeDrumKit(&out, "Kit", *session.drums->drumLayer());
    takeAllBack(session.host);
    if (!session.drums->drumLayer()->sounds.empty()) abort();
    return 0;
}
