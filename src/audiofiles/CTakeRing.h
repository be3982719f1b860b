#pragma once

#include "audiofiles/SampleBytes.h"
#include "base/Atomic.h"

#include <cstdint>
#include <memory>

/// The frames of a take on their way from the audio thread to the disk, packed as the file has
/// them. What it has no room for is owed: as soon as there is room it becomes silence, so that what
/// follows stays at its time. The audio thread adds, one other thread takes out.
class CTakeRing {
public:
    static constexpr int seconds = 4; ///< of sound that it holds

    /// A stretch of packed frames.
    struct Piece {
        const unsigned char* bytes;
        int frames;
    };

    CTakeRing(int rate, int bytesOfFrame);

    // Audio thread.
    /// Packs `count` frames behind the others; false if any had to be given up.
    bool add(SampleCoding coding, int chs, int count, const float* left, const float* right);

    // The thread that writes.
    int waiting() const { return int(written.loadAcquire() - taken); }
    Piece front() const; ///< the oldest frames, in one piece; 0 frames when there are none
    void drop(int frames) { taken.storeRelease(taken + frames); } ///< the oldest
    /// Once nobody adds: makes what is owed wait as silence too, as far as there is room. False if
    /// nothing is owed.
    bool settle();

private:
    int room() const { return capacity - int(written - taken.loadAcquire()); }
    void addSilence();
    /// The place of the frame to be written next, and how many of `count` follow it in one piece.
    unsigned char* back(int& count) const;

    const int frameBytes;
    const int capacity; ///< frames
    std::unique_ptr<unsigned char[]> memory;
    Shared<std::int64_t> written{0}, taken{0}; ///< frames in all
    Shared<std::int64_t> owed{0};              ///< frames given up and not yet made good
};
