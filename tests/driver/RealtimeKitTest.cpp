#include "driver/Module.h"
#include "driver/Servers.h"

#include <dbus/dbus.h>
#include <fstream>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr int highestPriority = 20;
constexpr dbus_int64_t longestMicros = 200000;

/// A system bus of its own, and on it a stand-in for the service: it grants nothing, but notes who
/// was asked for, and whether the service itself would have found the process safe.
class StandIn {
public:
    explicit StandIn(bool answering) : answers(answering) {
        std::ofstream(folder.file("bus.conf"))
            << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
               "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">"
               "<busconfig><listen>unix:path="
            << folder.file("bus")
            << "</listen><policy context=\"default\"><allow user=\"*\"/><allow own=\"*\"/><allow "
               "eavesdrop=\"true\"/><allow "
               "send_destination=\"*\" eavesdrop=\"true\"/></policy></busconfig>";
        bus = std::make_unique<Child>(std::vector<std::string>{
            "dbus-daemon", "--nofork", "--config-file=" + folder.file("bus.conf")});
        EXPECT_TRUE(comes([&] { return std::filesystem::exists(folder.file("bus")); }));
        EXPECT_TRUE(comes([&] { return connect(); }));
        serving = std::thread([this] {
            while (!over && dbus_connection_read_write(connection, 10))
                while (DBusMessage* message = dbus_connection_pop_message(connection)) {
                    if (answers) answer(message);
                    dbus_message_unref(message);
                }
        });
    }
    ~StandIn() {
        over = true;
        serving.join();
        dbus_connection_close(connection);
        dbus_connection_unref(connection);
        setrlimit(RLIMIT_RTTIME, &before);
    }
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;

    std::atomic<uint64_t> thread{0};
    std::atomic<uint32_t> priority{0};
    std::atomic<bool> safe{false};

private:
    bool connect() {
        connection = dbus_connection_open_private(address.c_str(), nullptr);
        if (!connection) return false;
        dbus_connection_set_exit_on_disconnect(connection, FALSE);
        return dbus_bus_register(connection, nullptr) &&
               dbus_bus_request_name(connection, "org.freedesktop.RealtimeKit1", 0, nullptr) == 1;
    }
    void answer(DBusMessage* message) {
        if (dbus_message_is_method_call(message, "org.freedesktop.DBus.Properties", "Get"))
            tell(message);
        else if (dbus_message_is_method_call(message, "org.freedesktop.RealtimeKit1",
                                             "MakeThreadRealtime"))
            grant(message);
    }
    void tell(DBusMessage* message) {
        const char *kind = nullptr, *name = "";
        dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &kind, DBUS_TYPE_STRING, &name,
                              DBUS_TYPE_INVALID);
        const bool time = std::string(name) == "RTTimeUSecMax";
        DBusMessage* reply = dbus_message_new_method_return(message);
        DBusMessageIter outer, inner;
        dbus_message_iter_init_append(reply, &outer);
        dbus_message_iter_open_container(&outer, DBUS_TYPE_VARIANT, time ? "x" : "i", &inner);
        dbus_message_iter_append_basic(&inner, time ? DBUS_TYPE_INT64 : DBUS_TYPE_INT32,
                                       time ? static_cast<const void*>(&longestMicros)
                                            : static_cast<const void*>(&highestPriority));
        dbus_message_iter_close_container(&outer, &inner);
        send(reply);
    }
    void grant(DBusMessage* message) {
        dbus_uint64_t who = 0;
        dbus_uint32_t wanted = 0;
        dbus_message_get_args(message, nullptr, DBUS_TYPE_UINT64, &who, DBUS_TYPE_UINT32, &wanted,
                              DBUS_TYPE_INVALID);
        rlimit limit{};
        getrlimit(RLIMIT_RTTIME, &limit);
        safe = limit.rlim_max <= rlim_t(longestMicros) && limit.rlim_cur < limit.rlim_max;
        priority = wanted;
        thread = who;
        send(dbus_message_new_method_return(message));
    }
    void send(DBusMessage* reply) {
        dbus_connection_send(connection, reply, nullptr);
        dbus_message_unref(reply);
    }

    const bool answers;
    const TempFolder folder;
    const std::string address = "unix:path=" + folder.file("bus");
    const Variable way{"DBUS_SYSTEM_BUS_ADDRESS", address};
    const rlimit before = [] {
        rlimit limit{};
        getrlimit(RLIMIT_RTTIME, &limit);
        return limit;
    }();
    std::unique_ptr<Child> bus;
    DBusConnection* connection = nullptr;
    std::thread serving;
    std::atomic<bool> over{false};
};

/// The calling thread, and those that it starts, may not choose their scheduling.
void becomePlain() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct sets[2]{};
    if (syscall(SYS_capget, &header, sets) != 0) return;
    sets[0].effective &= ~(1u << CAP_SYS_NICE);
    syscall(SYS_capset, &header, sets);
    const rlimit none{0, 0};
    setrlimit(RLIMIT_RTPRIO, &none);
}

} // namespace

/// Where the system refuses it to a plain user, the service is asked for the thread that calls
/// back, with a limit that it accepts; one that never answers holds up nothing for long.
TEST(RealtimeKit, IsAskedForTheThreadThatCallsBack) {
    for (const bool answering : {true, false}) {
        StandIn service(answering);
        std::thread plain([&] {
            becomePlain();
            Module module;
            std::atomic<pid_t> caller{0};
            module.program = [&](const Block&) {
                caller = gettid();
                return 0L;
            };
            EXPECT_TRUE(module.open(int(module.devices().size()) - 1, 256, 44100));
            EXPECT_TRUE(module.waitBlocks(3)) << answering;
            EXPECT_EQ(service.thread, answering ? uint64_t(caller) : 0);
            EXPECT_EQ(module(aamRealtime, gettid(), 7), answering);
            EXPECT_EQ(service.thread, answering ? uint64_t(gettid()) : 0);
            EXPECT_EQ(service.priority, answering ? 7u : 0u);
            module.close();
        });
        plain.join();
        EXPECT_EQ(service.safe, answering);
    }
}
