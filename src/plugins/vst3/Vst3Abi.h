#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

/// The binary interface of VST 3 plug-ins for Linux, as far as it is used here. A library has a
/// factory of classes; every object is known by interfaces, tables of functions that begin with the
/// three of `Unknown`, as the virtual functions of a class without a destructor. Interfaces are
/// told apart by ids of 16 bytes. Texts are of 16-bit units where told, and end in a zero.
namespace vst3 {

using Uid = std::array<uint8_t, 16>;
using Result = int32_t;
using Text = int16_t[128]; ///< UTF-16
using ParamId = uint32_t;
using Flag = uint8_t;

enum : Result { noInterface = -1, ok = 0, no = 1, badArgument = 2, notThere = 3 };

/// Most significant byte first.
constexpr Uid uid(uint32_t a, uint32_t b, uint32_t c, uint32_t d) {
    Uid made{};
    const uint32_t words[] = {a, b, c, d};
    for (size_t i = 0; i < made.size(); i++) made[i] = uint8_t(words[i / 4] >> (24 - 8 * (i % 4)));
    return made;
}

class Unknown {
public:
    static constexpr Uid iid = uid(0x00000000, 0x00000000, 0xC0000000, 0x00000046);
    virtual Result query(const uint8_t* wanted, void** found) = 0;
    virtual uint32_t addRef() = 0;
    virtual uint32_t release() = 0;

protected:
    ~Unknown() = default;
};

// The library.

struct FactoryInfo {
    char vendor[64], url[256], email[128];
    int32_t flags;
};
struct ClassInfo {
    uint8_t id[16];
    int32_t cardinality;
    char category[32], name[64];
};
struct ClassInfo2 {
    uint8_t id[16];
    int32_t cardinality;
    char category[32], name[64];
    uint32_t flags;
    char subCategories[128], vendor[64], version[64], sdkVersion[64];
};
constexpr const char *processorCategory = "Audio Module Class", *instrumentWord = "Instrument";

class Factory : public Unknown {
public:
    virtual Result factoryInfo(FactoryInfo*) = 0;
    virtual int32_t classCount() = 0;
    virtual Result classInfo(int32_t index, ClassInfo*) = 0;
    virtual Result create(const uint8_t* classId, const uint8_t* interfaceId, void** made) = 0;

protected:
    ~Factory() = default;
};
class Factory2 : public Factory {
public:
    static constexpr Uid iid = uid(0x0007B650, 0xF24B4C0B, 0xA464EDB9, 0xF00B2ABB);
    virtual Result classInfo2(int32_t index, ClassInfo2*) = 0;

protected:
    ~Factory2() = default;
};

class Base : public Unknown {
public:
    virtual Result initialize(Unknown* host) = 0;
    virtual Result terminate() = 0;

protected:
    ~Base() = default;
};

// What a host is to its plug-ins.

class Stream : public Unknown {
public:
    static constexpr Uid iid = uid(0xC3BF6EA2, 0x30994752, 0x9B6BF990, 0x1EE33E9B);
    enum Seek : int32_t { fromStart, fromHere, fromEnd };
    virtual Result read(void* to, int32_t bytes, int32_t* done) = 0;
    virtual Result write(void* from, int32_t bytes, int32_t* done) = 0;
    virtual Result seek(int64_t offset, int32_t from, int64_t* reached) = 0;
    virtual Result tell(int64_t* at) = 0;

protected:
    ~Stream() = default;
};

class AttributeList : public Unknown {
public:
    static constexpr Uid iid = uid(0x1E5F0AEB, 0xCC7F4533, 0xA2544011, 0x38AD5EE4);
    virtual Result setInt(const char* key, int64_t) = 0;
    virtual Result getInt(const char* key, int64_t*) = 0;
    virtual Result setFloat(const char* key, double) = 0;
    virtual Result getFloat(const char* key, double*) = 0;
    virtual Result setString(const char* key, const int16_t*) = 0;
    virtual Result getString(const char* key, int16_t*, uint32_t bytes) = 0;
    virtual Result setBinary(const char* key, const void*, uint32_t bytes) = 0;
    virtual Result getBinary(const char* key, const void**, uint32_t* bytes) = 0;

protected:
    ~AttributeList() = default;
};
class Message : public Unknown {
public:
    static constexpr Uid iid = uid(0x936F033B, 0xC6C047DB, 0xBB0882F8, 0x13C1E613);
    virtual const char* name() = 0;
    virtual void setName(const char*) = 0;
    virtual AttributeList* attributes() = 0;

protected:
    ~Message() = default;
};
class ConnectionPoint : public Unknown {
public:
    static constexpr Uid iid = uid(0x70A4156F, 0x6E6E4026, 0x989148BF, 0xAA60D8D1);
    virtual Result connect(ConnectionPoint* other) = 0;
    virtual Result disconnect(ConnectionPoint* other) = 0;
    virtual Result notify(Message*) = 0;

protected:
    ~ConnectionPoint() = default;
};
class HostApplication : public Unknown {
public:
    static constexpr Uid iid = uid(0x58E595CC, 0xDB2D4969, 0x8B6AAF8C, 0x36A664E5);
    virtual Result name(int16_t* text) = 0;
    virtual Result create(uint8_t* classId, uint8_t* interfaceId, void** made) = 0;

protected:
    ~HostApplication() = default;
};

// Sound.

enum Media : int32_t { mediaAudio, mediaEvents };
enum Direction : int32_t { input, output };
enum ProcessMode : int32_t { realtime, prefetch, offline };

struct BusInfo {
    int32_t media, direction, channels;
    Text name;
    int32_t type;
    uint32_t flags;
};

class Component : public Base {
public:
    static constexpr Uid iid = uid(0xE831FF31, 0xF2D54301, 0x928EBBEE, 0x25697802);
    virtual Result controllerClass(uint8_t* classId) = 0;
    virtual Result setIoMode(int32_t) = 0;
    virtual int32_t busCount(int32_t media, int32_t direction) = 0;
    virtual Result busInfo(int32_t media, int32_t direction, int32_t index, BusInfo*) = 0;
    virtual Result routing(void*, void*) = 0;
    virtual Result activateBus(int32_t media, int32_t direction, int32_t index, Flag on) = 0;
    virtual Result setActive(Flag on) = 0;
    virtual Result setState(Stream*) = 0;
    virtual Result getState(Stream*) = 0;

protected:
    ~Component() = default;
};

struct ProcessSetup {
    int32_t mode, sampleSize, mostFrames;
    double rate;
};
struct AudioBus {
    int32_t channels;
    uint64_t silence;
    float** buffers;
};

/// Audio thread, as the next two.
class ParamQueue : public Unknown {
public:
    static constexpr Uid iid = uid(0x01263A18, 0xED074F6F, 0x98C9D356, 0x4686F9BA);
    virtual ParamId param() = 0;
    virtual int32_t pointCount() = 0;
    virtual Result point(int32_t index, int32_t* frame, double* value) = 0;
    virtual Result add(int32_t frame, double value, int32_t* index) = 0;

protected:
    ~ParamQueue() = default;
};
class ParamChanges : public Unknown {
public:
    static constexpr Uid iid = uid(0xA4779663, 0x0BB64A56, 0xB44384A8, 0x466FEB9D);
    virtual int32_t count() = 0;
    virtual ParamQueue* queue(int32_t index) = 0;
    virtual ParamQueue* add(const ParamId*, int32_t* index) = 0;

protected:
    ~ParamChanges() = default;
};

enum EventType : uint16_t { noteOn = 0, noteOff = 1, midiControl = 65535 };
struct NoteOn {
    int16_t channel, pitch;
    float tuning, velocity;
    int32_t length, note;
};
struct NoteOff {
    int16_t channel, pitch;
    float velocity;
    int32_t note;
    float tuning;
};
struct MidiControl {
    uint8_t number;
    int8_t channel, value, value2;
};
struct Event {
    int32_t bus, frame;
    double quarters;
    uint16_t flags, type;
    union {
        NoteOn on;
        NoteOff off;
        MidiControl control;
        double room[3];
    };
};
static_assert(sizeof(Event) == 48);
class EventList : public Unknown {
public:
    static constexpr Uid iid = uid(0x3A2C4214, 0x346349FE, 0xB2C4F397, 0xB9695A44);
    virtual int32_t count() = 0;
    virtual Result get(int32_t index, Event*) = 0;
    virtual Result add(Event*) = 0;

protected:
    ~EventList() = default;
};

enum ContextFlag : uint32_t {
    playing = 1 << 1,
    looping = 1 << 2,
    recording = 1 << 3,
    quartersValid = 1 << 9,
    tempoValid = 1 << 10,
    barValid = 1 << 11,
    loopValid = 1 << 12,
    signatureValid = 1 << 13,
    continuousValid = 1 << 17,
};
struct Context {
    uint32_t flags;
    double rate;
    int64_t songFrames, systemNs, continuousFrames;
    double quarters, barStart, loopStart, loopEnd, tempo;
    int32_t numerator, denominator;
    uint32_t chord;
    int32_t smpteOffset;
    uint32_t frameRate[2];
    int32_t framesToClock;
};
struct Process {
    int32_t mode, sampleSize, frames, inputCount, outputCount;
    AudioBus *inputs, *outputs;
    ParamChanges *inParams, *outParams;
    EventList *inEvents, *outEvents;
    Context* context;
};

class Processor : public Unknown {
public:
    static constexpr Uid iid = uid(0x42043F99, 0xB7DA453C, 0xA569E79D, 0x9AAEC33D);
    virtual Result setArrangements(uint64_t* ins, int32_t inCount, uint64_t* outs,
                                   int32_t outCount) = 0;
    virtual Result arrangement(int32_t direction, int32_t index, uint64_t*) = 0;
    virtual Result canProcess(int32_t sampleSize) = 0;
    virtual uint32_t latency() = 0;
    virtual Result setup(ProcessSetup*) = 0;
    virtual Result setProcessing(Flag on) = 0;
    virtual Result process(Process*) = 0;
    virtual uint32_t tail() = 0;

protected:
    ~Processor() = default;
};

// Parameters and the window.

enum Restart : int32_t {
    restartComponent = 1 << 0,
    restartBuses = 1 << 1,
    restartValues = 1 << 2,
    restartLatency = 1 << 3,
    restartTitles = 1 << 4,
};
class ComponentHandler : public Unknown {
public:
    static constexpr Uid iid = uid(0x93A0BEA3, 0x0BD045DB, 0x8E890B0C, 0xC1E46AC6);
    virtual Result beginEdit(ParamId) = 0;
    virtual Result performEdit(ParamId, double share) = 0;
    virtual Result endEdit(ParamId) = 0;
    virtual Result askRestart(int32_t flags) = 0;

protected:
    ~ComponentHandler() = default;
};

enum ParamFlag : int32_t {
    paramReadOnly = 1 << 1,
    paramHidden = 1 << 4,
    paramProgram = 1 << 15, ///< it changes all others
};
struct ParamInfo {
    ParamId id;
    Text title, shortTitle, units;
    int32_t steps;
    double usual; ///< 0 to 1, as all values
    int32_t unit, flags;
};

struct Rect {
    int32_t left, top, right, bottom;
};
class View;
class Frame : public Unknown {
public:
    static constexpr Uid iid = uid(0x367FAF01, 0xAFA94693, 0x8D4DA2A0, 0xED0882A3);
    virtual Result resize(View*, Rect*) = 0;

protected:
    ~Frame() = default;
};
constexpr const char *editorView = "editor", *x11Type = "X11EmbedWindowID";
class View : public Unknown {
public:
    virtual Result isSupported(const char* type) = 0;
    virtual Result attached(void* parent, const char* type) = 0;
    virtual Result removed() = 0;
    virtual Result wheel(float) = 0;
    virtual Result keyDown(int16_t, int16_t, int16_t) = 0;
    virtual Result keyUp(int16_t, int16_t, int16_t) = 0;
    virtual Result size(Rect*) = 0;
    virtual Result sized(Rect*) = 0;
    virtual Result focus(Flag) = 0;
    virtual Result setFrame(Frame*) = 0;
    virtual Result canResize() = 0;
    virtual Result checkSize(Rect*) = 0;

protected:
    ~View() = default;
};

class Controller : public Base {
public:
    static constexpr Uid iid = uid(0xDCD7BBE3, 0x7742448D, 0xA874AACC, 0x979C759E);
    virtual Result setComponentState(Stream*) = 0;
    virtual Result setState(Stream*) = 0;
    virtual Result getState(Stream*) = 0;
    virtual int32_t paramCount() = 0;
    virtual Result paramInfo(int32_t index, ParamInfo*) = 0;
    virtual Result paramText(ParamId, double share, int16_t* text) = 0;
    virtual Result paramShare(ParamId, int16_t* text, double*) = 0;
    virtual double plain(ParamId, double share) = 0;
    virtual double share(ParamId, double plain) = 0;
    virtual double value(ParamId) = 0;
    virtual Result setValue(ParamId, double share) = 0;
    virtual Result setHandler(ComponentHandler*) = 0;
    virtual View* createView(const char* name) = 0;

protected:
    ~Controller() = default;
};

/// Which parameter stands for a MIDI controller; 128 is the pressure of a channel, 129 its pitch
/// bend.
class MidiMapping : public Unknown {
public:
    static constexpr Uid iid = uid(0xDF0FF9F7, 0x49B74669, 0xB63AB732, 0x7ADBF5E5);
    virtual Result controller(int32_t bus, int16_t channel, int16_t number, ParamId*) = 0;

protected:
    ~MidiMapping() = default;
};

class EventHandler : public Unknown {
public:
    virtual void ready(int file) = 0;

protected:
    ~EventHandler() = default;
};
class TimerHandler : public Unknown {
public:
    virtual void due() = 0;

protected:
    ~TimerHandler() = default;
};
class RunLoop : public Unknown {
public:
    static constexpr Uid iid = uid(0x18C35366, 0x97764F1A, 0x9C5B8385, 0x7A871389);
    virtual Result watch(EventHandler*, int file) = 0;
    virtual Result unwatch(EventHandler*) = 0;
    virtual Result addTimer(TimerHandler*, uint64_t ms) = 0;
    virtual Result removeTimer(TimerHandler*) = 0;

protected:
    ~RunLoop() = default;
};

} // namespace vst3
