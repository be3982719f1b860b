#pragma once

#include "base/CStr.h"
#include "base/Stored.h"

#include <array>
#include <vector>

class CObject;

/// A value of the project that the user sets: one number, or up to four that belong together. Its
/// kind tells how it is read and written, `object` and `index` where it lies. Which values there
/// are is told by StripValues.h and, for songs, sequencer/song/SongValues.h; set one through
/// `CQV::values` only. Good for as long as `object` lives.
struct StoredValue {
    static constexpr int most = 4;
    using Numbers = std::array<double, most>; ///< those that a kind does not use are 0

    struct Kind {
        const char* name; ///< of the step; null: that of the parameter
        /// Neither allocates, and any thread may call them. `set` keeps to the range, and tells
        /// those who show or play the value.
        Numbers (*get)(const CObject* object, int index);
        void (*set)(CObject* object, int index, const Numbers& to);
        /// The parameter that `CQV::addMap` knows this value by, as it is, or null.
        int (*param)(int index) = nullptr;
        /// Appends the values that this one stands for, if it stands for others; null: it does not.
        void (*parts)(CObject* object, int index, std::vector<StoredValue>& all) = nullptr;
        /// Takes the memory that a number may need, ahead of `set`; null: none. Interface thread.
        void (*prepare)(CObject* object, int index) = nullptr;
    };

    const Kind* kind;
    CObject* object;
    int index = 0;

    Numbers get() const { return kind->get(object, index); }
    CStr name() const;
    /// What has to be kept to bring it back: those that it stands for, or itself.
    std::vector<StoredValue> parts() const;
    bool operator==(const StoredValue& other) const = default;

private:
    friend class ValueDoor;
    friend struct KeptValue;
    void set(const Numbers& to) const { kind->set(object, index, to); }
};

/// A value with other numbers, for a step of the history.
struct KeptValue {
    StoredValue value;
    StoredValue::Numbers other;

    /// Numbers here and there change places. Any thread.
    void exchange();
};

/// The parameter of a component, strip or send, 0 to 1.
float paramShare(const CObject* target, int param);
void setParamShare(CObject* target, int param, ToStore<float> share);
CStr paramTitle(const CObject* target, int param);
