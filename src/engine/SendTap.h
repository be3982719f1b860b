#pragma once

#include <bitset>
#include <vector>

class CComp;
class CInputChannel;
class COutputChannel;

/// What the strips of a component leave for the send buses in a block. Each bus fetches it by
/// itself, so that its sum has one order, whoever works out the strips. Graph holder, but for
/// making and deleting.
class SendTap {
public:
    /// Room for `frames` of each of `channels`, and for the levels of `buses` sends of each.
    SendTap(int channels, int buses, int frames);

    void begin(); ///< a block
    /// The first event of the block is about to move a fader or a send of `c`.
    void beforeEvents(const CComp* c);
    /// Takes down a piece of the block, mixed already, of channel number `index`.
    void take(COutputChannel* ch, int index, unsigned block, int frames, int offset);
    void endPiece() { ++pieces; }
    /// Adds what the component sends to bus number `bus` in this block.
    void feed(CComp* c, int bus, CInputChannel* to, int frames) const;

private:
    static constexpr int mostPieces = 512; ///< as many as a queue has events, and one more

    struct Channel {
        bool late = false;             ///< what leaves lies in the delayed copy
        std::bitset<mostPieces> heard; ///< by piece: neither muted nor silenced by a solo
        std::vector<float> left, right;
    };
    void feedPiece(const Channel& from, const COutputChannel* ch, float level, CInputChannel* to,
                   int frames, int offset) const;

    std::vector<Channel> channels;
    std::vector<float> levels; ///< at the start of the block, if it has events
    int buses, pieces = 0;
    bool moved = false;
};
