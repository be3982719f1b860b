#pragma once

#include "common/fx/AmpModel.h"
#include "common/fx/CFX.h"

/// Guitar amplifier of three channels with a gate before them. Overwrites its output and knows no
/// dry part.
///
/// The parameters of all channels, 0 to 1, may be set at any time by any thread; the signal glides
/// to them, and from one channel to another.
class CGuitarAmp : public CFX {
public:
    Stored<int> channel{ampClean}; ///< of `AmpType`; any other and the output stays as it is
    Stored<float> threshold{0.0f}; ///< of the gate, as a magnitude
    void* amps[ampTypes] = {};     ///< owned, one per channel

    CGuitarAmp(float hz, int frames);
    ~CGuitarAmp() override;

    void setRate(float hz) override;
    /// Also silences in the input itself what the gate does not let through, for whoever mixes the
    /// input with the output afterwards.
    void process(float* inL, float* inR, float* outL, float* outR, long frames) override;
    void clear() override;
    void start() override;
    bool rests() const override;
    int latency() const override { return ampLatency; }

    void setChannel(ToStore<int> value) { store(channel, value, 0, ampTypes - 1); }
    void setThreshold(ToStore<float> value) { store(threshold, value, 0.0f, 1.0f); }
    int getChannel() const { return channel; }
    float getThreshold() const { return threshold; }

    // Clean
    void setBass(ToStore<float> v) { set(ampClean, cleanBass, v); }
    void setMid(ToStore<float> v) { set(ampClean, cleanMid, v); }
    void setTreble(ToStore<float> v) { set(ampClean, cleanTreble, v); }
    void setVolume(ToStore<float> v) { set(ampClean, cleanVolume, v); }
    float getBass() const { return get(ampClean, cleanBass); }
    float getMid() const { return get(ampClean, cleanMid); }
    float getTreble() const { return get(ampClean, cleanTreble); }
    float getVolume() const { return get(ampClean, cleanVolume); }

    // Crunch
    void setDrive2(ToStore<float> v) { set(ampCrunch, crunchDrive, v); }
    void setBass2(ToStore<float> v) { set(ampCrunch, crunchBass, v); }
    void setTreble2(ToStore<float> v) { set(ampCrunch, crunchTreble, v); }
    void setTopCut2(ToStore<float> v) { set(ampCrunch, crunchTopCut, v); }
    void setVolume2(ToStore<float> v) { set(ampCrunch, crunchVolume, v); }
    float getDrive2() const { return get(ampCrunch, crunchDrive); }
    float getBass2() const { return get(ampCrunch, crunchBass); }
    float getTreble2() const { return get(ampCrunch, crunchTreble); }
    float getTopCut2() const { return get(ampCrunch, crunchTopCut); }
    float getVolume2() const { return get(ampCrunch, crunchVolume); }

    // Dirty
    void setDrive3(ToStore<float> v) { set(ampDirty, dirtyDrive, v); }
    void setBass3(ToStore<float> v) { set(ampDirty, dirtyBass, v); }
    void setMid3(ToStore<float> v) { set(ampDirty, dirtyMid, v); }
    void setTreble3(ToStore<float> v) { set(ampDirty, dirtyTreble, v); }
    void setPresence3(ToStore<float> v) { set(ampDirty, dirtyPresence, v); }
    void setVolume3(ToStore<float> v) { set(ampDirty, dirtyVolume, v); }
    float getDrive3() const { return get(ampDirty, dirtyDrive); }
    float getBass3() const { return get(ampDirty, dirtyBass); }
    float getMid3() const { return get(ampDirty, dirtyMid); }
    float getTreble3() const { return get(ampDirty, dirtyTreble); }
    float getPresence3() const { return get(ampDirty, dirtyPresence); }
    float getVolume3() const { return get(ampDirty, dirtyVolume); }

private:
    void set(int amp, int index, float v) { Overloud_setparameter(amps[amp], index, v); }
    float get(int amp, int index) const { return Overloud_getparameter(amps[amp], index); }

    void changeChannel(int to);
    int fadeFrames() const;
    void fade(const float** in, float** out, int frames);

    int playing = -1, leaving = -1; ///< the channel heard, and the one that it takes over from
    int fadeLeft = 0;               ///< frames until it has
    bool quiet = true;              ///< nothing went in or came out in the last block
};
