#pragma once

#include <optional>

class CSeq;

/// Makes stretchers for the clips of a song that keep their pitch at another tempo, before they are
/// played: as many as can be in use at one time, and one at least while there are any clips. One
/// takes 2 MB and 2 ms to make. Interface thread.
class StretchersAhead {
public:
    explicit StretchersAhead(CSeq* of) : seq(of) {}

    void idle(); ///< makes one at most
    void makeAll();

private:
    int wanted();

    CSeq* seq;
    std::optional<unsigned> countedAt; ///< changes of the project
    int counted = 0;
};
