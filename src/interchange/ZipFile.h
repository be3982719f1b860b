#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// Zip archives. No entry of one leads out of a folder: names with "..", from the root on, with a
// backslash or a control byte are refused by both classes. Any thread; one object for one thread.

/// Whether a name may stand in an archive: relative, of plain parts, 1 to 1000 bytes.
bool isPlainEntry(const std::string& name);

/// Told the part that is done, 0 to 1; false cancels.
using ZipWatch = std::function<bool(double done)>;

/// Makes an archive, entry by entry.
class ZipWriter {
public:
    explicit ZipWriter(const std::string& path);
    ~ZipWriter();
    ZipWriter(const ZipWriter&) = delete;
    ZipWriter& operator=(const ZipWriter&) = delete;

    /// Both are false once anything has failed. What is packed already is stored as it is with
    /// `packed` off.
    bool add(const std::string& name, const std::string& content);
    bool addFile(const std::string& name, const std::string& path, bool packed,
                 const ZipWatch& watch = {});
    /// Completes it; false if anything of it could not be written.
    bool close();

private:
    bool open(const std::string& name, bool packed);
    bool write(const void* bytes, size_t count);
    void* file = nullptr;
    bool good = true;
};

/// Reads one that anybody may have made.
class ZipReader {
public:
    static constexpr size_t mostEntries = 65536;

    struct Entry {
        std::string name;
        int64_t bytes; ///< unpacked, as the archive tells
    };

    explicit ZipReader(const std::string& path);
    ~ZipReader();
    ZipReader(const ZipReader&) = delete;
    ZipReader& operator=(const ZipReader&) = delete;

    bool isOpen() const { return file != nullptr; }
    /// Those with plain names that are no folders; the first of two with one name.
    const std::vector<Entry>& entries() const { return list; }
    /// Whether there was an entry whose name is not plain.
    bool hadEvil() const { return evil; }
    const Entry* find(const std::string& name) const; ///< null without one

    /// False for what is not there, damaged, or longer than `most` bytes, whatever the archive
    /// tells; `content` is empty then.
    bool read(const std::string& name, int64_t most, std::string& content) const;
    /// The same into a new file, of which nothing is left when it fails or is cancelled.
    bool extract(const std::string& name, int64_t most, const std::string& path,
                 const ZipWatch& watch = {}) const;

private:
    void listEntries();
    bool pour(const std::string& name, int64_t most,
              const std::function<bool(const char*, size_t)>& into) const;
    void* file = nullptr;
    std::vector<Entry> list;
    bool evil = false;
};
