#pragma once

class CObject;
class CQV;
class CStream;

/// How a file names what an automation lane moves: by the places of components, channels, sends
/// and inserts in their lists. What has no place has an empty link.
struct LaneLink {
    int kind = 0;
    int first = 0, firstMode = 0;
    int second = 0, secondMode = 0;
    int third = 0;

    static constexpr int bytes = 32;
    static LaneLink to(CQV* host, CObject* object);
    static LaneLink read(CStream& stream);
    void write(CStream* stream) const;

    /// The object, null where there is none.
    CObject* resolve(CQV* host) const;
    bool operator==(const LaneLink&) const = default;
};
