#pragma once

#include <map>
#include <vector>

class CSeq;
class CSongTrack;
class CSubTrack;
class CTrack;

/// A row of the arrangement: a track, or under it a take of its parts, what lies inside them, or an
/// automation lane.
/// Heights and places in pixels, from the top of the first row.
struct ArrangeRow {
    CSongTrack* songTrack = nullptr;
    CSubTrack* lane = nullptr;     ///< null for other rows than of a lane
    int take = -1;                 ///< index, -1 for other rows than of a take
    bool notes = false;            ///< the keys or sounds of the track's parts
    int topKey = 0, keyHeight = 0; ///< of such a row of keys: the first one, and pixels
    int track = 0;                 ///< index in the program
    int depth = 0;                 ///< folders around it
    int top = 0, height = 0;

    int bottom() const { return top + height; }
    bool ofTrack() const { return !lane && take < 0 && !notes; } ///< the row of the track itself
};

/// The rows that show, from top to bottom: tracks in closed folders have none. Interface thread.
class RowLayout {
public:
    void build(CSeq* seq); ///< null for no rows
    void clear() { rows.clear(); }
    bool showsNotes(const CTrack* track) const { return fits.contains(track); }
    void showNotes(const CTrack* track, bool on); ///< from the next `build` on
    /// Another first key in such a row, as far as there are keys, from the next `build` on.
    void scrollKeys(const CTrack* track, int topKey);
    const std::vector<ArrangeRow>& all() const { return rows; }
    int total() const; ///< pixels
    /// The row at a height, null outside all.
    const ArrangeRow* at(int y) const;
    /// The same, but above all the first and below all the last one; null without rows.
    const ArrangeRow* nearest(int y) const;
    /// The row of a track, null while a folder hides it.
    const ArrangeRow* of(const CSongTrack* songTrack) const;

private:
    std::vector<ArrangeRow> rows;
    /// Which keys a row of notes shows; they stay while they show all that there is.
    struct KeyFit {
        int topKey = 0, keyHeight = 0; ///< height 0: none yet
        bool byHand = false;           ///< scrolled: they stay
    };
    ArrangeRow notesRow(CSongTrack* songTrack);

    std::map<const CTrack*, KeyFit> fits; ///< of tracks that show notes, only to be compared
};
