#include "plugins/vst3/Vst3Library.h"

#include "base/Paths.h"
#include "plugins/ForeignCall.h"
#include "plugins/PluginFile.h"

#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <map>

using namespace vst3;

namespace {

constexpr int32_t mostKinds = 4096;

CStr keyOf(const Uid& id) {
    constexpr const char* digits = "0123456789ABCDEF";
    char text[33] = {};
    for (size_t i = 0; i < id.size(); i++) {
        text[2 * i] = digits[id[i] >> 4];
        text[2 * i + 1] = digits[id[i] & 0xf];
    }
    return text;
}

template <size_t N>
CStr textOf(const char (&room)[N]) {
    return CStr(room, strnlen(room, N)).trim();
}

/// What is begun once in a process, however many plug-ins of it there are.
Factory* begin(void* library) {
    const auto entry = reinterpret_cast<bool (*)(void*)>(dlsym(library, "ModuleEntry"));
    const auto get = reinterpret_cast<Factory* (*)()>(dlsym(library, "GetPluginFactory"));
    if (!get || (entry && !entry(library))) return nullptr;
    return get();
}

} // namespace

bool Vst3Library::open(const CStr& bundle, CStr& why) {
    static std::map<void*, Factory*> begun;
    const CStr name = changeFileExt(extractFileName(bundle), ".so");
    void* library = dlopen((PluginFile(bundle).folderOfLibrary() + name).asChar(),
                           RTLD_LAZY | RTLD_LOCAL | RTLD_NODELETE);
    if (!library) {
        why = dlerror();
        return false;
    }
    contained([&] {
        if (const auto known = begun.find(library); known != begun.end())
            factory = known->second;
        else
            factory = begun[library] = begin(library);
    });
    if (!factory) why = "It is no VST 3 plug-in.";
    return factory != nullptr;
}

std::vector<Vst3Library::Kind> Vst3Library::kinds() const {
    std::vector<Kind> found;
    void* newer = nullptr;
    if (factory->query(Factory2::iid.data(), &newer) != ok) newer = nullptr;
    FactoryInfo maker{};
    factory->factoryInfo(&maker);
    const int32_t count = std::min(factory->classCount(), mostKinds);
    for (int32_t i = 0; i < count; i++) {
        ClassInfo info{};
        if (factory->classInfo(i, &info) != ok || textOf(info.category) != processorCategory)
            continue;
        Kind kind;
        std::copy_n(info.id, kind.id.size(), kind.id.begin());
        kind.key = keyOf(kind.id);
        kind.name = textOf(info.name);
        kind.vendor = textOf(maker.vendor);
        ClassInfo2 more{};
        if (newer && static_cast<Factory2*>(newer)->classInfo2(i, &more) == ok) {
            kind.instrument = textOf(more.subCategories).pos(instrumentWord) >= 0;
            if (const CStr vendor = textOf(more.vendor); !vendor.empty()) kind.vendor = vendor;
        }
        found.push_back(std::move(kind));
    }
    if (newer) static_cast<Factory2*>(newer)->release();
    return found;
}

std::optional<Vst3Library::Kind> Vst3Library::find(const CStr& key) const {
    for (const Kind& kind : kinds())
        if (key.empty() || key == kind.key) return kind;
    return std::nullopt;
}
