#pragma once

#include <csignal>
#include <filesystem>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

/// An outside program that says nothing, ended with this object.
class Child {
public:
    explicit Child(const std::vector<std::string>& command);
    ~Child() { end(SIGTERM); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    /// Ends it and waits; `signal` 9 gives it no chance to say good-bye.
    void end(int signal);

private:
    pid_t pid;
};

/// Runs a program to its end and answers its status.
int runCommand(const std::vector<std::string>& command);

/// A folder of its own under the system's temporary one, removed at the end.
struct TempFolder {
    std::filesystem::path path;
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    std::string file(const std::string& name) const { return path / name; }
};

/// A variable of the environment that has another value for as long as this object lives.
class Variable {
public:
    Variable(const char* name, const std::string& value);
    ~Variable();
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const char* name;
    const std::optional<std::string> before;
};

/// A JACK server without hardware, with two channels each way at 44100 Hz. It is the default
/// server of this process from then on.
class JackServer {
public:
    JackServer();
    ~JackServer();
    JackServer(const JackServer&) = delete;
    JackServer& operator=(const JackServer&) = delete;
    void kill();

private:
    std::unique_ptr<Child> server; ///< null once killed
};

/// PipeWire with its PulseAudio side in a runtime folder of its own, with the sinks "first", the
/// default, and "second" at 48000 Hz, and a source "tone".
class PulseServer {
public:
    PulseServer();
    ~PulseServer(); // in the reverse order of their start
    PulseServer(const PulseServer&) = delete;
    PulseServer& operator=(const PulseServer&) = delete;
    void kill() { sound->end(SIGKILL); }

private:
    void leaveCardsAlone() const;
    TempFolder runtime;
    std::list<Variable> variables; ///< that show the way to it
    std::unique_ptr<Child> bus, graph, policy, sound;
};
