#pragma once

#include "driver/Module.h"
#include "driver/Servers.h"

#include <csignal>
#include <string>
#include <sys/types.h>
#include <vector>

std::string contentOf(const std::string& path);
void writeFile(const std::string& path, const std::string& content);

/// A program that runs beside the test; killed with this object if it still does.
class Program {
public:
    explicit Program(const std::vector<std::string>& command);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Waits up to a minute for its end: the exit status, 128 and the signal that ended it, or -1
    /// when it runs on.
    int wait();
    void signal(int number) const { kill(pid, number); }
    pid_t id() const { return pid; }
    bool running() { return pid > 0 && !ended(); }
    std::string out() const { return contentOf(outFile); }
    std::string err() const { return contentOf(errFile); }

private:
    bool ended();
    const TempFolder folder;
    const std::string outFile = folder.file("out"), errFile = folder.file("err");
    pid_t pid = -1;
    int status = -1;
};

/// The frames of a WAV file, and what its header says.
struct Wav {
    explicit Wav(const std::string& path); ///< fails the test if it is no such file
    int format = 0, channels = 0, rate = 0, bits = 0;
    int64_t frames = 0;       ///< by the length in the header
    std::vector<double> left; ///< of full scale 1
    double peak = 0.0;        ///< of all channels

private:
    void read(const std::string& path);
};
