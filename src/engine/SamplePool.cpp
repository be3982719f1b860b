#include "engine/SamplePool.h"

#include "audiofiles/CSample.h"
#include "base/CStream.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "engine/ForgetHooks.h"

#include <algorithm>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char* archiveText = "Copy to Audio Folder";

CStr stemOf(const CStr& path) {
    return changeFileExt(extractFileName(path), "");
}

bool copyInBlocks(const CStr& from, const CStr& to, const SamplePool::CopyWatch& watch) {
    constexpr int blockBytes = 1 << 18;
    CFileStream in(from, 0), out(to, 1);
    if (!in.isOpen() || !out.isOpen()) return false;
    std::vector<char> block(blockBytes);
    while (in.left() > 0) {
        const int n = in.read(block.data(), blockBytes);
        if (n < 1 || out.write(block.data(), n) < n) return false;
        if (watch) watch(in.getPos(), in.getSize());
    }
    return out.flush();
}

/// A thread that works out of turn may still be drawing its image.
void freeSample(CSample* sample) {
    while (sample->peakBusy) asSleep(1);
    delete sample;
}

} // namespace

/// Samples of the pool, and those that steps hold outside of it.
void SamplePool::eachSample(const std::function<void(CSample*)>& visit) {
    for (auto* sample : samples) visit(sample);
    host->eachHeld([&visit](CObject* object) {
        if (auto* sample = dynamic_cast<CSample*>(object)) visit(sample);
    });
}

bool SamplePool::isUsed(const CStr& path) {
    bool used = false;
    eachSample([&](const CSample* sample) {
        used = used || (!sample->filename.empty() && canonicalPath(sample->filename) == path);
    });
    return used;
}

/// Whoever asks for a file by its name may rely on it, though a take brought it about.
void SamplePool::keepFile(const CStr& name) {
    const CStr path = canonicalPath(name);
    if (path.empty()) return;
    eachSample([&path](CSample* sample) {
        if (!sample->keep && canonicalPath(sample->filename) == path) sample->keep = true;
    });
}

CSample* SamplePool::addSample(const CStr& name, int streamed) {
    sampleManager.restore(name);
    if (streamed)
        for (auto* sample : samples)
            if (sameText(sample->filename, name)) return sample;
    auto sample = std::make_unique<CSample>();
    sample->streamed = streamed ? 1 : 0;
    if (!sample->open(name)) return nullptr;
    keepFile(name);
    CSample* added = sample.release();
    {
        const GraphHold hold(host);
        samples.add(added);
    }
    host->updatePeaks();
    return added;
}

/// Empty for a file that can't be told from another one.
std::string SamplePool::importKey(const CStr& path, const CStr& folder) const {
    struct stat about {};
    if (::stat(path.asChar(), &about) != 0) return "";
    std::string key = canonicalPath(path).asChar();
    for (const int64_t part : {int64_t(about.st_size), int64_t(about.st_mtim.tv_sec),
                               int64_t(about.st_mtim.tv_nsec), int64_t(asRound(host->rate))})
        key += "|" + std::to_string(part);
    return key + "|" + folder.asChar();
}

ImportResult SamplePool::importFiles(const CStr& path, std::vector<CStr>& files,
                                     const ImportWatch& watch) {
    files.clear();
    const CStr folder = newSampleFolder(nullptr);
    if (folder.empty()) return ImportResult::noRoom;
    const std::string key = importKey(path, folder);
    if (const auto found = imported.find(key); found != imported.end())
        if (std::ranges::all_of(found->second, [](const CStr& file) { return fileExists(file); })) {
            files = found->second;
            return ImportResult::good;
        }
    const unsigned project = projects;
    CAudioImport import({.path = path,
                         .folder = folder,
                         .rate = asRound(host->rate),
                         .copies = fileExists(projectFile),
                         .splits = true});
    import.start();
    while (!import.finished() && !import.terminated) {
        pumpIdle();
        if (watch && !watch(import.progress.done)) import.progress.cancelled = true;
    }
    import.waitFor();
    if (import.result() != ImportResult::good) return import.result();
    if (project != projects) {
        dropImported(import.files(), path);
        return ImportResult::cancelled;
    }
    files = import.files();
    if (!key.empty()) imported[key] = files;
    return ImportResult::good;
}

CSample* SamplePool::addImported(const CStr& file, const CStr& source) {
    const int before = samples.getCount();
    CSample* sample = addSample(file, 1);
    if (!sample || samples.getCount() == before || file == source) return sample;
    sample->keep = false;
    sample->cached = samePlace(extractFilePath(file), addSep(getTempAudioFolder()));
    return sample;
}

void SamplePool::dropImported(const std::vector<CStr>& files, const CStr& source) {
    for (const CStr& file : files)
        if (!(file == source) && !isUsed(canonicalPath(file))) ::unlink(file.asChar());
}

bool SamplePool::sampleArchived(const CSample* sample) {
    return sample->streamed && fileExists(sample->filename) && fileExists(projectFile) &&
           inAudioFolder(sample->filename);
}

bool SamplePool::bringInto(CSample* sample, const CStr& folder, const CopyWatch& watch) {
    if (!folderExists(folder)) return false;
    const CStr old = sample->filename;
    const CStr name = makeUniqueFile(stemOf(old), extractFileExt(old), folder);
    if (name.empty()) return false;
    if (!copyInBlocks(old, name, watch)) {
        ::unlink(name.asChar());
        return false;
    }
    // Whoever plays the sample goes on with the old file, which stays open.
    sample->filename = name;
    sample->cached = false;
    if (!sample->keep && sample->ownsFile) sampleManager.moveToTrash(old);
    return true;
}

bool SamplePool::copyToArchive(CSample* sample, const CStr& folder) {
    if (!folderExists(folder)) return false;
    const bool copied = bringInto(sample, folder);
    if (!copied) tellNotCopied(archiveText, {sample});
    return copied;
}

void SamplePool::archiveAllSamles() {
    const CStr folder = getAudioFolder(true, false, false);
    if (!folderExists(folder)) return;
    bool changed = false;
    std::vector<const CSample*> left;
    for (auto* sample : samples) {
        // What is not streamed is stored in the project's file; a take is still growing.
        if (!sample->streamed || sample->takePending || sampleArchived(sample)) continue;
        if (bringInto(sample, folder))
            changed = true;
        else
            left.push_back(sample);
    }
    if (changed) host->hostNotices.raise(HostNotice::pool);
    tellNotCopied(archiveText, left);
}

void tellNotCopied(CStr text, const std::vector<const CSample*>& samples) {
    constexpr size_t mostNames = 8;
    if (samples.empty()) return;
    text += "\nNot copied, and still used where they are:";
    for (size_t i = 0; i < samples.size() && i < mostNames; ++i)
        text += "\n" + samples[i]->filename;
    if (samples.size() > mostNames)
        text += "\nand " + asStr(int(samples.size() - mostNames)) + " more";
    showMsg(nullptr, "Error", text);
}

bool SamplePool::deleteSampleFromDisk(CSample* sample) {
    if (!samples.contains(sample) || !sampleArchived(sample)) return false;
    const CStr path = deletablePath(sample->filename);
    if (path.empty()) return false;
    int users = 0;
    eachSample([&](const CSample* other) {
        if (canonicalPath(other->filename) == path) ++users;
    });
    if (users > 1) return false;
    sampleManager.restore(path);
    sample->keep = true; // the file goes by the checked way alone
    removeSample(sample);
    deleteSampleFile(path);
    return true;
}

void SamplePool::removeSample(CSample* sample) {
    host->settle();
    host->parkWorkers();
    {
        const GraphHold hold(host);
        samples.remove(sample);
        forgetObject(host, sample);
    }
    host->forgetInSteps(sample);
    freeSample(sample);
    host->unparkWorkers();
    host->hostNotices.raise(HostNotice::pool);
}

void SamplePool::keepSamples() {
    for (auto* sample : samples) sample->keep = true;
}

void SamplePool::deleteSamples() {
    ++projects;
    imported.clear();
    sampleManager.emptyTrash();
    sampleManager.clear(); // what the project itself still uses stays
    while (auto* sample = samples.first()) {
        samples.del(0);
        freeSample(sample);
    }
}

int nomNotArchived(CQV* host) {
    if (host->projectFile.empty()) return 0;
    const CStr folder = addSep(host->expectedAudioFolder());
    int count = 0;
    for (const auto* sample : host->samples)
        if (sample->streamed && fileExists(sample->filename) &&
            !samePlace(extractFilePath(sample->filename), folder))
            ++count;
    return count;
}
