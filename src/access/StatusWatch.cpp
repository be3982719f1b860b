#include "access/StatusWatch.h"

#include <dbus/dbus.h>
#include <poll.h>

#include <memory>

namespace {

constexpr int patienceMs = 200;
constexpr int retryMs = 1000; // of who was there but did not answer
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

enum class Answer { off, on, late };

/// What a message says of a boolean property.
bool saysTrue(DBusMessage* answer) {
    DBusMessageIter variant, value;
    if (!answer || !dbus_message_iter_init(answer, &variant)) return false;
    if (dbus_message_iter_get_arg_type(&variant) != DBUS_TYPE_VARIANT) return false;
    dbus_message_iter_recurse(&variant, &value);
    if (dbus_message_iter_get_arg_type(&value) != DBUS_TYPE_BOOLEAN) return false;
    dbus_bool_t on = FALSE;
    dbus_message_iter_get_basic(&value, &on);
    return on;
}

/// Off if nobody is there to answer: nobody is started to do so.
Answer property(DBusConnection* bus, const char* name) {
    const Message ask(dbus_message_new_method_call(busName, "/org/a11y/bus",
                                                   "org.freedesktop.DBus.Properties", "Get"));
    if (!ask) return Answer::off;
    dbus_message_set_auto_start(ask.get(), FALSE);
    dbus_message_append_args(ask.get(), DBUS_TYPE_STRING, &statusName, DBUS_TYPE_STRING, &name,
                             DBUS_TYPE_INVALID);
    DBusError error = DBUS_ERROR_INIT;
    const Message answer(
        dbus_connection_send_with_reply_and_block(bus, ask.get(), patienceMs, &error));
    const bool late = dbus_error_has_name(&error, DBUS_ERROR_NO_REPLY) ||
                      dbus_error_has_name(&error, DBUS_ERROR_TIMEOUT);
    dbus_error_free(&error);
    if (late) return Answer::late;
    return saysTrue(answer.get()) ? Answer::on : Answer::off;
}

Answer status(DBusConnection* bus) {
    const Answer enabled = property(bus, "IsEnabled");
    return enabled == Answer::off ? property(bus, "ScreenReaderEnabled") : enabled;
}

/// Waits for news of the status, at most `ms`, without end for -1; false when `stop` can be read or
/// the bus is gone.
bool waitForNews(DBusConnection* bus, int stop, int ms) {
    int connection = -1;
    if (!dbus_connection_get_unix_fd(bus, &connection)) return false;
    for (;;) {
        bool news = false; // may have come with an answer
        while (const Message message{dbus_connection_pop_message(bus)})
            news |= dbus_message_get_type(message.get()) == DBUS_MESSAGE_TYPE_SIGNAL;
        if (news) return true;
        pollfd awaited[] = {{connection, POLLIN, 0}, {stop, POLLIN, 0}};
        if (poll(awaited, 2, ms) == 0) return true;
        if (awaited[1].revents || !dbus_connection_read_write(bus, 0)) return false;
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
    Answer now;
    do {
        now = status(bus);
        if (now != Answer::late) told(whom, now == Answer::on);
    } while (waitForNews(bus, stop, now == Answer::late ? retryMs : -1));
    dbus_connection_close(bus);
    dbus_connection_unref(bus);
}
