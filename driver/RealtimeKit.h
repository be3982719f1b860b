#pragma once

#include <sys/types.h>

/// Asks the service that grants real-time scheduling to programs of plain users (RealtimeKit, on
/// the system bus) for a thread of this process. `priority` is lowered to what the service grants.
/// True when the thread has it now. Waits for the service, half a second at most for each of its
/// answers: never from within a block.
///
/// The service grants it only to programs whose threads may not hold a processor for long, so the
/// first call limits that for the process (RLIMIT_RTTIME); a thread that meets the limit goes back
/// to ordinary scheduling.
bool askRealtimeKit(pid_t thread, int priority);
