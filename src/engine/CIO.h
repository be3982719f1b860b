#pragma once

#include "base/Atomic.h"
#include "base/CObject.h"

class CComp;

constexpr int categoryComp = 1;
constexpr int categoryCable = 4;
constexpr int categoryPort = 8;
constexpr int categoryChannel = 16;

/// Values of `CObject::type` within ports, channels and cables.
constexpr int channelInput = 1, channelOutput = 2;
constexpr int portInput = 10, portOutput = 11;
constexpr int cableMidi = 1, cableAudio = 2;
/// A CSend has category 0 and this type.
constexpr int typeSend = 3;

/// What a component is connected by: a port or a channel.
class CIO : public CObject {
public:
    CComp* comp = nullptr; ///< the component that has it
};

/// A stereo audio input. The buffers hold `frames` of the host each, in separate arrays; audio
/// thread between `createBuffers` and `destroyBuffers`.
class CInputChannel : public CIO {
public:
    explicit CInputChannel(CComp* owner);
    ~CInputChannel() override;
    CInputChannel(const CInputChannel&) = delete;
    CInputChannel& operator=(const CInputChannel&) = delete;

    Shared<float> peakL{0.0f},
        peakR{0.0f}; ///< live meter, 0 to 1; raised by audio, decayed by idle
    Shared<float> holdL{0.0f}, holdR{0.0f}; ///< highest peak so far, may pass 1
    Shared<int> channels{2};
    float* bufL = nullptr; ///< owned
    float* bufR = nullptr; ///< owned

    /// Allocates both arrays, cleared; frees what was there. Not on the audio thread.
    void createBuffers(int frames);
    void destroyBuffers();
};

/// The two arrays of a channel of any kind, as made and freed by its owner.
void createStereo(float*& left, float*& right, int frames);
void destroyStereo(float*& left, float*& right);
