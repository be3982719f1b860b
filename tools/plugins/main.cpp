#include "base/Paths.h"
#include "plugins/PluginHooks.h"
#include "plugins/PluginLoad.h"
#include "tools/plugins/PluginServer.h"

#include <X11/Xlib.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

constexpr double usualRate = 44100.0;
constexpr int usualBlock = 1024;

/// Nobody plays what is only looked at.
class Onlooker final : public PluginHost {
public:
    explicit Onlooker(const CStr& file) : folder(extractFilePath(file)) {}

    double sampleRate() const override { return usualRate; }
    int blockFrames() const override { return usualBlock; }
    PluginLevel level() const override { return PluginLevel::interface; }
    PluginTime songTime() const override { return {}; }
    CStr libraryFolder() const override { return folder; }
    void parameterMoved(int, float) override {}
    void gestureBegins(int) override {}
    void gestureEnds(int) override {}
    void sendMidi(int, int) override {}
    void sizeEditor(CPoint) override {}
    void idleEditor() override {}
    void channelsChanged() override {}
    void displayChanged() override {}
    void parameterDrifted(int, float) override {}
    unsigned blockNumber() const override { return 0; }
    void betweenBlocks(const std::function<void()>& change) override { change(); }
    void pluginLost() override {}
    void pluginReturns() override {}
    void pluginReturned() override {}

private:
    const CStr folder;
};

void tell(int output, const CStr& line) {
    const ssize_t written = write(output, line.asChar(), size_t(line.length()));
    static_cast<void>(written); // nobody listens any more
}

int scan(const CStr& file, int output) {
    Onlooker host(file);
    CStr why;
    bool any = false;
    const bool good = lookInto(
        file, host,
        [&](const PluginFacts& facts) {
            any = true;
            tell(output, facts.line() + "\n");
        },
        why);
    if (!good)
        tell(output, why);
    else if (!any)
        tell(output, PluginFacts::none);
    return good ? 0 : 1;
}

/// Its windows may be taken away from a plug-in at any time.
int ignoreError(Display*, XErrorEvent*) {
    return 0;
}

/// Plug-ins put in handlers of their own, that end the process.
class KeepHandler final : public PluginHooks {
public:
    void called() override { XSetErrorHandler(ignoreError); }
};

[[noreturn]] void serve() {
    static KeepHandler hooks;
    setPluginHooks(&hooks);
    auto* server = new PluginServer(socketFile, roomFile); // until the end, which asks nobody
    server->run();
    _exit(0);
}

} // namespace

/// Has to do with plug-ins for a program that does not want to be hurt by them. `--scan FILE`
/// writes a line for each that the file or bundle holds and ends with 0, or writes why it is of no
/// use and ends with 1.
/// `--serve` runs them for the program that has started it, and is of no use to others.
int main(int argc, char** argv) {
    const bool serves = argc == 2 && std::strcmp(argv[1], "--serve") == 0;
    if (!serves && (argc != 3 || std::strcmp(argv[1], "--scan") != 0)) {
        std::fprintf(stderr, "usage: sondrava-plugins --scan FILE | --serve\n");
        return 2;
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int output = dup(STDOUT_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO); // plug-ins write whatever they like
    if (serves) serve();
    const int status = scan(argv[2], output);
    _exit(status); // their threads and destructors are not waited for
}
