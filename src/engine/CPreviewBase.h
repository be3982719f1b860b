#pragma once

#include "base/Atomic.h"
#include "base/CObject.h"

class CQV;

/// A player beside the song, for what the user listens to before taking it. The host owns a chain
/// of them.
class CPreviewBase : public CObject {
public:
    Shared<CPreviewBase*> next{nullptr}; ///< owned

    ~CPreviewBase() override { delete next.load(); }
    /// Interface tick.
    virtual void idle() = 0;
    virtual bool getPlaying() = 0;
    /// Adds `frames` to `left` and `right`; the other two, of at least as many frames, are scratch.
    /// Graph holder.
    virtual void process(float* left, float* right, float* tmpLeft, float* tmpRight,
                         int frames) = 0;

protected:
    /// Gives itself to the host, behind the players that are there. Interface thread.
    void join(CQV* host);
};

/// The first player of the host that is a `T`; null without one.
template <class T>
T* playerIn(CPreviewBase* first) {
    for (CPreviewBase* p = first; p; p = p->next.loadAcquire())
        if (auto* found = dynamic_cast<T*>(p)) return found;
    return nullptr;
}
