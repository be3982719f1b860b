#pragma once

#include "base/Atomic.h"

#include <concepts>

/// What the host tells the windows. `delays` is for the cycle alone.
enum class HostNotice : unsigned {
    graph = 1,         ///< components or channels are others, or all is drawn in another look
    cables = 2,        ///< beside `graph`: by a step
    peaks = 4,         ///< images of samples are there
    devices = 8,       ///< the device, or what else the settings show
    folders = 0x100,   ///< the folders of `CQV::changedFolders`
    transport = 0x400, ///< play state
    takes = 0x2000,    ///< a take has changed the song
    pages = 0x8000,    ///< docks or records of windows
    step = 0x10000,    ///< a step was carried out
    delays = 0x100000, ///< the delay compensation has to be worked out anew
    pool = 0x400000,   ///< samples of the project
};

/// What a sequencer tells its views.
enum class SeqNotice : unsigned {
    tracks = 16,
    parts = 128,
    noFolder = 0x100,    ///< nothing is recorded, for want of a project folder
    cuts = 0x1000,       ///< parts were cut: editors show others
    position = 0x4000,   ///< the song has jumped
    transport = 0x20000, ///< locators, loop, play state
};

/// What any component tells its editor.
enum class CompNotice : unsigned {
    content = 128,
    program = 0x800,
    maps = 0x200000, ///< the map window shows other targets
};

template <class E>
concept NoticeEnum =
    std::same_as<E, HostNotice> || std::same_as<E, SeqNotice> || std::same_as<E, CompNotice>;

template <NoticeEnum E>
class Notices;

/// Some of the notices of a kind.
template <NoticeEnum E>
class NoticeSet {
public:
    constexpr NoticeSet() = default;
    constexpr NoticeSet(E notice) : bits(unsigned(notice)) {}

    constexpr explicit operator bool() const { return bits != 0; }
    constexpr bool meets(NoticeSet other) const { return (bits & other.bits) != 0; }
    constexpr NoticeSet operator|(NoticeSet other) const {
        other.bits |= bits;
        return other;
    }
    constexpr bool operator==(const NoticeSet&) const = default;

private:
    friend class Notices<E>;
    unsigned bits = 0;
};

template <NoticeEnum E>
constexpr NoticeSet<E> operator|(E a, E b) {
    return NoticeSet<E>(a) | NoticeSet<E>(b);
}

/// The notices that wait to be taken. Any thread.
template <NoticeEnum E>
class Notices {
public:
    void raise(NoticeSet<E> notices) { word.fetchOr(notices.bits); }
    /// Those of the asked ones that had been raised since they were taken last.
    NoticeSet<E> take(NoticeSet<E> asked) {
        asked.bits &= word.fetchAnd(~asked.bits);
        return asked;
    }
    bool raised(NoticeSet<E> asked) const { return (word & asked.bits) != 0; }

private:
    Shared<unsigned> word{0};
};

/// What follows when a step has been carried out, forth or back.
struct StepEffects {
    bool graph = false; ///< HostNotice `graph` and `cables`
    bool song = false;  ///< what sequencers know of their songs is worked out anew
    NoticeSet<HostNotice> host{};
    NoticeSet<SeqNotice> seq{};   ///< to the component of the step, a sequencer
    NoticeSet<CompNotice> comp{}; ///< to the component of the step
};
