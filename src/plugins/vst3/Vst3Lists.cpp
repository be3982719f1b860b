#include "plugins/vst3/Vst3Lists.h"

using namespace vst3;

void Vst3Queue::start(ParamId id) {
    of = id;
    count = 0;
}

Result Vst3Queue::point(int32_t index, int32_t* frame, double* value) {
    if (index < 0 || index >= count) return badArgument;
    *frame = points[index].frame;
    *value = points[index].value;
    return ok;
}

/// Beyond its room the last one counts.
Result Vst3Queue::add(int32_t frame, double value, int32_t* index) {
    if (count == most) count--;
    if (index) *index = count;
    points[count++] = {frame, value};
    return ok;
}

Vst3Queue* Vst3Changes::queue(int32_t index) {
    return index >= 0 && index < used ? &queues[size_t(index)] : nullptr;
}

Vst3Queue* Vst3Changes::add(const ParamId* id, int32_t* index) {
    for (int32_t i = 0; i < used; i++) {
        if (queues[size_t(i)].param() != *id) continue;
        if (index) *index = i;
        return &queues[size_t(i)];
    }
    if (size_t(used) >= queues.size()) return nullptr;
    if (index) *index = used;
    Vst3Queue* made = &queues[size_t(used++)];
    made->start(*id);
    return made;
}

void Vst3Changes::put(ParamId id, int32_t frame, double value) {
    if (Vst3Queue* to = add(&id, nullptr)) to->add(frame, value, nullptr);
}

Result Vst3Events::get(int32_t index, Event* event) {
    if (index < 0 || index >= used) return badArgument;
    *event = events[size_t(index)];
    return ok;
}

Result Vst3Events::add(Event* event) {
    if (used >= most) return no;
    events[size_t(used++)] = *event;
    return ok;
}
