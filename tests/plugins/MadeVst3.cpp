#include "plugins/MadeEditor.h"
#include "plugins/MadeWays.h"
#include "plugins/vst3/Vst3Abi.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <unistd.h>

// The VST 3 plug-in of the tests, as that of CLAP: parameters 10 "gain" (0 to 2), 20 "latency" (0
// to 4096 frames), 30 "trigger". Its component is its controller as well. A click at its window
// puts the gain to 0.25.

using namespace vst3;

namespace {

bool isId(const uint8_t* wanted, const Uid& of) {
    return std::memcmp(wanted, of.data(), of.size()) == 0;
}

void write(int16_t* text, const std::string& from) {
    for (size_t i = 0; i <= from.size() && i < 128; i++) text[i] = i < from.size() ? from[i] : 0;
}

constexpr double clicked = 0.125; ///< a gain of 0.25

/// Its window, which counts clicks when its timer is due.
class MadeView final : public View, public TimerHandler {
public:
    explicit MadeView(ComponentHandler* to) : handler(to) {}
    Result query(const uint8_t*, void** found) override {
        *found = nullptr;
        return noInterface;
    }
    uint32_t addRef() override { return 1; }
    uint32_t release() override {
        delete this;
        return 0;
    }
    Result isSupported(const char* type) override { return std::strcmp(type, x11Type) ? no : ok; }
    Result attached(void* parent, const char*) override {
        if (bad("crashes-editor")) crash();
        editor = std::make_unique<MadeEditor>(reinterpret_cast<unsigned long>(parent));
        void* found = nullptr;
        if (frame->query(RunLoop::iid.data(), &found) != ok) return no;
        loop = static_cast<RunLoop*>(found);
        return loop->addTimer(this, 20);
    }
    Result removed() override {
        editor = nullptr;
        return loop->removeTimer(this);
    }
    Result wheel(float) override { return no; }
    Result keyDown(int16_t, int16_t, int16_t) override { return no; }
    Result keyUp(int16_t, int16_t, int16_t) override { return no; }
    Result size(Rect* told) override {
        *told = {0, 0, 300, 200};
        return ok;
    }
    Result sized(Rect*) override { return ok; }
    Result focus(Flag) override { return ok; }
    Result setFrame(Frame* around) override {
        frame = around;
        return ok;
    }
    Result canResize() override { return no; }
    Result checkSize(Rect*) override { return ok; }
    void due() override {
        const int before = editor->clicks;
        editor->idle();
        if (editor->clicks == before) return;
        handler->beginEdit(10);
        handler->performEdit(10, clicked);
        handler->endEdit(10);
    }

private:
    ComponentHandler* const handler;
    Frame* frame = nullptr;
    RunLoop* loop = nullptr;
    std::unique_ptr<MadeEditor> editor;
};

class Made final : public Component, public Processor, public Controller {
public:
    Result query(const uint8_t* wanted, void** found) override {
        *found = isId(wanted, Component::iid)    ? static_cast<void*>(static_cast<Component*>(this))
                 : isId(wanted, Processor::iid)  ? static_cast<Processor*>(this)
                 : isId(wanted, Controller::iid) ? static_cast<Controller*>(this)
                                                 : static_cast<void*>(nullptr);
        if (!*found) return noInterface;
        holders++;
        return ok;
    }
    uint32_t addRef() override { return ++holders; }
    uint32_t release() override {
        if (--holders > 0) return holders;
        if (bad("crashes-close")) crash();
        delete this;
        return 0;
    }
    Result initialize(Unknown* host) override {
        void* found = nullptr;
        return host->query(HostApplication::iid.data(), &found);
    }
    Result terminate() override { return ok; }

    // The component.
    Result controllerClass(uint8_t*) override { return no; }
    Result setIoMode(int32_t) override { return ok; }
    int32_t busCount(int32_t media, int32_t direction) override {
        return media == mediaAudio || direction == input ? 1 : 0;
    }
    Result busInfo(int32_t media, int32_t direction, int32_t, BusInfo* info) override {
        *info = {media, direction, bad("channels129") ? 129 : bad("channels0") ? 0 : 2, {}, 0, 1};
        return ok;
    }
    Result routing(void*, void*) override { return no; }
    Result activateBus(int32_t, int32_t, int32_t, Flag) override { return ok; }
    Result setActive(Flag on) override {
        if (on) late = uint32_t(std::lround(values[1] * 4096.0));
        return ok;
    }
    Result setState(Stream* from) override {
        int32_t done = 0;
        double read[3];
        if (from->read(read, sizeof read, &done) != ok || done != sizeof read) return no;
        std::copy_n(read, 3, values);
        return ok;
    }
    Result getState(Stream* to) override {
        if (bad("crashes-state") && started) crash();
        if (bad("throws-state") && started) fail();
        double present[3];
        for (int i = 0; i < 3; i++) present[i] = std::atomic_ref(values[i]);
        return to->write(present, sizeof present, nullptr);
    }

    // The processor.
    Result setArrangements(uint64_t*, int32_t, uint64_t*, int32_t) override { return ok; }
    Result arrangement(int32_t, int32_t, uint64_t*) override { return no; }
    Result canProcess(int32_t sampleSize) override { return sampleSize == 0 ? ok : no; }
    uint32_t latency() override { return late; }
    Result setup(ProcessSetup*) override {
        started = true;
        return ok;
    }
    Result setProcessing(Flag) override { return ok; }
    Result process(Process* block) override;
    uint32_t tail() override { return 0; }

    // The controller.
    Result setComponentState(Stream*) override { return ok; }
    int32_t paramCount() override { return 3; }
    Result paramInfo(int32_t index, ParamInfo* info) override {
        static const char* const names[] = {"gain", "latency", "trigger"};
        *info = {};
        info->id = ParamId(index + 1) * 10;
        write(info->title, bad("long-texts") ? std::string(128, 'x') : names[index]);
        if (index == 0) write(info->units, "x");
        return ok;
    }
    Result paramText(ParamId id, double share, int16_t* text) override {
        while (bad("hangs-text")) sleep(1);
        if (bad("throws-text")) fail();
        if (bad("long-texts")) {
            std::fill_n(text, 1024, int16_t('x'));
            return ok;
        }
        char room[32];
        std::snprintf(room, sizeof room, "%.2f", share * (id == 10 ? 2.0 : 1.0));
        write(text, room);
        return ok;
    }
    Result paramShare(ParamId, int16_t*, double*) override { return no; }
    double plain(ParamId, double share) override { return share; }
    double share(ParamId, double plain) override { return plain; }
    double value(ParamId id) override { return bad("nan") ? double(NAN) : values[id / 10 - 1]; }
    Result setValue(ParamId, double) override { return ok; }
    Result setHandler(ComponentHandler* to) override {
        handler = to;
        return ok;
    }
    View* createView(const char*) override { return new MadeView(handler); }

private:
    void take(ParamChanges* changes);

    uint32_t holders = 1, late = 0;
    double values[3] = {0.5, 0.0, 0.0};
    float level = 0.0f;
    bool started = false;
    ComponentHandler* handler = nullptr;
};

void Made::take(ParamChanges* changes) {
    for (int32_t i = 0; i < changes->count(); i++) {
        ParamQueue* queue = changes->queue(i);
        int32_t frame = 0;
        double value = 0.0;
        if (queue->point(queue->pointCount() - 1, &frame, &value) != ok) continue;
        std::atomic_ref(values[queue->param() / 10 - 1]).store(value);
        if (queue->param() == 20) handler->askRestart(restartLatency);
    }
}

Result Made::process(Process* block) {
    take(block->inParams);
    misbehave(values[2] >= 0.5);
    Event event{};
    for (int32_t i = 0; block->inEvents->get(i, &event) == ok; i++)
        level = event.type == noteOn ? event.on.velocity : 0.0f;
    for (int32_t side = 0; side < 2 && block->frames > 0; side++) {
        float* out = block->outputs[0].buffers[side];
        for (int32_t i = 0; i < block->frames; i++)
            out[i] = block->inputs[0].buffers[side][i] * float(values[0] * 2.0) + level;
        spoil(out, size_t(block->frames));
    }
    return ok;
}

class MadeFactory final : public Factory {
public:
    Result query(const uint8_t*, void** found) override {
        *found = nullptr;
        return noInterface;
    }
    uint32_t addRef() override { return 1; }
    uint32_t release() override { return 1; }
    Result factoryInfo(FactoryInfo* info) override {
        std::snprintf(info->vendor, sizeof info->vendor, "Test makers");
        return ok;
    }
    int32_t classCount() override { return 1; }
    Result classInfo(int32_t, ClassInfo* info) override {
        *info = {};
        info->id[0] = 1;
        std::snprintf(info->category, sizeof info->category, "%s", processorCategory);
        std::snprintf(info->name, sizeof info->name, "%s", ownName().c_str());
        return ok;
    }
    Result create(const uint8_t*, const uint8_t*, void** made) override {
        if (bad("crashes-open")) crashAtOnce();
        *made = bad("null") ? nullptr : static_cast<Component*>(new Made);
        return *made ? ok : no;
    }
};

} // namespace

extern "C" __attribute__((visibility("default"))) Factory* GetPluginFactory() {
    if (bad("crashes-load")) crashAtOnce();
    static MadeFactory factory;
    return &factory;
}
