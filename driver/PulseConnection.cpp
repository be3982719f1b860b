#include "driver/PulseConnection.h"

namespace {

void contextChanged(pa_context*, void* connection) {
    static_cast<PulseConnection*>(connection)->signal();
}

} // namespace

PulseConnection::PulseConnection()
    : loop(pa_threaded_mainloop_new()),
      context(pa_context_new(pa_threaded_mainloop_get_api(loop), "Sondrava")) {
    pa_context_set_state_callback(context, contextChanged, this);
    if (pa_context_connect(context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) return;
    pa_threaded_mainloop_set_name(loop, "pulse");
    pa_threaded_mainloop_start(loop);
    const Lock lock(*this);
    const auto ready = [this] { return pa_context_get_state(context) == PA_CONTEXT_READY; };
    if (!wait(ready)) pa_context_disconnect(context);
}

PulseConnection::~PulseConnection() {
    {
        const Lock lock(*this);
        pa_context_set_state_callback(context, nullptr, nullptr);
        pa_context_disconnect(context);
    }
    pa_threaded_mainloop_stop(loop);
    pa_context_unref(context);
    pa_threaded_mainloop_free(loop);
}

bool PulseConnection::good() const {
    return PA_CONTEXT_IS_GOOD(pa_context_get_state(context));
}

bool PulseConnection::finish(pa_operation* operation) {
    if (!operation) return false;
    const auto state = [operation] { return pa_operation_get_state(operation); };
    wait([&] { return state() != PA_OPERATION_RUNNING; });
    const bool done = state() == PA_OPERATION_DONE;
    if (!done) pa_operation_cancel(operation);
    pa_operation_unref(operation);
    return done;
}

PulseConnection::Deadline::Deadline(PulseConnection& c) : connection(c) {
    constexpr pa_usec_t patience = 1000 * PA_USEC_PER_MSEC;
    const auto passes = [](pa_mainloop_api*, pa_time_event*, const timeval*, void* data) {
        auto* deadline = static_cast<Deadline*>(data);
        deadline->passed = true;
        deadline->connection.signal();
    };
    event = pa_context_rttime_new(c.context, pa_rtclock_now() + patience, passes, this);
}

PulseConnection::Deadline::~Deadline() {
    pa_threaded_mainloop_get_api(connection.loop)->time_free(event);
}
