#include "engine/CSampleManager.h"

#include "engine/SamplePool.h"

bool CSampleManager::moveToTrash(const CStr& file) {
    const CStr path = pool->deletablePath(file);
    if (path.empty()) return false;
    if (indexOf(path) < 0) append(path);
    return true;
}

void CSampleManager::restore(const CStr& file) {
    const int at = indexOf(canonicalPath(file));
    if (at >= 0) del(at);
}

void CSampleManager::emptyTrash() {
    for (int i = count() - 1; i >= 0; --i) {
        if (pool->isUsed(get(i))) continue;
        deleteSampleFile(get(i));
        del(i);
    }
}
