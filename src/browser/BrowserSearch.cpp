#include "browser/BrowserSearch.h"

#include "audiofiles/CSample.h"
#include "base/CStringList.h"
#include "base/Paths.h"
#include "browser/BrowserKinds.h"
#include "browser/ListedFiles.h"
#include "engine/CQV.h"
#include "ui/Commands.h"
#include "ui/IniFolders.h"
#include "ui/PluginShelf.h"
#include "ui/Shortcuts.h"
#include "ui/Workspace.h"

#include <algorithm>
#include <map>
#include <sstream>

namespace {

std::vector<std::string> wordsOf(const CStr& text) {
    std::istringstream in(text.lowerCase().asChar());
    std::vector<std::string> words;
    for (std::string word; in >> word;) words.push_back(word);
    return words;
}

bool holds(const CStr& name, const std::vector<std::string>& words) {
    const std::string lower = name.lowerCase().asChar();
    return std::ranges::all_of(words,
                               [&](const auto& w) { return lower.find(w) != std::string::npos; });
}

/// The node for hits of a kind, made with the first of them.
class Group {
public:
    Group(CTree& shown, const CStr& name) : tree(shown), title(name) {}

    CTreeNode* add(const CStr& text, int kind, const CStr& path) {
        if (!node) {
            node = tree.root.add(title);
            node->kind = nodeNote;
            node->expanded = true;
        }
        CTreeNode* hit = node->add(text);
        hit->kind = kind;
        hit->path = path;
        return hit;
    }

private:
    CTree& tree;
    const CStr title;
    CTreeNode* node = nullptr;
};

/// The kinds of files, in the order in which they are shown.
constexpr NodeKind searched[] = {nodeClips, nodeSamples, nodePresets, nodeProjects};

} // namespace

void BrowserSearch::readFolders() {
    std::vector<FileIndex::Root> roots;
    for (const NodeKind kind : searched) {
        CStringList paths;
        readIniFolders(workspace.host(), modeToSection(topKind(kind)->folders), &paths);
        for (int i = 0; i < paths.count(); i++) {
            std::string path = paths.get(i).asChar();
            while (path.size() > 1 && path.back() == folderSeparator) path.pop_back();
            roots.push_back({kind, path, topKind(kind)->filter});
        }
    }
    index.setRoots(roots);
}

void BrowserSearch::show(CTree& tree, const CStr& text) const {
    const Words words = wordsOf(text);
    tree.root.clear();
    addPlugins(tree, words);
    addTagged(tree, words);
    addFiles(tree, words);
    addSamples(tree, words);
    addActions(tree, words);
    if (tree.root.children.empty()) tree.root.add("<no items found>")->kind = nodeNote;
    tree.update();
}

void BrowserSearch::addFiles(CTree& tree, const Words& words) const {
    std::map<int, std::vector<const FileIndex::Hit*>> byKind;
    const std::vector<FileIndex::Hit> hits = index.find(words, mostHits);
    for (const FileIndex::Hit& hit : hits) byKind[hit.kind].push_back(&hit);
    for (const NodeKind kind : searched) {
        Group group(tree, topKind(kind)->title);
        for (const FileIndex::Hit* hit : byKind[kind]) {
            const CStr folder = hit->folder.c_str(), name = hit->name.c_str();
            group.add(name + " (" + folder + ")", nodeFile, addSep(folder) + name);
        }
    }
}

/// Files that have one of the words as a tag, and the others there too or in their names.
void BrowserSearch::addTagged(CTree& tree, const Words& words) {
    Group group(tree, topKind(nodeTags)->title);
    for (const auto& [path, tags] : readTags()) {
        const CStr name = extractFileName(path.c_str());
        const bool any = std::ranges::any_of(
            words, [&t = tags](const auto& w) { return t.find(w) != std::string::npos; });
        if (any && holds(name + " " + tags.c_str(), words))
            group.add(name + " (" + tags.c_str() + ")", nodeFile, path.c_str());
    }
}

void BrowserSearch::addPlugins(CTree& tree, const Words& words) const {
    Group group(tree, topKind(nodePlugins)->title);
    for (const PluginList::Entry* entry : workspace.pluginShelf().list.usable()) {
        const CStr format = formatName(entry->format());
        if (holds(entry->facts.name + " " + entry->facts.vendor + " " + format, words))
            group.add(entry->facts.name + " (" + entry->facts.vendor + ", " + format + ")",
                      nodePluginFile, entry->path);
    }
}

void BrowserSearch::addSamples(CTree& tree, const Words& words) const {
    Group group(tree, topKind(nodePool)->title);
    for (const auto* sample : workspace.host()->samples) {
        const CStr name = extractFileName(sample->filename);
        if (holds(name, words)) group.add(name, nodePoolSample, sample->filename);
    }
}

void BrowserSearch::addActions(CTree& tree, const Words& words) const {
    Group group(tree, "Actions");
    for (auto* action : workspace.commands().actions) {
        if (!action->bound() || !holds(action->label, words)) continue;
        const CStr key = shortcutToStr(action->key, action->mods);
        group.add(action->label + (key.empty() ? CStr() : " (" + key + ")"), nodeAction, "")->data =
            action;
    }
}
