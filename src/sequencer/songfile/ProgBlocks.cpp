#include "audiofiles/CSample.h"
#include "base/LoadBudget.h"
#include "base/OpenBlock.h"
#include "base/Paths.h"
#include "engine/CFreezeItem.h"
#include "engine/CQV.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Points.h"
#include "sequencer/songfile/FieldReading.h"
#include "sequencer/songfile/SongReading.h"
#include "sequencer/songfile/SongWriting.h"

#include <memory>

// Programs, with the points of their timelines.

namespace {

constexpr int intBytes = 4;
constexpr int progRoom = 1024, pointRoom = 384;     ///< about what these take
constexpr int progBytes = 17;                       ///< of a program without a name
constexpr int markerBytes = 32, timesigBytes = 32;  ///< of one behind its name
constexpr int tempoBytes = 24, toldTempoBytes = 32; ///< what there is, and what is told
constexpr int mostSignature = 64, usualSignature = 4;
constexpr unsigned storedFlags = 0x3F; ///< of a song track; the others of the byte ask playback
constexpr float markerTempo = 120.0f;

bool readProg(SongReading& r, int) {
    CStr name;
    r.prog = nullptr;
    r.songTrack = nullptr;
    r.part = nullptr;
    if (!r.in.has(progBytes)) return false;
    const float pos = readFloat(r.in, 0.0f, float(maxTicks), 0.0f);
    const int loop = readSwitch(r.in);
    const int left = readTicks(r.in), right = readTicks(r.in);
    const bool whole = r.in.readText(name);
    if (!r.hasRoom("programs", 0, 1) || !LoadBudget::take("programs", progRoom)) return whole;
    r.prog = r.seq->addProgram(name);
    r.prog->pos = double(pos);
    r.prog->prevPos = double(pos);
    r.prog->loop = (unsigned char)loop;
    r.prog->leftLocator = left;
    r.prog->rightLocator = right;
    return whole;
}

bool readSongTrack(SongReading& r, int) {
    if (!r.in.has(1)) return false;
    const unsigned flags = unsigned(r.in.readByte()) & storedFlags;
    r.part = nullptr;
    r.songTrack = r.addSongTrack();
    if (r.songTrack) r.songTrack->flags = flags;
    return true;
}

bool readFreeze(SongReading& r, int) {
    if (!r.in.has(3 * intBytes)) return false;
    const int comp = r.in.readInt(), channel = r.in.readInt();
    CStr file;
    if (!r.in.readText(file)) return false;
    if (r.songTrack) r.links->frozen.push_back({r.songTrack, comp, channel, file});
    return true;
}

void readPlace(SongReading& r, CPart* point) {
    point->pos = readTicks(r.in);
    point->length = readTicks(r.in);
}

/// Takes a point into a list of the latest program; false without a program or room for it.
template <class T>
bool addPoint(SongReading& r, ListOf<T> CSeqProg::*list, std::unique_ptr<T> point) {
    if (!r.prog || !LoadBudget::take("markers", pointRoom)) return false;
    (r.prog->*list).add(point.release());
    return true;
}

bool readMarker(SongReading& r, int) {
    auto marker = std::make_unique<CMarkerPart>();
    if (!r.in.readText(marker->id) || !r.in.has(markerBytes)) return false;
    marker->colourIndex = (unsigned char)r.in.readByte();
    marker->flag = (unsigned char)r.in.readByte();
    r.skip(2);
    readPlace(r, marker.get());
    skipInts(r.in, 5);
    addPoint(r, &CSeqProg::markers, std::move(marker));
    return true;
}

/// The position and the section of the transport are told by the program already.
bool readActiveMarker(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int index = r.in.readInt();
    if (!r.prog) return true;
    auto* marker = r.prog->markers.items(index);
    r.prog->activeMarker = marker;
    r.prog->playingMarker = marker;
    return true;
}

int readSignature(SongReading& r) {
    const int v = r.in.readInt();
    return v >= 1 && v <= mostSignature ? v : usualSignature;
}

bool readTimesig(SongReading& r, int) {
    auto point = std::make_unique<CTimesigPart>();
    if (!r.in.readText(point->id) || !r.in.has(timesigBytes)) return false;
    readPlace(r, point.get());
    const int num = readSignature(r), den = readSignature(r);
    point->setTimesig(num, den);
    r.in.readFloat();
    point->spare = r.in.readInt();
    skipInts(r.in, 2);
    addPoint(r, &CSeqProg::timesigs, std::move(point));
    return true;
}

bool readTempo(SongReading& r, int) {
    if (!r.in.has(tempoBytes)) return false;
    auto point = std::make_unique<CTempoPart>();
    readPlace(r, point.get());
    point->setTempo(readFloat(r.in, minTempo, maxTempo, markerTempo));
    skipInts(r.in, 3);
    r.tempo = point.get();
    if (!addPoint(r, &CSeqProg::tempos, std::move(point))) r.tempo = nullptr;
    return true;
}

bool readRamp(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int ramp = r.in.readInt() != 0;
    if (r.tempo) r.tempo->ramp = (unsigned char)ramp;
    return true;
}

constexpr SongBlock blocks[] = {{"prog", readProg},
                                {"ptrack", readSongTrack},
                                {"freeze", readFreeze},
                                {"marker", readMarker},
                                {"amarker", readActiveMarker},
                                {"timesig", readTimesig},
                                {"tempo", readTempo, tempoBytes},
                                {"tempoRamp", readRamp}};

void writeFreeze(SongWriting& w, const CSongTrack* songTrack, const CFreezeItem* item) {
    if (!item->sample) return;
    item->sample->keep = true;
    const bool own = songTrack->track->kind != trackMIDI;
    const OpenBlock block(w.out, "freeze");
    w.out->writeInt(own ? -1 : w.host->comps.indexed(item->comp));
    w.out->writeInt(own || !item->comp ? 0 : item->comp->outputs.indexed(item->channel));
    w.out->writeStr(extractFileName(item->sample->filename));
}

void writeSongTrack(SongWriting& w, CSongTrack* songTrack) {
    w.out->writeId("ptrack", 1);
    w.out->writeByte((unsigned char)(songTrack->flags & storedFlags));
    for (const auto* item : songTrack->freezeItems) writeFreeze(w, songTrack, item);
    for (auto* part : songTrack->parts) writePart(w, part, true);
}

void writeMarker(CStream* s, const CMarkerPart* marker) {
    s->writeId("marker", intBytes + marker->id.length() + markerBytes);
    s->writeStr(marker->id);
    s->writeByte(marker->colourIndex);
    s->writeByte(marker->flag);
    s->writeShort(0);
    s->writeInt(marker->pos);
    s->writeInt(marker->length);
    s->writeShort(usualSignature);
    s->writeShort(usualSignature);
    s->writeFloat(markerTempo);
    writeZeros(s, 3);
}

void writeTimesig(CStream* s, const CTimesigPart* point) {
    s->writeId("timesig", intBytes + point->id.length() + timesigBytes);
    s->writeStr(point->id);
    for (int v : {int(point->pos), int(point->length), point->getNum(), point->getDen()})
        s->writeInt(v);
    s->writeFloat(-1.0f);
    s->writeInt(point->spare);
    writeZeros(s, 2);
}

/// The told size is what other programs of this format expect.
void writeTempo(CStream* s, const CTempoPart* point) {
    s->writeId("tempo", toldTempoBytes);
    s->writeInt(point->pos);
    s->writeInt(point->length);
    s->writeFloat(point->getTempo());
    writeZeros(s, 3);
    if (point->ramp) writeIntBlock(s, "tempoRamp", 1);
}

} // namespace

std::span<const SongBlock> progBlocks() {
    return blocks;
}

void writeProg(SongWriting& w, CSeqProg* prog) {
    CStream* s = w.out;
    s->writeId("prog", progBytes + prog->id.length());
    s->writeFloat(float(prog->pos));
    s->writeByte(prog->loop);
    s->writeInt(prog->leftLocator);
    s->writeInt(prog->rightLocator);
    s->writeStr(prog->id);
    for (auto* songTrack : prog->tracks) writeSongTrack(w, songTrack);
    for (const auto* marker : prog->markers) writeMarker(s, marker);
    writeIntBlock(s, "amarker", prog->markers.indexed(prog->activeMarker));
    for (const auto* point : prog->timesigs) writeTimesig(s, point);
    for (const auto* point : prog->tempos) writeTempo(s, point);
}
