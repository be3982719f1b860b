#pragma once

#include "base/Atomic.h"
#include "base/CList.h"
#include "base/CObject.h"
#include "base/CStr.h"
#include "engine/TakeOver.h"

class CComp;
class CMIDIQ;
class COutputChannel;
struct CMIDIBytes;
struct ControlMove;

/// Leads one controller to one parameter. Fields in atomics are read by the graph while the map
/// window changes them.
class CMap : public CObject {
public:
    Shared<CComp*> comp{nullptr};           ///< top-level component that holds `target`
    Shared<COutputChannel*> owner{nullptr}; ///< its output, when `target` is an insert or a send
    Shared<CObject*> target{nullptr};       ///< a component, an output channel or a CSend
    Shared<int> ch{1};                      ///< MIDI channel, shown only
    Shared<int> cc{0};                      ///< what moves it (engine/ControlSource.h)
    Shared<int> param{0};                   ///< parameter of `target`
    Shared<int> min{0}, max{127};           ///< range that a controller sweeps, in steps of 1/127
    Shared<int> mode{mapJump};              ///< MapMode
    Shared<bool> waiting{false};            ///< to be picked up: values come, and it stays
    Shared<float> lastValue{-1.0f};         ///< that was served last, 0 to 127
    Shared<bool> changed{false};            ///< set when a value was passed on; lights its row
    Shared<bool> learning{false};           ///< the next controller sets `cc`

    /// Takes the source of a move when it is learning; if the very next one makes that finer, it
    /// takes the finer. Graph holder.
    bool learn(const ControlMove& move);
    /// Inserts the parameter event of a move, at its frame, into `queue`, unless the value is the
    /// one that was served last, or the mode leaves the parameter where it is. Graph holder.
    void serve(CMIDIQ* queue, const ControlMove& move, double frame);
    /// Takes over what an empty row has: its controller, unless that still has to be learned.
    void takeRow(const CMap& row);
    /// Loses the target, when it or what holds it is `gone`; true then.
    bool forget(const CObject* gone);

private:
    bool fresh = false;          ///< it has just learned; graph holder
    float left = TakeOver::none; ///< the share that it was given last; graph holder
};

/// A list of maps, one of which is in force: the host's `curMap`.
class CMapProg : public CObject {
public:
    /// Each message of a device is compared with all of them.
    static constexpr int mostItems = 4096;

    int value = 1;
    CStr name = "program";
    ListOf<CMap> items; ///< owned

    bool full() const { return items.getCount() >= mostItems; }

    CMapProg() = default;
    ~CMapProg() override;
    CMapProg(const CMapProg&) = delete;
    CMapProg& operator=(const CMapProg&) = delete;
};

/// Where a parameter event for `target` has to go in order to reach it: the first input port of
/// its component, for an insert or a send that of its channel's component or of the child that has
/// the channel. Null when there is none.
CMIDIQ* queueOfTarget(CObject* target);
