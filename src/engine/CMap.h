#pragma once

#include "base/Atomic.h"
#include "base/CList.h"
#include "base/CObject.h"
#include "base/CStr.h"

class CComp;
class CMIDIQ;
class COutputChannel;
struct CMIDIBytes;
struct ControlMove;

/// What the values of a controller do with a parameter. Files have these numbers.
enum MapMode : int {
    mapJump = 0,     ///< it takes each value
    mapPickup = 1,   ///< it stays until the controller has come to where it is
    mapScale = 2,    ///< it moves by the share of the way that is left in that direction
    mapRelative = 3, ///< 1 to 63 are steps up, 127 to 65 steps down
    mapOffset = 4,   ///< 65 and more are steps up, 63 and less steps down
    mapModes = 5
};

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
    static constexpr float none = -1.0f;

    float shareOf(float value) const; ///< of the parameter, that a value of the controller means
    float follow(float value);        ///< the share that the parameter takes, or `none`
    float pickedUp(float value, float now);
    float scaled(float value, float now) const;
    float stepped(float value, float now) const;

    bool fresh = false; ///< it has just learned; graph holder
    float left = none;  ///< the share that it was given last; graph holder
};

/// A list of maps, one of which is in force: the host's `curMap`.
class CMapProg : public CObject {
public:
    int value = 1;
    CStr name = "program";
    ListOf<CMap> items; ///< owned

    CMapProg() = default;
    ~CMapProg() override;
    CMapProg(const CMapProg&) = delete;
    CMapProg& operator=(const CMapProg&) = delete;
};

/// Where a parameter event for `target` has to go in order to reach it: the first input port of
/// its component, for an insert or a send that of its channel's component or of the child that has
/// the channel. Null when there is none.
CMIDIQ* queueOfTarget(CObject* target);
