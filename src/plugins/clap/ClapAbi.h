#pragma once

#include <cstdint>

/// The binary interface of CLAP plug-ins, as far as it is used here: what lies where, and the names
/// of its extensions. A library has a `clap_entry`, which leads to a factory of plug-ins; a plug-in
/// and its host ask each other for extensions, each a table of functions, by name. Unless told
/// otherwise functions are for the main thread, and texts end in a zero.
namespace clapabi {

using Id = uint32_t;

struct Version {
    uint32_t major, minor, revision;
};
constexpr Version version = {1, 1, 8};

struct Plugin;
struct Host;

struct Descriptor {
    Version version;
    const char *id, *name, *vendor, *url, *manualUrl, *supportUrl, *ownVersion, *description;
    const char* const* features; ///< up to a null pointer
};
constexpr const char* instrumentFeature = "instrument";

struct Factory {
    uint32_t (*count)(const Factory*);
    const Descriptor* (*descriptor)(const Factory*, uint32_t index);
    const Plugin* (*create)(const Factory*, const Host*, const char* id);
};
constexpr const char* factoryId = "clap.plugin-factory";

struct Entry {
    Version version;
    bool (*init)(const char* path);
    void (*deinit)();
    const void* (*factory)(const char* id);
};
constexpr const char* entrySymbol = "clap_entry";

// Events.

enum EventType : uint16_t {
    eventNoteOn = 0,
    eventNoteOff = 1,
    eventParamValue = 5,
    eventGestureBegin = 7,
    eventGestureEnd = 8,
    eventTransport = 9,
    eventMidi = 10,
};

struct EventHeader {
    uint32_t size;  ///< of the whole event
    uint32_t time;  ///< frames from the start of the block
    uint16_t space; ///< 0: those of CLAP itself
    uint16_t type;
    uint32_t flags;
};
struct NoteEvent {
    EventHeader header;
    int32_t note;
    int16_t port, channel, key;
    double velocity; ///< 0 to 1
};
struct ParamEvent {
    EventHeader header;
    Id param;
    void* cookie;
    int32_t note; ///< -1 all, as the next
    int16_t port, channel, key;
    double value;
};
struct GestureEvent {
    EventHeader header;
    Id param;
};
struct MidiEvent {
    EventHeader header;
    uint16_t port;
    uint8_t data[3];
};

enum TransportFlag : uint32_t {
    hasTempo = 1 << 0,
    hasBeats = 1 << 1,
    hasTimeSignature = 1 << 3,
    isPlaying = 1 << 4,
    isRecording = 1 << 5,
    isLooping = 1 << 6,
};
constexpr double fixedPoint = double(1ll << 31); ///< of positions: this is one

struct TransportEvent {
    EventHeader header;
    uint32_t flags;
    int64_t beats, seconds;
    double tempo, tempoStep;
    int64_t loopStartBeats, loopEndBeats, loopStartSeconds, loopEndSeconds;
    int64_t barStart;
    int32_t bar;
    uint16_t numerator, denominator;
};

/// Audio thread, as the next.
struct InEvents {
    void* context;
    uint32_t (*size)(const InEvents*);
    const EventHeader* (*get)(const InEvents*, uint32_t index);
};
struct OutEvents {
    void* context;
    bool (*push)(const OutEvents*, const EventHeader*);
};

// Plug-in and host.

struct AudioBuffer {
    float** data32;
    double** data64;
    uint32_t channels, latency;
    uint64_t constantMask;
};
struct Process {
    int64_t steadyTime;
    uint32_t frames;
    const TransportEvent* transport;
    const AudioBuffer* inputs;
    AudioBuffer* outputs;
    uint32_t inputCount, outputCount;
    const InEvents* inEvents;
    const OutEvents* outEvents;
};
enum ProcessStatus : int32_t { processError = 0, processContinue = 1 };

struct Plugin {
    const Descriptor* descriptor;
    void* data;
    bool (*init)(const Plugin*);
    void (*destroy)(const Plugin*);
    bool (*activate)(const Plugin*, double rate, uint32_t minFrames, uint32_t maxFrames);
    void (*deactivate)(const Plugin*);
    bool (*startProcessing)(const Plugin*); ///< audio thread, as the next three
    void (*stopProcessing)(const Plugin*);
    void (*reset)(const Plugin*);
    int32_t (*process)(const Plugin*, const Process*);
    const void* (*extension)(const Plugin*, const char* id); ///< any thread
    void (*onMainThread)(const Plugin*);
};
struct Host {
    Version version;
    void* data;
    const char *name, *vendor, *url, *ownVersion;
    const void* (*extension)(const Host*, const char* id); ///< any thread, as the rest
    void (*requestRestart)(const Host*);
    void (*requestProcess)(const Host*);
    void (*requestCallback)(const Host*);
};

// Extensions.

struct ParamInfo {
    Id id;
    uint32_t flags; ///< ParamFlag
    void* cookie;
    char name[256], module[1024];
    double low, high, usual;
};
enum ParamFlag : uint32_t { paramStepped = 1 << 0, paramHidden = 1 << 2, paramReadOnly = 1 << 3 };
struct PluginParams {
    uint32_t (*count)(const Plugin*);
    bool (*info)(const Plugin*, uint32_t index, ParamInfo*);
    bool (*value)(const Plugin*, Id, double*);
    bool (*text)(const Plugin*, Id, double, char*, uint32_t room);
    bool (*fromText)(const Plugin*, Id, const char*, double*);
    /// Of the audio thread while it is active.
    void (*flush)(const Plugin*, const InEvents*, const OutEvents*);
};
struct HostParams {
    void (*rescan)(const Host*, uint32_t flags);
    void (*clear)(const Host*, Id, uint32_t flags);
    void (*requestFlush)(const Host*); ///< any thread
};
constexpr const char* paramsId = "clap.params";

struct InStream {
    void* context;
    int64_t (*read)(const InStream*, void*, uint64_t size);
};
struct OutStream {
    void* context;
    int64_t (*write)(const OutStream*, const void*, uint64_t size);
};
struct PluginState {
    bool (*save)(const Plugin*, const OutStream*);
    bool (*load)(const Plugin*, const InStream*);
};
struct HostState {
    void (*markDirty)(const Host*);
};
constexpr const char* stateId = "clap.state";

struct PluginLatency {
    uint32_t (*get)(const Plugin*);
};
struct HostLatency {
    void (*changed)(const Host*);
};
constexpr const char* latencyId = "clap.latency";

struct AudioPortInfo {
    Id id;
    char name[256];
    uint32_t flags, channels;
    const char* type;
    Id inPlacePair;
};
struct PluginAudioPorts {
    uint32_t (*count)(const Plugin*, bool input);
    bool (*get)(const Plugin*, uint32_t index, bool input, AudioPortInfo*);
};
struct HostAudioPorts {
    bool (*isSupported)(const Host*, uint32_t flag);
    void (*rescan)(const Host*, uint32_t flags);
};
constexpr const char* audioPortsId = "clap.audio-ports";

enum NoteDialect : uint32_t { dialectClap = 1 << 0, dialectMidi = 1 << 1 };
struct NotePortInfo {
    Id id;
    uint32_t dialects, preferred; ///< NoteDialect
    char name[256];
};
struct PluginNotePorts {
    uint32_t (*count)(const Plugin*, bool input);
    bool (*get)(const Plugin*, uint32_t index, bool input, NotePortInfo*);
};
struct HostNotePorts {
    uint32_t (*dialects)(const Host*);
    void (*rescan)(const Host*, uint32_t flags);
};
constexpr const char* notePortsId = "clap.note-ports";

struct Window {
    const char* api;
    union {
        unsigned long x11;
        void* pointer;
    };
};
struct PluginGui {
    bool (*isSupported)(const Plugin*, const char* api, bool floating);
    bool (*preferred)(const Plugin*, const char** api, bool* floating);
    bool (*create)(const Plugin*, const char* api, bool floating);
    void (*destroy)(const Plugin*);
    bool (*setScale)(const Plugin*, double);
    bool (*size)(const Plugin*, uint32_t* width, uint32_t* height);
    bool (*canResize)(const Plugin*);
    bool (*resizeHints)(const Plugin*, void*);
    bool (*adjustSize)(const Plugin*, uint32_t*, uint32_t*);
    bool (*setSize)(const Plugin*, uint32_t, uint32_t);
    bool (*setParent)(const Plugin*, const Window*);
    bool (*setTransient)(const Plugin*, const Window*);
    void (*suggestTitle)(const Plugin*, const char*);
    bool (*show)(const Plugin*);
    bool (*hide)(const Plugin*);
};
struct HostGui {
    void (*resizeHintsChanged)(const Host*); ///< any thread, as the rest
    bool (*requestResize)(const Host*, uint32_t width, uint32_t height);
    bool (*requestShow)(const Host*);
    bool (*requestHide)(const Host*);
    void (*closed)(const Host*, bool destroyed);
};
constexpr const char *guiId = "clap.gui", *x11Api = "x11";

struct PluginTimer {
    void (*onTimer)(const Plugin*, Id);
};
struct HostTimer {
    bool (*add)(const Host*, uint32_t periodMs, Id*);
    bool (*remove)(const Host*, Id);
};
constexpr const char* timerId = "clap.timer-support";

enum FileFlag : uint32_t { fileReadable = 1, fileWritable = 2, fileBroken = 4 };
struct PluginFiles {
    void (*onFile)(const Plugin*, int file, uint32_t flags);
};
struct HostFiles {
    bool (*add)(const Host*, int file, uint32_t flags);
    bool (*modify)(const Host*, int file, uint32_t flags);
    bool (*remove)(const Host*, int file);
};
constexpr const char* filesId = "clap.posix-fd-support";

struct HostThreads {
    bool (*isMain)(const Host*); ///< any thread, as the next
    bool (*isAudio)(const Host*);
};
constexpr const char* threadsId = "clap.thread-check";

enum LogSeverity : int32_t { logError = 3 };
struct HostLog {
    void (*log)(const Host*, int32_t severity, const char*); ///< any thread
};
constexpr const char* logId = "clap.log";

} // namespace clapabi
