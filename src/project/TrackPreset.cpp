#include "project/TrackPreset.h"

#include "base/BlockView.h"
#include "base/Numbers.h"
#include "base/OpenBlock.h"
#include "effects/CEffect.h"
#include "engine/CQV.h"
#include "engine/CompTypes.h"
#include "engine/ObjectKinds.h"
#include "engine/StripBlocks.h"
#include "instruments/CArp.h"
#include "instruments/CSampler.h"
#include "instruments/CSynthProg.h"
#include "instruments/DrumKit.h"
#include "project/ItemView.h"
#include "project/PresetFiles.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/TrackInstrument.h"
#include "sequencer/song/TrackRouting.h"

#include <memory>

namespace {

constexpr int mostInserts = 32;

/// Null where it is played by none.
CSampler* synthOf(CTrack* track) {
    CComp* target = track->kind == trackMIDI ? trackTarget(track->seq, track) : nullptr;
    return compAs<CSampler>(target);
}

void writeInsert(CStream* stream, CComp* insert) {
    auto* rack = compAs<CEffect>(insert);
    if (!rack || !rack->getProg()) return;
    const OpenBlock block(stream, "insert");
    stream->writeFloat(rack->wet);
    stream->writeInt(rack->enabled);
    rack->saveProg(stream, rack->getProg());
}

void writeTrack(CStream* stream, CTrack* track) {
    {
        const OpenBlock block(stream, "track");
        stream->writeInt(track->kind);
        stream->writeInt(track->colour);
        stream->writeStr(track->id);
    }
    CSampler* synth = synthOf(track);
    if (synth && synth->getProg()) {
        const OpenBlock block(stream, "synth");
        synth->writeToStream(stream, synth->getProg());
    }
    if (const CLayer* layer = track->drumLayer()) {
        const OpenBlock block(stream, "kit");
        writeDrumKit(stream, track->synthProg->id, *layer);
    }
    if (track->kind == trackMIDI) {
        const OpenBlock block(stream, "arp");
        track->arp->write(stream);
    }
    const COutputChannel* strip = synth ? synth->output() : track->output();
    if (!strip) return;
    writeStrip(stream, strip);
    writeEq2(stream, strip);
    for (auto* insert : strip->inserts) writeInsert(stream, insert);
}

/// Fills a track block by block.
class Filling {
public:
    Filling(CTrack* to, CUndo* open) : track(to), host(to->host), step(open), strip(to->output()) {}

    void take(const CStr& name, CStream& body) {
        const int end = int(body.getSize());
        if (name == "track") head(body);
        if (name == "synth" && track->kind == trackMIDI && !strip) synth(body, end);
        if (name == "kit" && track->drumLayer()) kit(body, end);
        if (name == "arp" && track->kind == trackMIDI) track->arp->read(&body, end);
        if (name == "strip2" && strip) readStrip(&body, strip);
        if (name == "eq2" && strip) readEq2(&body, strip);
        if (name == "insert" && strip && strip->inserts.getCount() < mostInserts) insert(body, end);
    }

private:
    void head(CStream& body) {
        body.readInt();
        track->colour = body.readInt();
        track->id = body.readStr();
    }

    void synth(CStream& body, int end) {
        auto made = std::make_unique<CSampler>(host);
        made->createChannels();
        made->read(&body, end);
        const CSynthProg* prog = made->getProg();
        if (!prog) return;
        made->setId(prog->id);
        made->createBuffers(host->frames);
        made->setRate(double(host->rate));
        strip = made->output();
        linkInstrument(made.release(), track, step);
    }

    void kit(CStream& body, int end) {
        DrumKit content(host, track->drumLayer(), track->seq);
        content.read(&body, end);
        if (!content.name.empty()) track->synthProg->id = content.name;
        track->seq->takeKit(content, track, step);
    }

    void insert(CStream& body, int end) {
        auto rack = std::make_unique<CEffect>(host);
        rack->createIO();
        rack->createBuffers(host->frames);
        const float wet = body.readFloat();
        const int on = body.readInt();
        rack->read(&body, end);
        if (!rack->getProg()) return;
        rack->setRate(double(host->rate));
        rack->wet = fLimit(wet, 0.0f, 1.0f);
        rack->enabled = on != 0;
        rack->id = rack->getProg()->id;
        rack->listKind = listInsert;
        rack->ownerChannel = strip;
        strip->inserts.add(rack.release());
    }

    CTrack* track;
    CQV* host;
    CUndo* step;
    COutputChannel* strip; ///< null until there is one
};

} // namespace

bool saveTrack(CTrack* track, const CStr& path) {
    return savePreset(path, [track](CStream* stream) { writeTrack(stream, track); });
}

int trackPresetKind(const CStr& path) {
    int kind = 0;
    CFileStream stream(path, 0);
    eachBlock(&stream, stream.getSize(), [&kind](const CStr& name, BlockView& body) {
        if (kind == 0 && name == "track" && body.has(int64_t(sizeof(int)))) kind = body.readInt();
    });
    return kind == trackMIDI || kind == trackAudio || kind == trackDrum ? kind : 0;
}

void fillTrack(CTrack* track, const CStr& path, CUndo* step) {
    Filling filling(track, step);
    CFileStream stream(path, 0);
    eachBlock(&stream, stream.getSize(), [&](const CStr& name, BlockView& body) {
        ItemView item(&stream, body.left());
        filling.take(name, item);
    });
}
