#pragma once

#include "base/CStr.h"

#include <functional>
#include <vector>

/// What the browser asks of the rest of the program, beside what its workspace does. Interface
/// thread.
struct BrowserDeeds {
    struct Component {
        CStr name;
        int type; ///< CompType
    };
    std::vector<Component> components;               ///< that can be added to the graph
    std::function<void(int type)> addComponent;      ///< one of these
    std::function<void(const CStr& path)> addPlugin; ///< to the graph
    std::function<void()> setUpPlugins;              ///< asks for their folders
};
