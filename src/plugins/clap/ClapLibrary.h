#pragma once

#include "base/CStr.h"
#include "plugins/clap/ClapAbi.h"

#include <vector>

/// What a library of CLAP plug-ins holds. It is opened once and stays: a thread that it has started
/// would go on in nothing. Interface thread.
class ClapLibrary {
public:
    /// False, with `why`, where it is none.
    bool open(const CStr& file, CStr& why);
    std::vector<CStr> ids() const;
    /// Null, with `why`, where that fails. The first one without an id. `host` outlives it.
    const clapabi::Plugin* make(const CStr& id, const clapabi::Host* host, CStr& why) const;

private:
    const clapabi::Factory* factory = nullptr;
};
