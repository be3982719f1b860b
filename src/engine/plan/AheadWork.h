#pragma once

/// A component whose work may be done by somebody else, who can do it while others of its level
/// work.
class AheadWork {
public:
    /// Whether it is just now; a plan is made by that. Any thread.
    virtual bool worksElsewhere() const = 0;
    /// All that it takes in is there: has its work begun, as far as it can be. `process` follows,
    /// and takes what has come of it. Nothing of what others read may change here. Graph holder.
    virtual void beginAhead(int frames) = 0;

protected:
    ~AheadWork() = default;
};
