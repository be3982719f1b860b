#pragma once

#include "project/FileFacts.h"

class CDropItem;
template <class T>
class ListOf;
class CSeq;

/// Where files would come that are dropped at a place.
struct DropTarget {
    CSongTrack* onto = nullptr; ///< null below all tracks
    int tick = 0;
    bool stacked = false; ///< under each other, and else one behind the other

    bool operator==(const DropTarget&) const = default;
};

/// What is shown of one of them while they hover.
struct DropBox {
    CSongTrack* row = nullptr; ///< that it comes to, or that a new one comes below; null behind all
    int below = -1;            ///< number of the new row, -1 none
    int tick = 0, ticks = 0;   ///< 0 ticks: it has no place in time
    bool sure = true;          ///< the length is known
    CStr name;
};

/// What a drop does, as it is shown before and carried out at the release.
struct DropPlan {
    std::vector<BringFile> files;
    std::vector<DropBox> boxes;
    CStr refusal; ///< why nothing comes, empty when something does
};

/// The files among the items that are dragged.
std::vector<CStr> filesAmong(const ListOf<CDropItem>& items);

/// `rows` are the tracks that show, in order; `facts` those of `paths`. Files that a song does not
/// take are left out.
DropPlan planDrop(CSeq* seq, const std::vector<CSongTrack*>& rows, const std::vector<CStr>& paths,
                  const std::vector<FileFacts>& facts, const DropTarget& target);
