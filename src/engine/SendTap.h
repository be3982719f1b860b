#pragma once

#include <bitset>
#include <vector>

class CComp;
class CInputChannel;
class COutputChannel;
class PlanNode;

/// What the strips of a component leave for the send buses in a block. Each bus fetches it by
/// itself, so that its sum has one order, whoever works out the strips. Graph holder, but for
/// making and deleting.
class SendTap {
public:
    /// Of so many channels, each with the levels of `buses` sends.
    SendTap(int channels, int buses);

    void begin(); ///< a block
    /// The first event of the block is about to move a fader or a send of `c`.
    void beforeEvents(const CComp* c);
    /// Takes down a piece of the block, mixed already, of channel number `index`.
    void take(const COutputChannel* ch, int index);
    void endPiece() { ++pieces; }
    /// Adds what channel number `index` of a component sends to bus number `bus` in this block.
    void feed(const PlanNode& from, int index, int bus, CInputChannel* to, int frames) const;

private:
    static constexpr int mostPieces = 512; ///< as many as a queue has events, and one more

    /// Of each channel, by piece: neither muted nor silenced by a solo.
    std::vector<std::bitset<mostPieces>> heard;
    std::vector<float> levels; ///< at the start of the block, if it has events
    int buses, pieces = 0;
    bool moved = false;
};
