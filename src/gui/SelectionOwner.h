#pragma once

#include <chrono>
#include <initializer_list>
#include <list>
#include <memory>
#include <string>

union _XEvent;

/// Offers our texts to other programs, as the owner of the selections CLIPBOARD and PRIMARY. Who
/// asks gets one in UTF-8 or Latin-1; a large one goes piece by piece, at the pace of the asking
/// program, and is given up when that does not go on. Interface thread.
class SelectionOwner {
public:
    /// Becomes the owner of these selections (atoms), one or two, with a text. Nothing happens
    /// without a display.
    void offer(const std::string& utf8, std::initializer_list<unsigned long> selections);
    /// Whether our text is in a selection (an atom) now.
    bool owns(unsigned long selection) const;
    /// What we offer, or have offered last, as a selection; empty before.
    const std::string& getText(unsigned long selection) const;
    /// Whether an event is for `handle`.
    bool concerns(const _XEvent& event) const;
    bool handle(const _XEvent& event); ///< false when it does not concern us
    void close();                      ///< before the connection goes

private:
    using Text = std::shared_ptr<const std::string>;
    using Clock = std::chrono::steady_clock;
    struct Offer {
        unsigned long selection = 0;
        Text text;
        unsigned long time = 0; ///< the server's, when the selection became ours
    };
    /// A text on its way in pieces.
    struct Transfer {
        unsigned long requestor, property, type;
        Text bytes;
        size_t done;
        long formerMask; ///< events of the requestor's window that we had asked for
        Clock::time_point touched;
    };

    Offer& offerOf(unsigned long selection); ///< a new one before the first
    void answer(const _XEvent& event);
    bool answerMany(const Offer& offer, unsigned long requestor, unsigned long property);
    bool convert(const Offer& offer, unsigned long requestor, unsigned long target,
                 unsigned long property);
    void put(unsigned long requestor, unsigned long property, unsigned long type, Text bytes);
    void begin(Transfer transfer);
    std::list<Transfer>::iterator transferOf(const _XEvent& event);
    void sendPiece(std::list<Transfer>::iterator transfer);
    std::list<Transfer>::iterator end(std::list<Transfer>::iterator transfer);
    void dropIdle();

    unsigned long window = 0; ///< owned; never shown
    std::list<Offer> offers;  ///< one of each selection that was ours at any time
    std::list<Transfer> transfers;
};

SelectionOwner& selectionOwner(); ///< of the one connection
