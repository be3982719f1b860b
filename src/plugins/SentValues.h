#pragma once

#include "base/Atomic.h"
#include "base/Ring.h"
#include "plugins/Plugin.h"

#include <vector>

/// The values of parameters that go to a plug-in with its blocks, and what it tells of them there.
class SentValues {
public:
    enum Deed : int { moved, begins, ends };

    /// So many, while no block is in the plug-in.
    void start(size_t count);
    size_t count() const { return values.size(); }

    // Any thread.
    double of(size_t index) const { return values[index]; }
    void set(size_t index, double value); ///< to be sent
    /// The plug-in has that value, unless it is to have another one.
    void learn(size_t index, double value) {
        if (!unsent[index]) values[index] = value;
    }
    bool waits() const { return anyUnsent; }
    bool waits(size_t index) const { return unsent[index]; }
    void forgetWaiting(); ///< the plug-in gets all of its values another way

    // Whoever renders, or while no block is in the plug-in.
    /// Calls `visit(index, value)` for what is to be sent, once each.
    template <class F>
    void send(F&& visit) {
        if (!anyUnsent.exchange(false)) return;
        for (size_t i = 0; i < values.size(); i++)
            if (unsent[i].exchange(false)) visit(i, double(values[i]));
    }
    void tell(Deed deed, int index) { told.push({deed, index}); }

    /// Tells the host what has been told; `share(index)` gives the value then. Only between the
    /// ends of a gesture it is the user who moves something. Interface thread.
    template <class F>
    void tellHost(PluginHost& host, F&& share) {
        for (Told t{}; told.pop(t);) {
            if (t.index < 0 || size_t(t.index) >= held.size()) continue;
            const bool user = held[size_t(t.index)];
            if (t.deed == moved && user) host.parameterMoved(t.index, share(t.index));
            if (t.deed == moved && !user) host.parameterDrifted(t.index, share(t.index));
            if (t.deed == begins) host.gestureBegins(t.index);
            if (t.deed == ends) host.gestureEnds(t.index);
            if (t.deed != moved) held[size_t(t.index)] = t.deed == begins;
        }
    }

private:
    struct Told {
        Deed deed;
        int index;
    };

    std::vector<Shared<double>> values;
    std::vector<Shared<bool>> unsent;
    Shared<bool> anyUnsent{false};
    Ring<Told, 1024> told;
    std::vector<bool> held; ///< in a gesture; interface thread
};
