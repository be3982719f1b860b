#pragma once

#include "base/Atomic.h"
#include "base/CObject.h"
#include "engine/plan/DelayLine.h"

#include <optional>

class CQV;
class CSample;

/// When the metronome is heard, as bits of `CClick::mode`.
enum ClickMode : int { clickPlay = 1, clickRecord = 2, clickCountIn = 4 };

/// The metronome: a short sound on each beat, on the first audio out, and the count-in before a
/// recording. It comes after the strip of the output, so it is heard at the device and not in a
/// render. Graph holder, but for the fields in atomics.
class CClick : public CObject {
public:
    explicit CClick(CQV* root);
    ~CClick() override;
    CClick(const CClick&) = delete;
    CClick& operator=(const CClick&) = delete;

    CQV* host;
    CSample* sound; ///< owned
    Shared<int> enabled{0};
    int beatTicks = 960;        ///< from click to click
    float speed = 1.0f;         ///< frames of the sound for each frame played
    double samplePos = 0.0;     ///< frames of the sound
    double tickPos = 0.0;       ///< ticks since the last click
    Shared<float> volume{0.8f}; ///< squared when applied; 0 or more
    Shared<int> beats{2};       ///< length of the count-in, 0 to 255
    Shared<int> mode{clickRecord | clickCountIn};
    Shared<int> countIn{0}; ///< frames of it left, 0 when there is none

    /// Adds the clicks of the block that has just been run.
    void render(int frames);
    /// A click that sounds at that position is continued.
    void setPos(double ticks);
    /// Lays out the count-in, which ends on its frame: a part of a block ends there.
    void init();
    /// The transport starts before the count-in is over: none is left, and the clicks go on from
    /// there.
    void endCountIn(double ticks);
    /// The song is heard so many frames later than it is played, and so are its clicks; another
    /// latency takes over within a fade. Graph holder.
    void setLatency(int late, int fadeFrames) { line.setDelay(late, fadeFrames); }
    /// Makes the built-in sound: a decaying rough tick of 4096 frames.
    void defaultSound();

private:
    /// Where within a block a loop began its next pass.
    struct Jump {
        int frame;
        double ticks; ///< song position there
    };
    /// Of the block that has just been run. None where the clicks lie as before.
    std::optional<Jump> findJump(int frames) const;
    double framesOf(double ticks) const;
    void playBlock(int frames);
    /// The clicks between two frames of the block.
    void play(int from, int to);
    bool audible() const;
    void mix(int offset, int frames);

    DelayLine line;
    float *toL = nullptr, *toR = nullptr; ///< of the block that the clicks are added to
};
