#include "base/Paths.h"
#include "plugins/scan/PluginFacts.h"
#include "plugins/vst2/Vst2Plugin.h"

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

private:
    const CStr folder;
};

PluginFacts factsOf(Plugin& plugin, const CStr& file) {
    PluginFacts facts;
    facts.name = plugin.product();
    if (facts.name.empty()) facts.name = changeFileExt(extractFileName(file), "");
    facts.vendor = plugin.vendor();
    facts.instrument = plugin.isInstrument();
    facts.editor = plugin.hasEditor();
    facts.inputs = plugin.inputs();
    facts.outputs = plugin.outputs();
    facts.params = plugin.numParams();
    facts.programs = plugin.numPrograms();
    return facts;
}

void tell(int output, const CStr& line) {
    const ssize_t written = write(output, line.asChar(), size_t(line.length()));
    static_cast<void>(written); // nobody listens any more
}

int scan(const CStr& file, int output) {
    Onlooker host(file);
    CStr why;
    const auto plugin = Vst2Plugin::load(file, host, why);
    if (plugin)
        tell(output, factsOf(*plugin, file).line());
    else
        tell(output, why);
    return plugin ? 0 : 1;
}

} // namespace

/// Looks at a plug-in for a program that does not want to be hurt by it: `--scan FILE` writes what
/// it is as one line and ends with 0, or writes why it is of no use and ends with 1.
int main(int argc, char** argv) {
    if (argc != 3 || std::strcmp(argv[1], "--scan") != 0) {
        std::fprintf(stderr, "usage: sondrava-plugins --scan FILE\n");
        return 2;
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int output = dup(STDOUT_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO); // plug-ins write whatever they like
    const int status = scan(argv[2], output);
    _exit(status); // their threads and destructors are not waited for
}
