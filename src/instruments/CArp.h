#pragma once

#include "base/Newest.h"
#include "base/Random.h"
#include "engine/CComp.h"
#include "instruments/ArpSteps.h"
#include "instruments/CArpVoice.h"

#include <bitset>
#include <memory>

/// The arpeggiator: notes that come in turn into a pattern on its output, timed in ticks at the
/// host's tempo from the first key on. Everything else goes through at its time, and while it is
/// off all does.
///
/// A step without room for its note-offs is left out, and what has sounded keeps its note-off when
/// the arpeggiator is switched off, cleared or played another program.
class CArp : public CComp {
public:
    static constexpr int ownType = compArp;

    static constexpr int voiceCount = 32;
    /// Length of the two steps of a pair at full swing.
    static constexpr double swing[2] = {0.67, 1.33};

    Stored<int> latch{0};             ///< 1: keys are kept until the next chord
    Stored<int> ccGate{-1};           ///< controller that sets the gate, -1 none
    Stored<int> ccSwing{-1};          ///< controller that sets the swing, -1 none
    CArpVoice voices[voiceCount];     ///< graph holder; the first active one takes all keys
    std::unique_ptr<CMIDIQ> noteOffs; ///< to come, in ticks from the next block; graph holder
    std::unique_ptr<CMIDIQ> noteOffsTmp;

    explicit CArp(CQV* root);
    ~CArp() override;

    void process(int frames) override;
    /// Switched off it lets go of all keys.
    void enable(ToStore<int> on) override;
    /// Off the graph it forgets keys and notes.
    void sleep(int on) override;
    void perform(CUndoItem* item, int op) override;
    /// Replaces the programs by those of a block, if it has any. Interface thread.
    void read(CStream* stream, int end) override;
    void write(CStream* stream) override;
    /// Makes the ports and one program.
    void init() override;
    CComp* copy() override;
    CStr getProgName(int index) override;
    void setProgName(int index, const CStr& name) override;

    ListView<CArpProg> programs() const;
    CArpProg* getProg(); ///< the current one, or null

    // Settings of the current program, as its setters clamp them. Any thread but the audio thread.
    /// Lets go of all keys; random order also starts chance anew.
    void setMode(ToStore<int> v);
    void setOctaveRng(ToStore<int> v);
    void setTransposeMode(ToStore<int> v);
    void setGate(ToStore<float> v);
    void setProb(ToStore<float> v);
    /// Switched off it lets go of the keys that only the latch keeps.
    void setLatch(ToStore<int> v);
    /// Replaces the programs by those of a .qva file, as one undoable step that lets go of all
    /// keys; the first one is current then. False, and all stays as it is, without any. Interface
    /// thread.
    bool openProg(const CStr& path);
    bool openFromStream(CStream* stream);

    // Playing. Graph holder.
    /// Whether an event plays the arpeggiator, rather than going through.
    bool isMapped(const CMIDIBytes* event) const;
    void doMapping(const CMIDIBytes* event);
    /// Plays `frames` of the block from frame `offset` on.
    void processBlock(int frames, int offset, CMIDIQ* out);
    CArpVoice* addVoice(int note, int channel);
    void deleteAllVoices();
    using CComp::getSync;
    /// Ticks to the next step of the first active voice, 0 without one.
    double getSync();
    void start() override; ///< draws what it drew at the start before
    Random chance;         ///< of its own, so that others and threads change nothing

    Newest<ArpSight> sight; ///< what plays, to the interface

private:
    /// Requests of other threads, served at the top of `process`, at once while no blocks come.
    enum Request : unsigned { requestClear = 1, requestRelease = 2, requestSeed = 4 };

    void ask(unsigned bits);
    void serveRequests();
    void reseed();
    void show();
    CArpVoice* activeVoice();
    void releaseLatched();
    CArpVoice* keyPressed(int msg);
    CArpVoice* keyReleased(int note);
    void controlled(int msg);
    void pass(const CMIDIBytes* event, CMIDIQ* out);
    bool wentThrough(const CMIDIBytes* event) const;
    void silence();
    int frameOf(double ticks) const;
    void runVoice(CArpVoice& voice, int frames, int offset, CMIDIQ* out);
    void playStep(CArpVoice& voice, int frame, CMIDIQ* out);
    void playNote(const CArpVoice& voice, const CArpKey& key, double drawn, int frame, CMIDIQ* out);
    void playNoteOffs(int frames, int offset, CMIDIQ* out);

    Shared<unsigned> requests{0};
    Shared<unsigned> seed{0};
    ArpSight told;                 ///< last to the interface; graph holder
    bool wasOn = false;            ///< in the block before; graph holder
    std::bitset<16 * 128> through; ///< notes by channel and key that went through and sound
};
