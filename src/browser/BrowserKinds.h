#pragma once

class CStr;

/// What a node of the browser stands for.
enum NodeKind : int {
    nodeFile = 0,
    nodeDisks = 1,
    nodeProjects = 2,
    nodeSamples = 3,
    nodeClips = 4,
    nodePlugins = 5,
    nodeComponents = 6,
    nodePresets = 7,
    nodeFolder = 8,
    nodePool = 9,
    nodePoolSample = 10,
    nodePluginFolder = 14,
    nodePluginFile = 15,
    nodeFavourites = 20,
    nodeRecent = 21,
    nodeComponent = 22,
    nodeAction = 23,
    nodeTags = 25,
    nodeTag = 26,
    nodeNote = 24, ///< a line that only tells something
};

/// A node at the top of the tree.
struct BrowserKind {
    NodeKind kind;
    int folders; ///< FolderMode of the folders below it; 0 for none
    const char* title;
    const char* filter; ///< of the files in those, as `readDir` takes it
};

constexpr const char* everyFile = ".*";

/// In the order of the tree.
constexpr BrowserKind browserKinds[] = {
    {nodeFavourites, 0, "Favourites", everyFile},
    {nodeRecent, 0, "Recent", everyFile},
    {nodeTags, 0, "Tags", everyFile},
    {nodeDisks, 0, "Disks", everyFile},
    {nodeProjects, 11, "Projects", ".QV"},
    {nodeSamples, 12, "Samples",
     ".WAV|.RX2|.AIF|.AIFF|.MP3|.SF2|.AIFC|.FLAC|.OGG|.OGA|.OPUS|.CAF|.AU|.W64"},
    {nodeClips, 21, "Loops & clips",
     ".QVC|.RX2|.WAV|.MP3|.MID|.AIF|.AIFF|.MIDI|.KAR|.AIFC|.FLAC|.OGG|.OGA|.OPUS"},
    {nodePlugins, 13, "Plugins", ".so|.clap"},
    {nodeComponents, 0, "Components", everyFile},
    {nodePresets, 20, "Presets", ".QVS|.QVE|.QVA|.QVD|.QVP|.FXB|.FXP|.SF2"},
    {nodePool, 0, "Audio pool", everyFile},
};

/// Null for a kind that is not at the top.
constexpr const BrowserKind* topKind(int kind) {
    for (const BrowserKind& k : browserKinds)
        if (k.kind == kind) return &k;
    return nullptr;
}

/// Whether a file can be listened to, by the ending of its name.
bool canPreview(const CStr& path);
