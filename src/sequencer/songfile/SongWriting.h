#pragma once

#include "base/CList.h"
#include "base/CStream.h"

#include <unordered_map>
#include <vector>

class CSampleClip;
class CComp;
class CMIDIQ;
class CPart;
class CQV;
class CSample;
class CSeq;
class CSeqProg;
class CSubTrack;
class CTrack;
class Takes;
struct CEditorStruct;

/// A song while it is written. What nothing uses any more, a master without ghosts or a clip
/// without a drum, is left out, as it would be dropped by the next reading.
class SongWriting {
public:
    SongWriting(CSeq* song, CStream* stream);
    /// Of a part by itself, whose events name their samples by the place in `samples`.
    SongWriting(CSeq* song, CStream* stream, const ListOf<CSample>& samples);

    void write();

    CSeq* const seq;
    CQV* const host;
    CStream* const out;
    ListOf<CSampleClip> clips; ///< those in use

    int masterIndex(const CPart* master) const { return indexOf(masterOrder, master); }
    int sampleIndex(const CSample* sample) const { return indexOf(sampleOrder, sample); }
    /// Of the track that has an output port.
    int sourceIndex(const CMIDIQ* port) const { return indexOf(portOrder, port); }
    /// Where the content of a block of yet unknown size goes, empty.
    CStream& scratch();
    /// Writes the block that stands in `scratch`.
    void writeScratch(const char* name);

private:
    template <class T>
    using Order = std::unordered_map<const T*, int>;
    template <class T>
    static int indexOf(const Order<T>& order, const T* object) {
        const auto found = order.find(object);
        return found == order.end() ? -1 : found->second;
    }
    void orderMasters();
    void orderClips();

    std::vector<CPart*> masters;
    Order<CPart> masterOrder;
    Order<CSample> sampleOrder;
    Order<CMIDIQ> portOrder;
    CMemoryStream buffer;
};

void writeOptions(SongWriting& w);
void writeTrack(SongWriting& w, CTrack* track);
void writeLane(SongWriting& w, CSubTrack* lane);
void writeKit(SongWriting& w, CTrack* track);
void writePart(SongWriting& w, CPart* part, bool onTrack);
/// The lists of a part that is no ghost.
void writeEvents(SongWriting& w, CPart* part);
/// What the takes of notes and hits hold.
void writeTakeNotes(SongWriting& w, const Takes& takes);
void writeProg(SongWriting& w, CSeqProg* prog);
void writeEditor(SongWriting& w);
