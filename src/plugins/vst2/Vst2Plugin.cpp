#include "plugins/vst2/Vst2Plugin.h"

#include "plugins/ForeignCall.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <dlfcn.h>
#include <memory>

using namespace vst2;

namespace {

/// Texts are asked into far more than the interface grants them, as plug-ins write beyond that.
constexpr int textRoom = 4096, longestText = 255;

CStr textOf(const char* room) {
    return CStr(room, strnlen(room, longestText)).trim();
}

Entry entryOf(void* library) {
    for (const char* name : {"VSTPluginMain", "main"})
        if (void* found = dlsym(library, name)) return reinterpret_cast<Entry>(found);
    return nullptr;
}

Effect* makeEffect(Entry entry) {
    Effect* made = nullptr;
    contained([&] { made = entry(&Vst2Plugin::answer); });
    return made;
}

} // namespace

bool Vst2Plugin::isCode(const void* address) {
    Dl_info about{}, own{};
    if (!dladdr(address, &about) || !about.dli_fname) return false;
    if (!dladdr(reinterpret_cast<void*>(&Vst2Plugin::isCode), &own)) return false;
    if (about.dli_fbase == own.dli_fbase) return false;
    void* library = dlopen(about.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
    if (!library) return false;
    const Entry entry = entryOf(library);
    dlclose(library);
    Dl_info around{};
    return entry && dladdr(reinterpret_cast<void*>(entry), &around) &&
           around.dli_fbase == about.dli_fbase;
}

struct Vst2Plugin::EventRoom {
    MidiEvent midi[mostEvents] = {};
    /// The head of a list of events with its pointers.
    alignas(
        Events) unsigned char list[offsetof(Events, events) + sizeof(MidiEvent*) * mostEvents] = {};

    Events* head() { return reinterpret_cast<Events*>(list); }
};

std::unique_ptr<Vst2Plugin> Vst2Plugin::load(const CStr& path, PluginHost& host, CStr& why) {
    const ForeignOpening foreign;
    const KeepSignals signals;
    // It is never unloaded: a thread that it has started would go on in nothing.
    void* library = dlopen(path.asChar(), RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE);
    if (!library) {
        why = dlerror();
        return nullptr;
    }
    const Entry entry = entryOf(library);
    Effect* made = entry ? makeEffect(entry) : nullptr;
    if (!entry)
        why = "It is no VST 2 plug-in.";
    else if (!made)
        why = "The plug-in does not start.";
    else if (made->magic != effectMagic || !made->dispatcher)
        why = "The plug-in is damaged.";
    else if (pinsFit(made->numInputs, made->numOutputs, why))
        return std::unique_ptr<Vst2Plugin>(new Vst2Plugin(made, host));
    return nullptr;
}

Vst2Plugin::Vst2Plugin(Effect* made, PluginHost& answers)
    : effect(made), host(answers), folder(answers.libraryFolder()),
      events(std::make_unique<EventRoom>()) {
    effect->resvd1 = reinterpret_cast<intptr_t>(this);
    const KeepSignals signals;
    call(effOpen);
}

Vst2Plugin::~Vst2Plugin() {
    const KeepSignals signals;
    call(effClose);
}

// Calls to the effect.

intptr_t Vst2Plugin::call(int32_t opcode, int32_t index, intptr_t value, void* data, float number) {
    intptr_t told = 0;
    guarded([&] { told = effect->dispatcher(effect, opcode, index, value, data, number); });
    return told;
}

CStr Vst2Plugin::text(int32_t opcode, int32_t index) {
    char room[textRoom] = {};
    call(opcode, index, 0, room);
    return textOf(room);
}

CStr Vst2Plugin::vendor() {
    return text(effGetVendorString);
}

CStr Vst2Plugin::product() {
    const CStr name = text(effGetEffectName);
    return name.empty() ? text(effGetProductString) : name;
}

bool Vst2Plugin::isInstrument() const {
    return has(isSynth);
}

bool Vst2Plugin::sendsMidi() {
    char question[] = "sendVstMidiEvent";
    return call(effCanDo, 0, 0, question) == 1;
}

bool Vst2Plugin::stereoPair(bool input, int index) {
    struct {
        PinProperties pin;
        char beyond[textRoom];
    } room{};
    return call(input ? effGetInputProperties : effGetOutputProperties, index, 0, &room) &&
           (room.pin.flags & pinIsStereo);
}

CStr Vst2Plugin::paramName(int index) {
    return isParam(index) ? text(effGetParamName, index) : CStr();
}

CStr Vst2Plugin::paramText(int index) {
    if (!isParam(index)) return "";
    return (text(effGetParamDisplay, index) + " " + text(effGetParamLabel, index)).trim();
}

void Vst2Plugin::setParam(int index, float share) {
    if (!isParam(index) || !effect->setParameter) return;
    const ForeignCall foreign;
    contained([&] { effect->setParameter(effect, index, share); });
}

float Vst2Plugin::param(int index) {
    if (!isParam(index) || !effect->getParameter) return 0.0f;
    const ForeignCall foreign;
    float share = 0.0f;
    contained([&] { share = effect->getParameter(effect, index); });
    return std::isfinite(share) ? share : 0.0f;
}

int Vst2Plugin::program() {
    return int(call(effGetProgram));
}

void Vst2Plugin::setProgram(int index) {
    if (index < 0 || index >= std::max(numPrograms(), 1)) return;
    call(effBeginSetProgram);
    call(effSetProgram, 0, index);
    call(effEndSetProgram);
}

CStr Vst2Plugin::programName(int index) {
    if (index < 0 || index >= numPrograms()) return "";
    char room[textRoom] = {};
    return call(effGetProgramNameIndexed, index, 0, room) == 1 ? textOf(room) : CStr();
}

CStr Vst2Plugin::currentProgramName() {
    return text(effGetProgramName);
}

void Vst2Plugin::renameProgram(const CStr& name) {
    char room[textRoom] = {};
    std::strncpy(room, name.asChar(), longestText);
    call(effSetProgramName, 0, 0, room);
}

Plugin::Bytes Vst2Plugin::chunk(bool whole) {
    void* data = nullptr;
    const intptr_t size = call(effGetChunk, whole ? 0 : 1, 0, &data);
    if (!data || size <= 0 || size > INT32_MAX) return {};
    const auto* bytes = static_cast<const unsigned char*>(data);
    return {bytes, bytes + size};
}

bool Vst2Plugin::setChunk(const Bytes& data, bool whole) {
    Bytes closed = data; // some read on to a zero that is not theirs
    closed.push_back(0);
    return guarded([&] {
        effect->dispatcher(effect, effSetChunk, whole ? 0 : 1, intptr_t(data.size()), closed.data(),
                           0.0f);
    });
}

void Vst2Plugin::setRate(double rate) {
    call(effSetSampleRate, 0, 0, nullptr, float(rate));
}

void Vst2Plugin::setBlock(int frames) {
    call(effSetBlockSize, 0, frames);
}

void Vst2Plugin::setRunning(bool on) {
    call(effMainsChanged, 0, on);
}

void Vst2Plugin::idle() {
    call(effIdle);
}

// The editor.

CPoint Vst2Plugin::openEditor(unsigned long window) {
    const KeepSignals signals;
    call(effEditOpen, 0, 0, reinterpret_cast<void*>(window));
    Rect* rect = nullptr;
    call(effEditGetRect, 0, 0, &rect);
    return rect ? asPoint(rect->right - rect->left, rect->bottom - rect->top) : CPoint();
}

void Vst2Plugin::closeEditor() {
    const KeepSignals signals;
    call(effEditClose);
}

void Vst2Plugin::idleEditor() {
    call(effEditIdle);
}

// Sound.

void Vst2Plugin::addMidi(int frame, int data) {
    Events* list = events->head();
    if (list->numEvents >= mostEvents) return;
    MidiEvent& event = events->midi[list->numEvents];
    event = {};
    event.type = midiEventType;
    event.byteSize = sizeof(MidiEvent);
    event.deltaFrames = frame;
    for (size_t i = 0; i < 3; i++) event.midiData[i] = uint8_t(unsigned(data) >> 8 * i);
    MidiEvent* place = &event;
    std::memcpy(events->list + offsetof(Events, events) + sizeof place * size_t(list->numEvents),
                &place, sizeof place);
    list->numEvents++;
}

bool Vst2Plugin::process(float** in, float** out, int frames) {
    const ForeignCall foreign;
    Events* list = events->head();
    rendering = true;
    const bool whole = contained([&] {
        effect->dispatcher(effect, effProcessEvents, 0, 0, list, 0.0f);
        const vst2::Process run = has(canReplace) && effect->processReplacing
                                      ? effect->processReplacing
                                      : effect->process;
        if (run) run(effect, in, out, frames);
    });
    rendering = false;
    list->numEvents = 0;
    return whole;
}

// What the effect asks.

intptr_t Vst2Plugin::answer(Effect* effect, int32_t opcode, int32_t index, intptr_t value,
                            void* data, float number) {
    static constexpr char name[] = "Sondrava";
    static_assert(sizeof name <= 64, "the room that the interface grants for vendor and product");
    static constexpr const char* deeds[] = {"sizeWindow", "sendVstMidiEvent", "receiveVstMidiEvent",
                                            "sendVstTimeInfo", "acceptIOChanges"};
    constexpr intptr_t interfaceVersion = 2300, ownVersion = 2000;
    switch (opcode) {
    case hostVersion:
        return interfaceVersion;
    case hostGetVendorString:
    case hostGetProductString:
        if (data) std::memcpy(data, name, sizeof name);
        return 1;
    case hostGetVendorVersion:
        return ownVersion;
    case hostGetLanguage:
        return languageEnglish;
    case hostCanDo: {
        const auto* asked = static_cast<const char*>(data);
        return asked && std::ranges::any_of(deeds, [asked](const char* deed) {
                   return std::strcmp(asked, deed) == 0;
               });
    }
    default:
        break;
    }
    auto* plugin = effect ? reinterpret_cast<Vst2Plugin*>(effect->resvd1) : nullptr;
    return plugin ? plugin->answer(opcode, index, value, data, number) : 0;
}

intptr_t Vst2Plugin::answer(int32_t opcode, int32_t index, intptr_t value, void* data,
                            float number) {
    constexpr int tempoUnit = 10000;
    switch (opcode) {
    case hostAutomate:
        host.parameterMoved(index, number);
        return 0;
    case hostIdle:
        host.idleEditor();
        return 0;
    case hostWantMidi:
        return 1;
    case hostGetTime:
        return reinterpret_cast<intptr_t>(time(int32_t(value)));
    case hostProcessEvents:
        if (data) takeEvents(*static_cast<const Events*>(data));
        return 1;
    case hostTempoAt:
        return intptr_t(host.songTime().tempo) * tempoUnit;
    case hostIOChanged:
        host.channelsChanged();
        return 1;
    case hostSizeWindow:
        host.sizeEditor(asPoint(index, int(value)));
        return 1;
    case hostGetSampleRate:
        return intptr_t(host.sampleRate());
    case hostGetBlockSize:
        return host.blockFrames();
    case hostGetProcessLevel:
        switch (host.level()) {
        case PluginLevel::interface:
            return levelUser;
        case PluginLevel::realtime:
            return levelRealtime;
        case PluginLevel::offline:
            return levelOffline;
        case PluginLevel::other:
            break;
        }
        return levelUnknown;
    case hostGetDirectory:
        return reinterpret_cast<intptr_t>(folder.asChar());
    case hostUpdateDisplay:
        host.displayChanged();
        return 1;
    case hostBeginEdit:
        host.gestureBegins(index);
        return 1;
    case hostEndEdit:
        host.gestureEnds(index);
        return 1;
    default:
        return 0;
    }
}

TimeInfo* Vst2Plugin::time(int32_t mask) {
    const PluginTime now = host.songTime();
    const PluginLevel level = host.level();
    const bool inBlock = level == PluginLevel::realtime || level == PluginLevel::offline;
    TimeInfo& told = inBlock ? renderTime : otherTime;
    told = {};
    told.samplePos = now.frames;
    told.sampleRate = now.rate;
    told.tempo = now.tempo;
    told.timeSigNumerator = told.timeSigDenominator = 4;
    told.smpteFrameRate = told.samplesToNextClock = 1;
    told.flags = tempoValid;
    if (now.jumped) told.flags |= transportChanged;
    if (now.playing) told.flags |= transportPlaying;
    if (now.recording) told.flags |= transportRecording;
    if (mask & ppqPosValid) {
        told.ppqPos = now.beats;
        told.flags |= ppqPosValid;
    }
    if (mask & timeSigValid) {
        told.timeSigNumerator = now.numerator;
        told.timeSigDenominator = now.denominator;
        told.flags |= timeSigValid;
    }
    if (mask & barsValid) {
        told.barStartPos = mask & timeSigValid ? now.barStart : std::trunc(now.beats);
        told.flags |= barsValid;
    }
    if (now.looping) {
        told.cycleStartPos = now.loopStart;
        told.cycleEndPos = now.loopEnd;
        told.flags |= cycleActive | cyclePosValid;
    }
    return &told;
}

void Vst2Plugin::takeEvents(const Events& sent) {
    if (!rendering) return;
    const auto* list = reinterpret_cast<const unsigned char*>(&sent) + offsetof(Events, events);
    for (int i = 0; i < sent.numEvents; i++) {
        const MidiEvent* event;
        std::memcpy(&event, list + sizeof event * size_t(i), sizeof event);
        if (!event || event->type != midiEventType) continue;
        int data = 0;
        for (size_t byte = 0; byte < 3; byte++) data |= event->midiData[byte] << 8 * byte;
        host.sendMidi(event->deltaFrames, data);
    }
}
