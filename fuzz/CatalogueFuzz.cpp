#include "interchange/ZipFile.h"
#include "online/Catalogue.h"

#include <cstdlib>

// Lists of updates: any text is read; what comes of it names no file or folder that leads
// elsewhere.

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const auto list = readCatalogue({reinterpret_cast<const char*>(data), size});
    if (!list) return 0;
    for (const CatalogueEntry& entry : list->entries) {
        const bool plain = entry.name.empty() || isPlainEntry(entry.name);
        if (entry.bytes < 0 || entry.sha256.size() != 64 || !plain || !isPlainEntry(entry.path) ||
            !isPlainEntry(entry.version) || isNewer(entry.version, entry.version))
            abort();
    }
    return 0;
}
