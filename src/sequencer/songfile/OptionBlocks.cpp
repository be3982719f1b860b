#include "base/OpenBlock.h"
#include "engine/CQV.h"
#include "engine/CSnap.h"
#include "sequencer/song/CEditorComp.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/Scales.h"
#include "sequencer/songfile/FieldReading.h"
#include "sequencer/songfile/SongReading.h"
#include "sequencer/songfile/SongWriting.h"

#include <utility>

// Settings of the song and of its editor.

namespace {

constexpr int intBytes = 4;
constexpr int snapBytes = 8;
constexpr int mostVoices = 64;
constexpr const char* rowHeight = "editor-noteh"; ///< a setting of the program
constexpr int defaultRow = 8, leastRow = 2, mostRow = 1024;

bool readOptions(SongReading& r, int) {
    if (!r.in.has(SongOptions::size)) return false;
    for (auto& byte : r.seq->options.bytes) byte = (unsigned char)r.in.readByte();
    return true;
}

bool readSync(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    r.seq->sync = r.in.readInt() != 0;
    return true;
}

bool readVoices(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    r.seq->maxVoices = readLimited(r.in, 1, mostVoices);
    return true;
}

bool readSnap(SongReading& r, int) {
    if (!r.in.has(snapBytes)) return false;
    CSnap& snap = *r.seq->snap;
    snap.active = readSwitch(r.in);
    snap.triplet = readSwitch(r.in);
    snap.dotted = readSwitch(r.in);
    r.in.readByte();
    snap.indexToSnap(r.in.readInt());
    return true;
}

bool readCurProg(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    r.curProg = r.in.readInt();
    return true;
}

/// Of no use any more.
bool readTrackPos(SongReading& r, int) {
    r.skip(1);
    return true;
}

bool readEditor(SongReading& r, int) {
    if (!r.in.has(editorBytes)) return false;
    readEditorBlock(r.in, r.seq->editorComp->editorStruct);
    return true;
}

bool readEditorOptions(SongReading& r, int) {
    if (!r.in.has(CEditorComp::optionBytes)) return false;
    r.in.read(r.seq->editorComp->options, CEditorComp::optionBytes);
    return true;
}

bool readRowHeight(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    r.seq->host->settings.setInt(rowHeight, readLimited(r.in, leastRow, mostRow));
    return true;
}

bool readEditedPart(SongReading& r, int) {
    if (!r.in.has(2 * intBytes)) return false;
    r.editTrack = r.in.readInt();
    r.editPart = r.in.readInt();
    return true;
}

/// Places of the part that the editor shows, -1 unless it stands in the current program.
std::pair<int, int> editedPart(CSeq* seq) {
    const CPart* part = seq->editorComp->part();
    CSeqProg* prog = part ? seq->getProg() : nullptr;
    if (!prog) return {-1, -1};
    int row = 0;
    for (auto* t : prog->tracks) {
        const int index = t->parts.indexed(part);
        if (index >= 0) return {row, index};
        row++;
    }
    return {-1, -1};
}

bool readPunch(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    r.seq->punch = (unsigned char)(r.in.readInt() != 0);
    return true;
}

bool readPreRoll(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    r.seq->preRoll = readLimited(r.in, 0, CSeq::mostPreRoll);
    return true;
}

void readScaleInto(CStream& in, SongScales::Change& c) {
    c.root = readLimited(in, 0, octaveKeys - 1);
    c.kind = readLimited(in, 0, scaleCount - 1);
}

bool readScale(SongReading& r, int) {
    if (!r.in.has(2 * intBytes)) return false;
    readScaleInto(r.in, r.seq->scales.changes[0]);
    return true;
}

bool readScaleChanges(SongReading& r, int) {
    for (int i = 1; i < SongScales::most && r.in.has(3 * intBytes); i++) {
        SongScales::Change& c = r.seq->scales.changes[i];
        c.tick = limitTicks(asMax(0, r.in.readInt()));
        readScaleInto(r.in, c);
    }
    return true;
}

constexpr SongBlock blocks[] = {
    {"scale", readScale},        {"scales", readScaleChanges}, {"punch", readPunch},
    {"preRoll", readPreRoll},    {"options", readOptions},     {"sync", readSync},
    {"mxv", readVoices},         {"snap", readSnap},           {"progi", readCurProg},
    {"trackPos", readTrackPos},  {"editored", readEditor},     {"edopt", readEditorOptions},
    {"ed-noteh", readRowHeight}, {"editorpp", readEditedPart}};

} // namespace

std::span<const SongBlock> optionBlocks() {
    return blocks;
}

namespace {

void writeScales(CStream* s, const SongScales& scales) {
    const SongScales::Change& first = scales.changes[0];
    if (first.kind != scaleNone) {
        s->writeId("scale", 2 * intBytes);
        s->writeInt(first.root);
        s->writeInt(first.kind);
    }
    std::vector<const SongScales::Change*> later;
    for (const SongScales::Change& c : scales.changes)
        if (&c != &first && c.tick != SongScales::never) later.push_back(&c);
    if (later.empty()) return;
    s->writeId("scales", int(later.size()) * 3 * intBytes);
    for (const SongScales::Change* c : later)
        for (const int value : {c->tick.load(), c->root.load(), c->kind.load()}) s->writeInt(value);
}

} // namespace

void writeOptions(SongWriting& w) {
    CStream* s = w.out;
    s->writeId("options", SongOptions::size);
    for (const auto& byte : w.seq->options.bytes) s->writeByte(byte);
    writeIntBlock(s, "sync", w.seq->sync);
    writeIntBlock(s, "mxv", w.seq->maxVoices);
    const CSnap& snap = *w.seq->snap;
    s->writeId("snap", snapBytes);
    for (bool on : {snap.active.load(), snap.triplet.load(), snap.dotted.load(), false})
        s->writeByte(on);
    s->writeInt(snap.asIndex());
    if (w.seq->punch) writeIntBlock(s, "punch", 1);
    if (w.seq->preRoll) writeIntBlock(s, "preRoll", w.seq->preRoll);
    writeScales(s, w.seq->scales);
}

void writeEditor(SongWriting& w) {
    CStream* s = w.out;
    const CEditorComp& editor = *w.seq->editorComp;
    writeEditorBlock(s, "editored", editor.editorStruct);
    s->writeId("edopt", CEditorComp::optionBytes);
    s->write(editor.options, CEditorComp::optionBytes);
    writeIntBlock(s, "ed-noteh", w.host->settings.getInt(rowHeight, defaultRow));
    const auto [row, index] = editedPart(w.seq);
    if (row < 0) return;
    s->writeId("editorpp", 2 * intBytes);
    s->writeInt(row);
    s->writeInt(index);
}
