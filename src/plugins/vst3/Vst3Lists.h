#pragma once

#include "plugins/vst3/Vst3Host.h"

#include <vector>

/// The values that one parameter takes in a block. Whoever renders.
class Vst3Queue final : public Vst3Owned<vst3::ParamQueue> {
public:
    vst3::ParamId param() override { return of; }
    int32_t pointCount() override { return count; }
    vst3::Result point(int32_t index, int32_t* frame, double* value) override;
    vst3::Result add(int32_t frame, double value, int32_t* index) override;
    void start(vst3::ParamId id);
    double last() const { return count > 0 ? points[count - 1].value : 0.0; }

private:
    static constexpr int32_t most = 32;
    struct Point {
        int32_t frame;
        double value;
    };
    vst3::ParamId of = 0;
    int32_t count = 0;
    Point points[most] = {};
};

/// Those of all parameters that change in a block. Whoever renders, but for its making.
class Vst3Changes final : public Vst3Owned<vst3::ParamChanges> {
public:
    void makeRoom(size_t params) { queues = std::vector<Vst3Queue>(params); }
    void clear() { used = 0; }
    int32_t count() override { return used; }
    Vst3Queue* queue(int32_t index) override;
    Vst3Queue* add(const vst3::ParamId* id, int32_t* index) override;
    void put(vst3::ParamId id, int32_t frame, double value);

private:
    std::vector<Vst3Queue> queues;
    int32_t used = 0;
};

/// The events of a block. Whoever renders.
class Vst3Events final : public Vst3Owned<vst3::EventList> {
public:
    void clear() { used = 0; }
    int32_t count() override { return used; }
    vst3::Result get(int32_t index, vst3::Event* event) override;
    vst3::Result add(vst3::Event* event) override;

private:
    static constexpr int32_t most = 2048;
    std::vector<vst3::Event> events = std::vector<vst3::Event>(most);
    int32_t used = 0;
};
