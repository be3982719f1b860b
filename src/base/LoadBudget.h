#pragma once

#include "base/CStr.h"

#include <cstdint>

/// What the objects of a file may take up while it is read, so that a few kilobytes of heads cannot
/// fill the memory, and a note of what had no room. At most one is open, on the interface thread;
/// readers ask it from wherever they are. What grows no faster than the file, such as events and
/// frames, is not counted.
class LoadBudget {
public:
    explicit LoadBudget(int64_t bytes);
    ~LoadBudget();
    LoadBudget(const LoadBudget&) = delete;
    LoadBudget& operator=(const LoadBudget&) = delete;

    /// Whether one more object, one of `kind` in the plural, has room for its `bytes`; takes them
    /// then. Yes while no budget is open.
    static bool take(const char* kind, int64_t bytes);
    /// The same for one that there may be `most` of, `there` by now, whether counted or not.
    static bool take(const char* kind, int64_t bytes, size_t there, size_t most);
    /// Takes bytes, whether they are there or not.
    static void spend(int64_t bytes);
    /// Notes that an object of `kind` was left out for another reason.
    static void leaveOut(const char* kind);

    /// Notes that what is being read is not as it says. Whoever reads the whole file tells it.
    static void noteDamage();
    /// Whether damage was noted since this was last asked.
    static bool takeDamage();
    /// Whether damage that is told now is the first of this file, and worth a box: it may have
    /// thousands. Yes while no budget is open.
    static bool firstDamage();
    bool damaged() const { return told; } ///< some was told

    /// The kinds of which objects were left out, each once: "drums, inserts".
    const CStr& leftOut() const { return missing; }

private:
    int64_t left;
    bool noted = false, told = false; ///< damage
    CStr missing;
    static LoadBudget* open;
};
