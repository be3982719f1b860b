#pragma once

#include "base/CStr.h"
#include "mixer/StripModel.h"

#include <unordered_map>
#include <vector>

/// Which strips of the sections that show are meant: all, those that sound or have a little while
/// ago, those whose sound goes through certain strips, or certain ones; and of these those in whose
/// names a text occurs. Outputs always pass. Interface thread.
class StripFilter {
public:
    enum Kind { all, sounding, routed, chosen };
    static constexpr int soundMs = 5000;     ///< that a strip counts as sounding after it has
    static constexpr float audible = 0.001f; ///< amplitude, -60 dB

    /// `strips` are those that `routed` and `chosen` are about.
    void set(Kind which, const std::vector<MixerStrip>& strips);
    void setName(const CStr& part);
    Kind kind() const { return how; }
    const CStr& namePart() const { return name; }

    bool passes(CQV* host, const MixerStrip& strip) const;
    /// Takes the present levels, at a time in milliseconds; whether other strips sound now.
    bool listen(const std::vector<MixerStrip>& strips, int now);
    /// Lets go of strips that are no longer there.
    void keepTo(const std::vector<MixerStrip>& strips);

private:
    bool sounds(const COutputChannel* ch) const { return heard.count(ch) > 0; }

    Kind how = all;
    CStr name;                                            ///< small letters
    std::vector<const COutputChannel*> meant;             ///< only compared
    std::unordered_map<const COutputChannel*, int> heard; ///< when last; only compared
};
