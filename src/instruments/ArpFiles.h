#pragma once

#include "base/CList.h"

#include <cstdint>

class BlockView;
class CArp;
class CArpProg;
class CStream;

// The blocks in which an arpeggiator and its programs are stored. Interface thread.

/// Block "prog", as it stands in a .qva file.
void writeProgram(CStream* stream, const CArpProg& prog);

/// What a stream of blocks holds. Owns its programs until they are taken.
///
/// Values are brought into the range of their control. A program that is not all there ends the
/// reading, as does a block that does not fit. Settings that the stream lacks stay as they are.
class ArpContent {
public:
    ListOf<CArpProg> progs;
    int progIndex = 0;
    int enabled, latch, ccGate, ccSwing;

    explicit ArpContent(const CArp& preset);
    ~ArpContent();
    ArpContent(const ArpContent&) = delete;
    ArpContent& operator=(const ArpContent&) = delete;

    /// Reads blocks up to stream position `end`, where it leaves the stream.
    void read(CStream* stream, int64_t end);

private:
    static constexpr int mostProgs = 1024;

    bool readProg(CStream* stream, BlockView& view);
};
