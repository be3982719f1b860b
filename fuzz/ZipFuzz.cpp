#include "interchange/ScratchFolder.h"
#include "interchange/ZipFile.h"

#include <cstdlib>
#include <fstream>

// Archives: any bytes are listed, and every entry is read and brought to the disk, within limits.

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static const ScratchFolder folder;
    constexpr int64_t most = 1 << 20;
    const std::string path = folder.file("a.zip"), out = folder.file("out");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), std::streamsize(size));
    const ZipReader zip(path);
    for (size_t i = 0; i < zip.entries().size() && i < 64; i++) {
        const ZipReader::Entry& entry = zip.entries()[i];
        std::string content;
        if (!isPlainEntry(entry.name)) abort();
        if (!zip.read(entry.name, most, content) && !content.empty()) abort();
        if (content.size() > size_t(most)) abort();
        if (zip.extract(entry.name, most, out) && std::filesystem::file_size(out) != content.size())
            abort();
        std::filesystem::remove(out);
    }
    return 0;
}
