#pragma once

#include <memory>

/// Changes length and pitch of stereo sound apart from each other, in real time: a stretcher whose
/// result is read faster or slower. One thread at a time; only making and deleting allocate, and
/// they belong to the interface thread.
///
/// A block is made so: `feed` while `framesNeeded` asks for it, then `process`.
class CElastiqueIf {
public:
    /// Limits of what `setFactors` takes. Past those of the pitch the length still holds.
    static constexpr float minStretch = 0.1f, maxStretch = 10.0f;
    static constexpr float minPitch = 1.0f / 16, maxPitch = 16.0f;

    /// Sets `instance` for blocks of up to `blockFrames` frames and returns 0; else it is null. Two
    /// channels; the last argument is unused.
    // NOLINTNEXTLINE(readability-identifier-naming): makes one, where operations act on one
    static int CreateInstance(CElastiqueIf*& instance, int blockFrames, int channels, float rate,
                              float unused);
    ~CElastiqueIf();
    CElastiqueIf(const CElastiqueIf&) = delete;
    CElastiqueIf& operator=(const CElastiqueIf&) = delete;

    /// Forgets all sound: the next fed frame comes out as the next processed one.
    void reset();
    /// `stretch` output frames per source frame, `pitch` the factor of all frequencies. Clamped; to
    /// be set before each block, and before the first `framesNeeded` after `reset`.
    void setFactors(float stretch, float pitch);
    /// Source frames wanted before a block of `frames` frames can be had; 0 when there are enough.
    /// Feeding fewer is allowed.
    int framesNeeded(int frames);
    void feed(const float* left, const float* right, int count);
    /// Fills a block; with silence at its end if too little was fed.
    void process(float* left, float* right, int frames);

private:
    struct Engine;
    explicit CElastiqueIf(std::unique_ptr<Engine> made);

    const std::unique_ptr<Engine> engine;
};
