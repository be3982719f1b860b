#pragma once

#include "base/CThread.h"

#include <vector>

/// Endings of the files that `importAudio` is made for, as a filter of file dialogs.
constexpr const char* audioFileExt =
    ".wav|.aif|.aiff|.aifc|.flac|.ogg|.oga|.opus|.mp3|.rf64|.w64|.caf|.au|.snd";

enum class ImportResult {
    good,
    unreadable, ///< no audio file, or a damaged one
    tooLong,    ///< more than 2 GB, however narrow the frames
    noRoom,     ///< the new file can't be made, or the disk is full
    cancelled
};

/// Shared by the thread that imports and those that watch it.
struct ImportProgress {
    Shared<float> done{0.0f}; ///< 0 to 1
    Shared<bool> cancelled{false};
};

/// How long a file of any format plays, as far as its head tells; 0 for what is none.
struct AudioLength {
    double seconds = 0.0;
    int channels = 1;
};
AudioLength audioLength(const CStr& path);

/// An audio file, and what is to become of it.
struct ImportWish {
    CStr path;
    CStr folder;         ///< where new files come
    int rate = 0;        ///< that they shall have, 0 for that of the source
    bool copies = false; ///< what plays as it is is copied too, unless it lies in the folder
    bool splits = false; ///< more than two channels become a file each; else they are mixed to two
};

/// Leads to files that `CSample` plays: the one of the wish itself, or WAVs made from it, of the
/// same stem, with a number behind it for each channel of several files. Whole numbers of up to 24
/// bits stay what they are, unless the rate changes; other values become floats, or fewer bits
/// where the file would pass 2 GB. A rate more than 16 times as high or 64 times as low as the
/// wanted one stays. On failure `out` is empty and nothing is left behind. Not on the audio thread.
ImportResult importAudio(const ImportWish& wish, std::vector<CStr>& out, ImportProgress& progress);

/// `importAudio` on a thread of its own: `start` it, watch `progress`, and take the result once
/// `finished`. Deleting it cancels.
class CAudioImport : public CThread {
public:
    ImportProgress progress;

    explicit CAudioImport(ImportWish wanted) : wish(std::move(wanted)) {}
    ~CAudioImport() override;
    CAudioImport(const CAudioImport&) = delete;
    CAudioImport& operator=(const CAudioImport&) = delete;

    void execute() override;

    bool finished() const { return ready.loadAcquire(); }
    ImportResult result() const { return outcome; } ///< once finished
    /// The files to open; once finished.
    const std::vector<CStr>& files() const { return made; }

private:
    const ImportWish wish;
    std::vector<CStr> made;
    ImportResult outcome = ImportResult::cancelled;
    Shared<bool> ready{false};
};
