#pragma once

#include "base/CObject.h"
#include "base/Stored.h"

/// The kinds of effect, stored in `CObject::type` and in files.
enum FxKind {
    fxDelay = 0,
    fxReverb = 1,
    fxChorus = 2,
    fxPhaser = 3,
    fxBitcrusher = 4,
    fxFilter = 5,
    fxCompressor = 6,
    fxGuitarAmp = 7,
    fxGate = 8
};

/// Base of every built-in effect: stereo blocks in, stereo blocks out. A plain one is a
/// no-operation. `id` is the display name, `type` one of `FxKind`.
///
/// Stored words are parameters: any thread stores them, `process` reads them once per block.
/// Setters of parameters take the range told at them, clamp what lies outside and ignore a value
/// that is not finite, so a reader of files may hand on what it finds.
class CFX : public CObject {
public:
    Stored<float> dry{1.0f}, wet{1.0f}; ///< gains of the input and of the effect
    float tempo = 120.0f;               ///< beats a minute; its owner writes it before `process`
    /// Whether what has died away is dropped behind this block, so that nothing is worked out in
    /// numbers that are slow: at places of the song, and not where blocks happen to end. Its owner
    /// writes it, too.
    bool settles = true;
    float rate = 44100.0f;  ///< frames a second
    float* bufL = nullptr;  ///< owned; input of a send effect: the owner sums into it
    float* bufR = nullptr;  ///< owned; both of the length given to `setFrames`, or null
    Stored<int> enabled{0}; ///< tested by the owner, not by `process`

    /// `hz` frames a second, above 0. `frames` is the block size, for `bufL` and `bufR`.
    explicit CFX(float hz = 44100.0f, int frames = 0);
    ~CFX() override;
    CFX(const CFX&) = delete;
    CFX& operator=(const CFX&) = delete;

    /// Holder of the graph only, as `setFrames`.
    virtual void setRate(float hz);
    /// Replaces `bufL` and `bufR` by `n` zeros each, none for `n` below 1.
    virtual void setFrames(int n);
    /// 0 frames or more; a signal gives the same however it is cut into blocks. The output may be
    /// the input. Whether it is added to or overwritten is told by each effect. Audio thread.
    virtual void process(float* inL, float* inR, float* outL, float* outR, long frames);
    /// Takes the memory that it works in, unless it has it. Interface thread.
    virtual void takeRoom() {}
    /// The first 1 takes room, and only then shows in `enabled`: interface thread, unless the
    /// effect has it already.
    virtual void setEnabled(int on);
    /// Forgets the past. Holder of the graph only.
    virtual void clear();
    /// The song starts: what runs by itself begins as after `clear`, unless the effect sounds.
    /// Holder of the graph only.
    virtual void start();
    /// Whether silence leaves it as it is, but for what runs by itself, and silence comes out: a
    /// block of it costs next to nothing then. Holder of the graph only.
    virtual bool rests() const { return false; }
    /// Frames by which the output is late.
    virtual int latency() const { return 0; }

    void setDry(ToStore<float> value);
    void setWet(ToStore<float> value);
    float getDry() const { return dry; }
    float getWet() const { return wet; }

protected:
    static void store(Stored<float>& field, float value, float low, float high);
    static void store(Stored<int>& field, int value, int low, int high);
};
