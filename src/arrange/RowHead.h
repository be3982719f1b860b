#pragma once

#include "arrange/HeadSigns.h"
#include "gui/CGroup.h"

#include <vector>

class CSongTrack;
class CSubTrack;
class HeadList;
struct ArrangeRow;

/// Head of one row: of a track, or of a take or lane under it. It is there while its row shows.
/// Interface thread.
class RowHead : public CGroup {
public:
    static constexpr int headWidth = 236;
    static constexpr int edgeReach = 4; ///< pixels at the lower edge that drag the height
    static constexpr int cursorPlain = 1, cursorUpDown = 11;

    RowHead(HeadList& list, const char* name, const ArrangeRow& row);

    CSongTrack* songTrack() const { return track; }
    CSubTrack* shownLane() const { return lane; }
    bool ofTrack() const { return !lane && take < 0 && !notes; }
    bool isOf(const ArrangeRow& row) const;
    /// Lays itself out for its row as it is now.
    virtual void show(const ArrangeRow& row) = 0;
    virtual void refresh() = 0;                  ///< follows what it shows
    virtual bool followSound() { return false; } ///< follows the level; whether that shows
    virtual void findSound() {}                  ///< the cables are others
    /// What of it takes the keys, from the left, itself first.
    virtual std::vector<CCtrl*> stops() = 0;

    void mouseMove(int x, int y, int btn) override;

protected:
    static constexpr int gap = 4, stripe = 4, indent = 12, mostIndents = 4;

    bool onEdge(int y) const { return y >= height - edgeReach; }
    static int indentOf(const ArrangeRow& row);

    HeadList& list;
    CSongTrack* track; ///< not owned
    CSubTrack* lane;   ///< not owned; null for other rows than of a lane
    int take;          ///< -1 for other rows than of a take
    bool notes;        ///< of a row for what lies in the parts
};
