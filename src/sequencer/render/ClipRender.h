#pragma once

#include "sequencer/song/ClipPins.h"

#include <cstdint>
#include <memory>
#include <vector>

class CElastiqueRender;
class CSeq;
struct CAudioEvent;

/// One clip of a song rendered past playback, as its voice plays it, but at a rate of its own: with
/// its fades, and with the run-out behind its end. Interface thread.
class ClipRender {
public:
    /// The clip stands at a tick of the song; its first frame is heard `begin` frames behind the
    /// start of the render.
    ClipRender(CSeq* seq, const CAudioEvent* clip, int songTick, int64_t begin, int rate);
    ~ClipRender();
    ClipRender(ClipRender&&) noexcept;
    ClipRender(const ClipRender&) = delete;
    ClipRender& operator=(const ClipRender&) = delete;
    ClipRender& operator=(ClipRender&&) = delete;

    /// Adds what is heard in the next `frames` of the render, which begin at frame `from`. To be
    /// called for all of them in order.
    void add(float* left, float* right, int64_t from, int frames);

private:
    CSeq* seq;
    const CAudioEvent* clip;
    int64_t begin;
    int rate;
    double pos, tick; ///< source frame, and tick of the song, that come next
    int stretchPos;
    int64_t played = 0; ///< frames since `begin`
    bool running = true;
    int tail = 0;
    float lastLeft = 0.0f, lastRight = 0.0f;
    std::unique_ptr<CElastiqueRender> stretcher; ///< while it plays in that mode
    std::vector<float> scratch, bufL, bufR;      ///< while it plays

    ClipPiece pieceNow() const;
    int play(float* left, float* right, int frames);
    int runOut(float* left, float* right, int frames);
    float gain(int frame, double left) const;
    void finish();
};
