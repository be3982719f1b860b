#pragma once

/// Of the module libaccess-status: asks the session bus whether assistive technology is on, and
/// calls `told` with the answer and again whenever it changes. Returns when `stop`, a descriptor,
/// can be read, or the bus is gone. For a thread of its own.
using WatchAccessStatus = void (*)(int stop, void (*told)(void* whom, bool on), void* whom);

constexpr const char* watchAccessStatusName = "watchAccessStatus";
