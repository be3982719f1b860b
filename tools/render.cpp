#include "audiofiles/CSample.h"
#include "base/CIniFile.h"
#include "base/Denormals.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "data/demosong/DemoSong.h"
#include "engine/CMixer.h"
#include "engine/CQV.h"
#include "project/CompTable.h"
#include "project/ProjectFile.h"
#include "project/ProjectUi.h"
#include "project/SongSounds.h"
#include "sequencer/CRender.h"
#include "sequencer/CSeq.h"
#include "sequencer/Points.h"
#include "sequencer/TempoMap.h"
#include "tools/RenderOptions.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <system_error>

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

/// Ends a render whose file takes no more.
class DiskWatch : public RenderProgress {
public:
    bool onRender(float) override { return !diskWriteFailed; }
};

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

bool isRegularFile(const CStr& path) {
    std::error_code failed;
    return std::filesystem::is_regular_file(path.asChar(), failed);
}

/// What a render is measured by.
struct Figures {
    int64_t frames = 0;
    double audioSeconds = 0.0, cpuSeconds = 0.0;
    float peakLeft = 0.0f, peakRight = 0.0f;
};

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

/// Ticks to render: the range that was asked for, and the tail at the tempo of its end.
double renderLength(CSeq* seq, const RenderOptions& options) {
    double length = options.length;
    if (length < 0.0) length = seq->renderDuration() - options.start;
    if (length < 0.0) length = 0.0;
    const int end = asInt(options.start + length);
    const CTempoPart* point = seq->getTempoAtPos(end);
    const float tempo = point ? point->getTempo() : float(seq->host->tempo);
    return length + options.tail * double(tempo) * ticksPerSecondPerBpm;
}

/// Renders to the output file, which is removed again when not all of it could be written.
CStr renderFile(CQV* host, CSeq* seq, const RenderOptions& options, Figures& figures) {
    const double length = renderLength(seq, options);
    if (asInt(length) < 1) return options.output + ": Nothing to render";
    COutputChannel* out = host->getAudioOut()->output();
    CSample file;
    file.streamed = 1;
    file.setFormat(options.rate, options.bits, 2);
    file.create(options.output);
    if (!file.validHandle()) return CStr("Could not create file ") + options.output;
    file.writeHeader();
    file.needsPeaks = false;
    file.keep = false;

    CRender render(host, seq);
    render.rate = options.rate;
    render.setTarget(out, &file);
    CList outputs;
    outputs.add(out);
    diskWriteFailed = false;
    DiskWatch watch;
    render.process(options.start, length, &outputs, true, &watch);
    if (diskWriteFailed) return CStr("Could not write file ") + options.output;
    file.keep = true;
    figures.frames = render.framesWritten;
    figures.audioSeconds = double(render.framesWritten) / options.rate;
    figures.peakLeft = out->holdL;
    figures.peakRight = out->holdR;
    return "";
}

CStr openMidi(CQV* host, const CStr& path) {
    return problem(openMidiSong(addSequencer(host), path));
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
        buildDemoSong(project.host);
        return "";
    }
    const bool midi = extractFileExt(options.input).lowerCase() != ".qv";
    const CStr wrong =
        midi ? openMidi(project.host, options.input) : openProjectFile(project, options.input);
    return wrong.empty() ? wrong : options.input + ": " + wrong;
}

CStr renderSong(CQV* host, const RenderOptions& options, Figures& figures) {
    auto* seq = static_cast<CSeq*>(host->firstOfType(compSeq));
    CComp* out = host->getAudioOut();
    if (!seq || !out || !out->output()) return options.input + ": has no song that sounds";
    return renderFile(host, seq, options, figures);
}

CStr work(const Project& project, const RenderOptions& options, Figures& figures) {
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
    flushDenormals();
    enterCompTypes();

    auto host = std::make_unique<CQV>();
    qv = host.get();
    host->settingsEnabled = false;
    host->setFrames(options.block);
    host->setRate(options.rate);
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
    if (!error.empty()) return fail(error);
    if (options.stats) printStats(figures);
    return 0;
}
