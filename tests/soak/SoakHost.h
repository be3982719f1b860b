#pragma once

#include "engine/CAAM.h"
#include "engine/CQV.h"

#include <atomic>
#include <string>

class CSeq;

/// What the program does with a song, without its window, on the Silent clock.
class SoakHost {
public:
    static constexpr int rate = 44100, block = 128;

    explicit SoakHost(AamCallback callback);
    ~SoakHost();
    SoakHost(const SoakHost&) = delete;
    SoakHost& operator=(const SoakHost&) = delete;

    CQV host; ///< also the global `qv`
    CSeq* seq;

    /// An audio track that plays a file from disk, from the start of the song on.
    void addTrack(const std::string& file);
    /// Has blocks come, and a WAV file as their input unless that is empty. False if they don't.
    bool open(const std::string& feed);
    void close() { bridge.audioClose(); }

private:
    CAAM bridge;
};

/// Files that hold one constant, and a look at the sum of those that play: a frame below it has
/// missed something.
struct GapWatch {
    static constexpr int fileSeconds = 30;
    static constexpr int loopTicks = 28 * 1920; ///< of them, at 120 beats a minute
    static constexpr float level = 1.0f / 64;
    /// Behind a jump, or a loop's wrap, which is one too, a miss is accepted.
    static constexpr int64_t settleFrames = SoakHost::rate / 10;

    std::atomic<int64_t> frames{0}, missed{0}, missedAtJumps{0};

    static void writeFile(const std::string& file);
    /// Audio thread: what a block made of so many files, and where the song is behind it.
    void look(const float* out, int64_t count, int files, double pos);

private:
    int64_t jumpAt = 0;
    double lastPos = 0.0;
};
