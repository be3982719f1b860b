#pragma once

#include "base/Futex.h"

/// Who is inside a plug-in: whoever renders a piece of a block, or the interface thread with a call
/// that must not meet one. The former tries, and does without the plug-in where the other has it;
/// the latter waits, asleep.
class PluginClaim {
public:
    /// False: the interface thread has the plug-in. Does not wait.
    bool tryRender() {
        int expected = nobody;
        return word.compareExchange(expected, rendering);
    }
    void leave() { word.storeRelease(nobody); }
    void waitForInterface() {
        int found = nobody;
        while (!word.compareExchange(found, calling)) {
            futexWait(word, rendering, pauseMs);
            found = nobody;
        }
    }

private:
    enum State : int { nobody, rendering, calling };
    static constexpr int pauseMs = 1; ///< who renders wakes nobody, so this looks again by itself

    Shared<int> word{nobody};
};

/// The interface thread has a plug-in to itself. Does not nest.
class PluginHold {
public:
    explicit PluginHold(PluginClaim& of) : claim(of) { claim.waitForInterface(); }
    ~PluginHold() { claim.leave(); }
    PluginHold(const PluginHold&) = delete;
    PluginHold& operator=(const PluginHold&) = delete;

private:
    PluginClaim& claim;
};
