#pragma once

#include "audiofiles/AudioImport.h"
#include "base/CList.h"
#include "engine/AudioFolders.h"
#include "engine/CSampleManager.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

class CQV;
class CSample;

/// The audio of a project: one list of samples that events and drums point to, and what becomes of
/// their files. A file is only ever deleted right in the project's audio folder or in the temp
/// folder, and as long as no sample of the project stands on it.
///
/// Interface thread. The workers and the graph walk the list meanwhile: it grows with the graph
/// held, and a sample is deleted once every worker stands still and the graph has let go of it.
class SamplePool : public AudioFolders {
public:
    explicit SamplePool(CQV* root) : host(root) {}
    ~SamplePool() = default;
    SamplePool(const SamplePool&) = delete;
    SamplePool& operator=(const SamplePool&) = delete;

    ListOf<CSample> samples; ///< owned
    CSampleManager sampleManager{this};

    /// The entry of a file: with `streamed` the one that there is, paths compared without regard
    /// to case, else a new one. Null when the file can't be opened.
    CSample* addSample(const CStr& name, int streamed);

    /// Told the part that is done, 0 to 1; false cancels.
    using ImportWatch = std::function<bool(float done)>;
    /// Leads to files that samples play at the rate of the host, for any audio file: itself, or
    /// new ones made of it, one for each channel of more than two. A saved project has a copy of
    /// any file in its audio folder; as long as it is unsaved only what has to be converted is new,
    /// in the temp folder. A worker makes them while the program goes on. What was made of a file
    /// before, and still stands, comes again. `files` stays empty on failure, also if another
    /// project was opened meanwhile.
    ImportResult importFiles(const CStr& path, std::vector<CStr>& files,
                             const ImportWatch& watch = {});
    /// Takes such a file into the pool: new ones live on, like takes, once the project is saved.
    CSample* addImported(const CStr& file, const CStr& source);
    /// Deletes those of such files that were made and that no sample stands on.
    void dropImported(const std::vector<CStr>& files, const CStr& source);

    /// Streamed, and its file lies in the audio folder of a saved project.
    bool sampleArchived(const CSample* sample);
    /// Told the bytes that are done, and their number.
    using CopyWatch = std::function<void(int64_t done, int64_t bytes)>;
    /// Copies the file into `folder` under a free name, which the sample then bears. False, nothing
    /// stays behind, and it keeps the old one, if that fails.
    bool bringInto(CSample* sample, const CStr& folder, const CopyWatch& watch = {});
    /// The same with a message.
    bool copyToArchive(CSample* sample, const CStr& folder);
    /// Has all of the pool in the audio folder, which is made if there is none.
    void archiveAllSamles();
    /// Takes an archived sample out of the project and deletes its file. Events lose it, and the
    /// history what it knew of it. False, and nothing has changed, unless the file may be deleted
    /// and is nobody else's.
    bool deleteSampleFromDisk(CSample* sample);
    /// To be called when the project has been saved: the files of the pool belong to it now.
    void keepSamples();

    /// Whether a sample of the pool, or one that waits in the history, stands on a file, given as
    /// `canonicalPath` gives it.
    bool isUsed(const CStr& path);

protected:
    /// Frees all samples. Graph held, workers parked, nothing refers to them any more.
    void deleteSamples();

private:
    CQV* host;
    unsigned projects = 0;                             ///< counts those that were closed
    std::map<std::string, std::vector<CStr>> imported; ///< by source and its state

    void eachSample(const std::function<void(CSample*)>& visit);
    void keepFile(const CStr& name);
    void removeSample(CSample* sample);
    std::string importKey(const CStr& path, const CStr& folder) const;
};

/// Shows `text` and which samples could not be copied, in one message; nothing without any.
void tellNotCopied(CStr text, const std::vector<const CSample*>& samples);

/// Streamed samples of the pool whose file exists outside the audio folder that the project has, or
/// would get; 0 while it is unsaved.
int nomNotArchived(CQV* host);
