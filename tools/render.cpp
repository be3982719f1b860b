#include "base/CIniFile.h"
#include "base/Denormals.h"
#include "base/Messages.h"
#include "base/Paths.h"
#include "base/Process.h"
#include "data/demosong/DemoSong.h"
#include "data/demosong/WaltzSong.h"
#include "engine/CMixer.h"
#include "engine/CQV.h"
#include "engine/plan/GraphWorkers.h"
#include "plugins/remote/PluginProcesses.h"
#include "project/CompTable.h"
#include "project/ProjectFile.h"
#include "project/ProjectUi.h"
#include "project/SongSounds.h"
#include "sequencer/render/RenderExport.h"
#include "sequencer/song/CSeq.h"
#include "tools/RenderOptions.h"
#include "tools/SongExport.h"

#include <algorithm>
#include <cctype>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <system_error>
#include <unistd.h>

namespace {

/// The text of the last message box, which becomes the line on standard error.
CStr lastMessage;

int keepMessage(CWin*, const CStr&, const CStr& text, int flags) {
    lastMessage = text;
    return answerOfEscape(flags);
}

/// One line, whatever bytes a file put into the text.
int fail(const CStr& text) {
    std::string line = text.asChar();
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return std::iscntrl(c); }, '?');
    std::fprintf(stderr, "sondrava-render: %s\n", line.c_str());
    return 1;
}

CStr problem(MidiSongResult result) {
    switch (result) {
    case MidiSongResult::good:
        return "";
    case MidiSongResult::unreadable:
        return "cannot be opened";
    case MidiSongResult::truncated:
        return "the file is cut short";
    case MidiSongResult::silent:
        return "no track has notes";
    default:
        return lastMessage;
    }
}

volatile std::sig_atomic_t caughtSignal = 0;

/// Ends a render by a signal in order, so that no file is left half. The next signal is the
/// system's to serve.
struct SignalWatch : RenderUi {
    SignalWatch() {
        struct sigaction act {};
        act.sa_handler = [](int number) { caughtSignal = number; };
        act.sa_flags = int(SA_RESETHAND);
        for (const int number : {SIGINT, SIGTERM, SIGHUP}) sigaction(number, &act, nullptr);
    }
    bool onRender(float) override { return caughtSignal == 0; }
};

bool isRegularFile(const CStr& path) {
    std::error_code failed;
    return std::filesystem::is_regular_file(path.asChar(), failed);
}

double cpuSeconds() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

void printStats(const Figures& f) {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("{\"frames\": %lld, \"audio_seconds\": %.6f, \"cpu_seconds\": %.6f, "
                "\"realtime_factor\": %.2f, \"peak_left\": %.6f, \"peak_right\": %.6f, "
                "\"max_rss_kb\": %ld}\n",
                static_cast<long long>(f.frames), f.audioSeconds, f.cpuSeconds,
                f.cpuSeconds > 0.0 ? f.audioSeconds / f.cpuSeconds : 0.0, double(f.peakLeft),
                double(f.peakRight), usage.ru_maxrss);
}

CStr openMidi(CQV* host, const RenderOptions& options) {
    return problem(openMidiSong(addSequencer(host), options.input, options.factory));
}

/// A project that was read in spite of damage goes on after a line about that.
CStr openProjectFile(const Project& project, const CStr& path) {
    if (!isRegularFile(path)) return "cannot be opened";
    const LoadResult result = openProject(project, path, false);
    if (result == LoadResult::notProject) return "is no project";
    if (result == LoadResult::abandoned) return lastMessage;
    if (!lastMessage.empty()) fail(path + ": " + lastMessage);
    return "";
}

CStr openSong(const Project& project, const RenderOptions& options) {
    if (options.demo) {
        (options.waltz ? buildWaltzSong : buildDemoSong)(project.host);
        return "";
    }
    const bool midi = extractFileExt(options.input).lowerCase() != ".qv";
    const CStr wrong =
        midi ? openMidi(project.host, options) : openProjectFile(project, options.input);
    return wrong.empty() ? wrong : options.input + ": " + wrong;
}

CStr renderSong(CQV* host, const RenderOptions& options, Figures& figures) {
    auto* seq = static_cast<CSeq*>(host->firstOfType(compSeq));
    CComp* out = host->getAudioOut();
    if (!seq || !out || !out->output()) return options.input + ": has no song that sounds";
    SignalWatch watch;
    return exportByOptions(seq, options, &watch, figures, lastMessage);
}

CStr work(const Project& project, const RenderOptions& options, Figures& figures) {
    for (const CStr& path : {options.output, options.save})
        if (isProtected(path)) return path + ": is write-protected";
    CStr error = openSong(project, options);
    if (!error.empty()) return error;
    if (!options.save.empty() && !saveProject(project, options.save))
        return options.save + ": " + lastMessage;
    return options.output.empty() ? CStr() : renderSong(project.host, options, figures);
}

} // namespace

int main(int argc, char** argv) {
    RenderOptions options;
    CStr error;
    if (!parseOptions(argc, argv, options, error)) return fail(error);
    messageHooks().showMsg = keepMessage;
    raiseFileLimit();
    flushDenormals();
    enterCompTypes();

    const PlacePlugins isolated(std::make_shared<PluginProcesses>(pluginHelperProgram(), ""));
    auto host = std::make_unique<CQV>();
    qv = host.get();
    host->settingsEnabled = false;
    host->setFrames(options.block);
    host->setRate(options.rate);
    host->workers->setCount(options.workers < 0 ? GraphWorkers::usual() : options.workers);
    host->init();
    Figures figures;
    {
        CMixer mixer(host.get());
        mixer.init();
        ProjectUi noWindows;
        error = work({host.get(), &mixer, &noWindows}, options, figures);
    }
    figures.cpuSeconds = cpuSeconds();
    host.reset();
    if (!error.empty()) fail(error);
    if (caughtSignal != 0) std::raise(caughtSignal);
    if (!error.empty()) return 1;
    if (options.stats) printStats(figures);
    return 0;
}
