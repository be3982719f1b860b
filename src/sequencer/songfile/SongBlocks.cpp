#include "base/BlockSearch.h"
#include "base/LoadBudget.h"
#include "base/Numbers.h"
#include "base/OpenBlock.h"
#include "engine/CQV.h"
#include "instruments/CDrumSound.h"
#include "instruments/CLayer.h"
#include "instruments/CSampleClip.h"
#include "instruments/SamplerFiles.h"
#include "sequencer/song/CEditorComp.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/PartOrder.h"
#include "sequencer/songfile/SongReading.h"
#include "sequencer/songfile/SongWriting.h"

#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace {

using BlockTable = std::unordered_map<std::string_view, const SongBlock*>;

const BlockTable& blockTable() {
    static const BlockTable table = [] {
        BlockTable made;
        for (const auto blocks : {optionBlocks(), trackBlocks(), laneBlocks(), kitBlocks(),
                                  partBlocks(), eventBlocks(), progBlocks()})
            for (const SongBlock& block : blocks) made.emplace(block.name, &block);
        return made;
    }();
    return table;
}

const SongBlock* blockOf(const CStr& name) {
    const auto known = blockTable().find(name.asChar());
    return known == blockTable().end() ? nullptr : known->second;
}

const BlockNames& blockNames() {
    static const BlockNames names = [] {
        BlockNames made;
        for (const auto& [name, block] : blockTable()) made.add(block->name);
        return made;
    }();
    return names;
}

template <class T>
std::vector<T*> asVector(const ListOf<T>& list) {
    std::vector<T*> all;
    for (T* object : list) all.push_back(object);
    return all;
}

template <class T>
T* at(const std::vector<T*>& all, int index) {
    return index >= 0 && size_t(index) < all.size() ? all[size_t(index)] : nullptr;
}

/// Whether `track` is one of the folders around itself.
bool insideItself(const CTrack* track) {
    for (const CTrack* around = track->folder; around; around = around->folder)
        if (around == track) return true;
    return false;
}

} // namespace

void CSeq::read(CStream* stream, int end) {
    SongReading(this, stream, end).read();
    songNotices.raise(SeqNotice::tracks);
}

void CSeq::write(CStream* stream) {
    SongWriting(this, stream).write();
}

SongReading::SongReading(CSeq* song, CStream* stream, int64_t end)
    : seq(song), in(stream, end), kit(song), pool(asVector<CSample>(song->host->samples)),
      links(std::make_unique<SongLinks>()) {
}

SongReading::SongReading(CSeq* song, CStream* stream, int64_t end, const ListOf<CSample>& samples)
    : seq(song), in(stream, end), kit(song), pool(asVector<CSample>(samples)), alone(true) {
}

SongReading::~SongReading() = default;

void SongReading::read() {
    while (!in.eof())
        if (!readNext()) LoadBudget::noteDamage();
    finish();
    in.leave();
}

/// Reads a block, and goes to the next. False when something is wrong with it. The size is believed
/// if another block begins there; else the next one is looked for.
bool SongReading::readNext() {
    const BlockNames& names = blockNames();
    const int64_t at = in.getPos();
    BlockStart start;
    if (!names.readStart(in, start)) {
        in.setPos(names.find(in, at + 1));
        return false;
    }
    const SongBlock* block = blockOf(start.name);
    const int size = block && block->bytes > 0 ? block->bytes : start.size;
    const bool fits = size >= 0 && names.isAt(in, start.body + size);
    const int64_t next = fits ? start.body + size : names.find(in, start.body);
    const bool good = !block || readBlock(*block, start.body, next);
    in.setPos(next);
    return good && !start.damaged;
}

bool SongReading::readBlock(const SongBlock& block, int64_t body, int64_t next) {
    const int64_t end = in.setEnd(next);
    in.setPos(body);
    const bool good = block.read(*this, saturate(next - body)) && in.getPos() == next;
    in.setEnd(end);
    return good;
}

std::unique_ptr<CPart> SongReading::readPart() {
    CStr name;
    while (!in.eof()) {
        if (!in.readText(name) || !in.has(int(sizeof(int)))) return nullptr;
        const int size = in.readInt();
        const int64_t next = in.getPos() + size;
        if (size < 0 || !in.has(size) || !readPartBlock(name, size) || in.getPos() != next)
            return nullptr;
    }
    return std::move(first);
}

bool SongReading::readPartBlock(const CStr& name, int size) {
    for (const auto blocks : {partBlocks(), eventBlocks()})
        for (const SongBlock& block : blocks)
            if (name == block.name) return block.read(*this, size);
    skip(size);
    return true;
}

void SongReading::skip(int bytes) {
    in.setPos(bytes, seekCurrent);
}

CSample* SongReading::sampleAt(int index) const {
    return at(pool, index);
}

CSongTrack* SongReading::addSongTrack() {
    constexpr int room = 6 << 10; // about what one takes
    CTrack* next = prog ? at(tracks, prog->tracks.getCount()) : nullptr;
    if (!next) return nullptr;
    LoadBudget::spend(room); // there is one for each track, so that all lists stay parallel
    auto* made = new CSongTrack(prog, next);
    prog->tracks.add(made);
    return made;
}

bool SongReading::hasRoom(const char* kind, size_t moreTracks, size_t morePrograms) const {
    const size_t wanted = tracks.size() + moreTracks;
    const size_t programs = size_t(seq->progs.getCount()) + morePrograms;
    if (wanted <= mostTracks && programs <= mostPrograms && wanted * programs <= mostSongTracks)
        return true;
    LoadBudget::leaveOut(kind);
    return false;
}

bool SongReading::reserveSlots(CPart* into, int slots) const {
    constexpr int slotRoom = 136; // about, with its play pointer
    const int more = slots - into->reservedSlots();
    if (more > 0 && !LoadBudget::take("automation", int64_t(more) * slotRoom)) return false;
    into->reserveSlots(slots);
    return true;
}

void SongReading::finish() {
    for (auto* program : seq->programs()) {
        prog = program;
        while (addSongTrack()) {
        }
        sortByPos(prog->timesigs);
        sortByPos(prog->tempos);
        prog->reserveTempos();
    }
    seq->curProg = asMinMax(curProg, 0, asMax(seq->progs.getCount() - 1, 0));
    kit.giveClips();
    bindFolders();
    bindGhosts();
    makeRoom();
    seq->orderParts(nullptr, nullptr, true);
    showEditPart();
    seq->links = std::move(links);
}

void SongReading::bindFolders() {
    for (const auto& [child, index] : folders) {
        CTrack* folder = at(tracks, index);
        if (!folder || folder->kind != trackFolder) continue;
        child->folder = folder;
        if (insideItself(child)) child->folder = nullptr;
    }
}

void SongReading::bindGhosts() {
    for (const auto& [ghost, index] : ghosts) {
        CPart* master = at(masters, index);
        if (master && master->type == ghost->type) ghost->ghostOf = master;
    }
}

void SongReading::makeRoom() {
    std::vector<int> slots;
    for (CTrack* t : tracks) slots.push_back(t->slotsInUse());
    for (auto* program : seq->programs()) {
        size_t i = 0;
        for (auto* t : program->tracks) {
            t->index.reserve(t->parts.getCount());
            for (auto* p : t->parts) reserveSlots(p, slots[i]);
            i++;
        }
    }
}

void SongReading::showEditPart() {
    CSeqProg* current = seq->getProg();
    if (!current || editTrack < 0) return;
    const auto* t = current->tracks.items(editTrack);
    if (t) seq->editorComp->setPart(t->parts.items(editPart));
}

SongWriting::SongWriting(CSeq* song, CStream* stream) : seq(song), host(song->host), out(stream) {
    int index = 0;
    for (auto* sample : host->samples) sampleOrder[sample] = index++;
    index = 0;
    for (auto* track : seq->tracks) {
        if (track->outPort()) portOrder[track->outPort()] = index;
        index++;
    }
    orderMasters();
    orderClips();
}

void SongWriting::orderMasters() {
    std::unordered_set<const CPart*> used;
    seq->eachSongTrack([&used](CSongTrack* t) {
        for (auto* part : t->parts)
            if (part->ghostOf) used.insert(part->ghostOf);
    });
    for (auto* master : seq->masterParts) {
        if (!used.count(master)) continue;
        masterOrder[master] = int(masters.size());
        masters.push_back(master);
    }
}

void SongWriting::orderClips() {
    std::unordered_set<const CSampleClip*> used;
    for (auto* track : seq->tracks) {
        const CLayer* layer = track->drumLayer();
        if (!layer) continue;
        for (auto* sound : drumSounds(*layer))
            used.insert(sound->clips, sound->clips + sound->clipCount);
    }
    for (auto* clip : seq->drumClips)
        if (used.count(clip)) clips.add(clip);
}

SongWriting::SongWriting(CSeq* song, CStream* stream, const ListOf<CSample>& samples)
    : seq(song), host(song->host), out(stream) {
    int index = 0;
    for (auto* sample : samples) sampleOrder[sample] = index++;
}

CStream& SongWriting::scratch() {
    buffer.setPos(0);
    return buffer;
}

void SongWriting::writeScratch(const char* name) {
    const int bytes = buffer.pos();
    out->writeId(name, bytes);
    out->write(buffer.data, bytes);
}

void SongWriting::write() {
    writeOptions(*this);
    for (auto* clip : clips) writeClip(out, clip);
    for (auto* track : seq->tracks) writeTrack(*this, track);
    for (CPart* master : masters) writePart(*this, master, false);
    writeIntBlock(out, "progi", seq->curProg);
    for (auto* prog : seq->programs()) writeProg(*this, prog);
    writeEditor(*this);
}
