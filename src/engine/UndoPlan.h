#pragma once

#include "base/CList.h"
#include "engine/WordChanges.h"

#include <memory>
#include <unordered_map>
#include <vector>

class CObject;
class CUndo;
class CUndoContent;
class CUndoItem;

/// How a step is carried out, in one direction. The interface thread prepares it, so that of most
/// items nothing is left to the graph but to exchange complete lists, and to change single words.
/// Moves that the step's component does not take so (`CComp::takesWhole`), and what else it wants
/// to perform itself, are carried out one by one.
class UndoPlan {
public:
    /// An object on its way, and the lists in this direction; null where it is off the graph.
    struct Move {
        CUndoItem* item;
        CObject* object;
        CList *from, *to;
        int index; ///< in `to`, -1 the end
        int old;   ///< in `from`, which the item keeps for the way back
    };

    UndoPlan() = default;
    ~UndoPlan() { leave(); }
    UndoPlan(const UndoPlan&) = delete;
    UndoPlan& operator=(const UndoPlan&) = delete;

    // Interface thread.
    /// `first`: the step has never been carried out. What the plan was about before is over.
    void prepare(CUndo* step, bool forward, bool first);
    /// What a list is going to hold, in order; at first what it holds now. May be put in another
    /// order while the step's component plans.
    std::vector<CObject*>& contents(CList* list);
    /// Lists whose contents have been asked for, or change.
    std::vector<CList*> lists() const;
    /// Once carried out: the items know from now on where their objects are.
    void finish();
    /// Once it is known that it will not be carried out any more.
    void leave();

    const std::vector<Move>& moves() const { return moving; }
    /// Whose contents change sides.
    const std::vector<CUndoContent*>& swaps() const { return swapping; }
    /// Items to be carried out one by one, in their order.
    const std::vector<CUndoItem*>& rest() const { return single; }
    bool isForward() const { return forwards; }

    /// Exchanges lists and changes words. False, and nothing has happened, when a list has changed
    /// since: the plan has to be prepared anew. Graph holder.
    bool carryOut();

private:
    struct Change {
        CList* list;
        unsigned version;
        std::vector<CObject*> contents;
        CList other; ///< the new contents, and then the former ones
    };
    using Run = std::vector<Move>::iterator;

    Change& change(CList* list);
    void sortItems(CUndo* step);
    void listWords(CUndoItem* item);
    Run endOfRun(Run begin);
    Run takeOut(Run begin, Run end);
    void putIn(Run begin, Run end);
    void build();

    bool forwards = true, firstTime = true;
    std::vector<Move> moving;
    std::vector<CUndoContent*> swapping;
    WordChanges words;
    std::vector<CUndoItem*> single;
    std::vector<std::unique_ptr<Change>> changes;
    std::unordered_map<const CList*, Change*> byList;
};
