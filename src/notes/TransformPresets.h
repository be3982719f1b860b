#pragma once

#include "base/CStr.h"
#include "sequencer/edit/Transform.h"

#include <vector>

/// Named settings of transforms, kept in a file of the user, a line for each. Interface thread.
class TransformPresets {
public:
    struct Preset {
        CStr name;
        int kind;
        TransformValues values;
    };

    TransformPresets() { read(); }

    const std::vector<Preset>& all() const { return presets; }
    /// In place of one of that name. False where the file can't be written.
    bool store(const Preset& preset);
    bool remove(const CStr& name); ///< likewise

private:
    void read();
    bool write() const;

    std::vector<Preset> presets;
};
