#include "project/PresetFiles.h"

#include "base/BlockView.h"
#include "base/Messages.h"
#include "base/Paths.h"
#include "base/SafeFile.h"
#include "effects/CEffect.h"
#include "effects/RackFiles.h"
#include "engine/CQV.h"
#include "instruments/ArpFiles.h"
#include "instruments/CArp.h"
#include "instruments/CDrumSound.h"
#include "instruments/CREX2.h"
#include "instruments/CSampler.h"
#include "instruments/DrumKit.h"
#include "instruments/SamplerFiles.h"
#include "project/KitDrop.h"
#include "sequencer/song/CSeq.h"

namespace {

void addSlices(CSeq* seq, CTrack* track, const CStr& path, CUndo* undo) {
    CREX2 loop(path, int(seq->host->rate));
    DrumKit kit(seq->host, track->drumLayer(), seq);
    kit.addSlices(loop);
    if (!kit.sounds.empty()) seq->takeKit(kit, track, undo);
}

/// Adds the sounds of a file behind those there are.
void addSounds(CSeq* seq, CTrack* track, const CStr& path, CUndo* undo) {
    const CStr ext = extractFileExt(path).upperCase();
    if (ext == ".REX" || ext == ".RX2") addSlices(seq, track, path, undo);
    if ((ext == ".QVS" || ext == ".QVD") && countKitSounds(path) > 0)
        seq->openDrumBank(track, path, undo);
}

/// Records that the sounds leave that were there before the step.
void removeOld(CLayer* layer, CTrack* track, CUndo* undo) {
    int height = 0;
    for (auto* sound : drumSounds(*layer)) {
        height += sound->getHeight();
        undo->asRemove(sound, &layer->sounds);
    }
    track->openHeight = track->openHeight - height;
    undo->asPtr(reinterpret_cast<void**>(layer->sound.address()));
    layer->sound = nullptr;
}

} // namespace

bool savePreset(const CStr& path, const std::function<void(CStream*)>& write) {
    SafeFile file(path);
    if (CFileStream* stream = file.stream()) {
        write(stream);
        if (file.commit()) return true;
    }
    showMsg(nullptr, "Save", CStr("There was an error saving ") + path);
    return false;
}

bool saveProgram(CSampler* sampler, const CStr& path) {
    CSynthProg* prog = sampler->getProg();
    return prog && savePreset(path, [&](CStream* s) { sampler->writeToStream(s, prog); });
}

bool saveProgram(CEffect* rack, const CStr& path) {
    CEffectProg* prog = rack->getProg();
    return prog && savePreset(path, [&](CStream* s) { rack->saveProg(s, prog); });
}

bool saveEffect(CFX* fx, const CStr& path) {
    CEffectProg alone;
    alone.id = fx->id;
    alone.effects.add(fx);
    const bool saved = savePreset(path, [&](CStream* s) { writeEffectProg(s, alone); });
    alone.effects.del(0); // which is not its own
    return saved;
}

bool saveProgram(CArp* arp, const CStr& path) {
    const CArpProg* prog = arp->getProg();
    return prog && savePreset(path, [&](CStream* s) { writeProgram(s, *prog); });
}

bool saveKit(CTrack* track, const CStr& path) {
    const CLayer* layer = track->drumLayer();
    const auto write = [&](CStream* s) { writeDrumKit(s, track->synthProg->id, *layer); };
    return layer && savePreset(path, write);
}

int getFiletype(const CStr& path) {
    int type = -1;
    CFileStream stream(path, 0);
    eachBlock(&stream, stream.getSize(), [&type](const CStr& name, BlockView& body) {
        if (type < 0 && name == "filetype" && body.has(int64_t(sizeof(int)))) type = body.readInt();
    });
    return type;
}

int countKitSounds(const CStr& path) {
    int count = 0;
    CFileStream stream(path, 0);
    eachBlock(&stream, stream.getSize(),
              [&count](const CStr& name, BlockView&) { count += name == "sound"; });
    return count;
}

void loadPreset(CSeq* seq, CLayer* layer, CTrack* track, const CStr& path) {
    if (!layer || layer != track->drumLayer() || getFiletype(path) == filetypeSampler) return;
    CUndo* step =
        seq->host->undoStart("Replace", seq, {.seq = SeqNotice::tracks | SeqNotice::parts});
    addSounds(seq, track, path, step);
    if (!step->items.empty()) removeOld(layer, track, step);
    seq->host->undoEnd(step, true);
}
