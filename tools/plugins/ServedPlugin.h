#pragma once

#include "plugins/PinBuffers.h"
#include "plugins/Plugin.h"
#include "plugins/remote/PluginRoom.h"
#include "plugins/remote/SharedPages.h"

#include <memory>
#include <mutex>

/// A plug-in that works for another process, and what it asks of its host. The thread that opens it
/// is the interface's; trips are made on another one.
class ServedPlugin final : private PluginHost {
public:
    /// `file` is that of the room, and is taken over.
    ServedPlugin(int file, const CStr& folder, double rate, int frames);
    ~ServedPlugin();
    ServedPlugin(const ServedPlugin&) = delete;
    ServedPlugin& operator=(const ServedPlugin&) = delete;

    bool load(const CStr& path, CStr& why);
    Plugin& get() { return *plugin; }

    // Interface thread.
    /// A change by the host, which no trip meets, and of which the plug-in tells nobody.
    template <class F>
    void changeWhole(F&& change) {
        const std::scoped_lock lock(inside);
        obeying = true;
        change(*plugin);
        obeying = false;
        tellFacts();
    }
    void setRate(double to);
    void setBlock(int to);
    void openEditor(unsigned long window);
    void closeEditor();
    bool editorIsOpen() const { return editorOpen; }
    void idle(); ///< takes what is wanted, and tells how the plug-in is
    void takeWanted();
    void waitForTrip() const; ///< until none is on its way

    /// The trip that stands in the room. Returns before it is answered, with its number.
    int makeTrip();
    void answer(int trip);

private:
    double sampleRate() const override { return rate; }
    int blockFrames() const override { return frames; }
    PluginLevel level() const override;
    PluginTime songTime() const override;
    CStr libraryFolder() const override { return folder; }
    void parameterMoved(int index, float share) override;
    void parameterDrifted(int, float) override {}
    void gestureBegins(int index) override;
    void gestureEnds(int index) override;
    void sendMidi(int frame, int data) override;
    void sizeEditor(CPoint size) override;
    void idleEditor() override;
    void channelsChanged() override;
    void displayChanged() override;
    unsigned blockNumber() const override { return 0; }
    void betweenBlocks(const std::function<void()>& change) override {
        const std::scoped_lock lock(inside);
        change();
    }
    void pluginLost() override {}
    void pluginReturns() override {}
    void pluginReturned() override {}

    bool onTrip() const;
    void tell(PluginRoom::Event::Kind kind, int index = 0, float value = 0.0f);
    void tellFacts();
    void makePins();
    bool render();

    SharedRoom<PluginRoom> room;
    const CStr folder;
    std::unique_ptr<Plugin> plugin;
    Shared<double> rate;
    Shared<int> frames;
    std::mutex inside; ///< a trip, or a change that must not meet one
    Shared<bool> travels{false};
    PinBuffers pins;
    int inputs = 0, outputs = 0; ///< that there are pins for
    std::mutex events;           ///< of the room
    mutable std::mutex timeGuard;
    PluginTime time; ///< of the latest trip
    bool editorOpen = false;
    Shared<bool> obeying{false};
    Shared<bool> displayAsked{false}; ///< told with the next `idle`
};
