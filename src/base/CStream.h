#pragma once

#include "base/CObject.h"
#include "base/CStr.h"

#include <cstdint>
#include <cstdio>

class CStringList;

/// Where `seek` counts from.
enum SeekFrom : int { seekStart = 0, seekCurrent = 1, seekEnd = 2 };

/// A stream of bytes with typed helpers, little-endian unless the name ends in Swap.
///
/// Nothing reports errors. A short read gives 0, or the bytes of a string that were left; callers
/// compare positions. Positions are 64-bit inside, and those given as int saturate. A seek in front
/// of the start goes to the start, a negative count does nothing.
class CStream {
public:
    int64_t size = 0;    ///< at opening; `eof` compares with it
    int64_t written = 0; ///< bytes written so far (files)

    CStream() = default;
    virtual ~CStream() = default;
    CStream(const CStream&) = delete;
    CStream& operator=(const CStream&) = delete;

    virtual void setSize(int) {}
    virtual int read(void*, int) { return 0; } ///< number of bytes that were read
    virtual int write(const void*, int) { return 0; }
    /// `whence` is SeekFrom; returns the new position.
    virtual int seek(int64_t, int) { return 0; }
    virtual int pos(); ///< `getPos` as an int
    virtual int64_t getPos() { return 0; }
    virtual int64_t getSize() { return size; }
    /// Stores in the 4 bytes at `start` how many bytes stand behind them, and returns to the end.
    virtual void writeBlockSize(int64_t start);
    virtual bool eof() { return getPos() >= size; }

    int64_t left() { return getSize() - getPos(); } ///< bytes to the end, below 0 behind it
    void setPos(int64_t offset, int whence = seekStart) { seek(offset, whence); }

    void writeByte(unsigned char v);
    void writeShort(short v);
    void writeShortSwap(short v);
    void writeInt(int v);
    void writeIntSwap(int v);
    void writeFloat(float v);
    void writeFloatSwap(float v);
    void writeDouble(double v);
    void writeStr(const CStr& s);           ///< 4-byte length and the bytes
    void writeId(const CStr& id, int size); ///< head of an item: string and size
    int readByte();                         ///< 0 to 255
    short readShort();
    short readShortSwap();
    int readInt();
    int readIntSwap();
    float readFloat();
    float readFloatSwap();
    double readDouble();
    /// A negative length gives an empty string and reads no further; a length beyond the end gives
    /// what is left.
    CStr readStr();
    /// Adds up to `bytes` bytes of `src`, in pieces, then goes back to where it began to write.
    void copy(CStream* src, int bytes);

protected:
    int64_t target(int64_t offset, int whence); ///< where a seek ends

private:
    template <class T>
    T readValue();
    template <class T>
    void writeValue(T v);
};

/// A stream on a file. One that cannot be opened reads nothing and takes nothing.
class CFileStream : public CStream {
public:
    /// Mode 0 opens for reading, 1 makes a new file for reading and writing, any other nothing.
    CFileStream(const CStr& path, int mode);
    ~CFileStream() override;
    CFileStream(const CFileStream&) = delete;
    CFileStream& operator=(const CFileStream&) = delete;

    std::FILE* file = nullptr; ///< owned; moved by the operations of this class alone

    bool isOpen() const { return file != nullptr; }
    void setSize(int bytes) override; ///< cuts or extends the file
    int read(void* data, int bytes) override;
    int write(const void* data, int bytes) override;
    int seek(int64_t offset, int whence) override;
    int64_t getPos() override { return position; }
    int64_t getSize() override { return extent; }
    void writeBlockSize(int64_t start) override; ///< does not count as written
    /// Hands everything to the system; false when any of it could not be written.
    bool flush();

private:
    enum class Last { none, read, write };
    void turn(Last now);

    Last last = Last::none;
    int64_t position = 0;
    int64_t extent = 0; ///< the length of the file
};

/// A stream on a block of memory that grows.
class CMemoryStream : public CStream {
public:
    CMemoryStream() = default;
    ~CMemoryStream() override;
    CMemoryStream(const CMemoryStream&) = delete;
    CMemoryStream& operator=(const CMemoryStream&) = delete;

    unsigned char* data = nullptr; ///< owned; `capacity` bytes, of which `size` count
    int64_t position = 0;
    int64_t capacity = 0; ///< a multiple of 8192

    /// New bytes are 0; a position behind the end goes to the end.
    void setSize(int bytes) override;
    int read(void* to, int bytes) override;
    /// Behind the end the gap is filled with 0. Nothing is written when the memory is not to be
    /// had.
    int write(const void* from, int bytes) override;
    int seek(int64_t offset, int whence) override;
    int64_t getPos() override { return position; }
    void clear() { setSize(0); }
    bool saveToFile(const CStr& path);
    /// Replaces the content and goes to the start; false, and empty, without the file.
    bool loadFromFile(const CStr& path);

private:
    bool reserve(int64_t bytes);
};

/// Adds the lines of a stream from its start on, cut at line feeds and carriage returns, trimmed.
void streamToStrs(CStream* stream, CStringList* lines);
