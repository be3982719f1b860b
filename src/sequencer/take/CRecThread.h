#pragma once

#include "base/CStr.h"
#include "base/CThread.h"

#include <memory>
#include <vector>

class CSample;
class CTrack;

/// What a take writes into, per track. The state passes from the thread to the interface.
struct RecFile {
    enum State : int {
        waiting, ///< no file yet
        made,    ///< the file is there, named and with its header
        failed,  ///< it could not be made
    };
    CTrack* track;
    CSample* sample; ///< not owned
    Shared<int> state{waiting};
};

/// Writes the audio of takes to disk: makes the files, and has them follow what the audio thread
/// records, header included, so that a file is whole but for its last moments whatever happens.
class CRecThread : public CThread {
public:
    static constexpr int priority = 19;
    static constexpr int pauseMs = 1;

    CRecThread() = default;
    ~CRecThread() override { finish(); }
    CRecThread(const CRecThread&) = delete;
    CRecThread& operator=(const CRecThread&) = delete;

    Shared<bool> active{false}; ///< a take runs
    bool cached = false;        ///< the folder is a temporary one
    CStr folder;                ///< where files are made; empty without one

    // Interface thread, between takes.
    /// Takes the folder if it exists; else there is none. False then.
    bool setFolder(const CStr& path, bool inTemp);
    /// Begins to write into prepared samples, of these tracks.
    void record(const std::vector<CTrack*>& tracks);
    /// Lets go of the files; what still waits in them is the caller's to write.
    void stopTake();
    /// Drops what `fileOf` gives. After `stopTake`.
    void forget() { files.clear(); }

    /// Of the running take, or of the one that was stopped until `forget`; null for other tracks.
    /// Interface thread.
    RecFile* fileOf(const CTrack* track);
    /// Whether a file of the running take could not be made: that track records no sound.
    bool lacksFile() const;
    /// Makes the file, unless that was done or has failed. The thread, or after `stopTake` the
    /// interface.
    void make(RecFile& file);

    void execute() override;

private:
    std::vector<std::unique_ptr<RecFile>> files; ///< stays as it is while `active`
    bool started = false;
};
