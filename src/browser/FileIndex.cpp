#include "browser/FileIndex.h"

#include "base/CStringList.h"
#include "base/Paths.h"

#include <algorithm>
#include <iterator>
#include <sys/stat.h>

namespace {

std::string joined(const std::string& folder, const std::string& name) {
    return folder.empty() || folder.back() == '/' ? folder + name : folder + "/" + name;
}

bool isBelow(const std::string& path, const std::string& folder) {
    const std::string start = joined(folder, "");
    return path.size() > start.size() && path.compare(0, start.size(), start) == 0;
}

} // namespace

FileIndex::~FileIndex() {
    finish();
}

// Interface.

void FileIndex::setRoots(const std::vector<Root>& wanted) {
    if (roots == wanted) return;
    {
        const std::lock_guard guard(mutex);
        for (const Root& root : wanted)
            if (std::ranges::find(roots, root) == roots.end()) jobs.push_back({root});
    }
    roots = wanted;
    for (auto at = folders.begin(); at != folders.end();) {
        const auto here = at++;
        const bool stays = std::ranges::any_of(roots, [&](const Root& root) {
            return root.kind == here->first.first &&
                   (root.path == here->first.second || isBelow(here->first.second, root.path));
        });
        if (!stays) drop(here);
    }
    if (!started) start();
    started = true;
    resume();
}

void FileIndex::drop(std::map<Place, Folder>::iterator at) {
    files -= int(at->second.names.size());
    levels.erase(at->first);
    folders.erase(at);
}

void FileIndex::enter(const Listing& listing) {
    const auto& [kind, path] = listing.place;
    const auto root = std::ranges::find_if(roots, [&, k = kind, &p = path](const Root& r) {
        return r.kind == k && (r.path == p || isBelow(p, r.path));
    });
    if (root == roots.end()) return;
    for (auto at = folders.lower_bound(listing.place); at != folders.end();) {
        const auto here = at++;
        if (here->first.first != kind) break;
        const std::string& other = here->first.second;
        if (other == path || !isBelow(other, path)) {
            if (other.compare(0, path.size(), path) != 0) break;
            continue;
        }
        const std::string rest = other.substr(joined(path, "").size());
        const std::string inside = rest.substr(0, rest.find('/'));
        if (listing.gone || std::ranges::find(listing.folders, inside) == listing.folders.end())
            drop(here);
    }
    const auto known = folders.find(listing.place);
    if (known != folders.end()) drop(known);
    if (listing.gone) return;
    folders[listing.place] = listing.folder;
    levels[listing.place] = int(std::count(path.begin(), path.end(), '/') -
                                std::count(root->path.begin(), root->path.end(), '/'));
    files += int(listing.folder.names.size());
}

bool FileIndex::take() {
    const std::vector<std::string> changed = watch.changed();
    std::vector<Listing> fresh;
    {
        const std::lock_guard guard(mutex);
        fresh.swap(ready);
        for (const std::string& path : changed)
            for (const Root& root : roots) {
                if (root.path != path && !isBelow(path, root.path)) continue;
                const auto level = levels.find({root.kind, path});
                jobs.push_back({{root.kind, path, root.filter},
                                level == levels.end() ? 0 : level->second,
                                false});
            }
    }
    if (!changed.empty()) resume();
    for (const Listing& listing : fresh) {
        waiting.fetchAdd(-int(listing.folder.names.size()));
        enter(listing);
    }
    return !fresh.empty();
}

bool FileIndex::busy() {
    const std::lock_guard guard(mutex);
    return working || !jobs.empty() || !ready.empty();
}

std::vector<FileIndex::Hit> FileIndex::find(const std::vector<std::string>& words, int most) const {
    struct Found {
        bool later;
        const std::string* lower;
        const Place* place;
        const std::string* name;
    };
    std::vector<Found> found;
    for (const auto& [place, folder] : folders)
        for (size_t i = 0; i < folder.names.size(); i++) {
            const std::string& lower = folder.lower[i];
            const bool holds = std::ranges::all_of(
                words, [&](const auto& w) { return lower.find(w) != std::string::npos; });
            if (!holds) continue;
            const bool first = words.empty() || lower.compare(0, words[0].size(), words[0]) == 0;
            found.push_back({!first, &lower, &place, &folder.names[i]});
        }
    const auto before = [](const Found& a, const Found& b) {
        return a.later != b.later ? b.later : *a.lower < *b.lower;
    };
    const size_t kept = std::min(found.size(), size_t(std::max(most, 0)));
    std::partial_sort(found.begin(), found.begin() + ptrdiff_t(kept), found.end(), before);
    std::vector<Hit> hits;
    for (size_t i = 0; i < kept; i++)
        hits.push_back({found[i].place->first, found[i].place->second, *found[i].name});
    return hits;
}

// Worker.

void FileIndex::execute() {
    while (!terminated) {
        checkPark();
        Job job;
        if (!next(job)) {
            suspend();
            continue;
        }
        look(job);
    }
}

bool FileIndex::next(Job& job) {
    const std::lock_guard guard(mutex);
    working = !jobs.empty();
    if (!working) return false;
    job = jobs.front();
    jobs.pop_front();
    return true;
}

/// Links lead around in circles: a folder counts where it was met first, as long as it is there.
bool FileIndex::seenElsewhere(const Job& job) {
    struct stat now {};
    if (stat(job.root.path.c_str(), &now) != 0) return false;
    std::string& known = nodes[{job.root.kind, {now.st_dev, now.st_ino}}];
    struct stat other {};
    const bool elsewhere = !known.empty() && known != job.root.path &&
                           stat(known.c_str(), &other) == 0 && other.st_dev == now.st_dev &&
                           other.st_ino == now.st_ino;
    if (!elsewhere) known = job.root.path;
    return elsewhere;
}

void FileIndex::look(const Job& job) {
    if (job.depth > deepest || seenElsewhere(job)) return;
    watch.add(job.root.path); // before it is read, so that nothing falls between
    Listing listing;
    listing.place = {job.root.kind, job.root.path};
    CStringList subfolders, names;
    listing.gone = !readDir(job.root.path.c_str(), job.root.filter, &subfolders, &names, false);
    for (const auto* name : names.list) {
        if (files + waiting + int(listing.folder.names.size()) >= mostFiles) break;
        listing.folder.names.emplace_back(name->text.asChar());
        listing.folder.lower.emplace_back(name->text.lowerCase().asChar());
    }
    for (const auto* name : subfolders.list) listing.folders.emplace_back(name->text.asChar());
    noteSeen(listing);
    waiting.fetchAdd(int(listing.folder.names.size()));
    const std::lock_guard guard(mutex);
    for (const std::string& name : listing.folders) {
        const Place inside{job.root.kind, joined(job.root.path, name)};
        if (job.all || !seen.contains(inside))
            jobs.push_back({{inside.first, inside.second, job.root.filter}, job.depth + 1});
    }
    ready.push_back(std::move(listing));
}

void FileIndex::noteSeen(const Listing& listing) {
    if (!listing.gone) {
        seen.insert(listing.place);
        return;
    }
    std::erase_if(seen, [&](const Place& other) {
        return other == listing.place ||
               (other.first == listing.place.first && isBelow(other.second, listing.place.second));
    });
}
