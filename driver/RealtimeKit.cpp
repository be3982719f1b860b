#include "driver/RealtimeKit.h"

#include <dbus/dbus.h>
#include <sched.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <memory>
#include <optional>

namespace {

constexpr int patienceMs = 500;
constexpr const char* service = "org.freedesktop.RealtimeKit1";
constexpr const char* object = "/org/freedesktop/RealtimeKit1";

struct Unref {
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
};
using Message = std::unique_ptr<DBusMessage, Unref>;

/// A connection to the system bus of its own.
class SystemBus {
public:
    SystemBus() : connection(dbus_bus_get_private(DBUS_BUS_SYSTEM, nullptr)) {
        if (connection) dbus_connection_set_exit_on_disconnect(connection, FALSE);
    }
    ~SystemBus() {
        if (!connection) return;
        dbus_connection_close(connection);
        dbus_connection_unref(connection);
    }
    SystemBus(const SystemBus&) = delete;
    SystemBus& operator=(const SystemBus&) = delete;

    explicit operator bool() const { return connection != nullptr; }
    /// Null when there is none, or it is an error.
    Message answer(const Message& question) const {
        return Message(dbus_connection_send_with_reply_and_block(connection, question.get(),
                                                                 patienceMs, nullptr));
    }

private:
    DBusConnection* connection;
};

/// A number that the service tells of itself.
std::optional<int64_t> property(const SystemBus& bus, const char* name) {
    const Message ask(
        dbus_message_new_method_call(service, object, "org.freedesktop.DBus.Properties", "Get"));
    if (!ask) return {};
    dbus_message_append_args(ask.get(), DBUS_TYPE_STRING, &service, DBUS_TYPE_STRING, &name,
                             DBUS_TYPE_INVALID);
    const Message told = bus.answer(ask);
    DBusMessageIter outer, inner;
    if (!told || !dbus_message_iter_init(told.get(), &outer)) return {};
    if (dbus_message_iter_get_arg_type(&outer) != DBUS_TYPE_VARIANT) return {};
    dbus_message_iter_recurse(&outer, &inner);
    DBusBasicValue value{};
    const int type = dbus_message_iter_get_arg_type(&inner);
    if (type != DBUS_TYPE_INT32 && type != DBUS_TYPE_INT64) return {};
    dbus_message_iter_get_basic(&inner, &value);
    return type == DBUS_TYPE_INT32 ? int64_t(value.i32) : int64_t(value.i64);
}

void leaveRealtime(int) {
    const sched_param none{};
    sched_setscheduler(0, SCHED_OTHER, &none);
}

/// Whether threads of this process are stopped before they have held a processor for `longest`
/// microseconds; half of it before, they get the signal that takes them back.
bool limitTime(int64_t longest) {
    rlimit now{};
    if (longest < 2 || getrlimit(RLIMIT_RTTIME, &now) != 0) return false;
    struct sigaction former {};
    sigaction(SIGXCPU, nullptr, &former);
    if (former.sa_handler == SIG_DFL) {
        struct sigaction action {};
        action.sa_handler = leaveRealtime;
        action.sa_flags = SA_RESTART;
        sigaction(SIGXCPU, &action, nullptr);
    }
    rlimit wanted{};
    wanted.rlim_max = std::min(now.rlim_max, rlim_t(longest));
    wanted.rlim_cur = std::min(now.rlim_cur, wanted.rlim_max / 2);
    return setrlimit(RLIMIT_RTTIME, &wanted) == 0;
}

} // namespace

bool askRealtimeKit(pid_t thread, int priority) {
    const SystemBus bus;
    if (!bus) return false;
    const auto highest = property(bus, "MaxRealtimePriority");
    const auto longest = property(bus, "RTTimeUSecMax");
    if (!highest || *highest < 1 || !longest || !limitTime(*longest)) return false;
    const Message ask(dbus_message_new_method_call(service, object, service, "MakeThreadRealtime"));
    if (!ask) return false;
    const dbus_uint64_t who = dbus_uint64_t(thread);
    const dbus_uint32_t wanted = dbus_uint32_t(std::clamp<int64_t>(priority, 1, *highest));
    dbus_message_append_args(ask.get(), DBUS_TYPE_UINT64, &who, DBUS_TYPE_UINT32, &wanted,
                             DBUS_TYPE_INVALID);
    return bus.answer(ask) != nullptr;
}
