#pragma once

#include "base/CThread.h"
#include "browser/FolderWatch.h"

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// The names of all files in some folders and those below, gathered by a thread of its own and kept
/// up to date with the disk. Interface thread, but for the thread itself.
class FileIndex : private CThread {
public:
    static constexpr int deepest = 32; ///< levels of folders
    static constexpr int mostFiles = 500000;

    struct Root {
        int kind = 0; ///< free for the owner; told with each file
        std::string path;
        const char* filter = ""; ///< of `readDir`; stays
        bool operator==(const Root&) const = default;
    };
    struct Folder {
        std::vector<std::string> names, lower; ///< of its files; the second in small letters
    };
    struct Hit {
        int kind;
        std::string folder, name;
    };

    FileIndex() = default;
    ~FileIndex() override;
    FileIndex(const FileIndex&) = delete;
    FileIndex& operator=(const FileIndex&) = delete;

    /// Gathers these from now on; folders that were among them keep what is known.
    void setRoots(const std::vector<Root>& wanted);
    /// Takes over what was gathered, and has what changed on the disk looked at again. True when
    /// there are other files than before. Interface tick.
    bool take();
    bool busy();
    int count() const { return files; }
    /// The files whose names hold all the words, in small letters; up to `most`. Those that begin
    /// with the first word come first, then it goes by name.
    std::vector<Hit> find(const std::vector<std::string>& words, int most) const;

private:
    using Place = std::pair<int, std::string>; ///< kind and path
    struct Job {
        Root root;
        int depth = 0;
        bool all = true; ///< those inside too, else only those that are new
    };
    struct Listing {
        Place place;
        bool gone = false;
        Folder folder;
        std::vector<std::string> folders; ///< names of those inside
    };

    void execute() override;
    bool next(Job& job);
    void look(const Job& job);
    bool seenElsewhere(const Job& job);
    void noteSeen(const Listing& listing);
    void enter(const Listing& listing);
    void drop(std::map<Place, Folder>::iterator at);

    std::vector<Root> roots;
    std::map<Place, Folder> folders; ///< interface
    std::map<Place, int> levels;     ///< depth of each, for a second look
    Shared<int> files{0};
    bool started = false;
    FolderWatch watch;

    std::mutex mutex; ///< of all below
    std::deque<Job> jobs;
    std::vector<Listing> ready;
    bool working = false;

    std::map<std::pair<int, std::pair<unsigned long, unsigned long>>, std::string>
        nodes;              ///< worker: kind, device and number of each folder that it has been in
    std::set<Place> seen;   ///< worker
    Shared<int> waiting{0}; ///< files in `ready`
};
