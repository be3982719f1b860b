#pragma once

#include "base/Atomic.h"

#include <memory>

class Plugin;

/// The parameters of a plug-in as they were last heard of, so that a step of the history knows what
/// was there before the plug-in moved one by itself; and which of them it has moved on threads that
/// may not tell anybody. Those behind the first `most` are not kept.
class PluginValues {
public:
    static constexpr int most = 4096;

    /// Takes all values of a plug-in. Interface thread, for a plug-in that nobody renders.
    void start(Plugin& plugin);
    /// Takes those values anew that have changed since. Interface thread.
    void follow(Plugin& plugin);

    // Any thread.
    float of(int index) const { return has(index) ? values[index] : 0.0f; }
    void keep(int index, float share) {
        if (has(index)) values[index] = share;
    }
    /// Moved by the plug-in, to be told later.
    void leave(int index, float share);

    /// Calls `visit(index, share)` for what was left, once each. Interface thread.
    template <class F>
    void takeLeft(F&& visit) {
        if (!anyLeft.exchange(false)) return;
        for (int word = 0; word < words(); word++) {
            const unsigned bits = left[word].exchange(0);
            for (int bit = 0; bits >> bit; bit++)
                if (bits >> bit & 1u)
                    visit(word * wordBits + bit, float(moved[word * wordBits + bit]));
        }
    }

private:
    static constexpr int wordBits = 31;
    int words() const { return (count + wordBits - 1) / wordBits; }
    bool has(int index) const { return index >= 0 && index < count; }

    int count = 0;
    std::unique_ptr<Shared<float>[]> values, moved;
    std::unique_ptr<Shared<unsigned>[]> left; ///< a bit for each that was left
    Shared<bool> anyLeft{false};
};
