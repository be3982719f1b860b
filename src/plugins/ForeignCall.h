#pragma once

#include "base/Messages.h"
#include "plugins/PluginHooks.h"

#include <array>
#include <clocale>
#include <csignal>
#include <string>
#include <xmmintrin.h>

/// Around a call into somebody else's code: rounding and the like are afterwards as they were.
class ForeignCall {
public:
    ForeignCall() : mode(_mm_getcsr()) {}
    ~ForeignCall() { _mm_setcsr(mode); }
    ForeignCall(const ForeignCall&) = delete;
    ForeignCall& operator=(const ForeignCall&) = delete;

private:
    const unsigned mode;
};

/// Around calls in which a plug-in may come to handle signals, which are the program's own: they
/// are afterwards handled as before.
class KeepSignals {
public:
    KeepSignals() {
        for (int i = 1; i <= last; i++) sigaction(i, nullptr, &before[size_t(i)]);
    }
    ~KeepSignals() {
        for (int i = 1; i <= last; i++)
            if (i != SIGKILL && i != SIGSTOP) sigaction(i, &before[size_t(i)], nullptr);
    }
    KeepSignals(const KeepSignals&) = delete;
    KeepSignals& operator=(const KeepSignals&) = delete;

private:
    static constexpr int last = 31; ///< those that are not of real time
    std::array<struct sigaction, last + 1> before{};
};

/// As `ForeignCall` for calls that open something, which may also change how numbers are written,
/// and who gets the errors of the display. Not while rendering.
class ForeignOpening : public ForeignCall {
public:
    ForeignOpening() : locale(std::setlocale(LC_ALL, nullptr)) {}
    ~ForeignOpening() {
        if (locale != std::setlocale(LC_ALL, nullptr)) std::setlocale(LC_ALL, locale.c_str());
        if (isInterfaceThread()) pluginHooks()->called();
    }
    ForeignOpening(const ForeignOpening&) = delete;
    ForeignOpening& operator=(const ForeignOpening&) = delete;

private:
    const std::string locale;
};

/// Calls somebody else's code: what it throws ends here. False where it has thrown.
template <class F>
bool contained(F&& call) {
    try {
        call();
        return true;
    } catch (...) {
        return false;
    }
}

/// The same for a call that is like opening something. Not while rendering.
template <class F>
bool guarded(F&& call) {
    const ForeignOpening foreign;
    return contained(call);
}
