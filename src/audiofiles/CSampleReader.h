#pragma once

#include "base/Atomic.h"

#include <cstdint>
#include <memory>

class CSample;

/// How the frames of a sample on disk are come by. Those in memory don't care.
enum class ReadMode {
    direct, ///< the file is read here and now, past all buffers: interface thread, workers
    live,   ///< through `CSample::reader`; what the disk is late with is silence: audio thread
    offline ///< through `CSample::reader`; waits for the disk: who renders with the graph held
};

/// States of a `CBuffer`. All changes of a word that the other side may change are by
/// compare-exchange.
enum BufferState {
    bufferFree = 0,
    bufferWanted = 1,  ///< a read at `next` is requested; either side may take it
    bufferReading = 3, ///< belongs to the side that took it
    bufferHeld = 4 ///< `data` holds `size` bytes from `pos`; only the playing side takes it back
};

/// One half of a double buffer. Offsets are bytes from the first frame.
struct CBuffer {
    Shared<int> state{bufferFree};
    std::int64_t pos = 0;
    int size = 0;                  ///< valid bytes
    std::int64_t next = 0;         ///< where the disk thread is to read
    unsigned char* data = nullptr; ///< `CSampleReader::bufferBytes`, not owned
};

/// Streams the frames of one sample on disk through two buffers: while one is played, the disk
/// thread fills the other with what follows. Reads are positioned, so any number of readers can be
/// at one sample; each has a playing side (threads that play at the same time go one after the
/// other) and a disk side. Each sample has
/// one for the graph, whose voices share it: two far apart reposition it in turn, which costs a
/// read each time. Made and deleted on the interface thread; the sample outlives it.
class CSampleReader {
public:
    static constexpr int bufferBytes = 65536;

    /// For an open or created sample of whole frames up to `bufferBytes`.
    explicit CSampleReader(const CSample& of);
    virtual ~CSampleReader() = default;
    CSampleReader(const CSampleReader&) = delete;
    CSampleReader& operator=(const CSampleReader&) = delete;

    // The playing side: nothing allocates, locks or waits for the disk thread.
    /// `count` frames from `first` on as floats, interleaved; zeros outside the sample. What
    /// neither buffer holds is read at once, on this thread, as after a jump; but with `live`, if
    /// the disk thread is just reading it, all from there on is silence. `backward`: the next call
    /// will ask for frames before these.
    void getData(std::int64_t first, int count, float* out, bool backward, bool live);
    /// Reads what `getData` will need for these frames, and asks for what follows: when a voice
    /// starts.
    void prime(std::int64_t first, int count, bool backward);

    // The disk side.
    /// Fills the buffers that are wanted; true if there were any. One thread at a time.
    bool serve();

protected:
    /// Reads the file; returns the bytes that came.
    virtual std::int64_t readFile(std::int64_t offset, unsigned char* out, std::int64_t bytes);

private:
    struct Span {
        std::int64_t at, end; ///< bytes from the first frame, within the sample
        bool backward;
    };

    std::int64_t totalBytes() const;
    Span clip(std::int64_t first, int count, bool backward) const;
    CBuffer* holder(std::int64_t at);
    bool isComing(std::int64_t at);
    CBuffer* fetch(const Span& span);
    void fill(CBuffer& buffer, std::int64_t offset);
    void askAround(const CBuffer& played, const Span& span);
    static bool claim(CBuffer& buffer);
    void ask(CBuffer& buffer, std::int64_t offset, std::int64_t needed);

    class PlayingTurn;

    Shared<bool> playing{false}; ///< a thread is at the playing side
    const CSample& sample;
    const int capacity; ///< bytes, whole frames
    std::unique_ptr<unsigned char[]> memory;
    CBuffer buffers[2];
};
