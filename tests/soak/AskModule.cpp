#include "AskModule.h"

#include "engine/CAAM.h"

#include <dlfcn.h>

intptr_t askModule(AamOp op, intptr_t argument) {
    void* module = dlopen(CAAM::defaultPath().asChar(), RTLD_NOW);
    if (!module) return -1;
    const auto entry = reinterpret_cast<AamEntry>(dlsym(module, "libaam"));
    const intptr_t answer = entry(op, argument, 0);
    dlclose(module); // the bridge holds it
    return answer;
}

AamStatistics askStatistics() {
    AamStatistics result{};
    askModule(aamTestStatistics, reinterpret_cast<intptr_t>(&result));
    return result;
}
