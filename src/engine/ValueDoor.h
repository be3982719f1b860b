#pragma once

#include "engine/ParamRef.h"
#include "engine/StoredValue.h"

#include <optional>
#include <vector>

class CQV;

/// The one door for what a user changes and a project stores; the host's `values`. What is set here
/// is kept within its range and heard at once, makes the project modified, counts for the copy
/// against a crash, is taken down by a recording or learned by a controller where it is a
/// parameter, and can be undone: all that one gesture sets is one step, and what ends as it was is
/// none. Interface thread.
///
/// While a take is recorded, gestures belong to the take's step. Whatever opens a step in mid
/// gesture finds what was moved so far in the history, as a step of its own. Undo and redo end it:
/// a view that drags goes on only while `dragging`.
class ValueDoor {
public:
    using Numbers = StoredValue::Numbers;
    static constexpr int runMs = 1000; ///< a pause of the wheel that ends a gesture

    explicit ValueDoor(CQV* host) : qv(host) {}

    // A gesture from press to release; one at a time: beginning another ends it.
    /// Without a name the step is called after the first value that it sets.
    void begin(const CStr& name = CStr());
    /// Without a gesture it is one by itself: a click, or a number that was typed.
    void set(const StoredValue& value, const Numbers& to);
    void set(const StoredValue& value, double to) { set(value, Numbers{to}); }
    /// A parameter by its number (see `parameterOf`), 0 to 1.
    void setParam(CObject* target, int param, float share);
    void end();
    void cancel();                                     ///< what it has set becomes as it was
    bool dragging() const { return open && !running; } ///< between `begin` and `end`

    /// A turn of the wheel or a key: joins those of the last second on the same value.
    void nudge(const StoredValue& value, const Numbers& to);
    void nudge(const StoredValue& value, double to) { nudge(value, Numbers{to}); }
    void nudgeParam(CObject* target, int param, float share); ///< 0 to 1

    /// What has just been set is what a parameter moves, and now stands at `share`, 0 to 1: it
    /// counts as if that had been set.
    void movedBy(const ParamRef& by, float share);
    /// A parameter is what the user is about, though it is not set.
    void touch(const ParamRef& by);
    /// The parameter that was set last, for as long as what it belongs to lives.
    const ParamRef& touched() const { return latest; }
    unsigned touches() const { return touchCount; } ///< grows when a parameter is set

    /// Whether something has been moved that is not in the history yet.
    bool moved() const;
    /// Brings that into the history. A gesture may go on.
    void settle();
    /// Ends a run of nudges whose time is up. Called by the host's idle, in milliseconds.
    void idle(int now);
    /// Lets go of an object that is about to be freed.
    void forget(const CObject* object);

private:
    struct Moved {
        StoredValue value;
        Numbers before;
    };
    void run(const StoredValue& value);
    template <class F>
    void change(const StoredValue& value, F&& write);

    CQV* qv;
    bool open = false;
    CStr name;
    std::vector<Moved> entries;         ///< since the last step
    std::optional<StoredValue> running; ///< of the nudges
    ParamRef latest;
    unsigned touchCount = 0;
    int lastNudge = 0; ///< asTimeInMS
};
