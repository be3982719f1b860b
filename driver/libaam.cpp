#include "driver/libaam.h"

#include "driver/DriverModule.h"

#include <exception>
#include <memory>

/// The module's entry. Nothing is thrown out of it: what fails for lack of memory or threads
/// answers -1.
extern "C" __attribute__((visibility("default"))) intptr_t libaam(intptr_t op, intptr_t a,
                                                                  intptr_t b) {
    static std::unique_ptr<DriverModule> module;
    try {
        switch (op) {
        case aamInit:
            module.reset(); // closes its clients before the new one looks for servers
            module = std::make_unique<DriverModule>(reinterpret_cast<AamCallback>(a));
            return 0;
        case aamShutdown:
            module.reset();
            return 0;
        default:
            return module ? module->perform(op, a, b) : 0;
        }
    } catch (const std::exception&) {
        return -1;
    }
}
