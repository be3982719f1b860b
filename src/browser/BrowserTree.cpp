#include "browser/BrowserTree.h"

#include "audiofiles/CSample.h"
#include "base/CStringList.h"
#include "base/Paths.h"
#include "browser/BrowserDeeds.h"
#include "browser/ListedFiles.h"
#include "engine/CQV.h"
#include "gui/CApp.h"
#include "gui/CWin.h"
#include "plugins/PluginFile.h"
#include "plugins/PluginPlaces.h"
#include "project/BringIn.h"
#include "ui/IniFolders.h"

#include <functional>
#include <sstream>
#include <vector>

namespace {

const char* filterOf(const CTreeNode* node) {
    return node->data ? static_cast<const char*>(node->data) : everyFile;
}

CStr lastPart(const CStr& folder) {
    CStr path = folder;
    while (path.length() > 1 && path[path.length() - 1] == folderSeparator)
        path = path.sub(0, path.length() - 1);
    const CStr name = extractFileName(path);
    return name.empty() ? path : name;
}

void eachNode(const CTreeNode* below, const std::function<void(CTreeNode*)>& visit) {
    for (auto* node : below->children) {
        visit(node);
        eachNode(node, visit);
    }
}

/// What tells a node from those beside it, also once they have been made anew.
std::string keyOf(const CTreeNode* node) {
    std::string key;
    for (const CTreeNode* at = node; at->parent; at = at->parent)
        key = std::string("\n") + at->text.asChar() + key;
    return key;
}

} // namespace

bool canPreview(const CStr& path) {
    const SongFile kind = songFileOf(path);
    return kind == SongFile::audio || kind == SongFile::clip;
}

BrowserTree::BrowserTree(CWin* owner, const CStr& name, CQV* of, const BrowserDeeds& known)
    : CTree(owner, name, 0, 0, 1, 1), host(of), deeds(known) {
    multiSelect = true;
    wire(onExpanding, new _COnChange<BrowserTree>(this, &BrowserTree::expanding));
    wire(onDrawIcon, new _COnPaint<BrowserTree>(this, &BrowserTree::drawIcon));
}

void BrowserTree::fillTop() {
    for (const BrowserKind& kind : browserKinds) {
        CTreeNode* node = root.add(kind.title);
        node->kind = kind.kind;
        node->hasChildren = true;
    }
    update();
}

bool BrowserTree::isFile(const CTreeNode* node) {
    return node->kind == nodeFile || node->kind == nodePluginFile || node->kind == nodePoolSample;
}

CTreeNode* BrowserTree::topOf(CTreeNode* node) {
    while (node && node->parent && node->parent->parent) node = node->parent;
    return node;
}

void BrowserTree::expanding(CObject* sender) {
    auto* node = static_cast<CTreeNode*>(sender);
    if (node->expanded && node->children.empty()) fill(node);
}

// What lies in a node.

void BrowserTree::fill(CTreeNode* node) {
    switch (node->kind) {
    case nodeDisks:
        return fillDisks(node);
    case nodePool:
        return fillPool(node);
    case nodeComponents:
        return fillComponents(node);
    case nodeFavourites:
    case nodeRecent:
        return fillShelf(node);
    case nodeTags:
        return fillTags(node);
    case nodeTag:
        return fillTag(node);
    case nodeFolder:
    case nodePluginFolder:
        return fillFolder(node);
    default:
        if (const BrowserKind* kind = topKind(node->kind)) fillSection(node, *kind);
    }
}

void BrowserTree::addFolder(CTreeNode* to, const CStr& path, const char* filter,
                            const CStr& caption) {
    CTreeNode* node = to->add(caption);
    const bool plugins = to->kind == nodePlugins || to->kind == nodePluginFolder;
    node->kind = plugins ? nodePluginFolder : nodeFolder;
    node->path = path;
    node->hasChildren = true;
    node->data = const_cast<char*>(filter); // only ever read
}

void BrowserTree::addFile(CTreeNode* to, const CStr& path, int kind, const CStr& caption) {
    CTreeNode* node = to->add(caption);
    node->kind = kind;
    node->path = path;
}

void BrowserTree::fillDisks(CTreeNode* node) {
    addFolder(node, getHomeFolder(), everyFile, "Home");
    addFolder(node, "/", everyFile, "/");
    for (const char* around : {"/media", "/run/media"}) {
        CStringList inside;
        watch.add(around);
        readDir(around, everyFile, &inside, nullptr, true);
        for (int i = 0; i < inside.count(); i++)
            addFolder(node, addSep(CStr(around)) + inside.get(i), everyFile, inside.get(i));
    }
}

void BrowserTree::fillSection(CTreeNode* node, const BrowserKind& kind) {
    CStringList paths;
    if (kind.folders == foldersPlugin) {
        for (const CStr& path : pluginFolders(host)) paths.append(path);
    } else {
        readIniFolders(host, modeToSection(kind.folders), &paths);
    }
    for (int i = 0; i < paths.count(); i++)
        addFolder(node, paths.get(i), kind.filter, lastPart(paths.get(i)));
    if (paths.count() == 0) addFile(node, "", nodeNote, "Right-click to add a folder");
}

void BrowserTree::fillFolder(CTreeNode* node) {
    const CStr folder = addSep(node->path);
    CStringList inside, names;
    watch.add(node->path.asChar());
    if (!readDir(folder, filterOf(node), &inside, &names, true))
        addFile(node, "", nodeNote,
                folderExists(folder) ? "This folder cannot be read" : "This folder is not there");
    for (int i = 0; i < inside.count(); i++)
        if (node->kind == nodePluginFolder && PluginFile::isBundle(inside.get(i)))
            names.append(inside.get(i));
        else
            addFolder(node, folder + inside.get(i), filterOf(node), inside.get(i));
    for (int i = 0; i < names.count(); i++)
        addFile(node, folder + names.get(i),
                node->kind == nodePluginFolder ? nodePluginFile : nodeFile, names.get(i));
}

void BrowserTree::fillPool(CTreeNode* node) {
    for (const auto* sample : host->samples) {
        const char* where =
            sample->streamed ? (fileExists(sample->filename) ? "" : " (?)") : " (RAM)";
        addFile(node, sample->filename, nodePoolSample, extractFileName(sample->filename) + where);
    }
}

void BrowserTree::fillShelf(CTreeNode* node) {
    CStringList paths;
    readShelf(node->kind == nodeRecent ? FileShelf::recent : FileShelf::favourites, &paths);
    for (int i = 0; i < paths.count(); i++) {
        if (folderExists(paths.get(i)))
            addFolder(node, paths.get(i), everyFile, lastPart(paths.get(i)));
        else
            addFile(node, paths.get(i), nodeFile, extractFileName(paths.get(i)));
    }
}

void BrowserTree::fillComponents(CTreeNode* node) {
    for (const BrowserDeeds::Component& component : deeds.components) {
        addFile(node, "", nodeComponent, component.name);
        node->children.last()->data = const_cast<BrowserDeeds::Component*>(&component);
    }
}

void BrowserTree::fillTags(CTreeNode* node) {
    std::set<std::string> words;
    for (const auto& [path, tags] : readTags()) {
        std::istringstream in(tags);
        for (std::string word; in >> word;) words.insert(word);
    }
    for (const std::string& word : words) {
        CTreeNode* tag = node->add(word.c_str());
        tag->kind = nodeTag;
        tag->hasChildren = true;
    }
    if (words.empty()) addFile(node, "", nodeNote, "Right-click a file to give it tags");
}

void BrowserTree::fillTag(CTreeNode* node) {
    const std::string wanted = std::string(" ") + node->text.asChar() + " ";
    for (const auto& [path, tags] : readTags())
        if ((" " + tags + " ").find(wanted) != std::string::npos)
            addFile(node, path.c_str(), nodeFile, extractFileName(path.c_str()));
}

// Following what changes.

void BrowserTree::refresh(CTreeNode* node) {
    std::set<std::string> open;
    const std::string chosen = current ? keyOf(current) : "";
    if (node->expanded) open.insert(keyOf(node));
    eachNode(node, [&](const CTreeNode* n) {
        if (n->expanded) open.insert(keyOf(n));
    });
    const bool within = current && current->isBelow(node);
    node->clear();
    node->expanded = false;
    reopen(node, open);
    update();
    if (!within) return;
    CTreeNode* now = node;
    eachNode(node, [&](CTreeNode* n) {
        if (keyOf(n) == chosen) now = n;
    });
    select(now);
}

void BrowserTree::reopen(CTreeNode* node, const std::set<std::string>& open) {
    if (!open.contains(keyOf(node))) return;
    fill(node);
    node->expanded = !node->children.empty();
    for (auto* child : node->children) reopen(child, open);
}

void BrowserTree::refreshNode(int kind) {
    for (auto* node : root.children)
        if (node->kind == kind) refresh(node);
}

void BrowserTree::idle() {
    for (const std::string& path : watch.changed()) {
        std::vector<CTreeNode*> stale;
        eachNode(&root, [&](CTreeNode* node) {
            const bool media =
                node->kind == nodeDisks && (path == "/media" || path == "/run/media");
            const bool folder = node->kind == nodeFolder || node->kind == nodePluginFolder;
            if ((media || (folder && node->path == path.c_str())) && !node->children.empty())
                stale.push_back(node);
        });
        // From the last one on: one may lie below another.
        for (auto at = stale.rbegin(); at != stale.rend(); ++at) refresh(*at);
    }
}

void BrowserTree::drawIcon(CObject* sender, CGraphic* g, CRect square) {
    const auto* node = static_cast<CTreeNode*>(sender);
    const bool strong = node->selected && hasKeyFocus();
    drawNodeIcon(g, *node, square,
                 strong ? clTreeSelected.textCol : win->app->gui->palette.dimText);
}
