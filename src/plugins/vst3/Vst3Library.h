#pragma once

#include "base/CStr.h"
#include "plugins/vst3/Vst3Abi.h"

#include <optional>
#include <vector>

/// What the library of a VST 3 bundle holds. It is opened once and stays: a thread that it has
/// started would go on in nothing. Interface thread.
class Vst3Library {
public:
    /// A kind of plug-in in it.
    struct Kind {
        vst3::Uid id{};
        CStr key; ///< the id as 32 hexadecimal digits
        CStr name, vendor;
        bool instrument = false;
    };

    /// False, with `why`, where it is none.
    bool open(const CStr& bundle, CStr& why);
    std::vector<Kind> kinds() const;
    /// The first one without a key; nothing where there is none of it.
    std::optional<Kind> find(const CStr& key) const;
    /// An interface of a new object, which the caller releases; null where that fails.
    template <class T>
    T* make(const vst3::Uid& id) const {
        void* made = nullptr;
        if (factory->create(id.data(), T::iid.data(), &made) != vst3::ok) return nullptr;
        return static_cast<T*>(made);
    }

private:
    vst3::Factory* factory = nullptr;
};
