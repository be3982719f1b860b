#include "audiofiles/CSample.h"
#include "base/Numbers.h"
#include "engine/CMixer.h"
#include "engine/CQV.h"
#include "project/CompTable.h"
#include "project/ProjectFile.h"
#include "project/ProjectUi.h"
#include "sequencer/song/CSeq.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <sys/wait.h>
#include <unistd.h>

// Kills a process again and again at random moments while it saves a project of 200 tracks, 5,000
// parts, 500,000 events and 10 samples, and opens what is on the disk: the same project, whole.

namespace fs = std::filesystem;

namespace {

constexpr int tracks = 200, partsOfTrack = 25, eventsOfPart = 100, samples = 10;
constexpr int partTicks = 3840, eventTicks = 30, sampleFrames = 44100;

struct Session {
    Session() {
        mixer.init();
        host->id = "0";
    }
    const bool entered = (enterCompTypes(), true);
    const std::unique_ptr<CQV> host = [] {
        auto made = std::make_unique<CQV>();
        qv = made.get();
        made->settingsEnabled = false;
        made->init();
        return made;
    }();
    CMixer mixer{host.get()};
    ProjectUi ui;
    const Project project{host.get(), &mixer, &ui};
};

void addEvents(CPart* part) {
    for (int i = eventsOfPart; i > 0; --i) { // from the end, so that each goes to the front
        CMIDIEvent* event = createMIDIEvent();
        event->data = i << 16 | 0x3C90;
        part->addEvent(i * eventTicks, event);
    }
}

void build(CQV* host) {
    auto* seq = new CSeq(host);
    seq->init();
    host->comps.add(seq);
    for (int i = 0; i < tracks; ++i) {
        CSongTrack* track = seq->addTrack(trackMIDI, seq->getProg(), nullptr);
        for (int n = 0; n < partsOfTrack; ++n) {
            auto* part = new CMIDIPart;
            part->pos = n * partTicks;
            addEvents(part);
            track->linkPart(part);
        }
    }
    seq->orderParts(nullptr, nullptr, true);
    for (int i = 0; i < samples; ++i) {
        auto* sample = new CSample;
        sample->takeData(static_cast<unsigned char*>(std::calloc(sampleFrames, 4)), sampleFrames);
        host->samples.add(sample);
    }
}

/// Whether a project has all that `build` makes.
bool isWhole(CQV* host) {
    auto* seq = static_cast<CSeq*>(host->firstOfType(compSeq));
    if (!seq || seq->tracks.getCount() != tracks || host->samples.getCount() != samples)
        return false;
    int parts = 0, events = 0;
    for (auto* track : seq->getProg()->tracks)
        for (auto* part : track->parts) {
            ++parts;
            for (const CBaseEvent* e = part->getEvents(); e; e = e->next) ++events;
        }
    return parts == tracks * partsOfTrack && events == parts * eventsOfPart;
}

[[noreturn]] void saveForEver(const Project& project, const CStr& path, int from) {
    for (int round = from;; ++round) {
        project.host->id = asStr(round);
        if (!saveProject(project, path)) _exit(1);
    }
}

/// Removes what a killed process had not finished; false if there is nothing.
bool sweep(const fs::path& folder) {
    bool found = false;
    for (const auto& entry : fs::directory_iterator(folder))
        if (entry.path().filename().string().starts_with("temp_file_name"))
            found = fs::remove(entry.path()) || found;
    return found;
}

struct Result {
    int killed = 0, halfWritten = 0, saves = 0;
    bool whole = true;
};

Result killAll(Session& session, const CStr& path, int kills) {
    Result result;
    const int began = asTimeInMS();
    if (!saveProject(session.project, path)) return {0, 0, 0, false};
    const int saveMs = asTimeInMS() - began;
    std::printf("a save takes %d ms\n", saveMs);
    std::fflush(stdout);
    std::mt19937 chance(4711);
    std::uniform_int_distribution<int> delay(0, 3000 * saveMs);
    int latest = 0;
    while (result.killed < kills && result.whole) {
        const pid_t pid = fork();
        if (pid == 0) saveForEver(session.project, path, latest + 1);
        usleep(useconds_t(delay(chance)));
        kill(pid, SIGKILL);
        int status = 0;
        waitpid(pid, &status, 0);
        result.whole = WIFSIGNALED(status);
        ++result.killed;
        if (sweep(fs::path(path.asChar()).parent_path())) ++result.halfWritten;
        result.whole = result.whole &&
                       openProject(session.project, path, false) == LoadResult::good &&
                       isWhole(session.host.get());
        const int reached = std::atoi(session.host->id.asChar());
        result.whole = result.whole && reached >= latest; // never back to an older one
        result.saves += reached - latest;
        latest = reached;
    }
    return result;
}

} // namespace

int main(int argc, char** argv) {
    const int kills = argc > 1 ? std::atoi(argv[1]) : 200;
    char folder[] = "/tmp/sondrava-save-XXXXXX";
    if (!mkdtemp(folder)) return 1;
    Result result;
    {
        Session session;
        build(session.host.get());
        result = killAll(session, CStr(folder) + "/song.qv", kills);
    }
    fs::remove_all(folder);
    std::printf("%d kills, %d with a file half written, %d saves done: %s\n", result.killed,
                result.halfWritten, result.saves,
                result.whole ? "a whole project every time" : "the project was damaged");
    return result.whole && result.killed == kills ? 0 : 1;
}
