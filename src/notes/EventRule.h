#pragma once

#include "base/CStr.h"

#include <optional>
#include <vector>

struct CBaseEvent;
struct NotePlace;

/// Which events of a part are meant, as it is typed: words that all have to hold, such as "note",
/// "velocity>100", "key=C4", "length<0.1.0", "beat=1". Interface thread.
class EventRule {
public:
    /// None for words that it does not know. No words hold for every event.
    static std::optional<EventRule> read(const NotePlace& place, const CStr& text);
    /// `tick` is of the part's own time.
    bool holds(const NotePlace& place, const CBaseEvent* event, int tick) const;

    static constexpr const char* help =
        "note hit controller pitch pressure program selected, key velocity value length channel "
        "bar beat with = < > and a number";

private:
    enum class Field { key, velocity, value, length, channel, bar, beat };
    struct Term {
        const char* kind = nullptr; ///< of `eventType`, "" for what is selected; null: a comparison
        Field field = Field::key;
        char compare = '='; ///< or < or >
        int number = 0;
    };
    static std::optional<Term> readTerm(const NotePlace& place, const CStr& word);
    static std::optional<int> fieldOf(const NotePlace& place, const CBaseEvent* event, int tick,
                                      Field field);

    std::vector<Term> terms;
};
