#include "base/LoadBudget.h"
#include "base/OpenBlock.h"
#include "engine/CQV.h"
#include "instruments/CArp.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/songfile/FieldReading.h"
#include "sequencer/songfile/SongReading.h"
#include "sequencer/songfile/SongWriting.h"

#include <algorithm>

// Tracks, with their arpeggiators, swing tables and sources.

namespace {

constexpr int intBytes = 4;
constexpr int trackBytes = 44; ///< of a track without a name
constexpr int bytesBehindName = trackBytes - 3 * intBytes;
constexpr int grooveBytes = 28;
constexpr unsigned busyBit = 16; ///< once a state of processing
constexpr int fullPercent = 100;
constexpr int defaultRow = 8;
constexpr int trackRoom = 64 << 10; ///< about what a track takes, with its arpeggiator
constexpr int sourceRoom = 128;
constexpr int swingLimit = 1; ///< of a step, in steps

void readView(CStream& s, CTrack* track) {
    track->height = readLimited(s, 1, mostPixels);
    track->openHeight = readLimited(s, 1, mostPixels);
    track->scroll = readLimited(s, 0, mostPixels);
}

/// Reads the name of a track; false when its length is damaged, which leaves it to what is known
/// of the fields behind it. All else goes by the places of tracks, so none may be left out.
bool readTrackName(SongReading& r, CStr& name) {
    if (r.in.readText(name) && r.in.left() == bytesBehindName) return true;
    r.in.setPos(-bytesBehindName, seekEnd);
    name = "";
    return false;
}

bool readTrack(SongReading& r, int) {
    if (!r.in.has(trackBytes)) return false;
    const int kind = r.in.readInt();
    const unsigned flags = unsigned(r.in.readInt());
    CStr name;
    const bool whole = readTrackName(r, name);
    r.lane = nullptr;
    const bool room = r.hasRoom("tracks", 1, 0) && LoadBudget::take("tracks", trackRoom);
    r.track = r.kit.openTrack(room ? new CTrack(r.seq->host, r.seq, kind) : nullptr);
    if (!r.track) {
        r.skip(bytesBehindName);
        return whole;
    }
    r.track->id = name;
    r.track->flags = flags & ~busyBit;
    readView(r.in, r.track);
    r.folders.emplace_back(r.track, r.in.readInt());
    r.track->laneStack = r.in.readByte();
    r.track->channel = short(asMinMax(static_cast<signed char>(r.in.readByte()), -1, 15));
    r.track->monitor = (unsigned char)readSwitch(r.in);
    const int chs = r.in.readByte();
    r.track->recChs = (unsigned char)(chs == 1 ? 1 : 2);
    const int row = r.in.readInt();
    r.track->noteHeight = row < 1 ? defaultRow : asMin(row, mostPixels);
    skipInts(r.in, 2);
    if (kind == trackAudio) r.seq->addAudioPorts(r.track);
    r.tracks.push_back(r.track);
    r.seq->tracks.add(r.track);
    return whole;
}

bool readColour(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int colour = r.in.readInt();
    if (r.track) r.track->colour = colour;
    return true;
}

bool readSensitivity(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int percent = readLimited(r.in, 0, fullPercent);
    if (r.track) r.track->inSens = percent;
    return true;
}

bool readWindow(SongReading& r, CComp* c) {
    if (!r.in.has(editorBytes)) return false;
    CEditorStruct dropped;
    readEditorBlock(r.in, c ? c->editorStruct : dropped);
    return true;
}

bool readTrackWindow(SongReading& r, int) {
    return readWindow(r, r.track);
}

bool readArpWindow(SongReading& r, int) {
    return readWindow(r, r.track ? r.track->arp.get() : nullptr);
}

bool readGroove(SongReading& r, int) {
    if (!r.in.has(grooveBytes)) return false;
    CGroove dropped;
    CGroove& groove = r.track ? r.track->groove : dropped;
    groove.on = r.in.readInt();
    groove.spare = r.in.readInt();
    skipInts(r.in, 2);
    groove.amount = readFloat(r.in, 0.0f, 1.0f, 0.0f);
    groove.stepTicks = readLimited(r.in, 1, maxTicks);
    const int steps = r.in.readInt();
    groove.steps = asMinMax(steps, 1, CGroove::maxSteps);
    const int64_t stored = std::clamp<int64_t>(steps, 0, r.in.left() / int64_t(sizeof(float)));
    for (int i = 0; i < CGroove::maxSteps; i++)
        groove.offsets[i] = i < stored ? readFloat(r.in, -swingLimit, swingLimit, 0.0f) : 0.0f;
    for (int64_t i = CGroove::maxSteps; i < stored; i++) r.in.readFloat();
    return stored == asMax(steps, 0);
}

bool readArp(SongReading& r, int size) {
    const int64_t next = r.in.getPos() + size;
    if (r.track) {
        deleteAll<CObject>(r.track->arp->progs);
        r.track->arp->read(&r.in, saturate(std::min(next, r.in.getSize())));
    }
    r.in.setPos(next);
    return true;
}

bool readSource(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int index = r.in.readInt();
    if (r.track && index >= 0 && LoadBudget::take("cables", sourceRoom))
        r.links->sources.push_back({r.track, index});
    return true;
}

bool readSourceMute(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const bool muted = r.in.readInt() != 0;
    auto& sources = r.links->sources;
    if (r.track && !sources.empty() && sources.back().track == r.track)
        sources.back().muted = muted;
    return true;
}

bool readLock(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int locked = r.in.readInt() != 0;
    if (r.track) r.track->locked = (unsigned char)locked;
    return true;
}

bool readLive(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int live = r.in.readInt() != 0;
    if (r.track) r.track->live = (unsigned char)live;
    return true;
}

bool readArm(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int armed = r.in.readInt() != 0;
    if (r.track) r.track->recArm = (unsigned char)armed;
    return true;
}

bool readRow(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int pixels = r.in.readInt();
    if (r.track) r.track->setRowHeight(pixels);
    return true;
}

constexpr SongBlock blocks[] = {
    {"track", readTrack},          {"trackCol", readColour},    {"trackInSens", readSensitivity},
    {"tracked", readTrackWindow},  {"trackGroove", readGroove}, {"arp", readArp},
    {"arped", readArpWindow},      {"trackmc", readSource},     {"trackLock", readLock},
    {"trackArm", readArm},         {"trackRow", readRow},       {"trackLive", readLive},
    {"sourceMute", readSourceMute}};

void writeHead(SongWriting& w, const CTrack* track) {
    CStream* s = w.out;
    s->writeId("track", trackBytes + track->id.length());
    s->writeInt(track->kind);
    s->writeInt(int(track->flags & ~busyBit));
    s->writeStr(track->id);
    s->writeInt(track->height);
    s->writeInt(track->openHeight);
    s->writeInt(track->scroll);
    s->writeInt(w.seq->tracks.indexed(track->folder));
    for (int v :
         {int(track->laneStack), int(track->channel), int(track->monitor), int(track->recChs)})
        s->writeByte((unsigned char)v);
    s->writeInt(track->noteHeight);
    writeZeros(s, 2);
}

void writeGroove(CStream* s, const CGroove& groove) {
    const int steps = asMinMax(groove.steps, 1, CGroove::maxSteps);
    s->writeId("trackGroove", steps * int(sizeof(float)) + grooveBytes);
    s->writeInt(groove.on);
    s->writeInt(groove.spare);
    writeZeros(s, 2);
    s->writeFloat(groove.amount);
    s->writeInt(groove.stepTicks);
    s->writeInt(steps);
    for (int i = 0; i < steps; i++) s->writeFloat(groove.offsets[i]);
}

void writeSources(SongWriting& w, const CTrack* track) {
    if (track->kind != trackAudio && track->kind != trackDrum) return;
    for (auto* cable : track->midiCables) {
        const int source = w.sourceIndex(cable->fromPort);
        if (source < 0) continue;
        writeIntBlock(w.out, "trackmc", source);
        if (cable->muted) writeIntBlock(w.out, "sourceMute", 1);
    }
}

/// What not every reader knows, and most tracks do without.
void writeOwn(CStream* s, const CTrack* track) {
    if (track->locked) writeIntBlock(s, "trackLock", 1);
    if (track->recArm) writeIntBlock(s, "trackArm", 1);
    if (track->live) writeIntBlock(s, "trackLive", 1);
    if (track->ownRowHeight()) writeIntBlock(s, "trackRow", track->getRowHeight());
}

void writeArp(CStream* s, CArp* arp) {
    {
        const OpenBlock block(s, "arp");
        arp->write(s);
    }
    writeEditorBlock(s, "arped", arp->editorStruct);
}

} // namespace

std::span<const SongBlock> trackBlocks() {
    return blocks;
}

void writeTrack(SongWriting& w, CTrack* track) {
    CStream* s = w.out;
    writeHead(w, track);
    writeIntBlock(s, "trackCol", track->colour);
    writeIntBlock(s, "trackInSens", track->inSens);
    writeEditorBlock(s, "tracked", track->editorStruct);
    writeGroove(s, track->groove);
    if (track->kind == trackDrum) writeKit(w, track);
    for (auto* lane : track->subTracks) writeLane(w, lane);
    writeArp(s, track->arp.get());
    writeSources(w, track);
    writeOwn(s, track);
}
