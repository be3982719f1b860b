#pragma once

#include "browser/FileIndex.h"
#include "gui/controls/CTree.h"

class Workspace;

/// Looks for a text in the names of files, plug-ins, samples of the project and actions, and shows
/// what has it in a tree. Interface thread.
class BrowserSearch {
public:
    static constexpr int mostHits = 10000; ///< files

    explicit BrowserSearch(Workspace& space) : workspace(space) {}

    void readFolders(); ///< the user's folders are others, or may be
    /// Takes up what the disk has told; true when there may be other hits. Interface tick.
    bool idle() { return index.take(); }
    bool busy() { return index.busy(); }
    /// Empties the tree and shows in it what has all the words of a text.
    void show(CTree& tree, const CStr& text) const;

private:
    using Words = std::vector<std::string>;

    void addFiles(CTree& tree, const Words& words) const;
    static void addTagged(CTree& tree, const Words& words);
    void addPlugins(CTree& tree, const Words& words) const;
    void addSamples(CTree& tree, const Words& words) const;
    void addActions(CTree& tree, const Words& words) const;

    Workspace& workspace;
    FileIndex index;
};
