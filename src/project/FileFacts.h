#pragma once

#include "base/CThread.h"
#include "project/BringIn.h"

#include <vector>

/// What can be told of a file before it is brought into a song.
struct FileFacts {
    SongFile kind = SongFile::none;
    bool known = false;   ///< the rest is told; it is read a little later
    double seconds = 0.0; ///< of audio, and of a clip that follows no tempo
    int channels = 1;     ///< of audio
    int ticks = 0;        ///< of a MIDI file or another clip, 0 for what can't be read
};

/// What the name tells, and, unless `byName`, what the file does. Any thread but the audio thread.
FileFacts factsOf(const CStr& path, bool byName);

/// Reads the facts of files, one by one, on a thread of its own. Interface thread.
class FactReader : public CThread {
public:
    const std::vector<CStr> paths;

    explicit FactReader(std::vector<CStr> files); ///< begins to read
    ~FactReader() override;
    FactReader(const FactReader&) = delete;
    FactReader& operator=(const FactReader&) = delete;

    int count() const { return done.loadAcquire(); } ///< of those that are known
    FileFacts facts(int index) const; ///< by the name alone as long as it is not known
    void execute() override;

private:
    std::vector<FileFacts> byName, read; ///< of `read` only `done` are the interface's
    Shared<int> done{0};
};
