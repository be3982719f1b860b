#pragma once

#include "base/Geometry.h"
#include "plugins/PluginTimers.h"
#include "plugins/vst3/Vst3Host.h"

#include <memory>
#include <utility>
#include <vector>

class PluginHost;

/// The own window of a VST 3 plug-in, inside an X window. It lives as long as it is open. Interface
/// thread.
class Vst3Editor {
public:
    static bool works(vst3::Controller& controller); ///< it has one that works here
    /// Null where it does not open.
    static std::unique_ptr<Vst3Editor> open(vst3::Controller& controller, PluginHost& host,
                                            unsigned long window);
    ~Vst3Editor();
    Vst3Editor(const Vst3Editor&) = delete;
    Vst3Editor& operator=(const Vst3Editor&) = delete;

    CPoint size() const;

private:
    /// The timers and files that the window asks for.
    class Loop final : public Vst3Owned<vst3::RunLoop> {
    public:
        ~Loop() = default;
        vst3::Result watch(vst3::EventHandler* handler, int file) override;
        vst3::Result unwatch(vst3::EventHandler* handler) override;
        vst3::Result addTimer(vst3::TimerHandler* handler, uint64_t ms) override;
        vst3::Result removeTimer(vst3::TimerHandler* handler) override;

    private:
        PluginTimers timers{[this](unsigned number) { due(number); },
                            [this](int file, unsigned) { ready(file); }};
        void due(unsigned number);
        void ready(int file);
        std::vector<std::pair<unsigned, vst3::TimerHandler*>> timed; ///< not owned, as the next
        std::vector<std::pair<int, vst3::EventHandler*>> watched;
    };
    /// What the window is told of the one around.
    class Around final : public Vst3Owned<vst3::Frame> {
    public:
        explicit Around(Vst3Editor& of) : editor(of) {}
        ~Around() = default;
        vst3::Result query(const uint8_t* wanted, void** found) override;
        vst3::Result resize(vst3::View* view, vst3::Rect* to) override;

    private:
        Vst3Editor& editor;
    };

    Vst3Editor(vst3::View* shown, PluginHost& answers)
        : view(shown), host(answers), around(*this) {}

    vst3::View* const view; ///< held
    PluginHost& host;
    Loop loop;
    Around around;
    bool attached = false;
};
