#pragma once

#include <atomic>
#include <cstddef>
#include <string>
#include <vector>

typedef struct _snd_pcm snd_pcm_t;

/// One direction of an ALSA device: opens it in the best form that it takes, and moves blocks of
/// separate float channels through it.
class AlsaPcm {
public:
    AlsaPcm() = default;
    ~AlsaPcm();
    AlsaPcm(const AlsaPcm&) = delete;
    AlsaPcm& operator=(const AlsaPcm&) = delete;

    static constexpr int blocksBuffered = 3; ///< asked for; a device may have more or fewer

    /// Opens with a buffer for blocks of about `wantedFrames`; false if the device is missing,
    /// in use, or takes none of float, 32-bit and 16-bit samples.
    bool open(const std::string& name, bool playback, int wantedFrames, int wantedRate);
    bool isOpen() const { return pcm != nullptr; }
    void close();

    int rate = 0, channels = 0;
    int periodFrames = 0, bufferFrames = 0; ///< as granted

    /// Allocates for blocks of that size, not above the buffer's; false if the device refuses.
    bool prepareBlocks(int frames);
    std::vector<float*> planes; ///< a block of each channel

    enum class Result { done, gap, stopped, lost };
    /// Brings the device to rest, ready to start.
    bool prepare();
    bool startNow();
    void drop();
    /// Moves the block in `planes`, waiting until the device can take or give all of it; returns
    /// soon when `stopping` is set. A device that does nothing for two seconds is lost.
    Result move(const std::atomic<bool>& stopping);

private:
    enum class Form { float32, int32, int16 };
    bool configure(int wantedFrames, int wantedRate);
    bool chooseForm(void* params);
    size_t sampleBytes() const;
    Result waitForBlock(const std::atomic<bool>& stopping);
    void pack();
    void unpack();

    snd_pcm_t* pcm = nullptr; ///< owned
    bool plays = true;
    Form form = Form::float32;
    int blockFrames = 0;
    std::vector<std::vector<float>> storage;
    std::vector<char> interleaved;
};
