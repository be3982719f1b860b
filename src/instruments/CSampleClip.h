#pragma once

#include "audiofiles/CSample.h"
#include "base/Stored.h"

enum LoopMode : int { loopOff = 0, loopForward = 1 };

/// A sample in memory with what an instrument needs to play it. Its loop is the `loop`, a LoopMode,
/// and `loopStart` of the sample: from there to `end`.
class CSampleClip : public CSample {
public:
    static constexpr int middleKey = 60;

    Stored<int> mode{0};                     ///< stored with kits, without effect on playing
    Stored<int> start{0}, end{0};            ///< first and last frame to play
    Stored<unsigned char> orgKey{middleKey}; ///< MIDI note at which it plays at its own pitch

    /// As `CSample::open`; then all of it is played.
    bool open(CStr path) override;
    /// Plays all there is, after frames have come in by another way.
    void playAll();
    /// Brings start, end and loop start inside the frames.
    void limitRange();

    void setOrgKey(ToStore<int> key); ///< 0 to 127
    void setMode(ToStore<int> v);
    void setLoop(ToStore<int> v); ///< LoopMode
    void setRange(ToStore<int> from, ToStore<int> to);
    void setLoopStart(ToStore<int> frame);
};
