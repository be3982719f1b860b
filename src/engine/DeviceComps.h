#pragma once

#include "base/Ring.h"
#include "engine/CComp.h"

class ForgetSet;

constexpr int maxDeviceChannels = 32;

/// What audio components on the edge of the graph share: the device channels that they stand for.
class CDeviceAudio : public CComp {
public:
    explicit CDeviceAudio(CQV* root) : CComp(root) {}

    Shared<int> chs{0}; ///< device channels in use: 0, 1 (both sides the same) or 2
    Shared<int> dev0{-1},
        dev1{-1}; ///< their places among the enabled ones of the device, -1 unused
    Shared<int> channelUsed[maxDeviceChannels];

    /// Finds `chs`, `dev0` and `dev1`: the first two flags of `channelUsed`. Graph holder.
    void setDevs();
    void prepare(int frames) override;
    void read(CStream* stream, int end) override;
    void write(CStream* stream) override;
};

/// Inputs of the device; `libio` fills its output.
class CAudioIn : public CDeviceAudio {
public:
    static constexpr int ownType = compAudioIn;

    explicit CAudioIn(CQV* root);
    void init() override;
    void process(int frames) override;
};

/// Outputs of the device, where the traversal begins.
class CAudioOut : public CDeviceAudio {
public:
    static constexpr int ownType = compAudioOut;

    /// What is heard in place of what arrives, as it leaves a strip; null for none. Interface
    /// thread, which lets go of it before it leaves the graph; blocks read it.
    Shared<const COutputChannel*> listened{nullptr};

    explicit CAudioOut(CQV* root);
    void init() override;
    void planRender(PlanBuilder& plan) override;
    void process(int frames) override;
    /// Puts what is listened to in place of the output; behind all other work of a block, and not
    /// in a render. Graph holder.
    void playListened(int frames);
    void forget(const ForgetSet& gone); ///< listens to nothing of it. Graph holder

private:
    const COutputChannel* heard = nullptr; ///< fades in or out, or is all that is heard
    PlanFade mixFade;                      ///< of what arrives
};

/// MIDI inputs of the device; `libio` fills its port. Adds the notes of an on-screen keyboard, with
/// velocity sensitivity and auto-quantise.
class CMIDIIn : public CComp {
public:
    static constexpr int ownType = compMIDIIn;

    static constexpr int maxPending = 1024;
    static constexpr int fullSens = 100;

    explicit CMIDIIn(CQV* root);

    int lastNote = -1;          ///< key held on the on-screen keyboard; interface thread
    Stored<int> sens{fullSens}; ///< velocity sensitivity in percent; from 127 on velocities stay
    Stored<int> autoq{-1};      ///< 16, 8, 4: notes wait for that part of a whole note; -1 off
    Shared<int> device{-1};     ///< index of the device's MIDI input, -1 all
    double pos = 0.0;           ///< ticks; graph holder

    void init() override;
    void process(int frames) override;
    void setPos(double ticks) override { pos = ticks; }
    void read(CStream* stream, int end) override;
    void write(CStream* stream) override;

    /// A message for the next block. Lost when 512 wait. Interface thread.
    void addMidiEvent(int data);
    /// A key of the on-screen keyboard was pressed or let go. Interface thread.
    void playNote(int note, bool on);
    /// Stores one of the four choices; others count as -1.
    void setAutoq(int choice);

private:
    /// A message on its way, `frames` before it sounds.
    struct Pending {
        int data = 0, frames = 0,
            quantize = 0; ///< `quantize`: frames that a note-on was shifted by
    };
    int withSens(int data) const;
    int framesToGrid() const;
    void accept(int data);
    void sendDue(int frames);

    Ring<int, 512> keyQueue;
    Pending pending[maxPending];
    int numPending = 0;
};

/// A MIDI output of the device; `libio` takes what arrives.
class CMIDIOut : public CComp {
public:
    static constexpr int ownType = compMIDIOut;

    explicit CMIDIOut(CQV* root);

    Shared<int> device{-1}; ///< index of the device's MIDI output, -1 all that are enabled

    void init() override;
    void process(int frames) override;
    void read(CStream* stream, int end) override;
    void write(CStream* stream) override;
};
