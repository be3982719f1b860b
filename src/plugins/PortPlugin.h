#pragma once

#include "base/Atomic.h"
#include "plugins/ForeignCall.h"
#include "plugins/ParamRange.h"
#include "plugins/Plugin.h"
#include "plugins/PluginFile.h"
#include "plugins/SentValues.h"

#include <memory>
#include <vector>

struct StateText;

/// What CLAP and VST 3 plug-ins have in common: pins in ports of several channels, parameters with
/// numbers of their own whose values go along with the blocks, and one state for all.
class PortPlugin : public Plugin {
public:
    int32_t uniqueId() const override { return id; }
    int inputs() const override { return pinsOf(portsIn); }
    int outputs() const override { return pinsOf(portsOut); }
    bool stereoPair(bool input, int index) override;
    int latency() const override { return delay; }
    int numParams() const override { return int(params.size()); }
    CStr paramName(int index) override;
    void setParam(int index, float share) override;
    float param(int index) override;
    bool hasChunks() const override { return true; }
    void setRate(double to) override;
    void setBlock(int frames) override;
    void setRunning(bool on) override;
    void addMidi(int frame, int data) override;
    bool hasEditor() const override { return drawn; }
    void idleEditor() override { idle(); }

protected:
    struct Param {
        uint32_t id = 0;
        CStr name;
        ParamRange range;
        double usual = 0.0;
        void* cookie = nullptr; ///< that the plug-in finds it by
        CStr unit;              ///< where its texts are without
        bool program = false;   ///< it changes all others
    };
    struct Note {
        int frame, data;
    };
    static constexpr uint32_t mostPorts = 64, mostParams = 16384;

    explicit PortPlugin(PluginHost& answers);

    /// Makes it what stands in the file; null, with `why`, where that fails.
    template <class T>
    static std::unique_ptr<T> started(std::unique_ptr<T> made, const PluginFile& file, CStr& why) {
        const KeepSignals signals;
        why = "The plug-in does not start.";
        bool good = false;
        PortPlugin& plugin = *made;
        guarded([&] { good = plugin.start(file, why); });
        return good ? std::move(made) : nullptr;
    }
    virtual bool start(const PluginFile& file, CStr& why) = 0;
    virtual void readPorts() = 0;
    virtual void activate() = 0; ///< for the rate and the block that it has, unless it is
    virtual void deactivate() = 0;
    void renew(); ///< its ports, its latency or what it is told of blocks are others

    int paramOf(uint32_t wanted) const; ///< index of that number; -1 none
    /// The values that its own state lacks, as those which are not sent yet: all of them if it has
    /// none.
    void keepValues(StateText& text, bool all) const;
    void setKept(const StateText& text);
    void sendNote(int frame, bool on, int channel, int key, double velocity);

    PluginHost& host;
    int32_t id = 1;                     ///< made of its name
    std::vector<int> portsIn, portsOut; ///< channels of each
    std::vector<Param> params;
    SentValues values;
    Shared<int> delay{0};
    double rate = 0.0;
    int block = 0;
    bool drawn = false; ///< it has a window
    bool active = false, wantsRunning = false;
    std::vector<Note> notes; ///< of the coming block; whoever renders, as the next
    bool processing = false;

private:
    static int pinsOf(const std::vector<int>& ports);
};
