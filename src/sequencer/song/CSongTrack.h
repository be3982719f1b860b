#pragma once

#include "base/Atomic.h"
#include "base/CList.h"
#include "base/CObject.h"
#include "base/Stored.h"
#include "sequencer/play/RepeatQueue.h"
#include "sequencer/song/Chance.h"
#include "sequencer/song/PartIndex.h"

#include <memory>

class CFreezeItem;
class AudioVoices;
class CDrumSound;
class CMIDIQ;
class CPart;
class CSeqProg;
class CSubTrack;
class CTrack;
class CUndo;

/// Bits of a song track's `flags`.
constexpr unsigned songTrackMuted = 4;
constexpr unsigned songTrackSoloed = 8;

/// Requests to playback, served at the next block.
constexpr unsigned requestSetup = 64;    ///< play pointers are rebuilt
constexpr unsigned requestFlush = 128;   ///< sounding notes end
constexpr unsigned requestLanes = 0x200; ///< an edit: envelope pointers are rebuilt, and the main
                                         ///< pointer of a part whose list is another one

/// A word of requests: any thread asks, the audio thread takes.
class PlayRequests {
public:
    void ask(unsigned bits) { word.fetchOr(bits); }
    /// Whether any of `bits` was asked for; they are withdrawn.
    bool take(unsigned bits) { return pending(bits) && (word.fetchAnd(~bits) & bits); }
    bool pending(unsigned bits) const { return (word & bits) != 0; }

private:
    Shared<unsigned> word{0};
};

/// A track within one program: its parts and their playback.
class CSongTrack : public CObject {
public:
    PlayRequests requests;
    Shared<bool> audible{false}; ///< set by `setup` from mute and solo
    bool frozen = false;         ///< set by `setup`: files play in place of the events
    PartIndex index;             ///< of `parts`; graph holder
    unsigned pass = 0;           ///< counts the rebuilds of all play pointers; graph holder
    double pos = 0.0;            ///< play pointer in ticks; graph holder
    CMIDIQ* noteOffsNext;        ///< owned; graph holder
    CMIDIQ* noteOffs;            ///< owned; note-offs to come, in ticks from the block's start
    Chance chance;               ///< of its notes and hits; graph holder
    RepeatQueue repeats;         ///< of notes and hits that have begun; graph holder
    double reached = 0.0;        ///< tick before which what has no pointer is done; graph holder
    CSeqProg* prog;              ///< the owner
    CTrack* track;               ///< not owned
    ListOf<CPart> parts;         ///< owned, in the order of `CSeq::orderParts`
    ListOf<CFreezeItem> freezeItems; ///< owned
    /// What plays sound here: null but on audio and drum tracks, and where a freeze file plays.
    std::unique_ptr<AudioVoices> voices;
    CSongTrack* nextToSound = nullptr; ///< of the same track, in this block; graph holder

    CSongTrack(CSeqProg* program, CTrack* songTrack);
    ~CSongTrack() override;
    CSongTrack(const CSongTrack&) = delete;
    CSongTrack& operator=(const CSongTrack&) = delete;

    bool muted() const { return hasFlag(songTrackMuted); }
    bool soloed() const { return hasFlag(songTrackSoloed); }
    void setMuted(ToStore<bool> on) { setFlag(songTrackMuted, on); }
    void setSoloed(ToStore<bool> on) { setFlag(songTrackSoloed, on); }

    /// Whether a part of this class may stand on this kind of track.
    bool acceptPart(const CPart* part) const;
    bool takesEdits(const CPart* part) const; ///< the same for an edit: not on a locked track
    /// Takes a part, makes room in it for the track's lanes, and links it: by the step, or at once
    /// under the graph hold. A part that is not accepted is deleted, and the result is null.
    CPart* addPart(CPart* part, CUndo* undo);
    /// As `addPart` without a step, for many parts: neither holds the graph nor sorts. The song
    /// track must not be playing; `CSeq::orderParts` follows.
    CPart* linkPart(CPart* part);
    /// Largest end of a part in ticks.
    int duration();

    // Playback (SongPlayback.cpp, SongSeek.cpp). Graph holder.
    /// Rebuilds the play state for a position. `offset`, 0 or below, is where the block began in
    /// ticks from there: clips that are on already sound from that far into the block on.
    /// `keepMain` leaves the main pointers of unchanged lists alone.
    void setup(double position, double offset, bool keepMain);
    /// Has the parts play that begin before a tick.
    void admitParts(double until);
    double swingLead() const { return lead; } ///< most ticks by which the swing moves events
    /// Asks each part that plays, in their order, and keeps those whose answer is true.
    template <class F>
    void eachPlaying(F&& ask);
    /// Plays `frames` of the block from frame `offset` on.
    void process(int frames, int offset);
    /// Starts a drum of the track, `delay` frames into the block. Velocity 0 to 1, pan -1 to 1,
    /// `tune` a factor of the speed; `part` may be null.
    void hitDrum(CDrumSound* sound, CPart* part, float velocity, float pan, float tune, int delay);
    /// Ends what sounds at a frame of the block, and notes that are due before it at their own.
    /// `force` includes drum voices.
    void flush(int frame, bool force);
    void stop();

private:
    void seekParts(double position, bool keepMain, int delay);
    void playPart(CPart* part, double position, bool keepMain, int delay);
    void chaseLane(CSubTrack* lane, double position);
    bool insideRamp(const CSubTrack* lane, double position);

    CPart* playingParts = nullptr;      ///< the first of those that play
    CPart** playingEnd = &playingParts; ///< where the next one is linked
    size_t coming = 0;                  ///< entry of `index` that has not begun yet
    double lead = 0.0;                  ///< ticks by which the swing may bring events ahead
};

template <class F>
void CSongTrack::eachPlaying(F&& ask) {
    CPart** link = &playingParts;
    while (CPart* part = *link) {
        if (ask(part))
            link = &part->nextPlaying;
        else
            *link = part->nextPlaying;
    }
    playingEnd = link;
}
