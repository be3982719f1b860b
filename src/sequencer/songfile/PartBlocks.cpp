#include "base/LoadBudget.h"
#include "base/OpenBlock.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "sequencer/songfile/FieldReading.h"
#include "sequencer/songfile/SongReading.h"
#include "sequencer/songfile/SongWriting.h"
#include "sequencer/take/Takes.h"

#include <climits>
#include <memory>

// Parts, without what is in them.

namespace {

constexpr int intBytes = 4;
constexpr int partRoom = 512;       ///< about what a part takes
constexpr int partBytes = 27;       ///< of a part without a name
constexpr unsigned formerMuted = 2; ///< the mute bit of older files

std::unique_ptr<CPart> newPart(int type) {
    if (type == partMIDI) return std::make_unique<CMIDIPart>();
    if (type == partAudio) return std::make_unique<CAudioPart>();
    if (type == partDrum) return std::make_unique<CDrumPart>();
    return std::make_unique<CPart>();
}

unsigned flagsOf(unsigned stored) {
    return stored & formerMuted ? (stored & ~formerMuted) | partMuted : stored;
}

void addMaster(SongReading& r, CPart* part) {
    r.part = part;
    r.masters.push_back(part);
    r.seq->masterParts.add(part);
}

/// A part that may not stand on the track is dropped.
void addPart(SongReading& r, std::unique_ptr<CPart> part, int ghostOf) {
    if (!r.songTrack || !r.songTrack->acceptPart(part.get())) return;
    r.part = part.release();
    r.songTrack->parts.add(r.part);
    if (ghostOf >= 0) r.ghosts.emplace_back(r.part, ghostOf);
}

void keepFirst(SongReading& r, std::unique_ptr<CPart> part) {
    if (r.first) return;
    r.first = std::move(part);
    r.part = r.first.get();
}

bool readPart(SongReading& r, int) {
    r.part = nullptr;
    if (!r.in.has(partBytes)) return false;
    r.in.readByte();
    std::unique_ptr<CPart> part = newPart(r.in.readByte());
    const bool onTrack = r.in.readByte() == 1;
    const int ghostOf = r.in.readInt();
    part->pos = readTicks(r.in);
    part->offset = readTicks(r.in);
    part->length = readTicks(r.in);
    part->flags = flagsOf(unsigned(r.in.readInt()));
    const bool whole = r.in.readText(part->id);
    if (r.alone && !whole) return false;
    if (!LoadBudget::take("parts", partRoom)) return whole;
    if (r.alone)
        keepFirst(r, std::move(part));
    else if (onTrack)
        addPart(r, std::move(part), ghostOf);
    else
        addMaster(r, part.release());
    return whole;
}

bool readColour(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int colour = r.in.readInt();
    if (r.part) r.part->colour = colour;
    return true;
}

CAudioPart* audioPart(SongReading& r) {
    return r.part ? asAudio(r.part) : nullptr;
}

bool readChannels(SongReading& r, int) {
    if (!r.in.has(intBytes)) return false;
    const int chs = readLimited(r.in, 1, 2);
    if (CAudioPart* part = audioPart(r)) part->chs = chs;
    return true;
}

bool readMulticlip(SongReading& r, int) {
    if (!r.in.has(1)) return false;
    const int multiclip = readSwitch(r.in);
    if (CAudioPart* part = audioPart(r)) part->multiclip = multiclip;
    return true;
}

bool readTakes(SongReading& r, int) {
    constexpr int takeBytes = 4 * intBytes, pieceBytes = 3 * intBytes;
    const auto readCount = [&r](int bytes) {
        const int count = r.in.has(intBytes) ? r.in.readInt() : -1;
        return count >= 0 && count <= r.in.left() / bytes ? count : -1;
    };
    const int count = readCount(takeBytes);
    if (count < 0 || count > Takes::most) return false;
    auto takes = std::make_unique<Takes>();
    for (int i = 0; i < count; i++) {
        Takes::Take t{};
        t.at = readTicks(r.in);
        t.ticks = readLimited(r.in, 0, maxTicks);
        t.start = readLimited(r.in, 0, INT_MAX);
        t.end = readLimited(r.in, t.start, INT_MAX);
        takes->takes.push_back(t);
    }
    const int pieces = readCount(pieceBytes);
    if (pieces < 0 || !LoadBudget::take("parts", int64_t(pieces) * pieceBytes)) return false;
    for (int i = 0; i < pieces; i++) {
        const int take = r.in.readInt(), from = readTicks(r.in), to = readTicks(r.in);
        const int before = takes->comp.empty() ? from : takes->comp.back().to;
        if (take < 0 || take >= count || from >= to || from < before) return false;
        takes->comp.push_back({take, from, to});
    }
    if (r.part) delete r.part->takes.exchange(takes.release());
    return true;
}

void writeTakes(CStream* s, const Takes& takes) {
    const OpenBlock block(s, "takes");
    s->writeInt(int(takes.takes.size()));
    for (const Takes::Take& t : takes.takes)
        for (int v : {t.at, t.ticks, t.start, t.end}) s->writeInt(v);
    s->writeInt(int(takes.comp.size()));
    for (const Takes::Piece& p : takes.comp)
        for (int v : {p.take, p.from, p.to}) s->writeInt(v);
}

constexpr SongBlock blocks[] = {{"part", readPart},
                                {"takes", readTakes},
                                {"partCol", readColour},
                                {"achs", readChannels},
                                {"multiclip", readMulticlip}};

} // namespace

std::span<const SongBlock> partBlocks() {
    return blocks;
}

void writePart(SongWriting& w, CPart* part, bool onTrack) {
    CStream* s = w.out;
    const CAudioPart* audio = asAudio(part);
    if (audio) w.seq->getTicks(part); // what its clip covers decides on its length
    s->writeId("part", partBytes + part->id.length());
    for (int v : {part->category, part->type, int(onTrack)}) s->writeByte((unsigned char)v);
    s->writeInt(w.masterIndex(part->ghostOf));
    for (int v : {int(part->pos), int(part->offset), int(part->length), int(part->flags.load())})
        s->writeInt(v);
    s->writeStr(part->id);
    if (!part->ghostOf) {
        writeIntBlock(s, "partCol", part->colour);
        if (audio) writeIntBlock(s, "achs", audio->chs);
        writeEvents(w, part);
    }
    if (audio && audio->multiclip == 1) {
        s->writeId("multiclip", 1);
        s->writeByte(1);
    }
    const Takes* takes = part->ghostOf ? nullptr : takesOf(part);
    if (!takes) return;
    writeTakes(s, *takes);
    writeTakeNotes(w, *takes);
}
