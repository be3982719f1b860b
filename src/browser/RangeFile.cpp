#include "browser/RangeFile.h"

#include "audiofiles/CSample.h"
#include "base/CFileManager.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "engine/CQV.h"

#include <vector>

RangeFile::~RangeFile() {
    drop();
}

bool RangeFile::taken() const {
    for (const auto* sample : host->samples)
        if (sample->filename == path) return true;
    return false;
}

/// A file that a song has had stays, as Redo may want it.
void RangeFile::drop() {
    if (!path.empty() && !taken()) CFileManager().deleteFile(path);
    path = "";
}

void RangeFile::idle() {
    if (path.empty()) return;
    if (taken()) path = "";
    if (++ticks > patience) drop();
}

CStr RangeFile::write(const CSample& sample, int from, int to, const CStr& name) {
    constexpr int most = 4096;
    drop();
    bool inTemp = false;
    path = host->requireSampleFilename(changeFileExt(extractFileName(name), "") + ".wav", &inTemp);
    ticks = 0;
    if (path.empty()) return "";
    CSample file;
    file.streamed = 1;
    file.needsPeaks = false;
    file.setFormat(asRound(double(sample.rate)), sample.bits, sample.chs);
    file.create(path);
    file.writeHeader();
    std::vector<float> frames(size_t(most) * size_t(sample.chs)), left(most), right(most);
    for (int at = from; at < to && file.validHandle(); at += most) {
        const int count = asMin(most, to - at);
        sample.readFrames(at, count, frames.data());
        for (int i = 0; i < count; i++) {
            left[size_t(i)] = frames[size_t(i * sample.chs)];
            right[size_t(i)] = frames[size_t(i * sample.chs + sample.chs - 1)];
        }
        file.writeFrames(count, left.data(), right.data());
    }
    file.writeHeader();
    file.finalize();
    const bool whole = file.validHandle() && file.getFrames() == to - from;
    file.close();
    if (!whole) drop();
    return path;
}
