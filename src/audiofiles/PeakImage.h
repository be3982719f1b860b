#pragma once

#include <atomic>
#include <cstdint>

/// What a waveform is drawn from: for each 128 frames and each channel the lowest and the highest
/// value, both spanning zero, and the root of the mean square. One thread adds, any others read
/// what is complete: entries never move.
class PeakImage {
public:
    static constexpr int framesPerEntry = 128;
    static constexpr int entriesPerRun = 16;
    static constexpr int maxChannels = 2;

    int peakFrames = 0;              ///< frames added
    float peakMin[maxChannels] = {}; ///< the running window, from 0 on
    float peakMax[maxChannels] = {};
    float squares[maxChannels] = {}; ///< their sum

    PeakImage() = default;
    ~PeakImage();
    PeakImage(const PeakImage&) = delete;
    PeakImage& operator=(const PeakImage&) = delete;

    /// Empties it for `channels` channels. Nobody may be reading. More than two give no image.
    void reset(int channels);
    /// `frames` interleaved frames of the channels told to `reset`.
    void add(const float* data, int frames);
    void add(const int16_t* data, int frames); ///< 32768 is full scale

    /// Complete entries. Any thread.
    int count() const { return entries.load(std::memory_order_acquire); }
    /// The bytes of entry `index` below `count`: minimum and maximum of the left channel, then of
    /// the right one if there is one; behind these the root of the mean square of each. Any thread.
    const unsigned char* entry(int index) const;
    /// The same of `entriesPerRun` entries together, from the entry `index` times that on: for
    /// pictures of long samples. All of them lie below `count`.
    const unsigned char* run(int index) const;

    /// -1 to 1 (else cut, not a number is 0) as a byte of 0 to 254, and back.
    static unsigned char encode(float value);
    static float decode(unsigned char byte) { return float(int(byte) - 127) / 127.0f; }
    static unsigned char encodeRms(float value);
    static float decodeRms(unsigned char byte) { return float(byte) / 255.0f; }

private:
    // Chunk k holds 64 * 2^k entries, so that a short sample takes little and none ever moves.
    static constexpr int firstChunk = 64, chunkCount = 20;
    struct Place {
        int chunk, index;
    };

    struct Chunks {
        unsigned char* lists[chunkCount] = {}; ///< owned; set before `entries` counts into them
        void clear();
        unsigned char* at(int index, int bytes) const;
        unsigned char* make(int index, int bytes); ///< null without memory
    };

    static Place place(int index);
    template <class T>
    void addValues(const T* data, int frames, float scale);
    int bytes() const; ///< of an entry
    bool store();
    bool storeRun(int index);

    int chs = 0;
    int inWindow = 0;
    std::atomic<int> entries{0};
    Chunks fine;
    Chunks coarse; ///< of runs
};
