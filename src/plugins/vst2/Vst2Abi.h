#pragma once

#include <cstddef>
#include <cstdint>

/// The binary interface of VST 2 plug-ins as 64-bit libraries for Linux have it: what lies where,
/// and the numbers of the calls that are used here. A library has one function, `Vst2Entry`, which
/// makes an effect; the effect has a dispatcher for all calls but those for sound and parameters,
/// and calls the host through the function that it was made with.
namespace vst2 {

struct Effect;

using Dispatcher = intptr_t (*)(Effect*, int32_t opcode, int32_t index, intptr_t value, void* data,
                                float number);
using Entry = Effect* (*)(Dispatcher host);
using Process = void (*)(Effect*, float** inputs, float** outputs, int32_t frames);
using ProcessDouble = void (*)(Effect*, double** inputs, double** outputs, int32_t frames);
using SetParameter = void (*)(Effect*, int32_t index, float value);
using GetParameter = float (*)(Effect*, int32_t index);

constexpr int32_t fourLetters(const char (&word)[5]) {
    return int32_t(uint32_t(uint8_t(word[0])) << 24 | uint32_t(uint8_t(word[1])) << 16 |
                   uint32_t(uint8_t(word[2])) << 8 | uint32_t(uint8_t(word[3])));
}
constexpr int32_t effectMagic = fourLetters("VstP");

struct Effect {
    int32_t magic;
    Dispatcher dispatcher;
    Process process; ///< adds to the outputs; of old plug-ins
    SetParameter setParameter;
    GetParameter getParameter;
    int32_t numPrograms, numParams, numInputs, numOutputs;
    int32_t flags;           ///< EffectFlag
    intptr_t resvd1, resvd2; ///< words of the host
    int32_t initialDelay;    ///< latency, frames
    int32_t unused[2];
    float ioRatio;
    void *object, *user; ///< the plug-in's
    int32_t uniqueID, version;
    Process processReplacing;
    ProcessDouble processDoubleReplacing;
    char future[56];
};
static_assert(offsetof(Effect, dispatcher) == 8 && offsetof(Effect, process) == 16);
static_assert(offsetof(Effect, setParameter) == 24 && offsetof(Effect, getParameter) == 32);
static_assert(offsetof(Effect, numPrograms) == 40 && offsetof(Effect, numParams) == 44);
static_assert(offsetof(Effect, numInputs) == 48 && offsetof(Effect, numOutputs) == 52);
static_assert(offsetof(Effect, flags) == 56 && offsetof(Effect, resvd1) == 64);
static_assert(offsetof(Effect, resvd2) == 72 && offsetof(Effect, initialDelay) == 80);
static_assert(offsetof(Effect, ioRatio) == 92 && offsetof(Effect, object) == 96);
static_assert(offsetof(Effect, user) == 104 && offsetof(Effect, uniqueID) == 112);
static_assert(offsetof(Effect, version) == 116 && offsetof(Effect, processReplacing) == 120);
static_assert(offsetof(Effect, processDoubleReplacing) == 128 && sizeof(Effect) == 192);

enum EffectFlag : int32_t {
    hasEditor = 1 << 0,
    canReplace = 1 << 4,
    programChunks = 1 << 5,
    isSynth = 1 << 8,
};

/// Calls to the effect.
enum EffectOpcode : int32_t {
    effOpen = 0,
    effClose = 1,
    effSetProgram = 2,
    effGetProgram = 3,
    effSetProgramName = 4,
    effGetProgramName = 5,
    effGetParamLabel = 6,
    effGetParamDisplay = 7,
    effGetParamName = 8,
    effSetSampleRate = 10,
    effSetBlockSize = 11,
    effMainsChanged = 12,
    effEditGetRect = 13,
    effEditOpen = 14,
    effEditClose = 15,
    effEditIdle = 19,
    effGetChunk = 23,
    effSetChunk = 24,
    effProcessEvents = 25,
    effGetProgramNameIndexed = 29,
    effGetInputProperties = 33,
    effGetOutputProperties = 34,
    effGetPlugCategory = 35,
    effGetEffectName = 45,
    effGetVendorString = 47,
    effGetProductString = 48,
    effCanDo = 51,
    effIdle = 53,
    effBeginSetProgram = 67,
    effEndSetProgram = 68,
};

/// Calls to the host.
enum HostOpcode : int32_t {
    hostAutomate = 0,
    hostVersion = 1,
    hostIdle = 3,
    hostWantMidi = 6,
    hostGetTime = 7,
    hostProcessEvents = 8,
    hostTempoAt = 10,
    hostIOChanged = 13,
    hostSizeWindow = 15,
    hostGetSampleRate = 16,
    hostGetBlockSize = 17,
    hostGetProcessLevel = 23,
    hostGetVendorString = 32,
    hostGetProductString = 33,
    hostGetVendorVersion = 34,
    hostCanDo = 37,
    hostGetLanguage = 38,
    hostGetDirectory = 41,
    hostUpdateDisplay = 42,
    hostBeginEdit = 43,
    hostEndEdit = 44,
};

enum ProcessLevel : int32_t {
    levelUnknown = 0,
    levelUser = 1,
    levelRealtime = 2,
    levelOffline = 4
};
enum Language : int32_t { languageEnglish = 1 };
enum PinFlag : int32_t { pinIsStereo = 1 << 1 };

struct PinProperties {
    char label[64];
    int32_t flags; ///< PinFlag
    int32_t arrangement;
    char shortLabel[8];
};
static_assert(offsetof(PinProperties, flags) == 64 && sizeof(PinProperties) == 80);

/// Bits of `TimeInfo::flags`, and of the mask that a plug-in asks with.
enum TimeFlag : int32_t {
    transportChanged = 1 << 0,
    transportPlaying = 1 << 1,
    cycleActive = 1 << 2,
    transportRecording = 1 << 3,
    ppqPosValid = 1 << 9,
    tempoValid = 1 << 10,
    barsValid = 1 << 11,
    cyclePosValid = 1 << 12,
    timeSigValid = 1 << 13,
};

/// Positions are in quarter notes.
struct TimeInfo {
    double samplePos, sampleRate, nanoSeconds, ppqPos, tempo, barStartPos;
    double cycleStartPos, cycleEndPos;
    int32_t timeSigNumerator, timeSigDenominator;
    int32_t smpteOffset, smpteFrameRate, samplesToNextClock;
    int32_t flags; ///< TimeFlag
};
static_assert(offsetof(TimeInfo, tempo) == 32 && offsetof(TimeInfo, cycleEndPos) == 56);
static_assert(offsetof(TimeInfo, timeSigNumerator) == 64 && offsetof(TimeInfo, flags) == 84);

enum EventType : int32_t { midiEventType = 1 };

struct MidiEvent {
    int32_t type, byteSize;
    int32_t deltaFrames, flags;
    int32_t noteLength, noteOffset;
    uint8_t midiData[4];
    int8_t detune, noteOffVelocity, unused[2];
};
static_assert(offsetof(MidiEvent, midiData) == 24 && offsetof(MidiEvent, detune) == 28);
static_assert(sizeof(MidiEvent) == 32);

/// Followed by the pointers, of which one is declared.
struct Events {
    int32_t numEvents;
    intptr_t reserved;
    MidiEvent* events[1];
};
static_assert(offsetof(Events, reserved) == 8 && offsetof(Events, events) == 16);

struct Rect {
    int16_t top, left, bottom, right;
};
static_assert(sizeof(Rect) == 8);

} // namespace vst2
