#include "plugins/vst3/Vst3Plugin.h"

#include "base/Numbers.h"
#include "base/Paths.h"
#include "plugins/StateText.h"
#include "plugins/TextHash.h"
#include "plugins/vst3/Vst3Editor.h"
#include "plugins/vst3/Vst3Library.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

using namespace vst3;

namespace {

constexpr const char *stateFormat = vst3StateFormat, *presetKey = "preset";

/// Of 16-bit units; what is not plain is a question mark.
CStr textOf(const Text& text) {
    std::string made;
    for (const int16_t unit : text) {
        if (unit == 0) break;
        made += unit >= ' ' && unit < 127 ? char(unit) : unit == 0xb0 ? 'o' : '?';
    }
    return CStr(made.c_str()).trim();
}

template <class T>
T* ask(Unknown* object) {
    void* found = nullptr;
    if (!object || object->query(T::iid.data(), &found) != ok) return nullptr;
    return static_cast<T*>(found);
}

} // namespace

// Loading.

std::unique_ptr<Vst3Plugin> Vst3Plugin::load(const PluginFile& file, PluginHost& host, CStr& why) {
    return started(std::unique_ptr<Vst3Plugin>(new Vst3Plugin(host)), file, why);
}

std::vector<CStr> Vst3Plugin::inside(const CStr& file, CStr& why) {
    const KeepSignals signals;
    std::vector<CStr> found;
    guarded([&] {
        Vst3Library library;
        if (!library.open(file, why)) return;
        for (const auto& kind : library.kinds()) found.push_back(kind.key);
        if (found.empty()) why = "It holds no plug-in.";
    });
    return found;
}

Vst3Plugin::Vst3Plugin(PluginHost& answers) : PortPlugin(answers) {
}

bool Vst3Plugin::start(const PluginFile& file, CStr& why) {
    Vst3Library library;
    if (!library.open(file.file, why)) return false;
    const auto kind = library.find(file.inside);
    if (!kind) {
        why = "The bundle holds no such plug-in.";
        return false;
    }
    name = kind->name;
    maker = kind->vendor;
    instrument = kind->instrument;
    key = kind->key;
    id = hashOf(key.asChar());
    component = library.make<Component>(kind->id);
    if (!component || component->initialize(&application) != ok) return false;
    processor = ask<Processor>(component);
    if (!processor || !makeController(library, kind->id)) return false;
    joinHalves(true);
    controller->setHandler(this);
    Vst3Stream state;
    if (component->getState(&state) == ok) {
        state.rewind();
        controller->setComponentState(&state);
    }
    rate = host.sampleRate();
    block = host.blockFrames();
    readPorts();
    readParams();
    readControls();
    drawn = Vst3Editor::works(*controller);
    presets = vst3Presets(maker, name);
    if (!presets.empty()) usual = presentState();
    return pinsFit(inputs(), outputs(), why);
}

/// In many it is an object of a class of its own, in others the component itself.
bool Vst3Plugin::makeController(const Vst3Library& library, const Uid& own) {
    controller = ask<Controller>(component);
    if (controller) return true;
    Uid other{};
    if (component->controllerClass(other.data()) != ok || other == own) return false;
    controller = library.make<Controller>(other);
    ownController = controller != nullptr;
    return controller && controller->initialize(&application) == ok;
}

void Vst3Plugin::joinHalves(bool on) {
    if (!ownController) return;
    auto* played = ask<ConnectionPoint>(component);
    auto* known = ask<ConnectionPoint>(controller);
    if (played && known) {
        on ? played->connect(known) : played->disconnect(known);
        on ? known->connect(played) : known->disconnect(played);
    }
    for (ConnectionPoint* one : {played, known})
        if (one) one->release();
}

void Vst3Plugin::readPorts() {
    for (const int32_t direction : {input, output}) {
        std::vector<int>& channels = direction == input ? portsIn : portsOut;
        channels.clear();
        const int32_t count =
            std::min(component->busCount(mediaAudio, direction), int32_t(mostPorts));
        for (int32_t i = 0; i < count; i++) {
            BusInfo info{};
            const bool told = component->busInfo(mediaAudio, direction, i, &info) == ok;
            channels.push_back(told ? std::clamp(info.channels, 0, mostPins + 1) : 0);
            component->activateBus(mediaAudio, direction, i, 1);
        }
        (direction == input ? audioIn : audioOut).assign(channels.size(), {});
        const int32_t events = component->busCount(mediaEvents, direction);
        (direction == input ? hearsEvents : eventsOut) = events > 0;
        if (events > 0) component->activateBus(mediaEvents, direction, 0, 1);
    }
}

void Vst3Plugin::readParams() {
    params.clear();
    const int32_t count = std::min(controller->paramCount(), int32_t(mostParams));
    for (int32_t i = 0; i < count; i++) {
        ParamInfo info{};
        if (controller->paramInfo(i, &info) != ok || info.flags & (paramHidden | paramReadOnly))
            continue;
        Param p;
        p.id = info.id;
        p.name = textOf(info.title);
        p.unit = textOf(info.units);
        p.program = (info.flags & paramProgram) != 0;
        params.push_back(std::move(p));
    }
    values.start(params.size());
    shown.assign(params.size(), 0.0);
    constexpr size_t controllers = 64;
    changesIn.makeRoom(params.size() + controllers);
    changesOut.makeRoom(params.size() + controllers);
    readValues();
}

void Vst3Plugin::readValues() {
    for (size_t i = 0; i < params.size(); i++) {
        const double value = controller->value(params[i].id);
        values.learn(i, std::isfinite(value) ? std::clamp(value, 0.0, 1.0) : 0.0);
        shown[i] = values.of(i);
    }
}

void Vst3Plugin::readControls() {
    for (auto& channel : controls) channel.fill(-1);
    auto* mapping = ask<MidiMapping>(controller);
    if (!mapping) return;
    for (int channel = 0; channel < midiChannels; channel++)
        for (int number = 0; number < midiControls; number++) {
            ParamId found = 0;
            if (mapping->controller(0, int16_t(channel), int16_t(number), &found) == ok)
                controls[size_t(channel)][size_t(number)] = int64_t(found);
        }
    mapping->release();
}

Vst3Plugin::~Vst3Plugin() {
    const KeepSignals signals;
    closeEditor();
    guarded([this] {
        if (component) deactivate();
        if (controller) {
            joinHalves(false);
            controller->setHandler(nullptr);
            if (ownController) controller->terminate();
            controller->release();
        }
        if (processor) processor->release();
        if (component) {
            component->terminate();
            component->release();
        }
    });
}

// Parameters.

CStr Vst3Plugin::paramText(int index) {
    if (!isParam(index)) return "";
    const Param& p = params[size_t(index)];
    const double value = values.of(size_t(index));
    struct {
        Text text;
        int16_t beyond[4096];
    } room{};
    bool good = false;
    guarded([&] { good = controller->paramText(p.id, value, room.text) == ok; });
    const CStr text = good ? textOf(room.text) : asStrFormat(value, "%.2f");
    return p.unit.empty() || text.pos(p.unit) >= 0 ? text : text + " " + p.unit;
}

void Vst3Plugin::setParam(int index, float share) {
    PortPlugin::setParam(index, share);
    showsOld = true;
}

Result Vst3Plugin::beginEdit(ParamId param) {
    if (const int index = paramOf(param); index >= 0) host.gestureBegins(index);
    return ok;
}

Result Vst3Plugin::performEdit(ParamId param, double share) {
    const int index = paramOf(param);
    if (index < 0 || !std::isfinite(share)) return badArgument;
    const double value = std::clamp(share, 0.0, 1.0);
    values.set(size_t(index), value);
    shown[size_t(index)] = value;
    host.parameterMoved(index, float(value));
    return ok;
}

Result Vst3Plugin::endEdit(ParamId param) {
    if (const int index = paramOf(param); index >= 0) host.gestureEnds(index);
    return ok;
}

Result Vst3Plugin::askRestart(int32_t flags) {
    restartAsked.fetchOr(flags);
    return ok;
}

/// The controller is told what was set, or has come from a block.
void Vst3Plugin::showController() {
    for (Shown told{}; toShow.pop(told);) controller->setValue(told.id, told.value);
    if (!showsOld.exchange(false)) return;
    for (size_t i = 0; i < params.size(); i++) {
        const double value = values.of(i);
        if (value == shown[i]) continue;
        shown[i] = value;
        controller->setValue(params[i].id, value);
    }
}

// State.

Vst3PresetState Vst3Plugin::presentState() {
    Vst3Stream played, known;
    guarded([&] {
        component->getState(&played);
        if (ownController) controller->getState(&known);
    });
    return {std::move(played.bytes), std::move(known.bytes)};
}

/// While no block is in it.
bool Vst3Plugin::giveState(const Vst3PresetState& state) {
    Vst3Stream played, known;
    played.bytes = state.played;
    known.bytes = state.known;
    bool good = false;
    guarded([&] {
        values.forgetWaiting();
        good = played.bytes.empty() || component->setState(&played) == ok;
        played.rewind();
        controller->setComponentState(&played);
        if (ownController && !known.bytes.empty()) controller->setState(&known);
        readValues();
    });
    showsOld = true;
    tellsAll = true;
    return good;
}

CStr Vst3Plugin::programName(int index) {
    if (index == 0) return "Default";
    if (index < 0 || index >= numPrograms()) return "";
    return changeFileExt(extractFileName(presets[size_t(index) - 1]), "");
}

/// While no block is in it. A file that is none leaves it as it is.
void Vst3Plugin::setProgram(int index) {
    if (index < 0 || index >= numPrograms()) return;
    const auto state =
        index == 0 ? std::optional(usual) : readVst3Preset(presets[size_t(index) - 1], key);
    if (state && giveState(*state)) current = index;
}

Plugin::Bytes Vst3Plugin::chunk(bool) {
    StateText text;
    keepValues(text, false);
    if (current > 0) text.values.emplace_back(presetKey, double(current));
    const Vst3PresetState state = presentState();
    text.program = int(state.played.size()); // where the part of the controller begins
    text.own.assign(state.played.begin(), state.played.end());
    text.own.append(state.known.begin(), state.known.end());
    const std::string made = text.write(stateFormat);
    return {made.begin(), made.end()};
}

/// While no block is in it.
bool Vst3Plugin::setChunk(const Bytes& data, bool) {
    const auto text = StateText::read({data.begin(), data.end()}, stateFormat);
    if (!text || text->program < 0 || size_t(text->program) > text->own.size()) return false;
    const auto split = text->own.begin() + text->program;
    const bool good = giveState({{text->own.begin(), split}, {split, text->own.end()}});
    setKept(*text);
    current = 0;
    for (const auto& [kept, value] : text->values)
        if (kept == presetKey && value >= 0.0 && value <= double(presets.size()))
            current = int(value);
    return good;
}

// Running.

void Vst3Plugin::activate() {
    if (active) return;
    constexpr int32_t floats = 0;
    ProcessSetup setup{realtime, floats, block, rate};
    processor->setup(&setup);
    active = component->setActive(1) == ok;
    delay = int(std::min(processor->latency(), 1000000u));
}

void Vst3Plugin::deactivate() {
    if (!active) return;
    if (processing) processor->setProcessing(0);
    processing = false;
    component->setActive(0);
    active = false;
}

void Vst3Plugin::idle() {
    const int asked = restartAsked.exchange(0);
    if (asked & (restartComponent | restartBuses | restartLatency)) {
        host.betweenBlocks([this] { renew(); });
        host.channelsChanged();
    }
    if (asked & restartTitles) host.betweenBlocks([this] { guarded([this] { readParams(); }); });
    if (asked & restartValues) guarded([this] { readValues(); });
    if (asked & (restartTitles | restartValues)) host.displayChanged();
    values.tellHost(host, [this](int index) { return param(index); });
    guarded([this] { showController(); });
}

// The editor.

CPoint Vst3Plugin::openEditor(unsigned long window) {
    const KeepSignals signals;
    CPoint size{};
    guarded([&] {
        editor = Vst3Editor::open(*controller, host, window);
        if (editor) size = editor->size();
    });
    return size;
}

void Vst3Plugin::closeEditor() {
    const KeepSignals signals;
    guarded([this] { editor.reset(); });
}

// Sound.

void Vst3Plugin::fillIn(int frames) {
    changesIn.clear();
    changesOut.clear();
    eventListIn.clear();
    eventListOut.clear();
    // Some take what they have read for themselves only when it is told as a change.
    if (tellsAll.exchange(false))
        for (size_t i = 0; i < params.size(); i++)
            if (!params[i].program) changesIn.put(params[i].id, 0, values.of(i));
    values.send([this](size_t i, double value) { changesIn.put(params[i].id, 0, value); });
    for (const Note& n : notes) {
        const int kind = n.data & 0xf0, channel = n.data & 0xf;
        const int first = n.data >> 8 & 0x7f, second = n.data >> 16 & 0x7f;
        const int frame = std::clamp(n.frame, 0, std::max(frames - 1, 0));
        const bool on = kind == 0x90 && second > 0;
        if (kind == 0x80 || kind == 0x90) {
            Event event{};
            event.frame = frame;
            event.type = on ? noteOn : noteOff;
            const auto velocity = float(second) / 127.0f;
            if (on)
                event.on = {int16_t(channel), int16_t(first), 0.0f, velocity, 0, -1};
            else
                event.off = {int16_t(channel), int16_t(first), velocity, -1, 0.0f};
            if (hearsEvents) eventListIn.add(&event);
            continue;
        }
        constexpr int pressure = 128, bend = 129;
        const int number = kind == 0xb0   ? first
                           : kind == 0xd0 ? pressure
                           : kind == 0xe0 ? bend
                                          : -1;
        const int64_t param = number < 0 ? -1 : controls[size_t(channel)][size_t(number)];
        if (param < 0) continue;
        const double share = kind == 0xe0   ? double(first | second << 7) / 16383.0
                             : kind == 0xb0 ? second / 127.0
                                            : first / 127.0;
        changesIn.put(ParamId(param), frame, share);
    }
    notes.clear();
}

void Vst3Plugin::fillContext() {
    const PluginTime now = host.songTime();
    context = {};
    context.flags = quartersValid | tempoValid | barValid | signatureValid | continuousValid |
                    (now.playing ? playing : 0u) | (now.recording ? recording : 0u) |
                    (now.looping ? looping | loopValid : 0u);
    context.rate = now.rate;
    context.songFrames = int64_t(now.beats * 60.0 / std::max(now.tempo, 1.0) * now.rate);
    context.continuousFrames = int64_t(now.frames);
    context.quarters = now.beats;
    context.barStart = now.barStart;
    context.loopStart = now.loopStart;
    context.loopEnd = now.loopEnd;
    context.tempo = now.tempo;
    context.numerator = now.numerator;
    context.denominator = now.denominator;
}

void Vst3Plugin::takeOut() {
    for (int32_t i = 0; i < changesOut.count(); i++) {
        Vst3Queue& queue = *changesOut.queue(i);
        if (queue.pointCount() == 0 || !std::isfinite(queue.last())) continue;
        toShow.push({queue.param(), queue.last()});
        const int at = paramOf(queue.param());
        if (at < 0) continue;
        values.learn(size_t(at), std::clamp(queue.last(), 0.0, 1.0));
        values.tell(SentValues::moved, at);
    }
    for (int32_t i = 0; i < eventListOut.count(); i++) {
        Event event{};
        eventListOut.get(i, &event);
        if (event.type == noteOn)
            sendNote(event.frame, true, event.on.channel, event.on.pitch,
                     double(event.on.velocity));
        if (event.type == noteOff)
            sendNote(event.frame, false, event.off.channel, event.off.pitch,
                     double(event.off.velocity));
    }
}

void Vst3Plugin::connect(std::vector<AudioBus>& made, const std::vector<int>& buses, float** pins) {
    for (size_t i = 0; i < made.size(); i++) {
        made[i] = {buses[i], 0, pins};
        pins += buses[i];
    }
}

bool Vst3Plugin::render(int frames) {
    fillIn(frames);
    fillContext();
    Process call{};
    call.mode = host.level() == PluginLevel::offline ? offline : realtime;
    call.frames = frames;
    call.inputs = audioIn.data();
    call.outputs = audioOut.data();
    call.inputCount = int32_t(audioIn.size());
    call.outputCount = int32_t(audioOut.size());
    call.inParams = &changesIn;
    call.outParams = &changesOut;
    call.inEvents = &eventListIn;
    call.outEvents = &eventListOut;
    call.context = &context;
    bool whole = false;
    contained([&] {
        if (!processing) processor->setProcessing(1);
        processing = true;
        whole = processor->process(&call) == ok;
    });
    if (whole) takeOut();
    return whole;
}

bool Vst3Plugin::process(float** in, float** out, int frames) {
    if (!active) return false;
    const ForeignCall foreign;
    connect(audioIn, portsIn, in);
    connect(audioOut, portsOut, out);
    return render(frames);
}
