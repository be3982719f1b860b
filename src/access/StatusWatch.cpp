#include "access/StatusWatch.h"

#include <dbus/dbus.h>
#include <poll.h>

#include <memory>

namespace {

constexpr int patienceMs = 200;
constexpr const char* busName = "org.a11y.Bus";
constexpr const char* statusName = "org.a11y.Status";
constexpr const char* changesOfStatus =
    "type='signal',sender='org.a11y.Bus',interface='org.freedesktop.DBus.Properties'";
constexpr const char* changesOfOwner =
    "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='org.a11y.Bus'";

struct Unref {
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
};
using Message = std::unique_ptr<DBusMessage, Unref>;

/// A boolean property; false if nobody answers in time. Nobody is started to answer.
bool property(DBusConnection* bus, const char* name) {
    const Message ask(dbus_message_new_method_call(busName, "/org/a11y/bus",
                                                   "org.freedesktop.DBus.Properties", "Get"));
    if (!ask) return false;
    dbus_message_set_auto_start(ask.get(), FALSE);
    dbus_message_append_args(ask.get(), DBUS_TYPE_STRING, &statusName, DBUS_TYPE_STRING, &name,
                             DBUS_TYPE_INVALID);
    const Message answer(
        dbus_connection_send_with_reply_and_block(bus, ask.get(), patienceMs, nullptr));
    DBusMessageIter variant, value;
    if (!answer || !dbus_message_iter_init(answer.get(), &variant)) return false;
    if (dbus_message_iter_get_arg_type(&variant) != DBUS_TYPE_VARIANT) return false;
    dbus_message_iter_recurse(&variant, &value);
    if (dbus_message_iter_get_arg_type(&value) != DBUS_TYPE_BOOLEAN) return false;
    dbus_bool_t on = FALSE;
    dbus_message_iter_get_basic(&value, &on);
    return on;
}

bool isOn(DBusConnection* bus) {
    return property(bus, "IsEnabled") || property(bus, "ScreenReaderEnabled");
}

/// Waits for news of the status; false when `stop` can be read or the bus is gone.
bool waitForNews(DBusConnection* bus, int stop) {
    int connection = -1;
    if (!dbus_connection_get_unix_fd(bus, &connection)) return false;
    for (;;) {
        pollfd awaited[] = {{connection, POLLIN, 0}, {stop, POLLIN, 0}};
        poll(awaited, 2, -1);
        if (awaited[1].revents || !dbus_connection_read_write(bus, 0)) return false;
        bool news = false;
        while (const Message message{dbus_connection_pop_message(bus)})
            news |= dbus_message_get_type(message.get()) == DBUS_MESSAGE_TYPE_SIGNAL;
        if (news) return true;
    }
}

} // namespace

extern "C" [[gnu::visibility("default")]] void
watchAccessStatus(int stop, void (*told)(void*, bool), void* whom) {
    DBusConnection* bus = dbus_bus_get_private(DBUS_BUS_SESSION, nullptr);
    if (!bus) return;
    dbus_connection_set_exit_on_disconnect(bus, FALSE);
    dbus_bus_add_match(bus, changesOfStatus, nullptr);
    dbus_bus_add_match(bus, changesOfOwner, nullptr);
    do {
        told(whom, isOn(bus));
    } while (waitForNews(bus, stop));
    dbus_connection_close(bus);
    dbus_connection_unref(bus);
}
