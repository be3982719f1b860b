#include "plugins/MadePlugin.h"
#include "plugins/MadeWays.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>
#include <unistd.h>

// The plug-in of the tests, of which copies under other names behave in other ways.

using namespace vst2;

namespace {

MadePlugin* latest = nullptr;

MadePlugin& of(Effect* effect) {
    return *static_cast<MadePlugin*>(effect->object);
}

bool is(const MadePlugin& p, const char* kind) {
    return std::strncmp(p.kind, kind, std::strlen(kind)) == 0;
}

intptr_t ask(MadePlugin& p, HostOpcode opcode, int32_t index = 0, intptr_t value = 0,
             void* data = nullptr, float number = 0.0f) {
    return p.host(&p.effect, opcode, index, value, data, number);
}

void moveFrom(MadePlugin& p, int index, float to) {
    p.now(index) = to;
    ask(p, hostAutomate, index, 0, nullptr, to);
}

void setParameter(Effect* effect, int32_t index, float value) {
    MadePlugin& p = of(effect);
    if (bad("throws-set")) fail();
    p.now(index) = value;
    if (index == 1) { // its latency
        effect->initialDelay = int32_t(std::lround(value * 4096.0f));
        ask(p, hostIOChanged);
    }
    if (bad("echoes")) ask(p, hostAutomate, index, 0, nullptr, value);
}

float getParameter(Effect* effect, int32_t index) {
    MadePlugin& p = of(effect);
    if (bad("throws-get")) fail();
    return bad("nan") ? NAN : p.now(index).load();
}

void answerNote(MadePlugin& p, const MidiEvent& event) {
    MidiEvent octave = event;
    octave.midiData[1] = uint8_t(octave.midiData[1] + 12);
    Events list{1, 0, {&octave}};
    ask(p, hostProcessEvents, 0, 0, &list);
}

void takeEvents(MadePlugin& p, const Events& list) {
    p.eventCall++;
    for (int i = 0; i < list.numEvents; i++) {
        const MidiEvent& event = *(&list.events[0])[i];
        if (p.eventCount < MadePlugin::most) {
            p.deltas[p.eventCount] = event.deltaFrames;
            p.messages[p.eventCount] =
                event.midiData[0] | event.midiData[1] << 8 | event.midiData[2] << 16;
            p.eventCalls[p.eventCount++] = p.eventCall;
        }
        const int status = event.midiData[0] & 0xf0;
        if (!is(p, "synth") || (status != 0x90 && status != 0x80)) continue;
        p.note = status == 0x90 && event.midiData[2] ? event.midiData[1] : -1;
        p.level = p.note < 0 ? 0.0f : float(event.midiData[2]) / 127.0f;
        answerNote(p, event);
    }
}

void gain(MadePlugin& p, float** in, float** out, int frames, bool adds) {
    const int pins = std::min(p.effect.numInputs, p.effect.numOutputs);
    for (int pin = 0; pin < pins; pin++)
        for (int i = 0; i < frames; i++)
            out[pin][i] = (adds ? out[pin][i] : 0.0f) + in[pin][i] * p.now(0) * 2.0f;
}

/// Those that end their process do so once their last parameter is raised.
void badEnd(MadePlugin& p) {
    if (p.now(2) < 0.75f) return;
    if (bad("crashes-process")) crash();
    if (bad("aborts-process")) std::abort();
    while (bad("hangs-process")) sleep(1);
    if (bad("oversleeps")) std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

void delay(MadePlugin& p, float** in, float** out, int frames) {
    for (int pin = 0; pin < 2; pin++) {
        std::vector<float>& line = p.line[pin];
        line.insert(line.end(), in[pin], in[pin] + frames);
        std::copy_n(line.begin(), frames, out[pin]);
        line.erase(line.begin(), line.begin() + frames);
    }
}

void badSound(MadePlugin& p, float** in, float** out, int frames) {
    badEnd(p);
    if (bad("throws-process")) fail();
    if (bad("nan")) out[0][frames / 2] = NAN;
    if (bad("infinite")) out[1][0] = INFINITY;
    if (bad("overruns"))
        for (int pin = 0; pin < 2; pin++) {
            std::fill_n(out[pin], 2 * frames, 0.5f);
            std::fill_n(in[pin], 2 * frames, 0.5f);
        }
    if (bad("rounding")) __builtin_ia32_ldmxcsr(__builtin_ia32_stmxcsr() | 0x6000u);
}

void process(Effect* effect, float** in, float** out, int32_t frames, bool adds) {
    MadePlugin& p = of(effect);
    p.ranWhileOff = p.ranWhileOff || !p.running;
    if (p.blockCount < MadePlugin::most) p.blocks[p.blockCount++] = frames;
    for (const HostOpcode question : {hostGetSampleRate, hostGetBlockSize, hostGetProcessLevel,
                                      hostGetVendorVersion, hostGetLanguage, hostTempoAt})
        p.answers[question] = ask(p, question);
    if (p.timeMask) p.time = *reinterpret_cast<TimeInfo*>(ask(p, hostGetTime, 0, p.timeMask));
    gain(p, in, out, frames, adds);
    if (is(p, "synth"))
        for (int pin = 0; pin < 2; pin++) std::fill_n(out[pin], frames, p.level);
    if (is(p, "late")) delay(p, in, out, frames);
    badSound(p, in, out, frames);
}

void replacing(Effect* effect, float** in, float** out, int32_t frames) {
    process(effect, in, out, frames, false);
}

void adding(Effect* effect, float** in, float** out, int32_t frames) {
    process(effect, in, out, frames, true);
}

void write(void* to, const std::string& text) {
    std::strcpy(static_cast<char*>(to), text.c_str());
}

/// The name of a parameter, and so on, at most as long as the interface grants.
intptr_t tellText(MadePlugin& p, int32_t opcode, int32_t index, void* data) {
    if (bad("long-texts")) return write(data, std::string(1024, 'x')), 1;
    static const char* const names[] = {"Gain", "Delay", "Other"};
    char number[32];
    std::snprintf(number, sizeof number, "%.2f", double(p.now(index).load()));
    switch (opcode) {
    case effGetParamName:
        return write(data, names[index]), 1;
    case effGetParamDisplay:
        return write(data, number), 1;
    case effGetParamLabel:
        return write(data, index == 0 ? "x" : ""), 1;
    case effGetProgramNameIndexed:
        return write(data, p.names[index]), 1;
    case effGetProgramName:
        return write(data, p.names[p.program]), 1;
    case effGetVendorString:
        return write(data, "Test makers"), 1;
    default:
        return write(data, p.kind), 1;
    }
}

intptr_t setChunk(MadePlugin& p, const void* data, intptr_t size) {
    if (bad("throws-chunk")) fail();
    if (size != sizeof p.values) return 0;
    std::memcpy(p.values, data, sizeof p.values);
    for (int i = 0; i < MadePlugin::params; i++) // as some do for all that they hold
        ask(p, hostAutomate, i, 0, nullptr, p.now(i));
    return 1;
}

intptr_t pinProperties(const MadePlugin& p, int32_t index, void* data) {
    if (!is(p, "pins")) return 0;
    static_cast<PinProperties*>(data)->flags = index == 2 || index == 3 ? int32_t(pinIsStereo) : 0;
    return 1;
}

/// The tests call these as if the user were at the plug-in's own window.
intptr_t vendorSpecific(MadePlugin& p, int32_t index, intptr_t value, float number) {
    switch (index) {
    case 0:
        moveFrom(p, int(value), number);
        break;
    case 1:
        ask(p, hostBeginEdit, int32_t(value));
        break;
    case 2:
        ask(p, hostEndEdit, int32_t(value));
        break;
    case 3:
        std::thread([&] { moveFrom(p, int(value), number); }).join();
        break;
    case 4: // other pins than before
        p.effect.numOutputs = int32_t(value);
        ask(p, hostIOChanged);
        break;
    case 5: // a larger window
        ask(p, hostSizeWindow, int32_t(value), int32_t(number));
        break;
    default:
        break;
    }
    return 1;
}

void handled(int) {
}

intptr_t dispatch(Effect* effect, int32_t opcode, int32_t index, intptr_t value, void* data,
                  float number) {
    constexpr int32_t effVendorSpecific = 50;
    MadePlugin& p = of(effect);
    if (opcode != effProcessEvents && p.calls < 4096) p.opcodes[p.calls++] = opcode;
    if (bad("throws-open") && opcode == effOpen) fail();
    if (bad("signals") && (opcode == effOpen || opcode == effEditOpen || opcode == effClose))
        for (const int which : {SIGSEGV, SIGCHLD, SIGTERM}) std::signal(which, handled);
    if (bad("throws-idle") && opcode == effIdle) fail();
    if (bad("crashes-editor") && opcode == effEditOpen) crash();
    if (bad("crashes-state") && opcode == effGetChunk) crash();
    if (bad("crashes-close") && opcode == effClose) crash();
    while (bad("hangs-text") && opcode == effGetParamDisplay) sleep(1);
    switch (opcode) {
    case effClose:
        if (latest == &p) latest = nullptr;
        delete &p;
        return 1;
    case effSetProgram:
        p.program = int(value);
        if (is(p, "gain-presets")) // it begins each anew
            for (int i = 0; i < MadePlugin::params; i++) p.now(i) = i == 0 ? 0.5f : 0.0f;
        return 1;
    case effGetProgram:
        return p.program;
    case effSetProgramName:
        std::snprintf(p.names[p.program], sizeof p.names[0], "%s", static_cast<char*>(data));
        return 1;
    case effGetProgramName:
    case effGetParamLabel:
    case effGetParamDisplay:
    case effGetParamName:
    case effGetProgramNameIndexed:
    case effGetEffectName:
    case effGetVendorString:
        return tellText(p, opcode, index, data);
    case effMainsChanged:
        p.running = value != 0;
        for (std::vector<float>& line : p.line) line.assign(size_t(effect->initialDelay), 0.0f);
        return 1;
    case effGetChunk:
        *static_cast<void**>(data) = p.values;
        return sizeof p.values;
    case effSetChunk:
        return setChunk(p, data, value);
    case effEditOpen:
        p.editor = std::make_unique<MadeEditor>(reinterpret_cast<unsigned long>(data));
        return 1;
    case effEditGetRect: {
        static Rect rect{0, 0, 200, 300};
        *static_cast<Rect**>(data) = &rect;
        return 1;
    }
    case effEditClose:
        p.editor.reset();
        return 1;
    case effEditIdle:
        if (p.editor) p.editor->idle();
        return 1;
    case effProcessEvents:
        takeEvents(p, *static_cast<Events*>(data));
        return 1;
    case effGetInputProperties:
    case effGetOutputProperties:
        return pinProperties(p, index, data);
    case effCanDo:
        return is(p, "synth") && std::strcmp(static_cast<char*>(data), "sendVstMidiEvent") == 0;
    case effVendorSpecific:
        return vendorSpecific(p, index, value, number);
    default:
        return 0;
    }
}

} // namespace

extern "C" __attribute__((visibility("default"))) MadePlugin* latestMade() {
    return latest;
}

extern "C" __attribute__((visibility("default"))) Effect* VSTPluginMain(Dispatcher host) {
    const std::string& name = ownName();
    const std::string home = std::getenv("HOME");
    if (bad("null") || (bad("needs-home") && access((home + "/needed").c_str(), F_OK) != 0))
        return nullptr;
    if (bad("writes-home")) std::ofstream(home + "/made") << "";
    if (bad("throws-main")) fail();
    if (bad("crashes")) crashAtOnce();
    if (bad("aborts")) std::abort();
    if (bad("prints")) std::puts("line\tafter\tline");
    while (bad("hangs")) sleep(1);
    auto* p = latest = new MadePlugin;
    p->host = host;
    std::snprintf(p->kind, sizeof p->kind, "%s", name.c_str());
    Effect& e = p->effect;
    e.magic = bad("magic") ? 1 : effectMagic;
    e.dispatcher = dispatch;
    e.process = adding;
    e.processReplacing = replacing;
    e.setParameter = setParameter;
    e.getParameter = getParameter;
    e.numPrograms = MadePlugin::programs;
    e.numParams = MadePlugin::params;
    e.numInputs = is(*p, "synth") ? 0 : 2;
    e.numOutputs = 2;
    if (is(*p, "late")) std::sscanf(p->kind, "late%d", &e.initialDelay);
    if (is(*p, "pins")) std::sscanf(p->kind, "pins%d_%d", &e.numInputs, &e.numOutputs);
    e.flags = is(*p, "gain-adds") ? 0 : canReplace;
    if (is(*p, "synth")) e.flags |= isSynth | programChunks;
    if (is(*p, "drawn")) e.flags |= hasEditor;
    if (bad("throws-chunk") || bad("crashes-state")) e.flags |= programChunks;
    if (bad("crashes-editor")) e.flags |= hasEditor;
    e.uniqueID = name == "gain-noid" ? 0 : fourLetters("Test");
    e.object = p;
    for (int i = 0; i < MadePlugin::programs; i++) {
        std::snprintf(p->names[i], sizeof p->names[i], "Sound %d", i + 1);
        for (int k = 0; k < MadePlugin::params; k++) p->values[i][k] = k == 0 ? 0.5f : 0.0f;
    }
    return &e;
}
