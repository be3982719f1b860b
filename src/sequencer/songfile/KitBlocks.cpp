#include "sequencer/songfile/KitBlocks.h"

#include "base/BlockView.h"
#include "base/LoadBudget.h"
#include "base/OpenBlock.h"
#include "engine/CQV.h"
#include "engine/CompBlocks.h"
#include "engine/StripBlocks.h"
#include "instruments/CDrumSound.h"
#include "instruments/CSampleClip.h"
#include "instruments/CSynthProg.h"
#include "instruments/SamplerFiles.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/songfile/FieldReading.h"
#include "sequencer/songfile/SongReading.h"
#include "sequencer/songfile/SongWriting.h"

// Drum clips, and the kits of drum tracks.

namespace {

constexpr int intBytes = 4;
constexpr int eqBytes = 72;
/// About what these take.
constexpr int drumBytes = 40 << 10, insertBytes = 16 << 10, samplerBytes = 80 << 10;
constexpr float oldScale = 1.0f; ///< semitones by which older files were tuned too low

/// Whether a component may sit in a rack: no host, sequencer or device, nor what belongs to them.
bool canBeInsert(int type) {
    switch (type) {
    case compQV:
    case compSeq:
    case compTrack:
    case compGroupCh:
    case compMIDIIn:
    case compMIDIOut:
    case compAudioIn:
    case compAudioOut:
    case compEditor:
        return false;
    default:
        return true;
    }
}

bool readDelegated(SongReading& r, const char* name, int size) {
    const int64_t next = r.in.getPos() + size;
    BlockView body(&r.in, std::min(next, r.in.getSize()));
    r.kit.read(name, body);
    r.in.setPos(next);
    return true;
}

bool readClip(SongReading& r, int size) {
    return readDelegated(r, "smp", size);
}

bool readSound(SongReading& r, int size) {
    return readDelegated(r, "sound", size);
}

bool readMods(SongReading& r, int size) {
    return readDelegated(r, "soundmod", size);
}

bool readKitName(SongReading& r, int) {
    CStr name;
    if (!r.in.readText(name)) return false;
    if (r.track && r.track->synthProg) r.track->synthProg->id = name;
    return true;
}

bool readStyle(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int style = r.in.readInt();
    if (r.kit.sound) r.kit.sound->flags = unsigned(style);
    return true;
}

bool readShownParam(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int param = r.in.readInt();
    if (r.kit.sound) r.kit.sound->shownParam = param;
    return true;
}

bool readSoundSends(SongReading& r, int size) {
    if (!r.in.has(intBytes)) return false;
    const int64_t next = r.in.getPos() + size;
    if (r.kit.sound)
        readSends(&r.in, r.kit.sound->output.get(), saturate(next));
    else
        r.in.setPos(next);
    return true;
}

bool readSoundEq(SongReading& r, int) {
    if (!r.in.has(eqBytes)) return false;
    if (r.kit.sound)
        readEq2(&r.in, r.kit.sound->output.get());
    else
        r.skip(eqBytes);
    return true;
}

bool readInsert(SongReading& r, int size) {
    const int64_t next = r.in.getPos() + size;
    r.kit.readInsert(&r.in, next);
    r.in.setPos(next);
    return true;
}

bool readInsertInput(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    r.kit.addInput(r.in.readInt());
    return true;
}

bool readInsertOutput(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    r.kit.addOutput(r.in.readInt());
    return true;
}

bool readInsertWet(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const float wet = readFloat(r.in, 0.0f, 1.0f, 1.0f);
    if (r.kit.insert) r.kit.insert->wet = wet;
    return true;
}

constexpr SongBlock blocks[] = {{"smp", readClip},
                                {"drumprogid", readKitName},
                                {"sound", readSound},
                                {"soundmod", readMods},
                                {"soStyle", readStyle},
                                {"soParam", readShownParam},
                                {"soSends", readSoundSends},
                                {"soEq2", readSoundEq},
                                {"soInsert2", readInsert},
                                {"soInsertAin", readInsertInput},
                                {"soInsertAout", readInsertOutput},
                                {"soInsert2wet", readInsertWet}};

void writeInsert(CStream* s, CComp* insert) {
    writeCompChunk(s, insert, listInsert, "soInsert2");
    for (auto* in : insert->inputs) writeIntBlock(s, "soInsertAin", in->channels);
    for (auto* ch : insert->outputs) writeIntBlock(s, "soInsertAout", ch->channels);
    s->writeId("soInsert2wet", int(sizeof(float)));
    s->writeFloat(insert->wet);
}

void writeDrum(SongWriting& w, const CDrumSound& sound) {
    CStream* s = w.out;
    const COutputChannel* strip = sound.output.get();
    writeSoundBlock(s, sound, w.clips);
    writeIntBlock(s, "soStyle", int(sound.flags.load()));
    writeIntBlock(s, "soParam", sound.shownParam);
    for (auto* insert : strip->inserts) writeInsert(s, insert);
    writeSends(s, strip, w.host->sends.getCount(), "soSends");
    writeEq2(s, strip, "soEq2");
}

} // namespace

std::span<const SongBlock> kitBlocks() {
    return blocks;
}

void writeKit(SongWriting& w, CTrack* track) {
    const CStr& name = track->synthProg->id;
    w.out->writeId("drumprogid", name.length() + intBytes);
    w.out->writeStr(name);
    for (const auto* sound : drumSounds(*track->drumLayer())) writeDrum(w, *sound);
}

KitReader::KitReader(CSeq* song) : SamplerContent(song->host, nullptr), seq(song) {
}

CTrack* KitReader::openTrack(CTrack* next) {
    track = next;
    sound = nullptr;
    insert = nullptr;
    return next;
}

void KitReader::read(const char* block, CStream& body) {
    const bool one = CStr(block) == "sound";
    if (one) openTrack(track);
    if (!readBlock(block, body) && !full) LoadBudget::noteDamage();
}

void KitReader::giveClips() {
    for (auto* clip : clips) seq->drumClips.add(clip);
    clips.clear();
}

std::unique_ptr<CSound> KitReader::newSound(int kind) {
    CLayer* drums = track ? track->drumLayer() : nullptr;
    if (kind != typeWavSound || !drums) return nullptr;
    const size_t most = drums->sounds.getCount() < mostDrums ? mostSounds : 0;
    const bool room = LoadBudget::take("drums", drumBytes, size_t(sounds), most);
    full = full || !room;
    if (!room) return nullptr;
    return std::make_unique<CDrumSound>(drums, host, seq);
}

void KitReader::keepSound(CSound* made) {
    if (!made->reserved) {
        made->coarse = made->coarse + oldScale;
        made->reserved = 1;
    }
    sound = static_cast<CDrumSound*>(made);
    track->drumLayer()->addSound(made);
    sounds++;
}

void KitReader::readInsert(CStream* stream, int64_t end) {
    insert = nullptr;
    if (!sound) return;
    BufferedView body(stream, end);
    const CompHead head = readCompHead(&body, true);
    if (body.eof() && head.id.empty()) return;
    if (!canBeInsert(head.type)) return;
    const int bytes = head.type == compSampler ? samplerBytes : insertBytes;
    if (!LoadBudget::take("inserts", bytes, size_t(inserts), mostInserts)) return;
    insert = newStoredComp(host, head.type);
    applyHead(insert, head);
    insert->listKind = listInsert;
    insert->ownerChannel = sound->output.get();
    insert->read(&body, saturate(body.getSize()));
    insert->inPorts.add(new CInputPort(insert)); // parameter events reach it through this
    sound->output->inserts.add(insert);
    inserts++;
}

/// Whether the latest insert may have one more channel; counts it then.
bool KitReader::takeChannel() {
    constexpr int about = 16 << 10;
    if (!LoadBudget::take("channels", about, size_t(channelsMade), mostChannels)) return false;
    channelsMade++;
    return true;
}

void KitReader::addInput(int channels) {
    if (!insert || !takeChannel()) return;
    auto* made = new CInputChannel(insert);
    made->channels = asMinMax(channels, 1, 2);
    made->createBuffers(host->frames);
    insert->inputs.add(made);
}

void KitReader::addOutput(int channels) {
    if (!insert || !takeChannel()) return;
    auto* made = new COutputChannel(insert);
    made->channels = asMinMax(channels, 1, 2);
    made->createBuffers(host->frames);
    insert->outputs.add(made);
}
