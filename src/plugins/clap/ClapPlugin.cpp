#include "plugins/clap/ClapPlugin.h"

#include "base/Numbers.h"
#include "plugins/StateText.h"
#include "plugins/TextHash.h"
#include "plugins/clap/ClapLibrary.h"
#include "plugins/clap/ClapOffers.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

using namespace clapabi;

namespace {

constexpr size_t longestText = 255;
constexpr const char* stateFormat = clapStateFormat;

/// The plug-in that the calling thread renders.
thread_local const ClapPlugin* renderedHere = nullptr;

/// The calling thread counts as the one that renders a plug-in.
class AsAudioThread {
public:
    explicit AsAudioThread(const ClapPlugin* of) : before(renderedHere) { renderedHere = of; }
    ~AsAudioThread() { renderedHere = before; }
    AsAudioThread(const AsAudioThread&) = delete;
    AsAudioThread& operator=(const AsAudioThread&) = delete;

private:
    const ClapPlugin* const before;
};

CStr textOf(const char* text) {
    return text ? CStr(text, strnlen(text, longestText)).trim() : CStr();
}

} // namespace

bool ClapPlugin::onAudio() const {
    return renderedHere == this;
}

// Loading.

std::unique_ptr<ClapPlugin> ClapPlugin::load(const PluginFile& file, PluginHost& host, CStr& why) {
    return started(std::unique_ptr<ClapPlugin>(new ClapPlugin(host)), file, why);
}

std::vector<CStr> ClapPlugin::inside(const CStr& file, CStr& why) {
    const KeepSignals signals;
    const ForeignOpening foreign;
    ClapLibrary library;
    if (!library.open(file, why)) return {};
    const auto found = library.ids();
    if (found.empty()) why = "It holds no plug-in.";
    return found;
}

ClapPlugin::ClapPlugin(PluginHost& answers) : PortPlugin(answers) {
    ClapOffers::fill(offered, this);
    outEvents = {this, [](const OutEvents* to, const EventHeader* event) {
                     if (!event || event->space != 0) return false;
                     static_cast<ClapPlugin*>(to->context)->take(event);
                     return true;
                 }};
}

bool ClapPlugin::start(const PluginFile& file, CStr& why) {
    ClapLibrary library;
    if (!library.open(file.file, why)) return false;
    plugin = library.make(file.inside, &offered, why);
    if (!plugin) return false;
    if (plugin->descriptor && plugin->descriptor->id) id = hashOf(plugin->descriptor->id);
    rate = host.sampleRate();
    block = host.blockFrames();
    paramsExt = extension<PluginParams>(paramsId);
    stateExt = extension<PluginState>(stateId);
    guiExt = extension<PluginGui>(guiId);
    timerExt = extension<PluginTimer>(timerId);
    filesExt = extension<PluginFiles>(filesId);
    drawn = guiExt && guiExt->isSupported(plugin, x11Api, false);
    readPorts();
    readParams();
    return pinsFit(inputs(), outputs(), why);
}

void ClapPlugin::readPorts() {
    const auto* ports = extension<PluginAudioPorts>(audioPortsId);
    for (const bool input : {true, false}) {
        std::vector<int>& channels = input ? portsIn : portsOut;
        channels.clear();
        const uint32_t count = ports ? std::min(ports->count(plugin, input), mostPorts) : 0;
        for (uint32_t i = 0; i < count; i++) {
            AudioPortInfo info{};
            if (!ports->get(plugin, i, input, &info)) continue;
            channels.push_back(int(std::min(info.channels, uint32_t(mostPins + 1))));
        }
        (input ? buffersIn : buffersOut).assign(channels.size(), {});
    }
    const auto* noted = extension<PluginNotePorts>(notePortsId);
    NotePortInfo info{};
    if (noted && noted->count(plugin, true) > 0 && noted->get(plugin, 0, true, &info))
        notesMidi = info.dialects & dialectMidi;
    notesOut = noted && noted->count(plugin, false) > 0;
}

void ClapPlugin::readParams() {
    params.clear();
    const uint32_t count = paramsExt ? std::min(paramsExt->count(plugin), mostParams) : 0;
    for (uint32_t i = 0; i < count; i++) {
        ParamInfo info{};
        if (!paramsExt->info(plugin, i, &info)) continue;
        if (info.flags & (paramHidden | paramReadOnly)) continue;
        Param p;
        p.id = info.id;
        p.name = textOf(info.name);
        p.range = {info.low, info.high, false, (info.flags & paramStepped) != 0};
        p.usual = info.usual;
        p.cookie = info.cookie;
        params.push_back(std::move(p));
    }
    values.start(params.size());
    readValues();
}

void ClapPlugin::readValues() {
    for (size_t i = 0; i < params.size(); i++) {
        double value = params[i].usual;
        const bool known = paramsExt->value(plugin, params[i].id, &value);
        values.learn(i, known && std::isfinite(value) ? value : params[i].usual);
    }
}

ClapPlugin::~ClapPlugin() {
    if (!plugin) return;
    const KeepSignals signals;
    closeEditor();
    guarded([this] {
        deactivate();
        plugin->destroy(plugin);
    });
}

// What it is.

CStr ClapPlugin::vendor() {
    return plugin->descriptor ? textOf(plugin->descriptor->vendor) : CStr();
}

CStr ClapPlugin::product() {
    return plugin->descriptor ? textOf(plugin->descriptor->name) : CStr();
}

bool ClapPlugin::isInstrument() const {
    const char* const* feature = plugin->descriptor ? plugin->descriptor->features : nullptr;
    for (; feature && *feature; feature++)
        if (std::strcmp(*feature, instrumentFeature) == 0) return true;
    return false;
}

// Parameters.

CStr ClapPlugin::paramText(int index) {
    if (!isParam(index)) return "";
    constexpr size_t room = 4096;
    char text[room] = {};
    const Param& p = params[size_t(index)];
    const double value = values.of(size_t(index));
    bool good = false;
    guarded([&] { good = paramsExt->text(plugin, p.id, value, text, uint32_t(longestText)); });
    text[room - 1] = 0;
    return good ? textOf(text) : asStrFormat(value, "%.2f");
}

/// The values that it does not know yet, as events.
void ClapPlugin::giveParams() {
    values.send(
        [this](size_t i, double value) { events.addParam(params[i].id, params[i].cookie, value); });
}

/// Gives it what it does not know without a block. While no block is in it.
void ClapPlugin::flush() {
    if (!paramsExt) return;
    events.clear();
    giveParams();
    guarded([this] {
        const AsAudioThread here(active ? this : renderedHere);
        paramsExt->flush(plugin, events.list(), &outEvents);
    });
    events.clear();
}

/// Whoever renders.
void ClapPlugin::take(const EventHeader* event) {
    const auto index = [this, event] {
        return paramOf(reinterpret_cast<const GestureEvent*>(event)->param);
    };
    switch (event->type) {
    case eventParamValue: {
        const auto* moved = reinterpret_cast<const ParamEvent*>(event);
        const int at = paramOf(moved->param);
        if (at < 0 || !std::isfinite(moved->value)) return;
        values.learn(size_t(at), moved->value);
        values.tell(SentValues::moved, at);
        return;
    }
    case eventGestureBegin:
        values.tell(SentValues::begins, index());
        return;
    case eventGestureEnd:
        values.tell(SentValues::ends, index());
        return;
    case eventMidi: {
        const auto* midi = reinterpret_cast<const MidiEvent*>(event);
        host.sendMidi(int(event->time), midi->data[0] | midi->data[1] << 8 | midi->data[2] << 16);
        return;
    }
    case eventNoteOn:
    case eventNoteOff: {
        const auto* note = reinterpret_cast<const NoteEvent*>(event);
        sendNote(int(event->time), event->type == eventNoteOn, note->channel, note->key,
                 note->velocity);
        return;
    }
    default:
        return;
    }
}

// State.

ClapPlugin::Bytes ClapPlugin::chunk(bool) {
    StateText text;
    keepValues(text, !stateExt);
    if (stateExt) {
        const OutStream to = {
            &text.own, [](const OutStream* stream, const void* data, uint64_t size) {
                const auto* bytes = static_cast<const char*>(data);
                static_cast<std::string*>(stream->context)->append(bytes, size_t(size));
                return int64_t(size);
            }};
        guarded([&] { stateExt->save(plugin, &to); });
    }
    const std::string made = text.write(stateFormat);
    return {made.begin(), made.end()};
}

/// While no block is in it.
bool ClapPlugin::setChunk(const Bytes& data, bool) {
    const auto text = StateText::read({data.begin(), data.end()}, stateFormat);
    if (!text) return false;
    bool good = true;
    if (stateExt && !text->own.empty()) {
        struct Rest {
            const char* at;
            size_t left;
        } rest = {text->own.data(), text->own.size()};
        const InStream from = {&rest, [](const InStream* stream, void* to, uint64_t size) {
                                   auto& r = *static_cast<Rest*>(stream->context);
                                   const size_t count = std::min(r.left, size_t(size));
                                   std::memcpy(to, r.at, count);
                                   r.at += count;
                                   r.left -= count;
                                   return int64_t(count);
                               }};
        good = false;
        guarded([&] {
            values.forgetWaiting();
            good = stateExt->load(plugin, &from);
            readValues();
        });
    }
    setKept(*text);
    flush();
    return good;
}

// Running.

void ClapPlugin::activate() {
    if (active) return;
    active = plugin->activate(plugin, rate, 1, uint32_t(block));
    const auto* late = extension<PluginLatency>(latencyId);
    if (active && late) delay = int(std::min(late->get(plugin), 1000000u));
}

void ClapPlugin::deactivate() {
    if (!active) return;
    if (processing) {
        const AsAudioThread here(this);
        plugin->stopProcessing(plugin);
    }
    processing = false;
    plugin->deactivate(plugin);
    active = false;
}

void ClapPlugin::idle() {
    if (restartAsked.exchange(false)) {
        host.betweenBlocks([this] { renew(); });
        host.channelsChanged();
    }
    if (paramsAsked.exchange(false)) {
        host.betweenBlocks([this] { guarded([this] { readParams(); }); });
        host.displayChanged();
    }
    if (valuesAsked.exchange(false)) {
        guarded([this] { readValues(); });
        host.displayChanged();
    }
    // Where no blocks come, nothing else brings the values across.
    const bool asked = flushAsked.exchange(false) || values.waits() || shown;
    const int64_t done = framesDone;
    if (asked && (!active || done == framesSeen)) host.betweenBlocks([this] { flush(); });
    framesSeen = done;
    values.tellHost(host, [this](int index) { return param(index); });
    if (callbackAsked.exchange(false)) guarded([this] { plugin->onMainThread(plugin); });
}

PluginTimers::Due ClapPlugin::onTimer() {
    return [this](unsigned number) {
        if (timerExt) guarded([&] { timerExt->onTimer(plugin, number); });
    };
}

PluginTimers::Ready ClapPlugin::onFile() {
    return [this](int file, unsigned uses) {
        if (filesExt) guarded([&] { filesExt->onFile(plugin, file, uses); });
    };
}

// The editor.

CPoint ClapPlugin::openEditor(unsigned long window) {
    if (!drawn || shown) return {};
    const KeepSignals signals;
    uint32_t width = 0, height = 0;
    guarded([&] {
        shown = guiExt->create(plugin, x11Api, false);
        if (!shown) return;
        Window parent{x11Api, {window}};
        guiExt->size(plugin, &width, &height);
        guiExt->setParent(plugin, &parent);
        guiExt->show(plugin);
    });
    return asPoint(int(std::min(width, 65535u)), int(std::min(height, 65535u)));
}

void ClapPlugin::closeEditor() {
    if (!shown) return;
    const KeepSignals signals;
    shown = false;
    guarded([this] {
        guiExt->hide(plugin);
        guiExt->destroy(plugin);
    });
}

// Sound.

void ClapPlugin::connect(std::vector<AudioBuffer>& buffers, const std::vector<int>& ports,
                         float** pins) {
    for (size_t i = 0; i < buffers.size(); i++) {
        buffers[i] = {pins, nullptr, uint32_t(ports[i]), 0, 0};
        pins += ports[i];
    }
}

void ClapPlugin::fillTransport() {
    const auto fixed = [](double quarters) { return int64_t(quarters * fixedPoint); };
    const PluginTime now = host.songTime();
    transport = {};
    transport.header = {sizeof transport, 0, 0, eventTransport, 0};
    transport.flags = hasTempo | hasBeats | hasTimeSignature | (now.playing ? isPlaying : 0u) |
                      (now.recording ? isRecording : 0u) | (now.looping ? isLooping : 0u);
    transport.beats = fixed(now.beats);
    transport.tempo = now.tempo;
    transport.loopStartBeats = fixed(now.loopStart);
    transport.loopEndBeats = fixed(now.loopEnd);
    transport.barStart = fixed(now.barStart);
    const double bar = 4.0 * std::max(now.numerator, 1) / std::max(now.denominator, 1);
    transport.bar = int32_t(now.barStart / bar);
    transport.numerator = uint16_t(now.numerator);
    transport.denominator = uint16_t(now.denominator);
}

bool ClapPlugin::process(float** in, float** out, int frames) {
    const ForeignCall foreign;
    const AsAudioThread here(this);
    if (!active) return false;
    events.clear();
    giveParams();
    for (const Note& n : notes)
        notesMidi ? events.addMidi(n.frame, n.data) : events.addNote(n.frame, n.data);
    notes.clear();
    fillTransport();
    connect(buffersIn, portsIn, in);
    connect(buffersOut, portsOut, out);
    const Process call = {framesDone,
                          uint32_t(frames),
                          &transport,
                          buffersIn.data(),
                          buffersOut.data(),
                          uint32_t(buffersIn.size()),
                          uint32_t(buffersOut.size()),
                          events.list(),
                          &outEvents};
    bool whole = false;
    contained([&] {
        if (!processing) processing = plugin->startProcessing(plugin);
        whole = processing && plugin->process(plugin, &call) != processError;
    });
    framesDone = framesDone + frames;
    return whole;
}
