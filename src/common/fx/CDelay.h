#pragma once

#include "common/fx/CFX.h"

class EchoLine;

/// Stereo echo, synchronised to the tempo or in milliseconds, with cross-feed. Adds to its output.
/// The input enters the lines scaled by `feedback`, so the first echo has that gain already, and
/// `cross` scales the right input but not the left: both belong to its sound.
class CDelay : public CFX {
public:
    static constexpr int bufferFrames = 480000; ///< of each line; echoes are cut to it

    int shared = 0; ///< 1: the lines belong to somebody else
    Stored<float> feedback{0.5f};
    Stored<float> timeLeft{200.0f}, timeRight{200.0f}; ///< milliseconds, without `sync`
    Stored<float> spread{0.0f};                        ///< ms that the right tap reads ahead
    Stored<int> sync{1};                               ///< 1: beats times `mul` / `div`
    Stored<float> panLeft{-1.0f}, panRight{1.0f};      ///< where each line sounds, -1 to 1
    Shared<EchoLine*> lineL{nullptr}, lineR{nullptr};  ///< owned unless `shared`, or none
    int posL = 0, posR = 0;
    Stored<float> cross{0.0f};
    Stored<int> mulLeft{1}, divLeft{1}, mulRight{1}, divRight{1};

    CDelay(float hz, int frames);
    ~CDelay() override;
    CDelay(const CDelay&) = delete;
    CDelay& operator=(const CDelay&) = delete;

    /// Plays in lines of `bufferFrames` each that outlive the effect and stay the caller's. Before
    /// the effect is first enabled.
    void setSharedLines(EchoLine* left, EchoLine* right);
    void takeRoom() override;
    /// Nothing while there are no lines.
    void process(float* inL, float* inR, float* outL, float* outR, long frames) override;
    void clear() override;
    void start() override;

    void setFeedback(ToStore<float> v) { store(feedback, v, 0.0f, 1.0f); }
    void setTimeLeft(ToStore<float> ms) { store(timeLeft, ms, 1.0f, 5000.0f); }
    void setTimeRight(ToStore<float> ms) { store(timeRight, ms, 1.0f, 5000.0f); }
    void setSpread(ToStore<float> ms) { store(spread, ms, 0.0f, 5000.0f); }
    void setSync(ToStore<int> on) { store(sync, on, 0, 1); }
    void setPanLeft(ToStore<float> v) { store(panLeft, v, -1.0f, 1.0f); }
    void setPanRight(ToStore<float> v) { store(panRight, v, -1.0f, 1.0f); }
    void setCross(ToStore<float> v) { store(cross, v, 0.0f, 1.0f); }
    /// An echo every `mul` / `div` beats, both 1 to 32.
    void setTicksLeft(ToStore<int> mul, ToStore<int> div);
    void setTicksRight(ToStore<int> mul, ToStore<int> div);
    float getFeedback() const { return feedback; }
    float getTimeLeft() const { return timeLeft; }
    float getTimeRight() const { return timeRight; }
    float getSpread() const { return spread; }
    int getSync() const { return sync; }
    float getPanLeft() const { return panLeft; }
    float getPanRight() const { return panRight; }
    float getCross() const { return cross; }
    void getTicksLeft(int& mul, int& div) const;
    void getTicksRight(int& mul, int& div) const;

private:
    struct Block;
    Block prepare() const;
    static int advance(int pos, int count, int length);
    void run(const Block& block, float* inL, float* inR, float* outL, float* outR, int count);
};
