#pragma once

#include "engine/SamplePool.h"
#include "project/BringIn.h"

#include <memory>

class CQV;
class CUndo;
class NewTracks;

/// A file on its way into a song. It is read first, while nothing of the song changes, then all
/// that come together are linked in one step. Interface thread.
class Arrival {
public:
    const CStr path;
    const BringPlace place;

    virtual ~Arrival() = default;
    Arrival(const Arrival&) = delete;
    Arrival& operator=(const Arrival&) = delete;

    /// For the kind of the file; null for what is no `SongFile`.
    static std::unique_ptr<Arrival> make(CSeq* seq, const BringFile& file);

    virtual int trackKind() const { return 0; }    ///< that it comes to; 0 for no track
    virtual bool hasTime() const { return false; } ///< it is a part of the song, and no instrument
    virtual int trackCount() const { return 1; }   ///< once prepared
    virtual bool takesPlace() const;               ///< the track of the place will do for the first
    virtual bool prepare(const SamplePool::ImportWatch& watch) = 0; ///< false after a message
    virtual bool adopt() { return true; } ///< has the pool take the samples; false as above
    virtual void link(NewTracks&, CUndo*) {}
    /// The step is done; for what is a step of its own. False after a message.
    virtual bool finish() { return true; }

protected:
    Arrival(CSeq* into, const BringFile& file);
    CStr stem() const;
    bool unread() const;
    bool onKind(int kind) const; ///< the track of the place is of that kind

    CSeq* const seq;
    CQV* const host;
};

/// A message, and false.
bool failToBring(const CStr& text, const CStr& what);
