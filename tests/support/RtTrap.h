#pragma once

/// Counts what must not happen while the block callback runs: calls that allocate, free, lock,
/// wait, or go to the system. A test program that links `rt_trap` has these calls led through it;
/// the first few violations print where they came from.

/// Violations since the last `rtReset`, on any thread. Always 0 where the trap is off.
int rtViolations();
void rtReset();
/// False under the sanitizers, which lead the same calls through themselves.
bool rtTrapActive();
