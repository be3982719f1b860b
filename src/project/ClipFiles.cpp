#include "project/ClipFiles.h"

#include "audiofiles/CSample.h"
#include "base/OpenBlock.h"
#include "engine/CQV.h"
#include "engine/ObjectKinds.h"
#include "instruments/CDrumSound.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSampler.h"
#include "instruments/SamplerFiles.h"
#include "plugins/CVST.h"
#include "project/ClipContent.h"
#include "project/PresetFiles.h"
#include "project/SampleBlocks.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/songfile/SongWriting.h"

#include <unordered_set>

namespace {

/// The part as it stands in a file: at the song's start, in no list, with events of its own.
std::unique_ptr<CPart> standAlone(CPart* part) {
    std::unique_ptr<CPart> twin(part->content()->copy(1));
    twin->id = part->id;
    twin->length = part->length.load();
    twin->offset = part->offset.load();
    twin->pos = 0;
    twin->colour = -1;
    twin->flags = 0u;
    return twin;
}

void collectSamples(CPart* part, CList& samples) {
    std::unordered_set<const CSample*> known;
    for (const CBaseEvent* e = part->getEvents(); e; e = e->next) {
        CSample* sample = asClip(e)->sample;
        if (sample && known.insert(sample).second) samples.add(sample);
    }
}

void writeSamples(CStream* stream, const ListOf<CSample>& samples) {
    const OpenBlock block(stream, "samples");
    stream->writeInt(samples.getCount());
    for (const auto* sample : samples) writeWithFrames(stream, sample);
}

void writeDrums(CStream* stream, const CLayer& layer) {
    ListOf<CSampleClip> clips;
    for (const auto* sound : drumSounds(layer))
        for (int i = 0; i < sound->clipCount; ++i) clips.addUnique(sound->clips[i]);
    for (const auto* clip : clips) writeClip(stream, clip);
    for (auto* sound : layer.sounds) writeSound(stream, sound, clips);
}

void writeSampler(CStream* stream, CSampler* sampler) {
    CSynthProg* prog = sampler->getProg();
    if (!prog) return;
    stream->writeId("device", 1);
    stream->writeByte(deviceSampler);
    const OpenBlock data(stream, "data");
    sampler->writeToStream(stream, prog);
}

void writePlugin(CStream* stream, CVST* plugin) {
    if (!plugin->opened()) return;
    stream->writeId("device", int(sizeof(char) + sizeof(int)) + plugin->fileName.length());
    stream->writeByte(devicePlugin);
    stream->writeStr(plugin->fileName);
    const OpenBlock data(stream, "data");
    plugin->saveFXPToStream(stream);
}

/// The instruments that a port feeds, each once.
void writeInstruments(CStream* stream, CQV* host, CMIDIQ* port) {
    ListOf<CComp> fed;
    for (const auto* cable : cablesFrom(host, port)) fed.addUnique(cable->toComp);
    for (auto* comp : fed) {
        if (auto* sampler = compAs<CSampler>(comp)) writeSampler(stream, sampler);
        if (auto* plugin = compAs<CVST>(comp)) writePlugin(stream, plugin);
    }
}

} // namespace

void writeClipFile(CStream* stream, CSeq* seq, CPart* part) {
    const std::unique_ptr<CPart> twin = standAlone(part);
    CTrack* track = seq->partToTrack(part);
    ListOf<CSample> samples;
    if (twin->type == partDrum && track && track->drumLayer())
        writeDrums(stream, *track->drumLayer());
    if (twin->type == partAudio) {
        collectSamples(twin.get(), samples);
        writeSamples(stream, samples);
    }
    SongWriting writing(seq, stream, samples);
    writePart(writing, twin.get(), true);
    if (twin->type == partMIDI && track) writeInstruments(stream, seq->host, track->outPort());
}

bool saveClip(CSeq* seq, CPart* part, const CStr& path) {
    return savePreset(path, [&](CStream* stream) { writeClipFile(stream, seq, part); });
}
