#include "browser/FolderWatch.h"

#include <set>
#include <sys/inotify.h>
#include <unistd.h>

namespace {

constexpr unsigned wanted = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF |
                            IN_MOVE_SELF | IN_ONLYDIR;
constexpr size_t bufferBytes = 65536;

} // namespace

FolderWatch::FolderWatch() {
    open();
}

FolderWatch::~FolderWatch() {
    if (handle >= 0) close(handle);
}

void FolderWatch::open() {
    handle = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
}

void FolderWatch::add(const std::string& folder) {
    const std::lock_guard guard(mutex);
    if (handle < 0 || paths.size() >= most) return;
    const int number = inotify_add_watch(handle, folder.c_str(), wanted);
    if (number >= 0) paths[number] = folder;
}

void FolderWatch::clear() {
    const std::lock_guard guard(mutex);
    if (handle >= 0) close(handle);
    paths.clear();
    open();
}

std::vector<std::string> FolderWatch::changed() {
    const std::lock_guard guard(mutex);
    std::set<std::string> told;
    alignas(inotify_event) char bytes[bufferBytes];
    while (handle >= 0) {
        const ssize_t got = read(handle, bytes, sizeof bytes);
        if (got <= 0) break;
        for (ssize_t at = 0; at < got;) {
            const auto* event = reinterpret_cast<const inotify_event*>(bytes + at);
            at += ssize_t(sizeof(inotify_event) + event->len);
            if (event->mask & IN_Q_OVERFLOW)
                for (const auto& [number, path] : paths) told.insert(path);
            const auto known = paths.find(event->wd);
            if (known == paths.end()) continue;
            told.insert(known->second);
            if (event->mask & IN_IGNORED) paths.erase(known);
        }
    }
    return {told.begin(), told.end()};
}
