#pragma once

#include "audiofiles/CSampleReader.h"

class CElastiqueRender;
class CSample;

/// Most bytes of a file that one call may need, and the room that a caller gives for them: 16 bit
/// values double as floats. Every thread that renders has a scratch of its own.
constexpr int maxScratchRead = 524344;
constexpr int sampleScratchBytes = 2 * maxScratchRead + 64;

/// Which way frames are played.
struct SampleSpan {
    double pos = 0.0;   ///< source frame of the first output frame
    double speed = 1.0; ///< source frames per output frame, above 0
    int reverse = 0;    ///< 1: mirrored, so that `pos` counts back from `start` + `end`
    int start = 0, end = 0;
};

/// Which way frames are played through a stretcher.
struct StretchSpan {
    float stretch = 1.0f; ///< output frames per source frame
    float pitch = 1.0f;   ///< factor of all frequencies
    int reverse = 0;      ///< as in `SampleSpan`
    int start = 0, end = 0;
};

/// A place in a sample of `frames` frames, or a speed, rounded so that places are sums of speeds
/// without an error: then a voice reads the same, in however many calls. The last frame is less
/// than two frames off.
double wholeSteps(double placeOrSpeed, int frames);

/// The hot path: `count` frames of a sample in memory, forward from `pos` at `speed`, interpolated
/// by the cubic through four neighbours. A mono sample fills `left` only. Returns how many sides it
/// filled: 0 for a sample that is not in memory or has more than two channels. Frames outside the
/// sample are zeros. Any thread; no scratch.
int renderMemory(const CSample& sample, double pos, double speed, int count, float* left,
                 float* right);

/// Plays `count` frames of any valid sample of one or two channels into both sides, a mono one
/// alike. Returns false, and writes nothing, for other samples. Only for a sample on disk it needs
/// `scratch` (`sampleScratchBytes`, aligned for floats, one for each rendering thread); `mode` says
/// how it comes by the frames. A read that the scratch can't hold gives silence and sets
/// `noticeBufferTooSmall`.
bool render(const CSample& sample, const SampleSpan& span, int count, float* left, float* right,
            unsigned char* scratch, ReadMode mode = ReadMode::direct);

/// `count` frames through `stretcher`, which the voice has since its start; without one, silence.
/// `sourcePos` is the source frame that the stretcher takes next, and moves on; it runs ahead of
/// what is heard. Else as `render`, but it needs the scratch for all samples.
bool renderStretched(const CSample& sample, const StretchSpan& span, int& sourcePos,
                     CElastiqueRender* stretcher, int count, float* left, float* right,
                     unsigned char* scratch, ReadMode mode = ReadMode::direct);

/// Brings in what `render` of these frames will ask of `CSample::reader`, and has the disk thread
/// read on from there: when a voice starts. Graph holder.
void primeReader(const CSample& sample, const SampleSpan& span, int count);

/// `render` forward of 16 bit data in memory, as the click has it. Others return false.
bool render_2(const CSample& sample, double pos, double speed, int count, float* left,
              float* right);

/// The source of `count` output frames from source frame `frame` on, interleaved: first the frame
/// before it, last all that the interpolation reads behind the end; zeros for what lies outside.
/// `backward`: the next call will ask for frames before these.
void getData32(const CSample& sample, unsigned char* out, int frame, int count, double speed,
               ReadMode mode = ReadMode::direct, bool backward = false);
