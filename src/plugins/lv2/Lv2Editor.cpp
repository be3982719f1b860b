#include "plugins/lv2/Lv2Editor.h"

#include "plugins/ForeignCall.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <dlfcn.h>
#include <limits>
#include <lv2/instance-access/instance-access.h>
#include <lv2/options/options.h>

namespace {

constexpr const char* offered[] = {LV2_URID__map,
                                   LV2_URID__unmap,
                                   LV2_OPTIONS__options,
                                   LV2_UI__parent,
                                   LV2_UI__resize,
                                   LV2_UI__idleInterface,
                                   LV2_UI__touch,
                                   LV2_UI__portMap,
                                   LV2_INSTANCE_ACCESS_URI,
                                   LV2_DATA_ACCESS_URI,
                                   LV2_UI__fixedSize,
                                   LV2_UI__noUserResize,
                                   "http://lv2plug.in/ns/extensions/ui#makeSONameResident"};

constexpr float never = std::numeric_limits<float>::quiet_NaN(); ///< differs from everything

/// The path of a file; empty for what is none.
std::string pathOf(const LilvNode* uri) {
    char* path = uri ? lilv_file_uri_parse(lilv_node_as_uri(uri), nullptr) : nullptr;
    const std::string found = path ? path : "";
    lilv_free(path);
    return found;
}

bool works(const Lv2World& world, const LilvNode* ui) {
    const auto needed = world.all(ui, LV2_CORE__requiredFeature);
    return std::ranges::all_of(needed, [](const std::string& feature) {
        return std::ranges::any_of(offered, [&](const char* one) { return feature == one; });
    });
}

const LV2UI_Descriptor* descriptorIn(void* library, const std::string& uri) {
    const auto entry =
        reinterpret_cast<LV2UI_DescriptorFunction>(dlsym(library, "lv2ui_descriptor"));
    for (uint32_t i = 0; entry; i++) {
        const LV2UI_Descriptor* found = entry(i);
        if (!found || uri == found->URI) return found;
    }
    return nullptr;
}

} // namespace

std::string Lv2Editor::uiOf(const Lv2World& world, const LilvPlugin* plugin) {
    const LilvUiList uis(lilv_plugin_get_uis(plugin));
    const Lilv<LilvNode> x11 = world.node(LV2_UI__X11UI);
    LILV_FOREACH(uis, i, uis.get()) {
        const LilvUI* ui = lilv_uis_get(uis.get(), i);
        const LilvNode* uri = lilv_ui_get_uri(ui);
        if (!lilv_ui_is_a(ui, x11.get())) continue;
        lilv_world_load_resource(world.get(), uri);
        if (works(world, uri)) return lilv_node_as_uri(uri);
    }
    return "";
}

Lv2Editor::Lv2Editor(Lv2Plugin& of) : plugin(of), properties(of.world->urids) {
    properties.begin(of.ports, of.world->urids);
}

std::unique_ptr<Lv2Editor> Lv2Editor::open(Lv2Plugin& plugin, unsigned long window) {
    const std::string uri = uiOf(*plugin.world, plugin.plugin);
    const LilvUiList uis(lilv_plugin_get_uis(plugin.plugin));
    const LilvUI* ui = lilv_uis_get_by_uri(uis.get(), plugin.world->node(uri.c_str()).get());
    if (!ui) return nullptr;
    const ForeignOpening foreign;
    const KeepSignals signals;
    const std::string file = pathOf(lilv_ui_get_binary_uri(ui));
    void* library = dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE);
    const LV2UI_Descriptor* found = library ? descriptorIn(library, uri) : nullptr;
    std::unique_ptr<Lv2Editor> made(new Lv2Editor(plugin));
    if (!found || !made->start(found, pathOf(lilv_ui_get_bundle_uri(ui)), window)) return nullptr;
    return made;
}

bool Lv2Editor::start(const LV2UI_Descriptor* made, const std::string& folder,
                      unsigned long window) {
    descriptor = made;
    resizing = {this, [](LV2UI_Feature_Handle of, int width, int height) {
                    auto* self = static_cast<Lv2Editor*>(of);
                    self->asked = asPoint(width, height);
                    if (!self->opening) self->plugin.host.sizeEditor(self->asked);
                    return 0;
                }};
    touching = {this, [](LV2UI_Feature_Handle of, uint32_t port, bool grabbed) {
                    static_cast<Lv2Editor*>(of)->touch(port, grabbed);
                }};
    naming = {this, [](LV2UI_Feature_Handle of, const char* symbol) {
                  const auto& self = *static_cast<Lv2Editor*>(of);
                  const int index = self.plugin.ports.paramOf(std::string(symbol));
                  return index < 0 ? LV2UI_INVALID_PORT_INDEX
                                   : self.plugin.ports.params[size_t(index)].port;
              }};
    LilvInstance* instance = plugin.instance->get();
    extensions = {instance->lv2_descriptor->extension_data};
    UridMap& urids = plugin.world->urids;
    const LV2_Feature features[] = {
        {LV2_URID__map, &urids.map},
        {LV2_URID__unmap, &urids.unmap},
        {LV2_OPTIONS__options, const_cast<LV2_Options_Option*>(plugin.instance->options())},
        {LV2_UI__parent, reinterpret_cast<void*>(window)},
        {LV2_UI__resize, &resizing},
        {LV2_UI__touch, &touching},
        {LV2_UI__portMap, &naming},
        {LV2_UI__idleInterface, nullptr},
        {LV2_INSTANCE_ACCESS_URI, lilv_instance_get_handle(instance)},
        {LV2_DATA_ACCESS_URI, &extensions}};
    std::vector<const LV2_Feature*> list;
    for (const LV2_Feature& feature : features) list.push_back(&feature);
    list.push_back(nullptr);
    const auto writes = [](LV2UI_Controller of, uint32_t port, uint32_t size, uint32_t protocol,
                           const void* data) {
        static_cast<Lv2Editor*>(of)->write(port, size, protocol, data);
    };
    const char* uri = lilv_node_as_uri(lilv_plugin_get_uri(plugin.plugin));
    contained([&] {
        handle = descriptor->instantiate(descriptor, uri, folder.c_str(), writes, this, &widget,
                                         list.data());
    });
    opening = false;
    if (!handle) return false;
    if (descriptor->extension_data)
        idling = static_cast<const LV2UI_Idle_Interface*>(
            descriptor->extension_data(LV2_UI__idleInterface));
    shownParams.assign(plugin.ports.params.size(), never);
    shownMeters.assign(plugin.ports.shown.size(), never);
    plugin.watched = true;
    timers.add(unsigned(1000.0f / Lv2Instance::updatesPerSecond));
    return true;
}

Lv2Editor::~Lv2Editor() {
    plugin.watched = false;
    if (!handle || !descriptor->cleanup) return;
    const KeepSignals signals;
    guarded([this] { descriptor->cleanup(handle); });
}

void Lv2Editor::write(uint32_t port, uint32_t size, uint32_t protocol, const void* data) {
    if (protocol == plugin.eventTransfer && size >= sizeof(LV2_Atom)) {
        const auto* atom = static_cast<const LV2_Atom*>(data);
        if (atom->size > size - sizeof *atom || writeProperty(atom)) return;
        plugin.toPlugin.push(port, data, size);
        return;
    }
    const int index = plugin.ports.paramOf(port);
    if (protocol != 0 || index < 0 || size != sizeof(float)) return;
    float value = 0.0f;
    std::memcpy(&value, data, sizeof value);
    if (!std::isfinite(value)) return;
    plugin.wanted[size_t(index)] = value;
    if (!shownParams.empty()) shownParams[size_t(index)] = value;
    plugin.host.parameterMoved(index, plugin.param(index));
}

/// A parameter goes to the plug-in with the next block, as all that are wanted; false for other
/// messages.
bool Lv2Editor::writeProperty(const LV2_Atom* atom) {
    bool taken = false;
    const auto setNumber = [&](int index, float, float value) {
        taken = true;
        plugin.wanted[size_t(index)] = value;
        plugin.host.parameterMoved(index, plugin.param(index));
    };
    properties.take(atom, setNumber, [](size_t, std::string_view) {});
    return taken;
}

void Lv2Editor::touch(uint32_t port, bool grabbed) {
    const int index = plugin.ports.paramOf(port);
    if (index < 0) return;
    grabbed ? plugin.host.gestureBegins(index) : plugin.host.gestureEnds(index);
}

void Lv2Editor::showFloat(uint32_t port, float value, float& shown) {
    if (value == shown) return;
    shown = value;
    descriptor->port_event(handle, port, sizeof value, 0, &value);
}

void Lv2Editor::showAll() {
    for (size_t i = 0; i < shownParams.size(); i++)
        if (const uint32_t port = plugin.ports.params[i].port; port != Lv2Ports::Param::noPort)
            showFloat(port, plugin.wanted[i], shownParams[i]);
    for (size_t i = 0; i < shownMeters.size(); i++)
        showFloat(plugin.ports.shown[i], plugin.meters[i], shownMeters[i]);
    uint32_t port = 0;
    while (plugin.toEditor.pop(port, room))
        descriptor->port_event(handle, port, uint32_t(room.size()), plugin.eventTransfer,
                               room.data());
}

/// Lets it draw, and shows it what has changed.
void Lv2Editor::idle() {
    guarded([this] { // after a throw it goes on with the next pass
        if (descriptor->port_event) showAll();
        if (idling && idling->idle) idling->idle(handle);
    });
}
