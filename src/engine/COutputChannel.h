#pragma once

#include "base/CList.h"
#include "engine/CIO.h"
#include "engine/CSend.h"

struct CMIDIBytes;
struct ParamUnit;
class CComp;
class CEQ;
class CQV;
class StripMeters;

constexpr int maxSends = 32;
constexpr int eqBandCount = 4;

/// Length of a strip's ramps in milliseconds.
constexpr int rampMs = 3;

/// An audio output with its whole mixer strip: trim, equaliser, inserts, fader, pan, mute,
/// solo, meters and send levels. Fields in atomics are the user's; the ramps belong to whoever runs
/// the graph.
class COutputChannel : public CIO {
public:
    explicit COutputChannel(CComp* owner);
    ~COutputChannel() override;
    COutputChannel(const COutputChannel&) = delete;
    COutputChannel& operator=(const COutputChannel&) = delete;

    int ioIndex = -1;
    Stored<unsigned char> showFader{1};
    Shared<unsigned char> showExtra{0};
    Stored<float> trim{0.0f};    ///< gain as a power of 4, -1 to 1
    Shared<float> trimAux{1.0f}; ///< stored, without effect
    Stored<float> vol{1.0f};     ///< fader, 0 to 1, squared when applied
    float gain = 1.0f, gainStep = 0.0f, gainTarget = 1.0f;
    int gainRamp = 0;        ///< frames left
    Stored<float> pan{0.0f}; ///< -1 left to 1 right
    float panL = 1.0f, panR = 1.0f, panLStep = 0.0f, panRStep = 0.0f, panTarget = 0.0f;
    int panRamp = 0;
    Stored<unsigned char> mute{0}, solo{0};
    Stored<unsigned char> soloSafe{0}; ///< no solo elsewhere silences the strip
    Shared<int> anySolo{0}; ///< 1: a solo elsewhere silences this strip; see `spreadSolo`
    Shared<int> channels{2};
    float* bufL = nullptr; ///< owned, `frames` of the host
    float* bufR = nullptr; ///< owned
    Shared<float> peakL{0.0f}, peakR{0.0f};
    Shared<float> holdL{0.0f}, holdR{0.0f};
    /// Mean squares over about 0.3 s, while somebody wants them; raised and let fall by the block.
    Shared<float> powerL{0.0f}, powerR{0.0f};
    Shared<unsigned char> powerWanted{0};
    int sections[4] = {-1, -1, -1, -1}; ///< which sections the mixer shows
    CSend* sendLevels[maxSends] = {};   ///< owned, one per possible bus
    ListOf<CComp> inserts;              ///< owned
    CEQ* eq[eqBandCount] = {};          ///< owned; bands that are `active` run, in this order
    int eqState = 0;
    Shared<int> eqChangeTime{0}; ///< asTimeInMS of the latest change of the equaliser
    int eqPage = 6;

    /// Allocates the arrays, cleared, and those of the inserts; frees what was there.
    void createBuffers(int frames);
    void destroyBuffers();
    /// Takes the channel and its inserts to another block size.
    void setFrames(int frames);
    void setRate(double rate);

    /// Fader 0 to 1 (else clamped, NaN to 0), at once or over 3 ms. Does not store `vol`.
    void setVol(float v, bool ramp);
    /// Pan -1 to 1, at once or over 3 ms. Centre is unity; a hard side gives 1.5 there and 0 on the
    /// other. Does not store `pan`.
    void setPan(float p, bool ramp);

    /// Moves running ramps on by `frames`, at most to the nearer end of them; a ramp that ends
    /// lands on its target. Graph holder.
    void advanceRamps(int frames);

    // What the user does at the strip, by the host's `values`: part of the gesture that is open, or
    // a step by itself. Interface thread.
    void moveFader(float value); ///< 0 to 1; also shows the fader and clears the peak hold
    void movePan(float value);   ///< -1 to 1
    void toggleMute();
    void toggleSolo();

    // A band of the equaliser, 0 to 3. Any thread; values are clamped as by `CEQ`.
    void setEqPower(int band, ToStore<bool> on);
    void setEqFrequency(int band, ToStore<float> hz);
    void setEqGain(int band, ToStore<float> db);
    void setEqQ(int band, ToStore<float> q);
    void setEqType(int band, ToStore<int> form);
    /// To be called after any change of a band, for `eqChangeTime`. Any thread.
    void setEQChanged();

    /// 19: index 19, solo, answers to the other calls too, but a copy by parameters leaves it out.
    int numParams() const;
    float param(int index) const;
    /// `value` 0 to 1. Any thread.
    void setParam(int index, ToStore<float> value);
    static CStr paramName(int index);
    CStr paramText(int index) const;
    static const ParamUnit* paramUnit(int index); ///< null for a number without a parameter

    /// Trim, equaliser and inserts in place, before fader and pan. `events` are those of the
    /// component.
    void processFX(CMIDIBytes* events, int frames);
    void udpatePeaks(int frames);
    /// 0.05 off both meters. Interface thread.
    void peakFadeout();
    /// Parameters (but solo), forms of the bands, trim, inserts as copies, levels of the buses
    /// there are.
    void copy(COutputChannel* src);
    /// As `copy`, and width, solo and all 32 send levels.
    void copySettings(COutputChannel* src);
    void idle();

    /// What measures the strip; made at the first call. Interface thread.
    StripMeters& meters();
    /// The same, null as long as nobody has asked. Graph holder.
    StripMeters* measured() const { return measures.loadAcquire(); }

private:
    int rampFrames() const;                 ///< 1 or more
    Shared<StripMeters*> measures{nullptr}; ///< owned
    Shared<int> eqChanged{0};               ///< in a block: the time is still to be taken

    void equalise(int frames);
    void copyInserts(COutputChannel* src);
    void copySend(const COutputChannel* src, int index);
};

/// Raises a peak pair by one frame, as every meter of the graph does.
inline void meter(float value, float& peak) {
    if (value >= peak)
        peak = value;
    else if (-value > peak)
        peak = -value;
}
