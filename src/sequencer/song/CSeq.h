#pragma once

#include "base/Numbers.h"
#include "engine/CComp.h"
#include "sequencer/edit/SongClipboard.h"
#include "sequencer/play/PlayedNotes.h"
#include "sequencer/play/StretchersAhead.h"
#include "sequencer/song/CPart.h"
#include "sequencer/song/CSeqProg.h"
#include "sequencer/song/CSongTrack.h"
#include "sequencer/song/CTrack.h"
#include "sequencer/song/SongOptions.h"
#include "sequencer/song/SongScales.h"
#include "sequencer/song/SongSelection.h"
#include "sequencer/song/StepMarks.h"
#include "sequencer/song/TempoView.h"
#include "sequencer/take/TakeRecorder.h"

#include <functional>
#include <memory>
#include <vector>

class CSampleClip;
class CDrumSound;
class CEditorComp;
class CSample;
class CSnap;
class DrumKit;
class ForgetSet;
struct SongLinks;

/// What becomes of the two sides of a cut.
enum SplitMode : int {
    splitApart = 1,     ///< the right side moves on by the gap
    splitKeepRight = 2, ///< it alone stays, moved back by the gap
    splitKeepLeft = 3,  ///< the left side alone stays
    splitCutOut = 4,    ///< the gap is cut out of the part, and the right side closes up
};

/// With it on, and the arranger, note-ons at the MIDI input choose markers and reach no track.
extern Shared<int> useMarkersMIDINoteTrigger;

/// The song as a component: tracks, programs (arrangements over the same tracks), parts, events.
/// It owns the ports and channels of its tracks.
///
/// The model is edited on the interface thread: structure and content through `CUndo`, plain values
/// by single stores. Whatever has no step here acts at once and holds the graph for it.
class CSeq : public CComp {
public:
    static constexpr int ownType = compSeq;

    ListOf<CTrack> tracks; ///< owned
    Shared<unsigned char> playing{0}, recording{0};
    Shared<double> songTicks{0.0}; ///< played since start
    PlayedTime playedTime;
    Stored<int> maxVoices{6};
    Shared<int> preview{1};        ///< notes sound when they are edited
    Shared<int> autoQuantize{0};   ///< of recorded notes
    ListOf<CPart> masterParts;     ///< owned: what ghosts share
    ListOf<CSampleClip> drumClips; ///< owned: what the drums of all tracks play
    SongOptions options;
    TempoView tempo;         ///< of the current program
    SongSelection selection; ///< in the arrangement
    SongClipboard clipboard;
    TakeRecorder recorder;
    Notices<SeqNotice> songNotices;                ///< to the views
    const std::unique_ptr<CSnap> snap;             ///< the grid of the view that edits
    const std::unique_ptr<CEditorComp> editorComp; ///< the editor's window
    /// Takes begin at the left locator, and but for a loop end at the right one.
    Stored<unsigned char> punch{0};
    static constexpr int mostPreRoll = 16;
    Stored<int> preRoll{0}; ///< bars that a song that stands plays before it records
    SongScales scales;
    StretchersAhead stretchersAhead;

    explicit CSeq(CQV* root);
    ~CSeq() override;
    CSeq(const CSeq&) = delete;
    CSeq& operator=(const CSeq&) = delete;

    // Playback (SongPlayback.cpp). `start`, `stop`, `setPos` come from the host's transport; all
    // with the graph.
    void start() override;
    void stop() override;
    /// Ticks, at least 0; ignored while recording.
    void setPos(double ticks) override;
    void prepare(int frames) override;
    void process(int frames) override;
    void planRender(PlanBuilder& plan) override;
    void planStrip(PlanBuilder& plan) override;

    // Takes: what the host asks, and what views do.
    void rec(int) override { recorder.arm(); }
    double planTake(double ticks, bool running) override { return recorder.plan(ticks, running); }
    bool leadsIntoTake() override { return recorder.leadsIn(); }
    void afterRec() override { recorder.finish(); }
    /// A control was moved: while the track that it sounds through is armed, a point is recorded.
    void recParam(CObject* object, int param, float value) override;
    /// Switches step recording of the part that is edited on or off.
    void stepRecClicked(CObject* = nullptr);
    int gridTicks() const; ///< of `snap`

    // The rest of CComp.
    void setFrames(int frames) override;
    void setRate(double rate) override;
    void diskRead() override;
    /// A drum sound at once, velocity 0 to 1. Graph holder.
    void playSound(void* sound, float velocity) override;
    void init() override;
    void idle() override;
    void perform(CUndoItem* item, int op) override;
    /// Parts, points of tempo and signatures that come, go or show other content.
    bool takesWhole(const CUndoItem* item) override;
    /// The parts come in order.
    void planStep(UndoPlan& plan, CUndo* step) override;
    void performPlan() override;
    /// 32: the song's content changed: parts and points are put in order, ghosts counted. Interface
    /// thread.
    void doUpdate(int code) override;
    void raiseSong(NoticeSet<SeqNotice> set) override { songNotices.raise(set); }
    /// 1 the position, 2 the loop switch, 3 and 4 the loop section; else `sync`.
    double getSync(int question) override;
    void setLoop(ToStore<int> on) override;
    int getLoop() override;
    void getLoopSection(int& from, int& to) override;
    void setLoopSection(ToStore<int> from, ToStore<int> to) override;
    double getPos() override;
    void getTimeSig(int& num, int& den) override;
    int freezed(COutputChannel* channel) override;
    int renderDuration() override;
    /// The track that has a channel or port.
    CComp* getComp(CObject* io) override;
    void getTempoMap(CMIDIQ* queue) override;
    /// An object is about to be freed: lanes, selection and programs let go of it and of what is in
    /// it. Interface thread.
    void del(CObject* object) override;
    void forget(const ForgetSet& gone); ///< the same for many

    // Programs.
    ListView<CSeqProg> programs() const { return listAs<CSeqProg>(progs); }
    CSeqProg* getProg();
    /// A new program with a song track for every track, owned by the caller.
    CSeqProg* createProgram();
    /// "Mix " and a running number.
    CStr getDefaultProgramName();

    // Tracks.
    /// A new track of that kind, with ports, channels, cables and lanes, at an index of `tracks`,
    /// -1 the end. By the step, or at once under the graph hold. Gives its song track of `prog`,
    /// which may be a program that is not linked yet. Without room for it null, after a message.
    CSongTrack* addTrack(int kind, CSeqProg* prog, CUndo* undo, int index = -1);
    /// The same for a track of the kind of another, with all its cables, but for those to
    /// `without`, which may be null; it has no lanes, and its name and all else are still to be
    /// set. By the step; its song tracks wait there too.
    CTrack* addTrackLike(const CTrack* source, const CComp* without, CUndo* undo, int index);
    /// Whether a file can hold the cables of `more` tracks of a kind, besides those that an open
    /// step is about to add: it numbers the ports and channels of a song by a byte.
    bool hasTrackRoom(int kind, const CUndo* undo = nullptr, int more = 1) const;
    /// Records that a track leaves, with everything that belongs to it. A take on it ends before.
    void removeTrack(CTrack* track, CUndo* undo);
    /// The kind's word, "-", and a number that no track bears yet, nor one that the step adds.
    CStr autoNameTrack(int kind, const CUndo* undo = nullptr);
    CSongTrack* partToSongTrack(const CPart* part);
    CTrack* partToTrack(const CPart* part);
    bool isLocked(const CPart* part); ///< whether its track is: no edit reaches it

    // What is selected, by `selection`.
    void selectTrack(CSongTrack* songTrack, bool on) { selection.selectTrack(songTrack, on); }
    void unselectTracks() { selection.unselectTracks(); }
    CPart* getEditPart();
    CPart* getEditPartAndTrack(CTrack*& track) { return selection.editPart(track); }
    CPart* getFirstSelectedPart(int partType, CSongTrack** songTrack) {
        return selection.firstPart(partType, songTrack);
    }
    void unselectParts() { selection.unselectParts(); }
    void selectAll() { selection.selectAll(); }
    void getPartSummary(CPartSummary& summary) { selection.summarize(summary); }

    // Parts.
    void clearCopies() { clipboard.clear(); }
    /// Orders by position, at one position the longer part first: every list with `all`, else `a`
    /// and `b`, which may be null. Allocates nothing. Graph holder.
    void orderParts(CList* a, CList* b, bool all);
    /// Length in ticks, at least 1: a single clip at its own speed follows its sample, and 0 counts
    /// as 960.
    int getTicks(CPart* part);
    /// The same of a part that plays: the length of a clip is worked out only when what it follows
    /// has changed, and the part's own stays. Graph holder.
    int playedTicks(CPart* part);
    void updateGhostCount();
    /// A ghost of `part`, owned by the caller, who places it; records the master that is needed for
    /// the first one.
    CPart* makeGhost(CPart* part, CUndo* undo);

    // Edits of parts (PartSplit.cpp, PartClipboard.cpp, SamplePaste.cpp, PartActions.cpp).
    /// Records that two parts come in place of one: that before the cut, `at` ticks behind its
    /// start, and that behind it. Notes stay whole on the side where they begin, clips are cut,
    /// points on the cut come to both sides. Neither is selected nor a ghost. `gap` in ticks, at
    /// least 0, is of use to all modes (SplitMode) but `splitKeepLeft`. False, and nothing is
    /// recorded, where the part does not span the cut, or its only clip has hardly a frame on one
    /// side.
    bool splitPart(CSongTrack* songTrack, CPart* part, int at, int gap, int mode, CUndo* undo);
    /// One step: cuts the events of the part that is edited at the position; without such a part,
    /// the selected parts that span the position, or when none is selected all that do.
    void splitAtCursorClicked(CObject* = nullptr);
    /// One step: fades the first two selected audio parts over the time in which both play.
    void crossfadeClicked(CObject* = nullptr);
    /// Appends a copy to `clipboard`: of the selected notes, drums or clips when there are any, and
    /// then from the first of them on, else of the whole part.
    void copyToClipboard(CPart* part);
    /// Records that the events of a copied part come into another of its class, the first at
    /// `tick`, and selects them and that part. Between parts of a single clip each, frames are
    /// inserted into a new file. False, and nothing is recorded, for parts that don't go together.
    bool pasteData(CUndo* undo, CPart* source, CPart* target, int tick);
    /// A new, empty sample in the format of another, with a file where new audio goes, that is not
    /// yet to be kept. The caller owns it; null if it can't be made.
    CSample* cloneSampleType(CSample* like);

    // Drums.
    /// Kick, snare, clap and two hats that choke each other, at the end of the track's kit.
    void addStandardKit(CTrack* track);
    /// Adds the sounds of a kit file, by the step if there is one. False without any in it.
    bool openDrumBank(CTrack* track, const CStr& path, CUndo* undo);
    /// The sounds of a kit, made for the track's layer, come to the end of it, and the track's
    /// opened height grows with them; by the step if there is one.
    void takeKit(DrumKit& kit, CTrack* track, CUndo* undo);
    CTrack* drumToTrack(const CDrumSound* sound);
    /// Records that a drum sound leaves with its events; those of later sounds follow them.
    void deleteDrum(CDrumSound* sound, CUndo* undo);
    /// Ends everything that sounds on audio and drum tracks at once. Graph holder.
    void dropVoices();

    // Ticks and frames, by `tempo`.
    double framesToTicks(double ticks, double frames, int rate) {
        return tempo.framesToTicks(ticks, frames, rate);
    }
    double ticksToFrames(int from, int ticks, int rate) {
        return tempo.ticksToFrames(from, ticks, rate);
    }
    CTempoPart* getTempoAtPos(int tick) { return tempo.pointAt(tick); }
    CTempoPart* getNextTempoChange(int tick) { return tempo.pointAfter(tick); }
    int ticksToNextTempoChange(double tick) { return tempo.ticksToNext(tick); }

    /// Hands the song's time signature to the grid of a view. `sender` is a CSnap.
    void onGetSnap(CSnap* sender);
    void writeSettings();

    // Files (SongBlocks.cpp, SongBinding.cpp). Interface thread.
    /// The blocks of a whole song, into a sequencer without tracks and programs that no block of
    /// audio reaches yet. Its audio tracks have ports then; all other ports and channels are still
    /// to be made and handed out, and what the song refers to may come later. `afterRead` follows.
    void read(CStream* stream, int end) override;
    void write(CStream* stream) override;
    /// Brings ports and channels into the order of the tracks, in which files number them.
    void saving() override;
    /// Binds lanes, sources of tracks and freeze files to what they name, drops clips and masters
    /// that nothing uses, and takes the transport to the song's position.
    void afterRead();
    CComp* copy() override;
    /// A further program without song tracks, at the end.
    CSeqProg* addProgram(const CStr& name);
    /// Ports for an audio track that a file tells: they stand in no file.
    void addAudioPorts(CTrack* track);
    std::unique_ptr<SongLinks> links; ///< between `read` and `afterRead`; else null

    /// Calls `visit(CSongTrack*)` for each song track of each program.
    template <class F>
    void eachSongTrack(F&& visit);

    /// For edits that reach a track's lanes past a step. Graph holder.
    void lanesChanged(const CTrack* track);

private:
    int programCount = 0;
    StepMarks stepMarks;             ///< of the step on its way
    Shared<unsigned> clipChanges{0}; ///< counts what may have changed how long clips last

    void eachDrum(const std::function<void(CDrumSound*)>& visit);
    struct NewTrack;
    void makePorts(CTrack* track);
    void makeChannels(CTrack* track);
    void makeTrackIO(NewTrack& made);
    CSongTrack* linkTrack(NewTrack& made, CSeqProg* prog, CUndo* undo, int index);
    static bool partBefore(CPart* a, CPart* b, void* seq);
    void markerMoved(CObject* marker, const CList* list);
    void songTrackMoved(CObject* object, const CList* list);
    void lanesMoved(const CList* list);
    void freezeMoved(CUndoItem* step, const CList* list, bool back);
    void bindLinks();
    void linkEnds(CTrack* track);
};

/// Enters the sequencer's component types. Start-up only.
void enterSequencer();

template <class F>
void CSeq::eachSongTrack(F&& visit) {
    for (auto* prog : programs())
        for (auto* songTrack : prog->tracks) visit(songTrack);
}
