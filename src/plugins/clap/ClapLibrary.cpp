#include "plugins/clap/ClapLibrary.h"

#include <dlfcn.h>
#include <map>

using namespace clapabi;

namespace {

constexpr uint32_t mostPlugins = 4096;

const Factory* factoryOf(void* library, const CStr& file) {
    // A library is begun once in a process, however many plug-ins of it there are.
    static std::map<void*, const Factory*> begun;
    const auto known = begun.find(library);
    if (known != begun.end()) return known->second;
    const auto* entry = static_cast<const Entry*>(dlsym(library, entrySymbol));
    if (!entry || entry->version.major < 1 || !entry->init || !entry->factory) return nullptr;
    try {
        if (!entry->init(file.asChar())) return nullptr;
        return begun[library] = static_cast<const Factory*>(entry->factory(factoryId));
    } catch (...) {
        return nullptr;
    }
}

} // namespace

bool ClapLibrary::open(const CStr& file, CStr& why) {
    void* library = dlopen(file.asChar(), RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE);
    if (!library) {
        why = dlerror();
        return false;
    }
    factory = factoryOf(library, file);
    if (!factory) why = "It is no CLAP plug-in.";
    return factory != nullptr;
}

std::vector<CStr> ClapLibrary::ids() const {
    std::vector<CStr> found;
    try {
        const uint32_t count = factory->count(factory);
        for (uint32_t i = 0; i < count && i < mostPlugins; i++)
            if (const Descriptor* d = factory->descriptor(factory, i); d && d->id)
                found.push_back(d->id);
    } catch (...) { // NOLINT(bugprone-empty-catch): as many as it has told
    }
    return found;
}

const Plugin* ClapLibrary::make(const CStr& id, const Host* host, CStr& why) const {
    const auto known = ids();
    const Plugin* made = nullptr;
    try {
        if (!id.empty() || !known.empty())
            made = factory->create(factory, host, (id.empty() ? known.front() : id).asChar());
        if (made && made->init(made)) return made;
        if (made) made->destroy(made);
    } catch (...) { // NOLINT(bugprone-empty-catch): told below
    }
    why = "The plug-in does not start.";
    return nullptr;
}
