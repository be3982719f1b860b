#include "plugins/vst2/Vst2Abi.h"

#include <cstdlib>
#include <dlfcn.h>
#include <string>

// A plug-in for measurements: a gain that does its sum as often as its file name says.

using namespace vst2;

namespace {

struct Light {
    Effect effect{};
    int turns = 1;
};

int turnsByName() {
    Dl_info about{};
    dladdr(reinterpret_cast<void*>(&turnsByName), &about);
    const std::string name = about.dli_fname;
    return std::atoi(name.substr(name.rfind('-') + 1).c_str());
}

/// A filter of one pole, once and again, so that the turns cannot be done as one.
void process(Effect* effect, float** in, float** out, int32_t frames) {
    const int turns = static_cast<Light*>(effect->object)->turns;
    for (int pin = 0; pin < 2; pin++) {
        for (int i = 0; i < frames; i++) out[pin][i] = in[pin][i];
        for (int turn = 0; turn < turns; turn++) {
            float last = 0.0f;
            for (int i = 0; i < frames; i++) out[pin][i] = last += 0.9f * (out[pin][i] - last);
        }
    }
}

intptr_t dispatch(Effect* effect, int32_t opcode, int32_t, intptr_t, void*, float) {
    if (opcode == effClose) delete static_cast<Light*>(effect->object);
    return 0;
}

void setParameter(Effect*, int32_t, float) {
}

float getParameter(Effect*, int32_t) {
    return 0.0f;
}

} // namespace

extern "C" __attribute__((visibility("default"))) Effect* VSTPluginMain(Dispatcher) {
    auto* made = new Light;
    made->turns = turnsByName();
    Effect& e = made->effect;
    e.magic = effectMagic;
    e.dispatcher = dispatch;
    e.process = e.processReplacing = process;
    e.setParameter = setParameter;
    e.getParameter = getParameter;
    e.numInputs = e.numOutputs = 2;
    e.flags = canReplace;
    e.uniqueID = fourLetters("Lght");
    e.object = made;
    return &e;
}
