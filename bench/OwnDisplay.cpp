#include "OwnDisplay.h"

#include <X11/Xlib.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

namespace {

constexpr std::chrono::milliseconds turn{20};
constexpr int patience = 250; ///< turns

std::string newFolder() {
    std::string path = "/tmp/sondrava_latency.XXXXXX";
    return mkdtemp(path.data()) ? path : ".";
}

void become(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    for (const std::string& w : words) arguments.push_back(const_cast<char*>(w.c_str()));
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    _exit(127);
}

void silence(int stream) {
    dup2(open("/dev/null", O_RDWR), stream);
}

/// A server that chooses its number by itself writes it into the pipe.
std::string numberFrom(int pipe) {
    std::string number;
    for (char c; read(pipe, &c, 1) == 1 && c != '\n';) number += c;
    return number;
}

} // namespace

OwnDisplay::OwnDisplay(int width, int height) : home(newFolder()) {
    int ends[2];
    if (pipe(ends) != 0) return;
    const std::string size = std::to_string(width) + "x" + std::to_string(height) + "x24";
    server = fork();
    if (server == 0) {
        close(ends[0]);
        silence(STDERR_FILENO); // it tells of every number that is taken
        become({"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen", "0", size, "-noreset",
                "-nolisten", "tcp"});
    }
    close(ends[1]);
    const std::string number = numberFrom(ends[0]);
    close(ends[0]);
    if (number.empty()) return;
    setenv("DISPLAY", (":" + number).c_str(), 1);
    display = XOpenDisplay(nullptr);
    surround();
}

OwnDisplay::~OwnDisplay() {
    for (const pid_t program : programs) stop(program);
    if (display) XCloseDisplay(display);
    if (server > 0) stop(server);
    std::error_code none;
    std::filesystem::remove_all(home, none);
}

void OwnDisplay::surround() const {
    std::ofstream(home + "/asound.conf").flush();
    setenv("HOME", home.c_str(), 1);
    setenv("XDG_RUNTIME_DIR", home.c_str(), 1);
    setenv("ALSA_CONFIG_PATH", (home + "/asound.conf").c_str(), 1);
    setenv("PULSE_SERVER", ("unix:" + home + "/pulse").c_str(), 1);
    setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + home + "/bus").c_str(), 1);
    setenv("JACK_DEFAULT_SERVER", "sondrava-latency", 1);
    setenv("JACK_NO_START_SERVER", "1", 1);
    for (const char* name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME",
                             "WAYLAND_DISPLAY"})
        unsetenv(name);
}

pid_t OwnDisplay::start(const std::vector<std::string>& words, const std::string& folder,
                        bool loud) {
    const pid_t program = fork();
    if (program == 0) {
        if (chdir(folder.c_str()) != 0) _exit(126);
        silence(STDIN_FILENO);
        if (!loud) {
            silence(STDOUT_FILENO);
            silence(STDERR_FILENO);
        }
        become(words);
    }
    programs.push_back(program);
    return program;
}

void OwnDisplay::stop(pid_t program) {
    for (const int signal : {SIGTERM, SIGKILL}) {
        kill(program, signal);
        for (int i = 0; i < patience; i++) {
            if (waitpid(program, nullptr, WNOHANG) != 0) return;
            std::this_thread::sleep_for(turn);
        }
    }
}
