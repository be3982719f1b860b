#include "plugins/lv2/Lv2Plugin.h"

#include "plugins/ForeignCall.h"
#include "plugins/StateText.h"
#include "plugins/TextHash.h"
#include "plugins/lv2/Lv2Editor.h"
#include "plugins/scan/PluginFacts.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <dlfcn.h>
#include <lv2/midi/midi.h>
#include <lv2/presets/presets.h>
#include <lv2/state/state.h>

namespace {

constexpr size_t longestText = 255;
constexpr const char *stateFormat = "LV2", *stateName = "urn:sondrava:state";

CStr textOf(LilvNode* owned) {
    const Lilv<LilvNode> node(owned);
    const char* text = node ? lilv_node_as_string(node.get()) : nullptr;
    return text ? CStr(text, strnlen(text, longestText)).trim() : CStr();
}

/// Its library stays loaded, whatever becomes of it: a thread that it has started would go on in
/// nothing. False, with `why`, where it does not load.
bool keepLibrary(const LilvPlugin* plugin, CStr& why) {
    const LilvNode* uri = lilv_plugin_get_library_uri(plugin);
    char* path = uri ? lilv_file_uri_parse(lilv_node_as_uri(uri), nullptr) : nullptr;
    const bool good = path && dlopen(path, RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE);
    if (!good) why = path ? CStr(dlerror()) : CStr("Its bundle names no library.");
    lilv_free(path);
    return good;
}

bool hasAllItNeeds(const LilvPlugin* plugin, CStr& why) {
    const LilvNodeList needed(lilv_plugin_get_required_features(plugin));
    LILV_FOREACH(nodes, i, needed.get()) {
        const char* uri = lilv_node_as_string(lilv_nodes_get(needed.get(), i));
        if (Lv2Instance::offers(uri)) continue;
        why = CStr("It needs what is not there: ") + uri;
        return false;
    }
    return true;
}

bool isInstrumentOf(const LilvPlugin* plugin) {
    const LilvNode* kind = lilv_plugin_class_get_uri(lilv_plugin_get_class(plugin));
    return kind && std::strcmp(lilv_node_as_uri(kind), LV2_CORE__InstrumentPlugin) == 0;
}

CStr makerOf(const LilvPlugin* plugin) {
    const CStr author = textOf(lilv_plugin_get_author_name(plugin));
    return author.empty() ? textOf(lilv_plugin_get_project(plugin)) : author;
}

CStr nameOf(const LilvPlugin* plugin) {
    return textOf(lilv_plugin_get_name(plugin));
}

/// Bytes of a message that begins so.
uint32_t midiBytes(int status) {
    const int kind = status & 0xf0;
    if (status >= 0xf8) return 1;
    return kind == 0xc0 || kind == 0xd0 ? 2 : 3;
}

} // namespace

// Loading.

std::unique_ptr<Lv2Plugin> Lv2Plugin::load(const PluginFile& file, PluginHost& host, CStr& why) {
    const ForeignOpening foreign;
    const KeepSignals signals;
    auto world = Lv2World::ofProcess();
    const LilvPlugin* plugin = world->find(file.file, file.inside);
    if (!plugin) {
        why = "The bundle holds no such plug-in.";
        return nullptr;
    }
    if (!hasAllItNeeds(plugin, why) || !keepLibrary(plugin, why)) return nullptr;
    std::unique_ptr<Lv2Plugin> made(new Lv2Plugin(std::move(world), plugin, host));
    if (!made->make(host.sampleRate(), host.blockFrames(), why)) return nullptr;
    return made;
}

Lv2Plugin::Lv2Plugin(std::shared_ptr<Lv2World> of, const LilvPlugin* p, PluginHost& answers)
    : world(std::move(of)), plugin(p), host(answers),
      id(hashOf(lilv_node_as_uri(lilv_plugin_get_uri(p)))),
      drawn(!Lv2Editor::uiOf(*world, p).empty()),
      midiEvent(world->urids.number(LV2_MIDI__MidiEvent)),
      eventTransfer(world->urids.number(LV2_ATOM__eventTransfer)), position(world->urids),
      properties(world->urids) {
    notes.reserve(mostNotes);
    const LilvNodeList related(
        lilv_plugin_get_related(plugin, world->node(LV2_PRESETS__Preset).get()));
    LILV_FOREACH(nodes, i, related.get())
    presets.emplace_back(lilv_node_as_string(lilv_nodes_get(related.get(), i)));
}

bool Lv2Plugin::make(double rate, int frames, CStr& why) {
    ports = {};
    if (!ports.read(*world, plugin, rate, why)) return false;
    if (!pinsFit(int(ports.audioIn.size()), int(ports.audioOut.size()), why)) return false;
    wanted.resize(ports.params.size());
    meters.resize(ports.shown.size());
    hearOfFiles();
    given.clear();
    given.resize(ports.files.size());
    instance = Lv2Instance::make(*world, plugin, ports, rate, frames, why);
    if (!instance) return false;
    keepsOwn = lilv_instance_get_extension_data(instance->get(), LV2_STATE__interface) != nullptr;
    setUsual();
    properties.begin(ports, world->urids);
    return true;
}

/// For another rate or length of blocks, with the state that it has.
void Lv2Plugin::remake(double rate, int frames) {
    const Bytes state = instance ? chunk(true) : Bytes();
    renew(rate, frames, [&] {
        if (!state.empty()) setChunk(state, true);
    });
}

/// As it begins, but for what `prepare` does before it runs and is shown again.
template <class F>
void Lv2Plugin::renew(double rate, int frames, F&& prepare) {
    const ForeignOpening foreign;
    const unsigned long shownIn = window;
    const bool ran = running;
    closeEditor();
    instance = nullptr;
    CStr why;
    make(rate, frames, why);
    prepare();
    setRunning(ran);
    if (shownIn) openEditor(shownIn);
}

Lv2Plugin::~Lv2Plugin() {
    const ForeignOpening foreign;
    const KeepSignals signals;
    editor.reset();
    instance.reset();
}

void Lv2Plugin::setRate(double rate) {
    if (!instance || instance->rate() != rate) remake(rate, host.blockFrames());
}

void Lv2Plugin::setBlock(int frames) {
    if (!instance || instance->frames() != frames) remake(host.sampleRate(), frames);
}

void Lv2Plugin::setRunning(bool on) {
    running = on;
    if (instance) guarded([this, on] { instance->setRunning(on); });
}

// What it is.

CStr Lv2Plugin::vendor() {
    return makerOf(plugin);
}

CStr Lv2Plugin::product() {
    return nameOf(plugin);
}

bool Lv2Plugin::isInstrument() const {
    return isInstrumentOf(plugin) || ports.isPlayed();
}

bool Lv2Plugin::stereoPair(bool input, int index) {
    const auto& pins = input ? ports.audioIn : ports.audioOut;
    return index >= 0 && size_t(index) < pins.size() && pins[size_t(index)].pair;
}

// Parameters.

CStr Lv2Plugin::paramName(int index) {
    if (!isParam(index)) return "";
    const std::string& name = ports.params[size_t(index)].name;
    return CStr(name.c_str(), std::min(name.size(), longestText)).trim();
}

CStr Lv2Plugin::paramText(int index) {
    return isParam(index) ? ports.params[size_t(index)].text(valueOf(index)).sub(0, longestText)
                          : CStr();
}

void Lv2Plugin::setParam(int index, float share) {
    if (isParam(index))
        wanted[size_t(index)] = float(ports.params[size_t(index)].range.value(share));
}

float Lv2Plugin::param(int index) {
    return isParam(index) ? ports.params[size_t(index)].range.share(double(valueOf(index))) : 0.0f;
}

void Lv2Plugin::setUsual() {
    for (size_t i = 0; i < wanted.size(); i++) wanted[i] = ports.params[i].usual;
}

// Programs and state.

CStr Lv2Plugin::programName(int index) {
    if (index == 0) return "Default";
    if (index < 0 || index >= numPrograms()) return "";
    const Lilv<LilvNode> preset = world->node(presets[size_t(index) - 1].c_str());
    lilv_world_load_resource(world->get(), preset.get());
    return textOf(lilv_world_get(world->get(), preset.get(),
                                 world->node("http://www.w3.org/2000/01/rdf-schema#label").get(),
                                 nullptr));
}

void Lv2Plugin::setProgram(int index) {
    if (index < 0 || index >= numPrograms() || !instance) return;
    const ForeignOpening foreign;
    current = index;
    const char* own = lilv_node_as_uri(lilv_plugin_get_uri(plugin));
    const auto uri = world->node(index == 0 ? own : presets[size_t(index) - 1].c_str());
    if (index == 0) setUsual();
    if (index == 0 && !keepsOwn) return;
    lilv_world_load_resource(world->get(), uri.get());
    give(Lilv<LilvState>(lilv_state_new_from_world(world->get(), &world->urids.map, uri.get()))
             .get());
}

void Lv2Plugin::setValue(const char* symbol, const void* value, uint32_t size, uint32_t type) {
    const int index = ports.paramOf(std::string(symbol));
    if (index < 0) return;
    const char* kind = world->urids.uri(type);
    const auto is = [kind](const char* uri) { return kind && std::strcmp(kind, uri) == 0; };
    const auto as = [&]<class T>(T number) {
        if (size == sizeof number) std::memcpy(&number, value, sizeof number);
        return float(number);
    };
    float number = valueOf(index);
    if (is(LV2_ATOM__Float)) number = as(0.0f);
    if (is(LV2_ATOM__Double)) number = as(0.0);
    if (is(LV2_ATOM__Int) || is(LV2_ATOM__Bool)) number = as(int32_t(0));
    if (is(LV2_ATOM__Long)) number = as(int64_t(0));
    if (std::isfinite(number)) wanted[size_t(index)] = number;
}

void Lv2Plugin::give(const LilvState* state) {
    if (!state) return;
    const auto set = [](const char* symbol, void* of, const void* value, uint32_t size,
                        uint32_t type) {
        static_cast<Lv2Plugin*>(of)->setValue(symbol, value, size, type);
    };
    contained([&] { // it stays as far as it came
        lilv_state_restore(state, instance->get(), set, this, 0, instance->forState());
    });
}

Lilv<LilvState> Lv2Plugin::ownState() {
    const auto none = [](const char*, void*, uint32_t*, uint32_t*) -> const void* {
        return nullptr;
    };
    Lilv<LilvState> found;
    contained([&] {
        found.reset(lilv_state_new_from_instance(
            plugin, instance->get(), &world->urids.map, nullptr, nullptr, nullptr, nullptr, none,
            this, LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE, instance->forState()));
    });
    return found;
}

Plugin::Bytes Lv2Plugin::chunk(bool) {
    const ForeignOpening foreign;
    StateText text;
    text.program = current;
    for (size_t i = 0; i < wanted.size(); i++)
        text.values.emplace_back(ports.params[i].symbol, double(wanted[i]));
    hearOfFiles();
    for (size_t i = 0; i < given.size(); i++)
        if (!given[i].path.empty()) text.files.emplace_back(ports.files[i].uri, given[i].path);
    if (keepsOwn && instance) {
        const Lilv<LilvState> state = ownState();
        char* own = state
                        ? lilv_state_to_string(world->get(), &world->urids.map, &world->urids.unmap,
                                               state.get(), stateName, nullptr)
                        : nullptr;
        text.own = own ? own : "";
        lilv_free(own);
    }
    const std::string made = text.write(stateFormat);
    return {made.begin(), made.end()};
}

bool Lv2Plugin::setChunk(const Bytes& data, bool) {
    const ForeignOpening foreign;
    const auto text = StateText::read({data.begin(), data.end()}, stateFormat);
    if (!text || !instance) return false;
    if (leavesFiles(*text)) renew(instance->rate(), instance->frames(), [] {});
    if (!instance) return false;
    current = std::clamp(text->program, 0, numPrograms() - 1);
    if (!text->own.empty() && keepsOwn)
        give(Lilv<LilvState>(
                 lilv_state_new_from_string(world->get(), &world->urids.map, text->own.c_str()))
                 .get());
    for (const auto& [symbol, value] : text->values)
        if (const int index = ports.paramOf(symbol); index >= 0 && std::isfinite(value))
            wanted[size_t(index)] = float(value);
    for (const auto& [uri, path] : text->files)
        for (size_t i = 0; i < given.size(); i++)
            if (ports.files[i].uri == uri) give(i, path);
    return true;
}

// Files.

/// No message takes a file away.
bool Lv2Plugin::leavesFiles(const StateText& text) {
    hearOfFiles();
    const auto keeps = [&](const std::string& uri) {
        return std::ranges::any_of(text.files, [&](const auto& f) { return f.first == uri; });
    };
    for (size_t i = 0; i < given.size(); i++)
        if (!given[i].path.empty() && !keeps(ports.files[i].uri)) return true;
    return false;
}

std::vector<Plugin::File> Lv2Plugin::files() {
    hearOfFiles();
    std::vector<File> all;
    for (size_t i = 0; i < given.size(); i++)
        all.push_back({ports.files[i].name.c_str(), given[i].path.c_str()});
    return all;
}

void Lv2Plugin::setFile(int index, const CStr& path) {
    if (index >= 0 && size_t(index) < given.size()) give(size_t(index), path.asChar());
}

/// While no block is there. A path that would not fit into a message, or a line of the state,
/// changes nothing.
void Lv2Plugin::give(size_t file, const std::string& path) {
    if (path.empty() || path.size() > PropertyAtoms::longestPath ||
        path.find('\n') != std::string::npos)
        return;
    hearOfFiles();
    given[file].path = path;
    given[file].due = true;
}

/// The plug-in's word counts where it has not been given another one meanwhile.
void Lv2Plugin::hearOfFiles() {
    uint32_t file = 0;
    std::vector<char> path = MessageRing::buffer();
    while (toldFiles.pop(file, path))
        if (file < given.size() && !given[file].due)
            given[file].path.assign(path.begin(), path.end());
}

// The editor.

CPoint Lv2Plugin::openEditor(unsigned long in) {
    window = in;
    editor = instance ? Lv2Editor::open(*this, in) : nullptr;
    return editor ? editor->size() : CPoint();
}

void Lv2Plugin::closeEditor() {
    window = 0;
    editor.reset();
}

// Sound.

void Lv2Plugin::addMidi(int frame, int data) {
    if (notes.size() < mostNotes) notes.push_back({frame, data});
}

void Lv2Plugin::fillProperties() {
    for (EventBuffer& events : instance->eventsIn()) {
        if (int(events.port.port) != ports.propertyPort) continue;
        properties.give(
            wanted, [&](const LV2_Atom* atom) { events.add(0, atom->type, atom + 1, atom->size); });
        for (size_t i = 0; i < given.size(); i++) {
            given[i].toldNow = given[i].due;
            if (!given[i].due) continue;
            const LV2_Atom* atom = properties.fileSetting(i, given[i].path);
            events.add(0, atom->type, atom + 1, atom->size);
            given[i].due = false;
        }
    }
}

/// What a message of the plug-in, or of its window, tells of its properties.
void Lv2Plugin::takePatch(const LV2_Atom* atom) {
    properties.take(
        atom, [this](int index, float before, float now) { takeProperty(index, before, now); },
        [this](size_t file, std::string_view path) {
            if (!given[file].toldNow && path.find('\n') == path.npos)
                toldFiles.push(uint32_t(file), path.data(), uint32_t(path.size()));
        });
}

/// The plug-in has told of it; what is wanted meanwhile stays so.
void Lv2Plugin::takeProperty(int index, float before, float now) {
    if (before != now && wanted[size_t(index)].compareExchange(before, now)) host.displayChanged();
}

void Lv2Plugin::fillEvents(int frames) {
    auto& buffers = instance->eventsIn();
    for (EventBuffer& events : buffers) {
        events.clear();
        if (!events.port.position) continue;
        const LV2_Atom* now = position.write(host.songTime());
        events.add(0, now->type, now + 1, now->size);
    }
    uint32_t port = 0;
    while (toPlugin.pop(port, messageRoom)) {
        const auto* atom = reinterpret_cast<const LV2_Atom*>(messageRoom.data());
        if (atom->size > messageRoom.size() - sizeof *atom) continue;
        for (EventBuffer& events : buffers)
            if (events.port.port == port) events.add(0, atom->type, atom + 1, atom->size);
        if (int(port) == ports.propertyPort) takePatch(atom);
    }
    fillProperties();
    for (const Note& note : notes) {
        unsigned char bytes[3];
        for (size_t i = 0; i < 3; i++) bytes[i] = static_cast<unsigned char>(note.data >> 8 * i);
        for (EventBuffer& events : buffers)
            if (events.port.midi)
                events.add(std::clamp(note.frame, 0, frames - 1), midiEvent, bytes,
                           midiBytes(bytes[0]));
    }
    notes.clear();
}

void Lv2Plugin::takeEvents() {
    for (EventBuffer& events : instance->eventsOut())
        events.each([&](int frame, const LV2_Atom* atom) {
            const auto* bytes = reinterpret_cast<const unsigned char*>(atom + 1);
            if (atom->type == midiEvent && atom->size >= 1 && atom->size <= 3) {
                int data = 0;
                for (uint32_t i = 0; i < atom->size; i++) data |= bytes[i] << 8 * i;
                host.sendMidi(frame, data);
            }
            takePatch(atom);
            if (watched) toEditor.push(events.port.port, atom, uint32_t(sizeof *atom) + atom->size);
        });
}

bool Lv2Plugin::process(float** in, float** out, int frames) {
    if (!instance) return false;
    const ForeignCall foreign;
    for (size_t i = 0; i < wanted.size(); i++)
        if (const uint32_t port = ports.params[i].port; port != Lv2Ports::Param::noPort)
            instance->control(port) = wanted[i];
    fillEvents(frames);
    const bool offline = host.level() == PluginLevel::offline;
    if (!contained([&] { instance->run(ports, in, out, frames, offline); })) return false;
    takeEvents();
    for (size_t i = 0; i < meters.size(); i++) meters[i] = instance->control(ports.shown[i]);
    if (ports.latencyPort >= 0) {
        const float told = instance->control(uint32_t(ports.latencyPort));
        delay = std::isfinite(told) ? int(std::clamp(told, 0.0f, 1e6f)) : 0;
    }
    return true;
}

// The scan.

bool lookIntoBundle(const CStr& bundle, const std::function<void(const PluginFacts&)>& found,
                    CStr& why) {
    Lv2World world(false);
    bool good = true;
    for (const LilvPlugin* plugin : world.inside(bundle)) {
        Lv2Ports ports;
        if (!hasAllItNeeds(plugin, why) || !keepLibrary(plugin, why) ||
            !ports.read(world, plugin, 44100.0, why)) {
            good = false;
            continue;
        }
        PluginFacts facts;
        facts.name = nameOf(plugin);
        facts.vendor = PluginFacts::makerAlone(makerOf(plugin));
        facts.inside = lilv_node_as_uri(lilv_plugin_get_uri(plugin));
        if (facts.name.empty()) facts.name = facts.inside;
        facts.instrument = isInstrumentOf(plugin) || ports.isPlayed();
        facts.editor = !Lv2Editor::uiOf(world, plugin).empty();
        facts.inputs = int(ports.audioIn.size());
        facts.outputs = int(ports.audioOut.size());
        facts.params = int(ports.params.size());
        found(facts);
    }
    return good;
}
