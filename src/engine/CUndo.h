#pragma once

#include "base/CList.h"
#include "base/CObject.h"
#include "base/CStr.h"
#include "engine/Notices.h"
#include "engine/StoredValue.h"

#include <cassert>
#include <memory>
#include <type_traits>
#include <unordered_map>
#include <vector>

class CSendRecord;
class CComp;
class CUndo;
class WordChanges;

/// What a list holds that steps may change.
std::vector<CObject*> objectsIn(const CList& list);

/// What a step may exchange whole: content whose edit is built as a copy and then swapped in.
class CUndoContent : public CObject {
public:
    /// Lists the words that both exchange when their contents change sides. Interface thread.
    virtual void listWords(CUndoContent* other, WordChanges& words) = 0;
};

/// One change of a step: an object that enters, leaves or moves between lists, content that is
/// swapped, a number or flags that change, or a value that is exchanged; one item may carry
/// several.
///
/// An object moves from `removeFrom` to `addTo` and back; one of them is `holding` when it enters
/// or leaves the graph. Doing, undoing and redoing are this same transition, forward or back, and
/// `index` keeps the place on the other side.
class CUndoItem : public CObject {
public:
    CUndoItem(CUndo* step, CUndoItem* before) : owner(step), previous(before) {}
    ~CUndoItem() override;
    CUndoItem(const CUndoItem&) = delete;
    CUndoItem& operator=(const CUndoItem&) = delete;

    bool ownsObjects = true; ///< what lies in `holding` dies with the item
    CUndo* owner;
    CUndoItem* previous = nullptr; ///< of the step; null for the first
    int index = -1;
    CObject* object = nullptr;
    CUndoContent* replaced = nullptr; ///< owned: the other content of `object`, a CUndoContent
    void** ptrField = nullptr;
    void* ptrValue = nullptr;
    int* intField = nullptr;
    int intValue = 0;
    float* floatField = nullptr;
    float floatValue = 0.0f;
    CStr* nameField = nullptr;
    CStr nameValue;
    std::vector<int>* listField = nullptr; ///< of `object`
    std::vector<int> listValue;
    std::unique_ptr<KeptValue> kept; ///< of a value of the user, or null
    int tag = 0;                     ///< for `CComp::perform`
    int* number = nullptr;           ///< of `object`: grows by `growth`
    int growth = 0;
    unsigned* toggled = nullptr; ///< flags of `object`: `toggledBits` of them change
    unsigned toggledBits = 0;
    ListOf<CSendRecord> reorder; ///< owned: send levels around a change of buses
    CList parts;                 ///< free list for `CComp::perform`, contents not owned
    CList* addTo = nullptr;      ///< where the object goes, in the forward direction, or null
    CList* removeFrom = nullptr; ///< where it comes from, or null
    ListOf<CObject> holding;     ///< where it waits while it is in no list
    bool linked = false;         ///< the first doing was the caller's
    bool sendsStored = false;    ///< `reorder` holds the levels of the other side
    bool editorShown = false;    ///< the editor of a component that left had been open

    bool moves() const { return addTo && removeFrom; }
    bool touches(const CList* list) const { return addTo == list || removeFrom == list; }
    /// Whether the object waits here, off the graph.
    bool held() const { return !holding.empty(); }
    /// Exchanges the stored values with those of the fields.
    void exchangeValues();
    /// The same for the name and the list of numbers. Interface thread, which alone reads them.
    void exchangeNotes();
};

/// An edit, recorded by the interface thread and carried out at the end of a block. Record makers
/// add items and leave the live lists alone; their order is the order of execution.
class CUndo : public CObject {
public:
    CUndo(const CStr& title, CComp* about, const StepEffects& stepEffects);
    ~CUndo() override;
    CUndo(const CUndo&) = delete;
    CUndo& operator=(const CUndo&) = delete;

    CStr name;   ///< text of the menu
    CComp* comp; ///< whose `perform` is called and who is notified
    StepEffects effects;
    bool busy = false;
    bool viewOnly = false;         ///< how the project is shown: nothing that counts as a change
    ListOf<CUndoItem> items;       ///< owned
    CUndoItem* lastItem = nullptr; ///< of `items`
    /// How lists stood before the step put them in another order, for who plans the way back. The
    /// objects are only good for being compared.
    std::unordered_map<const CList*, std::vector<CObject*>> formerOrders;

    /// The object, owned by the step until then, enters `to` at `index`, -1 for the end.
    CUndoItem* asAdd(CObject* object, CList* to, int index = -1);
    CUndoItem* asRemove(CObject* object, CList* from);
    /// `index` counts in `to` as it is before the move, -1 is the end.
    CUndoItem* asMove(CObject* object, CList* from, CList* to, int index = -1);
    /// The same for lists that tell of what class they are, and take nothing else.
    template <class T>
    CUndoItem* asAdd(std::type_identity_t<T>* object, ListOf<T>* to, int index = -1) {
        return asAdd(entry<T>(object), static_cast<CList*>(to), index);
    }
    template <class T>
    CUndoItem* asRemove(std::type_identity_t<T>* object, ListOf<T>* from) {
        return asRemove(entry<T>(object), static_cast<CList*>(from));
    }
    template <class T>
    CUndoItem* asMove(std::type_identity_t<T>* object, ListOf<T>* from, ListOf<T>* to,
                      int index = -1) {
        return asMove(entry<T>(object), static_cast<CList*>(from), static_cast<CList*>(to), index);
    }
    /// What a list holds enters another, at its end; the step owns it until then.
    template <class From, class To>
    void asAddAll(ListOf<From>& from, ListOf<To>* to) {
        while (From* object = from.getFirst()) {
            from.del(0);
            asAdd(object, to);
        }
    }
    /// For an object that the caller has linked into `to` already, by a graph task: acts on undo
    /// and redo. A null `from` means that it was in no list before.
    CUndoItem* add2(CObject* object, CList* to, CList* from, int index = -1);
    /// Stores a variable's address and present value; the caller then changes the variable. The
    /// variable outlives the step, and is read and written by relaxed atomic access.
    CUndoItem* asPtr(void** field);
    CUndoItem* asInt(int* field);
    CUndoItem* asFloat(float* field);
    /// The same for a name, or for numbers of an object that nobody else reads, which change a
    /// little later, with the interface's share of the step.
    CUndoItem* asName(CStr* field);
    CUndoItem* asNumbers(CObject* object, std::vector<int>* field);
    /// Content of `object` is exchanged with `edited`, which the item owns from now on.
    CUndoItem* asSwap(CUndoContent* object, CUndoContent* edited);
    /// A number of an object, which outlives the step, grows by so much when it is carried out.
    CUndoItem* asGrow(CObject* object, Shared<int>& number, int by);
    /// In the same way flags of an object are switched over.
    CUndoItem* asToggle(CObject* object, unsigned bits);
    /// For a value that has been set already: `before` is what it was. One that the step has keeps
    /// what it was at first.
    void asValue(const StoredValue& value, const StoredValue::Numbers& before);
    /// Deletes the items about an object.
    void drop(const CObject* object);

private:
    /// Steps know the contents of lists as CObject: what lies elsewhere in its class cannot be
    /// moved.
    template <class T>
    static CObject* entry(T* object) {
        CObject* known = object;
        assert(static_cast<void*>(known) == static_cast<void*>(object));
        return known;
    }
    CUndoItem* newItem(CObject* object);
};
