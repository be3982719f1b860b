#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace {

/// Part of every test program: from before `main` on it finds no sound server, bus, display, sound
/// card or home of the machine, but only what its tests start. A folder takes their places.
class OwnServers {
public:
    OwnServers() : owner(getpid()) {
        std::string pattern = std::filesystem::temp_directory_path() / "sondrava-tests-XXXXXX";
        if (!mkdtemp(pattern.data())) std::abort();
        folder = pattern;
        std::ofstream(folder / "asound.conf");
        set("HOME", folder);
        set("XDG_RUNTIME_DIR", folder);
        set("ALSA_CONFIG_PATH", folder / "asound.conf");
        set("PULSE_SERVER", "unix:" + (folder / "pulse" / "native").string());
        set("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (folder / "bus").string());
        set("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + (folder / "system-bus").string());
        set("JACK_DEFAULT_SERVER", "sondrava-test-" + std::to_string(owner));
        set("JACK_NO_START_SERVER", "1");
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_CONFIG_HOME", "XDG_DATA_HOME",
                                 "XDG_STATE_HOME", "XDG_CACHE_HOME"})
            unsetenv(name);
    }
    ~OwnServers() { // a child that leaves by `exit` has the folder from its parent
        std::error_code ignored;
        if (getpid() == owner) std::filesystem::remove_all(folder, ignored);
    }
    OwnServers(const OwnServers&) = delete;
    OwnServers& operator=(const OwnServers&) = delete;

private:
    static void set(const char* name, const std::string& value) { setenv(name, value.c_str(), 1); }
    pid_t owner;
    std::filesystem::path folder;
};

const OwnServers ownServers;

} // namespace
