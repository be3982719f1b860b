#pragma once

#include "base/CStr.h"

#include <vector>

class CIO;
class CObject;
class COutputChannel;
class CQV;
class GraphModel;

/// What the user listens to and meters in the graph: a cable that carries sound, an output, or a
/// component by its first output. No project keeps it, and it ends with the view. Interface thread.
class GraphWatch {
public:
    explicit GraphWatch(CQV* root) : host(root) {}
    ~GraphWatch() { listenTo(nullptr); }
    GraphWatch(const GraphWatch&) = delete;
    GraphWatch& operator=(const GraphWatch&) = delete;

    /// What sounds there; null where it is notes, or an input.
    static COutputChannel* soundOf(const CObject* item);

    /// The audio out plays it in place of the mix, until something else is listened to, or null.
    void listenTo(const CObject* item);
    const CObject* listened() const { return heard; }

    void toggleMeter(const CObject* item); ///< from now on, or no more
    bool isMetered(const CObject* item) const;
    /// The highest level since then, "-12.3 dB"; empty for what is not metered.
    CStr figureOf(const CObject* item) const;
    const CObject* metered(size_t index) const { return meters[index].item; }
    size_t meterCount() const { return meters.size(); }
    /// Takes the present level of a metered thing; whether its figure has changed.
    bool follow(size_t index);

    void keepTo(const GraphModel& model); ///< lets go of what is not there any more

private:
    struct Meter {
        const CObject* item;
        float highest;
    };
    CQV* host;
    const CObject* heard = nullptr;
    std::vector<Meter> meters;
};
