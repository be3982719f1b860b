#include "online/Online.h"

#include "interchange/ZipFile.h"

#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr int64_t mostListBytes = 1 << 20, signatureBytes = 64;

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A file or folder that is gone, with all in it, when this is.
class Passing {
public:
    explicit Passing(std::string place) : path(std::move(place)) { remove(); }
    ~Passing() { remove(); }
    Passing(const Passing&) = delete;
    Passing& operator=(const Passing&) = delete;
    const std::string path;

private:
    void remove() const {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
};

OnlineResult unpack(const ZipReader& zip, const std::string& folder, const BringLimits& limits,
                    const OnlineWatch& watch) {
    if (!zip.isOpen() || zip.hadEvil() || zip.entries().empty() ||
        zip.entries().size() > limits.files)
        return OnlineResult::damaged;
    int64_t left = limits.unpackedBytes;
    for (const ZipReader::Entry& entry : zip.entries()) {
        if (entry.bytes > left) return OnlineResult::damaged;
        const fs::path to = fs::path(folder) / entry.name;
        std::error_code failed;
        fs::create_directories(to.parent_path(), failed);
        if (failed) return OnlineResult::notWritten;
        bool cancelled = false;
        const auto told = [&](double) { return !(cancelled = watch && !watch(1.0)); };
        if (!zip.extract(entry.name, left, to, told)) {
            if (cancelled) return OnlineResult::cancelled;
            return fs::space(folder, failed).available < uintmax_t(entry.bytes)
                       ? OnlineResult::notWritten
                       : OnlineResult::damaged;
        }
        left -= int64_t(fs::file_size(to, failed));
    }
    return OnlineResult::good;
}

/// The new folder takes the name, and what had it comes to `made`. File systems that cannot
/// exchange names do it in two steps.
bool exchange(const std::string& made, const std::string& place) {
    std::error_code failed;
    if (!fs::exists(place, failed)) {
        fs::rename(made, place, failed);
        return !failed;
    }
    if (renameat2(AT_FDCWD, made.c_str(), AT_FDCWD, place.c_str(), RENAME_EXCHANGE) == 0)
        return true;
    const std::string aside = made + ".old";
    fs::rename(place, aside, failed);
    if (failed) return false;
    fs::rename(made, place, failed);
    std::error_code ignored;
    fs::rename(aside, failed ? place : made, ignored);
    return !failed;
}

} // namespace

OnlineSource builtSource() {
    const auto key = readKey(SONDRAVA_ONLINE_KEY);
    const std::string address = SONDRAVA_ONLINE_ADDRESS;
    return key && !address.empty() ? OnlineSource{address, *key} : OnlineSource{};
}

OnlineResult getCatalogue(const OnlineSource& source, const std::string& scratch, Catalogue& list,
                          const OnlineWatch& watch) {
    if (source.address.empty()) return OnlineResult::unreachable;
    const Passing text(scratch + "/catalogue"), signature(scratch + "/catalogue.sig");
    for (const auto& [file, bytes] :
         {std::pair{&text, mostListBytes}, {&signature, signatureBytes}}) {
        const std::string name = fs::path(file->path).filename();
        const OnlineResult got =
            fetchFile(source.address + name, file->path, {.bytes = bytes}, watch);
        if (got != OnlineResult::good) return got;
    }
    const std::string content = contentOf(text.path);
    if (!isSigned(content, contentOf(signature.path), source.key)) return OnlineResult::damaged;
    const auto read = readCatalogue(content);
    if (!read) return OnlineResult::damaged;
    list = *read;
    return OnlineResult::good;
}

OnlineResult bringEntry(const OnlineSource& source, const CatalogueEntry& entry,
                        const std::string& folder, const std::string& name,
                        const OnlineWatch& watch, const BringLimits& limits) {
    const std::string hidden = folder + "/." + name;
    const Passing archive(hidden + ".part"), made(hidden + ".new");
    const FetchLimits fetching{.bytes = entry.bytes, .stallSeconds = limits.stallSeconds};
    const OnlineResult got = fetchFile(source.address + entry.path, archive.path, fetching, watch);
    if (got != OnlineResult::good) return got;
    std::error_code failed;
    if (int64_t(fs::file_size(archive.path, failed)) != entry.bytes ||
        sha256OfFile(archive.path) != entry.sha256)
        return OnlineResult::damaged;
    fs::create_directory(made.path, failed);
    if (failed) return OnlineResult::notWritten;
    const OnlineResult unpacked = unpack(ZipReader(archive.path), made.path, limits, watch);
    if (unpacked != OnlineResult::good) return unpacked;
    return exchange(made.path, folder + "/" + name) ? OnlineResult::good : OnlineResult::notWritten;
}
