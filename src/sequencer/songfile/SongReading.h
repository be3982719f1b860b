#pragma once

#include "base/BufferedView.h"
#include "base/CStr.h"
#include "sequencer/songfile/KitBlocks.h"
#include "sequencer/songfile/SongLinks.h"

#include <memory>
#include <span>
#include <utility>
#include <vector>

class CPart;
class CSample;
class CSeq;
class CSeqProg;
class CSongTrack;
class CSubTrack;
class CTempoPart;
class CTrack;
struct SongBlock;

/// A song while it is read: where in it the next block belongs, and the indices that can be looked
/// up only at the end. Order alone carries the tree: a part belongs to the latest song track, that
/// to the latest program, a lane to the latest track.
///
/// A block whose owner is missing is read and dropped. One that is not as it says is noted as
/// damage, and the reading goes on at the next block that can be found. Values are brought into the
/// range of their control.
class SongReading {
public:
    SongReading(CSeq* song, CStream* stream, int64_t end);
    /// Of a part by itself, whose events name their samples by the place in `samples`.
    SongReading(CSeq* song, CStream* stream, int64_t end, const ListOf<CSample>& samples);
    ~SongReading();
    SongReading(const SongReading&) = delete;
    SongReading& operator=(const SongReading&) = delete;

    /// Reads all blocks into the song, which must be empty.
    void read();
    /// Reads the blocks of the first part there is, and gives it, in no song and no ghost. Null
    /// without one, and when a block is not all there or not as long as it says.
    std::unique_ptr<CPart> readPart();

    CSeq* const seq;
    BufferedView in;
    CSeqProg* prog = nullptr;
    CSongTrack* songTrack = nullptr;
    CPart* part = nullptr;
    CTrack* track = nullptr;
    CSubTrack* lane = nullptr;
    CTempoPart* tempo = nullptr;
    KitReader kit;
    const std::vector<CSample*> pool; ///< the project's samples by index
    std::vector<CTrack*> tracks;
    std::vector<CPart*> masters;
    std::vector<std::pair<CTrack*, int>> folders;
    std::vector<std::pair<CPart*, int>> ghosts;
    std::unique_ptr<SongLinks> links;
    bool alone = false;           ///< one part is read, and no song
    std::unique_ptr<CPart> first; ///< that part
    bool newerAudio = false;      ///< "aevents2" was met: "aevents" tells the same once more
    int curProg = 0;
    int editTrack = -1, editPart = -1; ///< of the part that the editor shows

    void skip(int bytes);
    /// Adds the song track of the next track to the latest program, null when there is none left.
    CSongTrack* addSongTrack();
    CSample* sampleAt(int index) const;
    /// Whether so many more tracks or programs, called `kind`, are within what a song may hold.
    bool hasRoom(const char* kind, size_t moreTracks, size_t morePrograms) const;
    /// Gives a part slots for automation; false when there is no room for them.
    bool reserveSlots(CPart* into, int slots) const;

private:
    bool readNext();
    bool readBlock(const SongBlock& block, int64_t body, int64_t next);
    bool readPartBlock(const CStr& name, int size);
    void finish();
    void bindFolders();
    void bindGhosts();
    void makeRoom();
    void showEditPart();
};

/// How a block is read: false when what is left, which is the block alone, is too short for it.
struct SongBlock {
    const char* name;
    bool (*read)(SongReading& r, int size);
    int bytes = 0; ///< what it really has, where files tell a wrong size; else 0
};

/// The most that one song may hold, against files made of heads only.
constexpr size_t mostTracks = 1024, mostPrograms = 1024, mostSongTracks = 4096;

// The blocks of a song, by idea.
std::span<const SongBlock> optionBlocks();
std::span<const SongBlock> trackBlocks();
std::span<const SongBlock> laneBlocks();
std::span<const SongBlock> kitBlocks();
std::span<const SongBlock> partBlocks();
std::span<const SongBlock> eventBlocks();
std::span<const SongBlock> progBlocks();
