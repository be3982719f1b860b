#pragma once

#include "audiofiles/AudioCue.h"
#include "audiofiles/PeakImage.h"
#include "audiofiles/SampleBytes.h"
#include "base/Atomic.h"
#include "base/CObject.h"
#include "base/CThread.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

class CSampleReader;
class CTakeRing;

/// Set when frames could not be written: the disk is full, or the file would pass 2 GB. Whoever
/// starts a recording clears it.
extern Shared<bool> diskWriteFailed;

/// Bits of `CSample::notices`.
enum SampleNotice {
    noticeBufferTooSmall = 1 ///< "getData buffer too small"
};

/// A stream of audio frames.
class CAudioStream : public CObject {
public:
    float rate = 44100.0f; ///< frames a second
    Shared<int> frames{0};
    int bits = 16; ///< of one value
    int chs = 2;   ///< channels

    int getFrames() const { return frames; }
};

/// Audio data on disk or in memory: reads WAV and AIFF, writes both, keeps an image of its peaks.
/// How its frames are played is told in "audiofiles/SampleRender.h". Opening, creating and closing
/// belong to the interface thread, and nobody may be playing it then.
class CSample : public CAudioStream {
public:
    /// Zero frames on both sides of `floatData`, so that four neighbours can be read there.
    static constexpr int padFrames = 4;

    /// What the audio thread had to report since it was last taken (`exchange`), for the idle pass.
    static Shared<unsigned> notices;

    CLock lock;              ///< guards writes to `fp`
    bool bigEndian = false;  ///< of the bytes as they lie in the file or in `data`
    bool fixedPitch = false; ///< not transposed while it is stretched
    std::FILE* fp = nullptr; ///< owned; open while `streamed` and valid, or while written
    int streamed = 0;        ///< 1 frames stay on disk, 0 `open` loads them
    CStr filename;
    unsigned char* data = nullptr; ///< owned; all frames while they are in memory, else null
    std::int64_t dataStart = 0;    ///< byte offset of the first frame in the file
    Shared<bool> valid{false};     ///< holds a format that can be played, or is being written
    bool ownsFile = true;          ///< the file may die with it, see `keep`
    bool keep = true;              ///< without it, an owned streamed file dies with its sample
    bool takePending = false;      ///< a take is still being written into it
    bool cached = false; ///< its file lies in the temp folder and moves when the project is saved
    int useCount = 0;    ///< sounds that play it, counted when a song was loaded
    float invRate = 1.0f / 44100.0f;
    int frameBytes = 4;
    Shared<int> loop{0};                   ///< 1: the file tells exactly one loop
    Shared<int> loopStart{0};              ///< frames
    std::vector<AudioCue> cues;            ///< places that the file names, in order
    std::vector<int> marks;                ///< frames, rising, where the user marked it; interface
    bool headerDone = false;               ///< the file has got a header
    std::unique_ptr<CSampleReader> reader; ///< the graph's; null unless frames stay on disk
    PeakImage peaks;
    Shared<bool> needsPeaks{true};
    Shared<bool> peakBusy{false}; ///< taken by `exchange`

    CSample();
    ~CSample() override;
    CSample(const CSample&) = delete;
    CSample& operator=(const CSample&) = delete;

    /// Reads the header, and without `streamed` all frames. Returns `valid`: false for what cannot
    /// be read, is damaged before its frames, or is in another format. `path` becomes `filename`.
    virtual bool open(CStr path);
    /// Makes a file, or empties the one that is there, for writing frames in the present format,
    /// big-endian (AIFF) if ".AIF" stands in its name in any case. `validHandle` tells whether that
    /// went well.
    void create(CStr path);
    bool validHandle() const { return fp != nullptr; }
    void close();

    /// Other widths than 16, 24 and 32 bits become 16. Not while there is data.
    void setFormat(int newRate, int newBits, int newChs);
    /// Takes over `count` native frames of the present format, from `malloc`, as the whole content.
    void takeData(unsigned char* bytes, int count);

    /// Writes the header from `frames` as it stands. Also corrects it at the end.
    void writeHeader();
    /// Appends frames of one or two channels, with their peaks. Sets `diskWriteFailed` and keeps
    /// what went before if they can't be kept: the disk is full, or the file would pass 2 GB.
    /// `buffered` is for the audio thread: the frames wait until `flushBuffers`, `prepareTake` has
    /// been called, and the file may be created later. Without it, not on the audio thread.
    void writeFrames(int count, const float* left, const float* right, bool buffered = false);
    /// Appends frames as they lie in the file, under the same conditions. Returns how many it kept.
    int writeBytes(int count, const unsigned char* bytes);
    /// Makes room for `CTakeRing::seconds` of buffered frames in the present format. Interface
    /// thread, while nobody writes.
    void prepareTake();
    /// Writes buffered frames once a quarter of a second of them waits, and the header with it, so
    /// that the file is whole at any time; true if it wrote. `force`: the take is over, all is
    /// written, and the room is given back. Worker, or at the end the interface thread.
    bool flushBuffers(bool force);
    /// Hands what the handle may still hold to the system.
    void finalize();

    /// Reads `count` frames of the file or memory image from `first` on as floats, interleaved.
    /// What lies outside reads as zeros.
    void readFrames(std::int64_t first, int count, float* out) const;
    /// Reads frames as they lie in the file or in memory; returns how many there are.
    int readBytes(std::int64_t first, int count, unsigned char* out) const;
    /// The values of channel `side` (0 or 1) as floats, followed and preceded by `padFrames` zeros.
    /// Null unless the frames are in memory, of one or two channels, and not of `shortData`.
    const float* floatData(int side) const;
    /// The frames of a 16 bit mono sample in memory, which is played as it lies there; else null.
    const std::int16_t* shortData() const;
    SampleCoding coding() const { return {bits, bigEndian}; }

    /// Computes what the image still lacks of the content, unless somebody is at it. Stops, to go
    /// on in a later call, when `worker`, the thread that calls, shall pause.
    void peakfile(const CThread* worker = nullptr);
    /// Adds frames, as they lie in the file, to the image.
    void writepeak(const unsigned char* bytes, int count);

    /// A new file of 44100 Hz, 16 bits, stereo, with its header, that is not yet to be kept; or
    /// null if it can't be made. It gets another name when there is a file called `path` already.
    /// The caller owns it and may set another format before it writes.
    static CSample* createSample(const CStr& path, int cached);

private:
    void load();
    void makeFloatData();
    void createBuffers();
    int append(int count, const unsigned char* bytes);
    void writeHeaderLocked();
    bool drainRing();

    std::unique_ptr<float[]> floats[2];
    std::unique_ptr<CTakeRing> ring; ///< between `prepareTake` and the end of the take
};
