#pragma once

#include "base/CThread.h"

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

/// Whether `CSample` plays the file as it is: WAV or AIFF of its formats, of one or two channels.
bool playsAsIs(const CStr& path);

/// Leads to a file that `CSample` plays: `path` itself, or else a WAV made from it in `folder`, of
/// the same stem. Whole numbers of up to 24 bits stay what they are, other values become floats,
/// or fewer bits where the file would pass 2 GB. More than two channels are mixed down to two. On
/// failure `out` is empty and nothing is left behind. Not on the audio thread.
ImportResult importAudio(const CStr& path, const CStr& folder, CStr& out, ImportProgress& progress);

/// `importAudio` on a thread of its own: `start` it, watch `progress`, and take the result once
/// `finished`. Deleting it cancels.
class CAudioImport : public CThread {
public:
    ImportProgress progress;

    CAudioImport(CStr file, CStr toFolder) : path(std::move(file)), folder(std::move(toFolder)) {}
    ~CAudioImport() override;
    CAudioImport(const CAudioImport&) = delete;
    CAudioImport& operator=(const CAudioImport&) = delete;

    void execute() override;

    bool finished() const { return ready.loadAcquire(); }
    ImportResult result() const { return outcome; } ///< once finished
    const CStr& target() const { return made; }     ///< the file to open; once finished

private:
    const CStr path, folder;
    CStr made;
    ImportResult outcome = ImportResult::cancelled;
    Shared<bool> ready{false};
};
