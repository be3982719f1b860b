#include "interchange/ZipFile.h"

#include <minizip/unzip.h>
#include <minizip/zip.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <set>
#include <unistd.h>

namespace {

constexpr size_t blockBytes = 65536;
constexpr size_t longestName = 1000;

/// One part of a path: neither empty nor a way up.
bool isPlainPart(const std::string& part) {
    return !part.empty() && part != "." && part != "..";
}

} // namespace

bool isPlainEntry(const std::string& name) {
    if (name.empty() || name.size() > longestName) return false;
    for (const char c : name)
        if (static_cast<unsigned char>(c) < ' ' || c == '\\' || c == 127) return false;
    for (size_t at = 0; at <= name.size();) {
        const size_t end = std::min(name.find('/', at), name.size());
        if (!isPlainPart(name.substr(at, end - at))) return false;
        at = end + 1;
    }
    return true;
}

// Writing.

ZipWriter::ZipWriter(const std::string& path)
    : file(zipOpen64(path.c_str(), APPEND_STATUS_CREATE)) {
    good = file != nullptr;
}

ZipWriter::~ZipWriter() {
    if (file) zipClose(file, nullptr);
}

bool ZipWriter::open(const std::string& name, bool packed) {
    if (!good || !isPlainEntry(name)) return good = false;
    constexpr unsigned long namesInUtf8 = 1u << 11;
    zip_fileinfo info{};
    return good = zipOpenNewFileInZip4_64(file, name.c_str(), &info, nullptr, 0, nullptr, 0,
                                          nullptr, packed ? Z_DEFLATED : 0, Z_DEFAULT_COMPRESSION,
                                          0, -MAX_WBITS, DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY, nullptr,
                                          0, 0, namesInUtf8, 1) == ZIP_OK;
}

bool ZipWriter::write(const void* bytes, size_t count) {
    return good = good && zipWriteInFileInZip(file, bytes, unsigned(count)) == ZIP_OK;
}

bool ZipWriter::add(const std::string& name, const std::string& content) {
    if (!open(name, true)) return false;
    for (size_t at = 0; good && at < content.size(); at += blockBytes)
        write(content.data() + at, std::min(blockBytes, content.size() - at));
    return good = zipCloseFileInZip(file) == ZIP_OK && good;
}

bool ZipWriter::addFile(const std::string& name, const std::string& path, bool packed,
                        const ZipWatch& watch) {
    std::ifstream in(path, std::ios::binary | std::ios::ate);
    const auto bytes = double(in.tellg());
    in.seekg(0);
    if (!in || !open(name, packed)) return good = false;
    std::vector<char> block(blockBytes);
    for (double done = 0; good && in; done += double(in.gcount())) {
        in.read(block.data(), std::streamsize(block.size()));
        write(block.data(), size_t(in.gcount()));
        if (watch && !watch(bytes > 0 ? std::min(done / bytes, 1.0) : 1.0)) good = false;
    }
    if (in.bad()) good = false;
    return good = zipCloseFileInZip(file) == ZIP_OK && good;
}

bool ZipWriter::close() {
    if (file && zipClose(file, nullptr) != ZIP_OK) good = false;
    file = nullptr;
    return good;
}

// Reading.

ZipReader::ZipReader(const std::string& path) : file(unzOpen64(path.c_str())) {
    if (file) listEntries();
}

ZipReader::~ZipReader() {
    if (file) unzClose(file);
}

void ZipReader::listEntries() {
    std::set<std::string> seen;
    size_t count = 0;
    for (int at = unzGoToFirstFile(file); at == UNZ_OK && count < mostEntries; count++) {
        char name[longestName + 2] = {};
        unz_file_info64 info{};
        if (unzGetCurrentFileInfo64(file, &info, name, sizeof name - 1, nullptr, 0, nullptr, 0) !=
            UNZ_OK)
            break;
        const bool folder = info.size_filename > 0 && info.size_filename <= longestName &&
                            name[info.size_filename - 1] == '/';
        const bool plain = info.size_filename <= longestName && isPlainEntry(name);
        if (plain && seen.insert(name).second)
            list.push_back({name, int64_t(info.uncompressed_size)});
        evil = evil || (!plain && !folder);
        at = unzGoToNextFile(file);
    }
}

const ZipReader::Entry* ZipReader::find(const std::string& name) const {
    const auto found = std::ranges::find(list, name, &Entry::name);
    return found == list.end() ? nullptr : &*found;
}

bool ZipReader::pour(const std::string& name, int64_t most,
                     const std::function<bool(const char*, size_t)>& into) const {
    if (!find(name) || find(name)->bytes > most) return false;
    constexpr int caseCounts = 1;
    if (unzLocateFile(file, name.c_str(), caseCounts) != UNZ_OK) return false;
    if (unzOpenCurrentFile(file) != UNZ_OK) return false;
    std::vector<char> block(blockBytes);
    int count = 0;
    int64_t total = 0;
    while ((count = unzReadCurrentFile(file, block.data(), unsigned(block.size()))) > 0) {
        total += count;
        if (total > most || !into(block.data(), size_t(count))) break;
    }
    // Of what was read to its end the close compares the checksum.
    const bool whole = unzCloseCurrentFile(file) == UNZ_OK;
    return whole && count == 0 && total <= most;
}

bool ZipReader::read(const std::string& name, int64_t most, std::string& content) const {
    content.clear();
    const bool good = pour(name, most, [&](const char* bytes, size_t count) {
        content.append(bytes, count);
        return true;
    });
    if (!good) content.clear();
    return good;
}

bool ZipReader::extract(const std::string& name, int64_t most, const std::string& path,
                        const ZipWatch& watch) const {
    std::FILE* out = std::fopen(path.c_str(), "wbx");
    if (!out) return false;
    const Entry* entry = find(name);
    int64_t done = 0;
    bool good = pour(name, most, [&](const char* bytes, size_t count) {
        done += int64_t(count);
        const bool wanted =
            !watch || watch(double(done) / double(std::max<int64_t>(entry->bytes, 1)));
        return wanted && std::fwrite(bytes, 1, count, out) == count;
    });
    good = std::fclose(out) == 0 && good;
    if (!good) ::unlink(path.c_str());
    return good;
}
