#pragma once

#include "engine/CComp.h"
#include "sequencer/play/CTrakPreview.h"
#include "sequencer/song/CGroove.h"
#include "sequencer/take/TrackTake.h"

#include <memory>

class CArp;
class CDrumSound;
class CLayer;
class CPart;
class CSample;
class CSeq;
class CSongTrack;
class CSubTrack;
class CSynthProg;
class PlayedNotes;
class RecQueue;

enum TrackKind : int {
    trackFolder = 1,
    trackMIDI = 2,
    trackAudio = 3,
    trackDrum = 5,
};

/// Bits of a track's `flags`.
constexpr unsigned trackSelected = 1;
constexpr unsigned trackOpen = 2;

constexpr int folderHeight = 21;
constexpr int drumOpenHeight = 64;
constexpr int firstDrumKey = 36; ///< plays the first sound of a kit

/// A row of the arrangement: what its parts play through, and how it is shown. It exists once; its
/// parts exist per program, in a `CSongTrack` each.
///
/// Ports and channels of a track, and the cables from the devices to them, belong to the `CSeq`,
/// which also is their `comp`; the lists of the track name them, unowned, from before the track is
/// linked to its end. `midiCables` holds the sources of an audio or drum track alone, owned.
class CTrack : public CComp {
public:
    static constexpr int ownType = compTrack;

    CTrakPreview preview;
    CSeq* seq;                       ///< the owner
    const int kind;                  ///< TrackKind; other numbers make a track without anything
    Stored<int> colour{-1};          ///< 0xRRGGBB, -1 the theme's
    Stored<short> channel{0};        ///< MIDI channel 0 to 15; -1 leaves messages where they are
    Stored<int> inSens{100};         ///< percent, see `setVel`
    Stored<unsigned char> recChs{2}; ///< 1 or 2
    Shared<int> height{40};          ///< pixels, closed
    Shared<int> openHeight{256};     ///< pixels
    Shared<int> scroll{576};         ///< pixels; use `getScroll`
    Shared<int> noteHeight{8};       ///< pixels per row
    Shared<int> laneMode{1}, laneStack{0};
    Stored<unsigned char> monitor{0}; ///< the input monitor switch
    Stored<unsigned char> recArm{0};  ///< the switch that readies the track for takes
    Stored<unsigned char> locked{0};  ///< its parts stay as and where they are
    Stored<unsigned char> live{0};    ///< what it plays waits for nothing that is later
    Shared<CTrack*> folder{nullptr};  ///< the folder track that holds this one, not owned
    Shared<int> activeLane{0};        ///< index into `editLanes`
    ListOf<CSubTrack> subTracks;      ///< owned: the lanes
    ListOf<CSubTrack> editLanes;      ///< those that the note editor shows
    CGroove groove;
    /// By note: the message that ends the note that is played live on this track, 0 when silent.
    /// Graph holder.
    int playingNotes[128] = {};
    /// Of an instrument track: what its notes go through before they leave. Off at first, and at
    /// rest on tracks of other kinds. Never null.
    const std::unique_ptr<CArp> arp;
    const std::unique_ptr<CSynthProg> synthProg; ///< of a drum track: its kit; else null

    // Recording (Recording.cpp). Set by the graph when a take begins, and given back at its end.
    Shared<int> takeLatency{0}; ///< frames by which its input comes later than what is heard
    Shared<unsigned char> fromDevice{1}; ///< that comes from a device
    Shared<unsigned char> armed{0};      ///< takes part in a take
    Shared<unsigned char> takesAudio{0}; ///< and writes its input into `recSample`
    Shared<CPart*> recPart{nullptr};     ///< recorded into; null until there is one
    Shared<CSongTrack*> recSongTrack{nullptr};
    Shared<unsigned char> recAttached{0}; ///< `recPart` is in the song and in the take's step
    Shared<int> lastRecPos{-1};           ///< last tick at which automation was written, -1 none
    /// Of a selected audio track: owned, in the format of takes and ready for the next one.
    Shared<CSample*> recSample{nullptr};
    const std::unique_ptr<RecQueue> recQueue;  ///< of an instrument or drum track; else null
    const std::unique_ptr<PlayedNotes> played; ///< of the same; else null
    TrackTake take;

    CTrack(CQV* root, CSeq* owner, int trackKind);
    ~CTrack() override;
    CTrack(const CTrack&) = delete;
    CTrack& operator=(const CTrack&) = delete;

    /// Clears the guards, and prepares the arpeggiator: the track's queues and buffers are cleared
    /// by the `CSeq`, which owns them.
    void prepare(int frames) override;
    /// Plays what has voices in this block: song tracks that `willSound`, and drum strips.
    void sound(int frames) override;
    void willSound(CSongTrack* songTrack);
    void sendParts(int bus, CInputChannel* to, int frames) override; ///< of drums
    void idle() override;
    void sleep(int on) override;
    /// Leads what the block has played on an instrument track through its arpeggiator. Graph
    /// holder.
    void arpeggiate(int frames);

    CLayer* drumLayer() const;              ///< the sounds of the kit; null but on a drum track
    CDrumSound* drumSound(int index) const; ///< null outside the kit

    bool selected() const { return hasFlag(trackSelected); }
    bool open() const { return hasFlag(trackOpen); }
    void setSelected(bool on) { setFlag(trackSelected, on); }
    void setOpen(bool on) { setFlag(trackOpen, on); }

    // MIDI. Any thread.
    /// `msg` on the track's channel.
    int setCh(int msg) const;
    /// A note-on with its velocity 1 to 127 brought nearer to 127 by `inSens`.
    int setVel(int msg) const;
    /// Keeps account of what is played live. Graph holder.
    void addRemovePlayingNote(int msg);

    // Takes. Any thread.
    /// Whether a take that begins now records here: while a track of the song is switched to be
    /// armed, those that are, else the selected ones; never a locked one.
    bool wantsTake() const;

    // View.
    static constexpr int leastRow = 28, mostRow = 200, usualRow = 44; ///< pixels
    /// Height of the track's row in the arrangement in pixels, and its own setting: a number beyond
    /// the least and the most becomes these, 0 takes the usual height.
    int getRowHeight() const;
    void setRowHeight(int pixels);
    bool takesShown = false; ///< under it, in rows of their own; interface thread, not stored
    bool ownRowHeight() const { return rowHeight != 0; }
    /// Pixels; `withLanes` adds the visible lanes of an opened track.
    int getHeight(bool withLanes) const;
    int getScroll() const;
    void setScroll(int pixels);
    /// Pixels per note row, at least 2; the note at the middle of the view stays there.
    void setVertZoom(int pixels);
    /// The active lane of the editor, the first when the index is out of range, null without lanes.
    CSubTrack* activeParam();

    // Lanes.
    /// Lowest slot that no automation lane uses, 64 when there is none. Here and below, lanes that
    /// an open step is about to add count too.
    int getFreeParam(const CUndo* undo = nullptr);
    /// One more than the highest slot in use.
    int slotsInUse(const CUndo* undo = nullptr);
    /// Takes the lane, makes room in every part of the track, and links it: at once, under the
    /// graph hold, or by the step. An automation lane gets a free slot first; without one it is
    /// deleted, and the result is null.
    CSubTrack* addLane(CSubTrack* lane, CUndo* undo);
    /// The first half of `addLane` for an automation lane: a slot, and room in every part. False,
    /// and the lane is deleted, without a free slot.
    bool placeLane(CSubTrack* lane, const CUndo* undo);
    /// Finds the automation lane of a parameter, null when there is none.
    CSubTrack* findLane(CObject* object, int param);

    /// Records a point of a lane into the part of the running take, on a grid of 240 ticks counted
    /// from the part's tick 0; the first one of a pass replaces what the lane has there. Nothing
    /// without a part.
    void recordAutomation(int tick, int slot, float value);
    /// What is recorded from now on is a new pass. Graph holder.
    void nextPass();
    /// Keeps `recSample` ready for a take while the track is selected. Interface thread.
    void readyForTake();

private:
    CSongTrack* toSound = nullptr; ///< the first one; graph holder
    Shared<int> rowHeight{0};
    void reserveSlots(int slots, const CUndo* undo);
};

/// The colour of a new track, one of sixteen hues.
int getRandomTrackColor();
/// Default name word of a kind: "folder", "instrument", "audio", "drum", "track" for all others.
CStr trackWord(int kind);
/// Title of the undo step that adds a track.
CStr addTrackTitle(int kind);
