#pragma once

/// A component whose work is done by somebody else, who can do it while others of its level work.
/// Graph holder.
class AheadWork {
public:
    /// All that it takes in is there: has its work begun, as far as it can be. `process` follows,
    /// and takes what has come of it. Nothing of what others read may change here.
    virtual void beginAhead(int frames) = 0;

protected:
    ~AheadWork() = default;
};
