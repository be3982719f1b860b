#include "driver/Servers.h"

#include "driver/Module.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <jack/jack.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

pid_t launch(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const pid_t pid = fork();
    if (pid != 0) return pid;
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    const int nowhere = open("/dev/null", O_RDWR);
    for (int stream = 0; stream < 3; ++stream) dup2(nowhere, stream);
    execvp(arguments[0], arguments.data());
    _exit(127);
}

void waitForFile(const std::string& path) {
    if (!comes([&] { return std::filesystem::exists(path); }))
        throw std::runtime_error("no " + path);
}

/// The library keeps eight places for servers on a machine and frees that of a dead one only when
/// its name comes again.
std::vector<std::string> jackCommand() {
    const std::string name = "sondrava-test-" + std::to_string(getpid());
    setenv("JACK_DEFAULT_SERVER", name.c_str(), 1);
    return {"jackd", "-r", "-n",  name, "-d", "dummy", "-r",
            "44100", "-p", "256", "-C", "2",  "-P",    "2"};
}

void waitForJack() {
    jack_set_error_function([](const char*) {});
    const bool up = comes([] {
        jack_client_t* client = jack_client_open("probe", JackNoStartServer, nullptr);
        if (client) jack_client_close(client);
        return client != nullptr;
    });
    if (!up) throw std::runtime_error("jackd does not answer");
}

} // namespace

Child::Child(const std::vector<std::string>& command) : pid(launch(command)) {
}

void Child::end(int signal) {
    if (pid <= 0) return;
    kill(pid, signal);
    waitpid(pid, nullptr, 0);
    pid = -1;
}

int runCommand(const std::vector<std::string>& command) {
    int status = 0;
    waitpid(launch(command), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TempFolder::TempFolder() {
    std::string pattern = std::filesystem::temp_directory_path() / "sondrava-XXXXXX";
    if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
    path = pattern;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

Variable::Variable(const char* variable, const std::string& value)
    : name(variable),
      before(getenv(variable) ? std::optional<std::string>(getenv(variable)) : std::nullopt) {
    setenv(name, value.c_str(), 1);
}

Variable::~Variable() {
    if (before)
        setenv(name, before->c_str(), 1);
    else
        unsetenv(name);
}

JackServer::JackServer() : server(std::make_unique<Child>(jackCommand())) {
    waitForJack();
}

JackServer::~JackServer() {
    if (server) return;
    { const JackServer tidy; }
    const std::string left = std::string("_") + getenv("JACK_DEFAULT_SERVER") + "_";
    for (const auto& entry : std::filesystem::directory_iterator("/dev/shm")) {
        const std::string name = entry.path().filename();
        if (name.starts_with("jack_sem.") && name.find(left) != std::string::npos)
            std::filesystem::remove(entry.path());
    }
}

void JackServer::kill() {
    server->end(SIGKILL);
    server.reset();
}

PulseServer::PulseServer() {
    const std::string busFile = runtime.file("bus");
    for (const char* name : {"XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_STATE_HOME", "HOME"})
        variables.emplace_back(name, runtime.path);
    variables.emplace_back("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + busFile);
    variables.emplace_back("PULSE_SERVER", "unix:" + runtime.file("pulse/native"));
    leaveCardsAlone();
    bus = std::make_unique<Child>(std::vector<std::string>{"dbus-daemon", "--session", "--nofork",
                                                           "--address=unix:path=" + busFile});
    waitForFile(busFile);
    graph = std::make_unique<Child>(std::vector<std::string>{"pipewire"});
    waitForFile(runtime.file("pipewire-0"));
    policy = std::make_unique<Child>(std::vector<std::string>{"wireplumber"});
    sound = std::make_unique<Child>(std::vector<std::string>{"pipewire-pulse"});
    waitForFile(runtime.file("pulse/native"));
    const auto add = [](const char* name, const char* kind) {
        const auto command = {std::string("pactl"),
                              std::string("load-module"),
                              std::string("module-null-sink"),
                              std::string("rate=48000"),
                              "sink_name=" + std::string(name),
                              "media.class=" + std::string(kind)};
        if (!comes([&] { return runCommand(command) == 0; }))
            throw std::runtime_error("no sink " + std::string(name));
    };
    add("first", "Audio/Sink");
    add("second", "Audio/Sink");
    add("tone", "Audio/Source/Virtual");
    const auto isDefault = [] { return runCommand({"pactl", "set-default-sink", "first"}) == 0; };
    if (!comes(isDefault)) throw std::runtime_error("no default sink");
}

/// The sound cards of the machine stay with whoever uses them.
void PulseServer::leaveCardsAlone() const {
    const auto folder = runtime.path / "wireplumber/main.lua.d";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "51-no-cards.lua")
        << "alsa_monitor.enabled = false\nv4l2_monitor.enabled = false\n";
}

PulseServer::~PulseServer() {
    for (auto* child : {&sound, &policy, &graph, &bus}) child->reset();
}
