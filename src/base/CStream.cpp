#include "base/CStream.h"

#include "base/CStringList.h"
#include "base/Numbers.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

static_assert(std::endian::native == std::endian::little,
              "the typed helpers store words as they lie");

int CStream::pos() {
    return saturate(getPos());
}

/// All of the value or 0.
template <class T>
T CStream::readValue() {
    T v{};
    return read(&v, sizeof(T)) == int(sizeof(T)) ? v : T{};
}

template <class T>
void CStream::writeValue(T v) {
    write(&v, sizeof(T));
}

void CStream::writeByte(unsigned char v) {
    writeValue(v);
}
void CStream::writeShort(short v) {
    writeValue(v);
}
void CStream::writeShortSwap(short v) {
    writeValue(swapShort(v));
}
void CStream::writeInt(int v) {
    writeValue(v);
}
void CStream::writeIntSwap(int v) {
    writeValue(swapInt(v));
}
void CStream::writeFloat(float v) {
    writeValue(v);
}
void CStream::writeFloatSwap(float v) {
    writeValue(swap4(std::bit_cast<uint32_t>(v)));
}
void CStream::writeDouble(double v) {
    writeValue(v);
}

int CStream::readByte() {
    return readValue<unsigned char>();
}
short CStream::readShort() {
    return readValue<short>();
}
short CStream::readShortSwap() {
    return swapShort(readValue<short>());
}
int CStream::readInt() {
    return readValue<int>();
}
int CStream::readIntSwap() {
    return swapInt(readValue<int>());
}
float CStream::readFloat() {
    return readValue<float>();
}
float CStream::readFloatSwap() {
    return std::bit_cast<float>(swap4(readValue<uint32_t>()));
}
double CStream::readDouble() {
    return readValue<double>();
}

void CStream::writeStr(const CStr& s) {
    const int n = s.length();
    writeInt(n);
    write(s.asChar(), n);
}

void CStream::writeId(const CStr& id, int bytes) {
    writeStr(id);
    writeInt(bytes);
}

CStr CStream::readStr() {
    const int stored = readInt();
    const int n = int(std::min(int64_t(stored), left()));
    CStr s;
    if (n < 1 || !s.resize(n)) return s;
    const int done = read(s.buffer(), n);
    s.buffer()[done] = 0;
    return s;
}

void CStream::writeBlockSize(int64_t start) {
    const int64_t end = getPos();
    seek(start, seekStart);
    writeInt(saturate(end - start - int64_t(sizeof(int))));
    seek(end, seekStart);
}

void CStream::copy(CStream* src, int bytes) {
    constexpr int pieceSize = 1024;
    char piece[pieceSize];
    const int64_t start = getPos();
    while (bytes > 0) {
        const int wanted = std::min(bytes, pieceSize);
        const int n = src->read(piece, wanted);
        write(piece, n);
        if (n < wanted) break;
        bytes -= n;
    }
    seek(start, seekStart);
}

int64_t CStream::target(int64_t offset, int whence) {
    int64_t base = 0;
    if (whence == seekCurrent) base = getPos();
    if (whence == seekEnd) base = getSize();
    return std::max<int64_t>(base + offset, 0);
}

CFileStream::CFileStream(const CStr& path, int mode) {
    if (mode == 0) file = std::fopen(path.asChar(), "rbe");
    if (mode == 1) file = std::fopen(path.asChar(), "w+be");
    struct stat info {};
    if (file && (fstat(fileno(file), &info) != 0 || S_ISDIR(info.st_mode))) {
        std::fclose(file);
        file = nullptr;
    }
    if (file) size = extent = info.st_size;
}

CFileStream::~CFileStream() {
    if (file) std::fclose(file);
}

/// A C stream has to be positioned between reading and writing.
void CFileStream::turn(Last now) {
    if (last != now && last != Last::none) fseeko(file, position, SEEK_SET);
    last = now;
}

void CFileStream::setSize(int bytes) {
    if (!file || bytes < 0 || !flush() || ftruncate(fileno(file), bytes) != 0) return;
    extent = bytes;
    if (position > extent) seek(0, seekEnd);
}

int CFileStream::read(void* to, int bytes) {
    if (!file || bytes < 1) return 0;
    turn(Last::read);
    const int n = int(std::fread(to, 1, size_t(bytes), file));
    position += n;
    return n;
}

int CFileStream::write(const void* from, int bytes) {
    if (!file || bytes < 1) return 0;
    turn(Last::write);
    const int n = int(std::fwrite(from, 1, size_t(bytes), file));
    position += n;
    written += n;
    extent = std::max(extent, position);
    return n;
}

int CFileStream::seek(int64_t offset, int whence) {
    if (!file) return 0;
    const int64_t to = target(offset, whence);
    if (fseeko(file, to, SEEK_SET) == 0) position = to;
    last = Last::none;
    return pos();
}

void CFileStream::writeBlockSize(int64_t start) {
    const int64_t payload = written;
    CStream::writeBlockSize(start);
    written = payload;
}

bool CFileStream::flush() {
    return file && std::fflush(file) == 0 && !std::ferror(file);
}

CMemoryStream::~CMemoryStream() {
    std::free(data);
}

bool CMemoryStream::reserve(int64_t bytes) {
    constexpr int64_t grain = 8192;
    if (bytes <= capacity) return true;
    assert(bytes > 0);
    // An eighth more each time: what grows in small pieces is moved a few times only.
    const int64_t least = std::max(bytes, capacity + capacity / 8);
    const int64_t wanted = (least + grain - 1) / grain * grain;
    auto* grown = static_cast<unsigned char*>(std::realloc(data, size_t(wanted)));
    if (!grown) return false;
    data = grown;
    capacity = wanted;
    return true;
}

void CMemoryStream::setSize(int bytes) {
    if (bytes < 0 || !reserve(bytes)) return;
    if (bytes > size) std::memset(data + size, 0, size_t(bytes - size));
    size = bytes;
    position = std::min(position, size);
}

int CMemoryStream::read(void* to, int bytes) {
    const int n = int(std::min(int64_t(bytes), size - position));
    if (n < 1) return 0;
    std::memcpy(to, data + position, size_t(n));
    position += n;
    return n;
}

int CMemoryStream::write(const void* from, int bytes) {
    if (bytes < 1 || !reserve(position + bytes)) return 0;
    if (position > size) std::memset(data + size, 0, size_t(position - size));
    std::memcpy(data + position, from, size_t(bytes));
    position += bytes;
    size = std::max(size, position);
    return bytes;
}

int CMemoryStream::seek(int64_t offset, int whence) {
    position = target(offset, whence);
    return pos();
}

bool CMemoryStream::saveToFile(const CStr& path) {
    CFileStream file(path, 1);
    constexpr int64_t piece = 1 << 30;
    for (int64_t at = 0; at < size; at += piece)
        file.write(data + at, int(std::min(piece, size - at)));
    return file.flush() && file.getSize() == size;
}

bool CMemoryStream::loadFromFile(const CStr& path) {
    setSize(0);
    CFileStream file(path, 0);
    if (!file.isOpen()) return false;
    char piece[65536];
    for (int n = 0; (n = file.read(piece, sizeof(piece))) > 0;) write(piece, n);
    setPos(0);
    return true;
}

namespace {

/// Cuts text that comes in pieces into lines. CR LF is one line end.
class LineCutter {
public:
    explicit LineCutter(CStringList* l) : lines(l) {}
    void feed(const char* text, int n);
    void finish() {
        if (!line.empty()) emit();
    }

private:
    void emit();

    CStringList* lines;
    std::vector<char> line;
    bool afterReturn = false;
};

void LineCutter::feed(const char* text, int n) {
    for (int i = 0; i < n; ++i) {
        const char c = text[i];
        if (c == '\r' || (c == '\n' && !afterReturn))
            emit();
        else if (c != '\n')
            line.push_back(c);
        afterReturn = c == '\r';
    }
}

void LineCutter::emit() {
    lines->append(CStr(line.data(), line.size()).trim());
    line.clear();
}

} // namespace

void streamToStrs(CStream* stream, CStringList* lines) {
    LineCutter cutter(lines);
    char piece[4096];
    stream->setPos(0);
    for (int n = 0; (n = stream->read(piece, sizeof(piece))) > 0;) cutter.feed(piece, n);
    cutter.finish();
}
