#include "project/CachedSamples.h"

#include "audiofiles/CSample.h"
#include "base/CStream.h"
#include "base/Messages.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"
#include "project/Percent.h"

#include <unistd.h>
#include <vector>

namespace {

/// What the status line tells while a file is under way.
struct Progress {
    int number, total;

    void show(int64_t done, int64_t bytes) const {
        setStatus(CStr("Saving ") + asStr(number) + "/" + asStr(total) + " cached files " +
                  percentText(done, bytes));
    }
};

bool copyInBlocks(const CStr& from, const CStr& to, const Progress& progress) {
    constexpr int blockBytes = 1 << 18;
    CFileStream in(from, 0), out(to, 1);
    if (!in.isOpen() || !out.isOpen()) return false;
    std::vector<char> block(blockBytes);
    while (in.left() > 0) {
        const int n = in.read(block.data(), blockBytes);
        if (n < 1 || out.write(block.data(), n) < n) return false;
        progress.show(in.getPos(), in.getSize());
    }
    return out.flush();
}

bool archive(CQV* host, CSample* sample, const CStr& folder, const Progress& progress) {
    const CStr old = sample->filename, name = extractFileName(old);
    const CStr file = getUniqueFilename(changeFileExt(name, ""), extractFileExt(name), folder);
    if (!copyInBlocks(old, file, progress)) {
        ::unlink(file.asChar());
        return false;
    }
    // Whoever plays the sample goes on with the old file, which stays open.
    sample->filename = file;
    sample->cached = false;
    if (!sample->keep && sample->ownsFile) host->sampleManager.moveToTrash(old);
    return true;
}

bool isDue(const CSample* sample) {
    return sample->cached && sample->streamed && !sample->takePending;
}

} // namespace

void archiveCachedSamples(CQV* host) {
    Progress progress{0, 0};
    for (const auto* sample : each<CSample>(host->samples))
        if (isDue(sample)) ++progress.total;
    if (progress.total == 0) return;
    const CStr folder = host->getAudioFolder(true, false, false);
    for (auto* sample : each<CSample>(host->samples)) {
        if (!isDue(sample)) continue;
        ++progress.number;
        if (folder.empty() || !createDir(folder) || !archive(host, sample, folder, progress))
            showMsg(nullptr, "Error", CStr("Could not copy file to ") + folder);
    }
}
