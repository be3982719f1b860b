#pragma once

#include "base/Messages.h"
#include "plugins/PluginHooks.h"

#include <clocale>
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

/// The same for calls that open something, which may also change how numbers are written, and
/// who gets the errors of the display. Not while rendering.
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
