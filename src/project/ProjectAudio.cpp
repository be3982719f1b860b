#include "project/ProjectAudio.h"

#include "audiofiles/CSample.h"
#include "base/FolderTest.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "engine/CFreezeItem.h"
#include "engine/CQV.h"
#include "engine/ObjectKinds.h"
#include "project/Percent.h"
#include "sequencer/song/CSeq.h"

#include <algorithm>

namespace {

void addFrozen(CSongTrack* songTrack, std::vector<CSample*>& to) {
    for (const auto* item : songTrack->freezeItems)
        if (item->sample) to.push_back(item->sample);
}

void bring(CQV* host, const std::vector<CSample*>& samples, const CStr& folder, const char* what,
           const CStr& failure) {
    std::vector<const CSample*> left;
    int number = 0;
    for (CSample* sample : samples) {
        const CStr text =
            CStr("Saving ") + asStr(++number) + "/" + asStr(int(samples.size())) + what;
        const auto watch = [&text](int64_t done, int64_t bytes) {
            setStatus(text + percentText(done, bytes));
        };
        if (!host->bringInto(sample, folder, watch)) left.push_back(sample);
    }
    tellNotCopied(failure, left);
}

} // namespace

std::vector<CSample*> filedSamples(CQV* host) {
    std::vector<CSample*> found;
    for (auto* sample : host->samples)
        if (sample->streamed && !sample->takePending) found.push_back(sample);
    for (auto* c : host->comps)
        if (auto* seq = compAs<CSeq>(c))
            seq->eachSongTrack([&](CSongTrack* t) { addFrozen(t, found); });
    return found;
}

void takeAudioAlong(CQV* host, const CStr& folder) {
    std::vector<CSample*> samples = filedSamples(host);
    std::erase_if(samples, [](const CSample* s) { return !fileExists(s->filename); });
    bring(host, samples, folder, " audio files ", "Copy to Audio Folder");
}

void archiveCachedSamples(CQV* host) {
    std::vector<CSample*> samples = filedSamples(host);
    std::erase_if(samples, [](const CSample* s) { return !s->cached; });
    if (samples.empty()) return;
    const CStr folder = host->getAudioFolder(true, false, false);
    bring(host, samples, folder, " cached files ", CStr("Could not copy file to ") + folder);
}

std::vector<CStr> freshAudio(CQV* host) {
    const CStr own = host->getAudioFolder(false, false, false), temp = host->getTempAudioFolder();
    FolderTest inOwn(own), inTemp(temp);
    std::vector<CStr> paths;
    for (const CSample* sample : filedSamples(host))
        if (inOwn.holds(sample->filename) || inTemp.holds(sample->filename))
            paths.push_back(sample->filename);
    if (!paths.empty()) paths.insert(paths.end(), {own, temp});
    return paths;
}

void adoptTempAudio(CQV* host) {
    FolderTest inTemp(host->getTempAudioFolder());
    for (CSample* sample : filedSamples(host))
        if (sample->valid && inTemp.holds(sample->filename)) sample->cached = true;
}
