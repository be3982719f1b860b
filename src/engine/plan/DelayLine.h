#pragma once

#include "base/ZeroPages.h"

/// Stereo delay line, so that signals of different latency meet. Graph holder, but for making and
/// deleting.
///
/// A change of the delay fades from one tap to another, in a straight line, as soon as the line
/// holds what the new one needs: until then it goes on as before.
class DelayLine {
public:
    static constexpr int longest = 192000; ///< frames: a second at the fastest rate

    /// `running`: what it delays was heard without it before, so that its first delay is a change.
    explicit DelayLine(bool running = false) : fresh(!running) {}

    int delay() const { return wanted; } ///< frames, as told last
    /// Frames from the next block on, 0 to `longest`, else clamped. A line that nothing has gone
    /// through takes it at once.
    void setDelay(int frames, int fadeFrames);
    /// Whether a block goes through as it is. Such a block is told by `skip` and not led through.
    bool idle() const { return now == 0 && wanted == 0 && fadeLeft == 0; }
    void skip();
    /// Delays a block, of 65536 frames at most. What comes out may take the place of what goes in.
    /// False: silence went in and comes out, which is not written.
    bool process(const float* inL, const float* inR, float* outL, float* outR, int frames);
    /// The same of a block of silence, if silence comes out. Otherwise false, and nothing is done.
    bool passSilence(int frames);
    /// What came out last.
    float latestLeft() const { return filled > now ? tap(next - 1, now).left : 0.0f; }
    float latestRight() const { return filled > now ? tap(next - 1, now).right : 0.0f; }
    /// Forgets all that went in.
    void clear();

private:
    static constexpr unsigned capacity = 1u << 18; ///< above `longest` and a block
    struct Frame {
        float left, right;
    };

    void makeRoom(unsigned frames);
    void moveTo(unsigned room);
    Frame tap(unsigned at, int distance) const;
    int stretch(int done, int frames);
    template <class Piece>
    void eachPiece(unsigned first, int frames, Piece&& piece) const;
    void store(const float* left, const float* right, int frames) const;
    void load(unsigned first, float* left, float* right, int frames) const;
    void fade(unsigned first, bool silent, float* left, float* right, int frames);

    const ZeroPages<Frame> ring = makeZeroPages<Frame>(capacity);
    unsigned size = 1;         ///< of the ring that is in use, a power of two
    unsigned next = 0;         ///< number of the frame that comes next
    int filled = 0;            ///< frames behind it that are there, at most
    int zeros = int(capacity); ///< frames behind it that are 0, at least
    int now = 0;               ///< the tap that is heard
    int to = 0;                ///< that which it fades to
    int wanted = 0;            ///< that which it is on the way to
    int fadeLeft = 0, fadeLength = 1;
    bool fresh;
};
