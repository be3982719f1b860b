#include "driver/Module.h"

#include "support/Places.h"

#include <algorithm>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>

AamEntry Module::load() {
    void* handle = dlopen(builtFile("bin/libaam.so").c_str(), RTLD_LAZY);
    if (!handle) throw std::runtime_error(dlerror());
    return reinterpret_cast<AamEntry>(dlsym(handle, "libaam"));
}

Module::Module() : entry(load()) {
    current = this;
    entry(aamInit, intptr_t(&Module::callback), 0);
    entry(aamDeviceCount, 0, 0);
}

Module::~Module() {
    entry(aamShutdown, 0, 0);
    current = nullptr;
}

long Module::callback(float** ins, float** outs, long numIns, long numOuts, long frames,
                      void* events, int numEvents) {
    Module& module = *current;
    module.inside = true;
    module.frames = frames;
    long sent = 0;
    if (module.program)
        sent = module.program(
            {ins, outs, numIns, numOuts, frames, static_cast<AamEvent*>(events), numEvents});
    else
        for (long i = 0; i < numOuts; ++i) std::fill_n(outs[i], frames, 0.0f);
    module.blocks += 1;
    module.inside = false;
    return sent;
}

std::string Module::name(AamOp op, intptr_t index) const {
    std::vector<char> buffer(aamNameBytes, '?');
    entry(op, index, intptr_t(buffer.data()));
    EXPECT_EQ(buffer.back(), '\0');
    return buffer.data();
}

std::vector<std::string> Module::devices() const {
    std::vector<std::string> names;
    const intptr_t count = entry(aamDeviceCount, 0, 0);
    for (intptr_t i = 0; i < count; ++i) names.push_back(name(aamDeviceName, i));
    return names;
}

int Module::device(const std::string& prefix) const {
    const auto names = devices();
    const auto at = std::find_if(names.begin(), names.end(),
                                 [&](const std::string& n) { return n.starts_with(prefix); });
    return at == names.end() ? -1 : int(at - names.begin());
}

bool Module::open(int device, int blockFrames, int hz) {
    for (const AamOp op : {aamAudioInEnable, aamAudioOutEnable}) {
        for (int i = 0; i < 2; ++i) entry(op, i, 1);
    }
    entry(aamRate, hz, 0);
    entry(aamFrames, blockFrames, 0);
    if (entry(aamOpen, device, 0) == -1) return false;
    entry(aamStart, 0, 0);
    return true;
}

void Module::close() const {
    entry(aamStop, 0, 0);
    entry(aamClose, 0, 0);
}

bool Module::waitBlocks(int count) const {
    const int64_t until = blocks + count;
    return comes([&] { return blocks >= until; });
}

AamStatistics Module::statistics() const {
    AamStatistics result{};
    entry(aamTestStatistics, intptr_t(&result), 0);
    return result;
}

float Module::rate() const {
    float hz = 0;
    entry(aamRate, 0, intptr_t(&hz));
    return hz;
}

Holdings Holdings::now() {
    const auto entries = [](const char* folder) {
        return size_t(std::distance(std::filesystem::directory_iterator(folder), {}));
    };
    std::ifstream maps("/proc/self/maps");
    const auto lines = std::count(std::istreambuf_iterator<char>(maps), {}, '\n');
    return {entries("/proc/self/task"), entries("/proc/self/fd"), size_t(lines)};
}

void stopWhileInside(Module& module, int device) {
    module.program = [](const Block&) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        return 0L;
    };
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(module.open(device, 64, 44100));
        ASSERT_TRUE(comes([&] { return module.inside.load(); }));
        module(aamStop);
        EXPECT_FALSE(module.inside);
        module(aamClose);
    }
}

void failWhilePlaying(Module& module, int device, const std::function<void()>& fail) {
    ASSERT_TRUE(module.open(device, 256, 44100));
    ASSERT_TRUE(module.waitBlocks(3));
    EXPECT_EQ(module(aamNeedsReopen), 0);
    fail();
    ASSERT_TRUE(comes([&] { return module(aamNeedsReopen) == 1; }));
    EXPECT_EQ(module(aamNeedsReopen), 0);
    module.close();
    const int64_t seen = module.blocks;
    EXPECT_FALSE(module.open(device, -1, 44100));
    EXPECT_EQ(module.blocks, seen);
}

void reopen(Module& module, int device, int times) {
    constexpr int warmUp = 10;
    Holdings before{};
    for (int i = -warmUp; i < times; ++i) {
        if (i == 0) before = Holdings::now();
        ASSERT_TRUE(module.open(device, i % 2 ? 128 : 256, 44100)) << "cycle " << i;
        ASSERT_TRUE(module.waitBlocks(3)) << "cycle " << i;
        module(aamStop);
        const int64_t seen = module.blocks;
        EXPECT_FALSE(module.inside);
        module(aamClose);
        EXPECT_EQ(module.blocks, seen) << "a callback came after the stop, cycle " << i;
    }
    const Holdings after = Holdings::now();
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_EQ(after.files, before.files);
    EXPECT_LT(after.mappings, before.mappings + size_t(times) / 2); // the allocator makes a few
}
