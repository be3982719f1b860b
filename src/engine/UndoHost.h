#pragma once

#include "base/Atomic.h"
#include "base/CList.h"
#include "base/CObject.h"
#include "base/CStr.h"
#include "engine/CUndo.h"
#include "engine/UndoPlan.h"

#include <functional>

class CComp;
class CQV;

/// The host's history: records edits, has them carried out at the end of a block, takes them back.
/// List and index change on the interface thread only; a step's transition runs as a graph task,
/// one at a time.
class UndoHost {
public:
    explicit UndoHost(CQV* host);
    ~UndoHost();
    UndoHost(const UndoHost&) = delete;
    UndoHost& operator=(const UndoHost&) = delete;

    ListOf<CUndo> undoList;   ///< owned
    int undoIndex = -1;       ///< of the step that is undone next, -1 none
    CUndo* recUndo = nullptr; ///< step of the take that is being recorded
    /// A state of the project: a place in the history, and a count of what was changed past it.
    struct SaveMark {
        int index = -1;
        unsigned past = 0;
    };
    SaveMark saveMark();                                           ///< of the present state
    SaveMark savedMark() const { return {savedIndex, savedPast}; } ///< of the saved state
    /// A file holds the project as it was at `mark`; undo back to there makes it unmodified.
    void markSaved(const SaveMark& mark);
    /// The project has unsaved changes. Interface thread.
    bool modified() const;
    /// The edit guard: a step is open or on its way (a take's step does not count).
    bool undoBusy() const;
    /// A step has been closed and is still to be carried out, which takes a block: what a part
    /// holds until then is what it held before. Interface thread.
    bool stepOnItsWay() const { return pending.loadAcquire(); }

    /// Opens a step. Owned by the caller until `undoEnd`.
    CUndo* undoStart(const CStr& name, CComp* comp, const StepEffects& effects = {});
    /// Opens the step of a take.
    CUndo* startTakeStep();
    /// Closes it: an empty step is dropped, another cuts the redo tail, joins the list and is
    /// queued. With `wait` returns once it is done, pumping the program meanwhile.
    void undoEnd(CUndo* u, bool wait);
    /// Forgets everything; objects that wait in steps die. An open step of a take is dropped.
    void undoClear();
    /// Queue one step back or forward; refused while recording.
    void undoClicked(CObject* = nullptr);
    void redoClicked(CObject* = nullptr);
    CStr undoText();
    CStr redoText();
    /// The channel or component that holds an object of a step, with its place there, -1 when it
    /// has left: for an output channel the component, for a send or an insert the channel. Null for
    /// anything else.
    CObject* objectToOwner(CObject* o, int& index);
    /// Waits until no step is on its way, running tasks where no block does.
    void settle();
    /// The interface's share of a step that has been carried out. Called by the host's idle.
    void undoIdle();
    /// Objects that steps hold off the graph take on another block size or rate.
    void setHeldFrames(int frames);
    void setHeldRate(double rate);
    /// Calls `visit` for every object that a step holds off the graph.
    void eachHeld(const std::function<void(CObject*)>& visit);
    /// Drops what steps and an open gesture tell about an object that is about to be freed from the
    /// graph itself.
    void forgetInSteps(const CObject* object);

protected:
    Shared<unsigned> past{0}; ///< counts what changed past the history

private:
    static constexpr int nowhere = -2; ///< no place of the history is as the file
    enum Op : int { opDone = 1, opUndone = 2, opRedone = 4 }; ///< as told to `CComp::perform`

    void queue(CUndo* u, Op op);
    void send();
    void reserveSends(CUndo* u);
    void freeSteps(int keep);
    void freeDying();
    void endFaded();
    void settleStep();
    void settleComp(CUndoItem* item, bool forward);
    void wake(CComp* c);

    // Graph holder.
    void doStep(CObject* step);
    void carryOut(CUndo* u, CUndoItem* item);
    void relocate(CUndoItem* item);
    void changing(CUndo* u, CUndoItem* item);
    void handleUpdate(const CUndo* u);
    void tell(const CUndo* u);

    CQV* qv;
    ListOf<CUndo> openSteps; ///< not owned: started and not ended
    /// Owned: forgotten, but what they hold off the graph may still be heard.
    ListOf<CUndo> dying;
    std::vector<CComp*> tired; ///< off the graph, and to sleep once they are not heard any more
    int savedIndex = -1;       ///< where `undoIndex` was when the project was saved, or `nowhere`
    unsigned savedPast = 0;    ///< and `past`
    CUndo* running = nullptr;  ///< the step on its way, and its direction; set when it is not
    Op runningOp = opDone;
    UndoPlan stepPlan;           ///< of that step; the graph's while it is pending and not outdated
    Shared<bool> pending{false}; ///< set when a step is queued, cleared (release) when it is done
    Shared<bool> outdated{false}; ///< the step on its way has to be prepared anew
};
