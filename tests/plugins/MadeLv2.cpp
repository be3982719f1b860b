#include "plugins/MadeEditor.h"
#include "plugins/MadeWays.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <lv2/atom/forge.h>
#include <lv2/atom/util.h>
#include <lv2/core/lv2.h>
#include <lv2/midi/midi.h>
#include <lv2/patch/patch.h>
#include <lv2/state/state.h>
#include <lv2/ui/ui.h>
#include <lv2/urid/urid.h>
#include <lv2/worker/worker.h>
#include <string>
#include <string_view>
#include <unistd.h>

// The LV2 plug-in of the tests; the name of its file tells in which way it is bad. Ports: 0, 1
// audio in, 2, 3 audio out, 4 "gain", 5 "latency" (what it is to tell), 6 "trigger" (at 1 it does
// what it is bad at), 7 latency out, 8 MIDI in, 9 MIDI out. It plays its input times the gain, plus
// the velocity of the note that is held, plus what its worker has counted in thousandths; its own
// state is that count. In a file that begins with "patched" it plays a depth besides, which is a
// property, begins with 0.25, and is told where somebody asks; and 1 where the file that it was
// given has the name "one".

namespace {

struct Made {
    void* ports[10] = {};
    LV2_URID midi = 0, number = 0, countKey = 0;
    const LV2_Worker_Schedule* later = nullptr;
    int count = 0;
    float level = 0.0f, depth = 0.0f;
    LV2_Atom_Forge forge{};
    LV2_URID set = 0, get = 0, property = 0, value = 0, depthKey = 0, fileKey = 0;
    float ofFile = 0.0f;

    float control(int port) const { return *static_cast<float*>(ports[port]); }
    bool triggered() const { return control(6) >= 0.5f; }
};

template <class T>
const T* featureOf(const LV2_Feature* const* features, const char* uri) {
    for (; *features; features++)
        if (!std::strcmp((*features)->URI, uri)) return static_cast<const T*>((*features)->data);
    return nullptr;
}

LV2_Handle instantiate(const LV2_Descriptor*, double, const char*,
                       const LV2_Feature* const* features) {
    if (bad("crashes-open")) crashAtOnce();
    if (bad("null")) return nullptr;
    auto* made = new Made;
    const auto* map = featureOf<LV2_URID_Map>(features, LV2_URID__map);
    made->midi = map->map(map->handle, LV2_MIDI__MidiEvent);
    made->number = map->map(map->handle, LV2_ATOM__Int);
    made->countKey = map->map(map->handle, "urn:made:count");
    lv2_atom_forge_init(&made->forge, const_cast<LV2_URID_Map*>(map));
    made->set = map->map(map->handle, LV2_PATCH__Set);
    made->get = map->map(map->handle, LV2_PATCH__Get);
    made->property = map->map(map->handle, LV2_PATCH__property);
    made->value = map->map(map->handle, LV2_PATCH__value);
    made->depthKey = map->map(map->handle, "urn:made:depth");
    made->fileKey = map->map(map->handle, "urn:made:file");
    if (ownName().starts_with("patched")) made->depth = 0.25f;
    made->later = featureOf<LV2_Worker_Schedule>(features, LV2_WORKER__schedule);
    return made;
}

void connect(LV2_Handle of, uint32_t port, void* data) {
    static_cast<Made*>(of)->ports[port] = data;
}

/// That a property has a value, which `put` writes.
template <class F>
void tell(Made& m, LV2_URID key, LV2_Atom_Sequence* out, uint32_t room, F&& put) {
    struct {
        LV2_Atom_Event event;
        uint64_t body[16];
    } answer{};
    lv2_atom_forge_set_buffer(&m.forge, reinterpret_cast<uint8_t*>(&answer.event.body),
                              sizeof answer - offsetof(LV2_Atom_Event, body));
    LV2_Atom_Forge_Frame object;
    lv2_atom_forge_object(&m.forge, &object, 0, m.set);
    lv2_atom_forge_key(&m.forge, m.property);
    lv2_atom_forge_urid(&m.forge, key);
    lv2_atom_forge_key(&m.forge, m.value);
    put();
    lv2_atom_forge_pop(&m.forge, &object);
    lv2_atom_sequence_append_event(out, room, &answer.event);
}

void takePatch(Made& m, const LV2_Atom* atom, LV2_Atom_Sequence* out, uint32_t room) {
    const auto* object = reinterpret_cast<const LV2_Atom_Object*>(atom);
    if (atom->type != m.forge.Object) return;
    if (object->body.otype == m.get) {
        tell(m, m.depthKey, out, room, [&m] { lv2_atom_forge_float(&m.forge, m.depth); });
        tell(m, m.fileKey, out, room, [&m] { lv2_atom_forge_path(&m.forge, "/usual", 6); });
    }
    const LV2_Atom *key = nullptr, *value = nullptr;
    lv2_atom_object_get(object, m.property, &key, m.value, &value, 0);
    if (object->body.otype != m.set || !key || !value) return;
    const LV2_URID which = reinterpret_cast<const LV2_Atom_URID*>(key)->body;
    if (which == m.depthKey && value->type == m.forge.Float)
        m.depth = reinterpret_cast<const LV2_Atom_Float*>(value)->body;
    if (which == m.fileKey && value->type == m.forge.Path)
        m.ofFile = std::string_view(reinterpret_cast<const char*>(value + 1)).ends_with("/one");
}

/// A note asks the worker to count, and is answered an octave up.
void takeNotes(Made& m) {
    auto* in = static_cast<LV2_Atom_Sequence*>(m.ports[8]);
    auto* out = static_cast<LV2_Atom_Sequence*>(m.ports[9]);
    const uint32_t room = out->atom.size;
    out->atom = {sizeof(LV2_Atom_Sequence_Body), in->atom.type};
    out->body = {};
    LV2_ATOM_SEQUENCE_FOREACH(in, event) {
        takePatch(m, &event->body, out, room);
        if (event->body.type != m.midi) continue;
        const auto* bytes = reinterpret_cast<const unsigned char*>(event + 1);
        const bool on = (bytes[0] & 0xf0) == 0x90 && bytes[2] > 0;
        m.level = on ? float(bytes[2]) / 127.0f : 0.0f;
        const int step = 1;
        if (on && m.later) m.later->schedule_work(m.later->handle, sizeof step, &step);
        struct {
            LV2_Atom_Event event;
            unsigned char bytes[3];
        } answer{*event, {bytes[0], static_cast<unsigned char>(bytes[1] + 12), bytes[2]}};
        lv2_atom_sequence_append_event(out, room, &answer.event);
    }
}

void run(LV2_Handle of, uint32_t frames) {
    Made& m = *static_cast<Made*>(of);
    misbehave(m.triggered());
    takeNotes(m);
    for (int side = 0; side < 2; side++) {
        const auto* in = static_cast<const float*>(m.ports[side]);
        auto* out = static_cast<float*>(m.ports[2 + side]);
        for (uint32_t i = 0; i < frames; i++)
            out[i] = in[i] * m.control(4) + m.level + m.depth + m.ofFile + float(m.count) * 0.001f;
        spoil(out, frames);
    }
    *static_cast<float*>(m.ports[7]) = bad("nan") ? NAN : m.control(5);
}

LV2_Worker_Status work(LV2_Handle, LV2_Worker_Respond_Function respond,
                       LV2_Worker_Respond_Handle to, uint32_t size, const void* data) {
    return respond(to, size, data);
}

LV2_Worker_Status workResponse(LV2_Handle of, uint32_t, const void* data) {
    static_cast<Made*>(of)->count += *static_cast<const int*>(data);
    return LV2_WORKER_SUCCESS;
}

LV2_State_Status save(LV2_Handle of, LV2_State_Store_Function store, LV2_State_Handle to, uint32_t,
                      const LV2_Feature* const*) {
    const Made& m = *static_cast<Made*>(of);
    if (bad("crashes-state")) crash();
    if (bad("throws-state")) fail();
    return store(to, m.countKey, &m.count, sizeof m.count, m.number,
                 LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE);
}

LV2_State_Status restore(LV2_Handle of, LV2_State_Retrieve_Function retrieve, LV2_State_Handle from,
                         uint32_t, const LV2_Feature* const*) {
    Made& m = *static_cast<Made*>(of);
    size_t size = 0;
    uint32_t type = 0, flags = 0;
    const void* found = retrieve(from, m.countKey, &size, &type, &flags);
    m.count = found && size == sizeof m.count ? *static_cast<const int*>(found) : 0;
    return LV2_STATE_SUCCESS;
}

const void* extensionData(const char* uri) {
    static const LV2_Worker_Interface worker = {work, workResponse, nullptr};
    static const LV2_State_Interface state = {save, restore};
    if (!std::strcmp(uri, LV2_WORKER__interface)) return &worker;
    return std::strcmp(uri, LV2_STATE__interface) ? nullptr : &state;
}

void cleanup(LV2_Handle of) {
    if (bad("crashes-close")) crash();
    delete static_cast<Made*>(of);
}

// Its window: a click puts the gain to 0.25.

struct MadeUi {
    MadeEditor editor;
    LV2UI_Write_Function write;
    LV2UI_Controller controller;
};

LV2UI_Handle openUi(const LV2UI_Descriptor*, const char*, const char*, LV2UI_Write_Function write,
                    LV2UI_Controller controller, LV2UI_Widget*,
                    const LV2_Feature* const* features) {
    if (bad("crashes-editor")) crash();
    const auto* parent = featureOf<void>(features, LV2_UI__parent);
    return new MadeUi{MadeEditor(reinterpret_cast<unsigned long>(parent)), write, controller};
}

int idleUi(LV2UI_Handle of) {
    auto* ui = static_cast<MadeUi*>(of);
    const int clicks = ui->editor.clicks;
    ui->editor.idle();
    const float quarter = 0.25f;
    if (ui->editor.clicks > clicks) ui->write(ui->controller, 4, sizeof quarter, 0, &quarter);
    return 0;
}

const void* uiExtension(const char* uri) {
    static const LV2UI_Idle_Interface idle = {idleUi};
    return std::strcmp(uri, LV2_UI__idleInterface) ? nullptr : &idle;
}

std::string uriOf(const char* kind) {
    return std::string("urn:made:") + kind + ownName();
}

} // namespace

extern "C" __attribute__((visibility("default"))) const LV2_Descriptor*
lv2_descriptor(uint32_t index) {
    if (bad("crashes-load")) crashAtOnce();
    static const std::string uri = uriOf("");
    static const LV2_Descriptor made = {uri.c_str(), instantiate, connect, nullptr,
                                        run,         nullptr,     cleanup, extensionData};
    return index == 0 ? &made : nullptr;
}

extern "C" __attribute__((visibility("default"))) const LV2UI_Descriptor*
lv2ui_descriptor(uint32_t index) {
    static const std::string uri = uriOf("ui:");
    static const LV2UI_Descriptor made = {uri.c_str(), openUi,
                                          [](LV2UI_Handle of) { delete static_cast<MadeUi*>(of); },
                                          nullptr, uiExtension};
    return index == 0 ? &made : nullptr;
}
