#pragma once

#include "sequencer/edit/EventEdits.h"

#include <memory>
#include <vector>

class EventShift;

/// A copy of the content of a part whose selected notes, hits or clips a drag changes again and
/// again, each time from what they were. The copy is made once. Interface thread.
class EventDraft {
public:
    /// Of the content of the part, which stands on a track, or of `base`, another draft for it.
    EventDraft(CSeq* seq, CPart* part, CPart* base = nullptr);
    ~EventDraft();
    EventDraft(const EventDraft&) = delete;
    EventDraft& operator=(const EventDraft&) = delete;

    void change(const EventDelta& delta); ///< as `changeEvents` does
    void trim(int delta);                 ///< as `trimEvents` does
    CPart* draft() const { return copy.get(); }
    std::unique_ptr<CPart> take(); ///< the last call

private:
    struct Place {
        CBaseEvent* event; ///< of the copy
        int tick, order;   ///< `order` in the list at first
    };
    template <class F>
    void place(F&& tickOf);
    void link();

    CSeq* seq;
    CPart* part;
    std::unique_ptr<CPart> copy;
    EventRange range;
    std::vector<Place> still, chosen, moved; ///< by tick; `moved` is where the chosen ones are now
    std::vector<CBaseEvent*> originals;      ///< owned copies of the chosen ones
};
