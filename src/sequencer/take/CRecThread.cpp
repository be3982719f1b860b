#include "sequencer/take/CRecThread.h"

#include "audiofiles/CSample.h"
#include "base/Paths.h"
#include "sequencer/song/CTrack.h"

#include <algorithm>

bool CRecThread::setFolder(const CStr& path, bool inTemp) {
    const bool usable = folderExists(path);
    folder = usable ? path : CStr();
    cached = inTemp;
    return usable;
}

void CRecThread::record(const std::vector<CTrack*>& tracks) {
    files.clear();
    for (CTrack* track : tracks)
        files.push_back(std::make_unique<RecFile>(RecFile{track, track->recSample.load()}));
    diskWriteFailed = false;
    active.storeRelease(true);
    if (!started) {
        start();
        setPriority(priority);
        started = true;
    }
    resume();
}

void CRecThread::stopTake() {
    active = false;
    park();
    unpark();
}

RecFile* CRecThread::fileOf(const CTrack* track) {
    for (const auto& file : files)
        if (file->track == track) return file.get();
    return nullptr;
}

bool CRecThread::lacksFile() const {
    return std::ranges::any_of(
        files, [](const auto& file) { return file->state.loadAcquire() == RecFile::failed; });
}

void CRecThread::make(RecFile& file) {
    if (file.state != RecFile::waiting) return;
    CSample* sample = file.sample;
    const CStr name = folder.empty() ? CStr() : makeUniqueFile("rec", ".wav", folder);
    if (!name.empty()) {
        sample->cached = cached;
        sample->create(name);
    }
    if (sample->validHandle()) {
        sample->writeHeader();
        file.state.storeRelease(RecFile::made);
    } else {
        sample->ownsFile = false;
        file.track->armed = 0;
        file.state.storeRelease(RecFile::failed);
    }
}

void CRecThread::execute() {
    while (!terminated) {
        checkPark();
        if (!active.loadAcquire()) {
            suspend();
            continue;
        }
        for (const auto& file : files) {
            make(*file);
            if (file->state == RecFile::made) file->sample->flushBuffers(false);
        }
        suspend(pauseMs);
    }
}
