#include "notes/EventRule.h"

#include "base/Numbers.h"
#include "engine/MidiBytes.h"
#include "notes/EventCells.h"
#include "sequencer/edit/PartEdits.h"
#include "sequencer/song/Bars.h"
#include "sequencer/song/CSeq.h"
#include "sequencer/song/EventKinds.h"
#include "ui/NotePlace.h"
#include "ui/PlaceText.h"

#include <cstdlib>
#include <cstring>
#include <sstream>

namespace {

struct KindWord {
    const char *word, *type;
};
constexpr KindWord kinds[] = {{"note", "Note-on"},          {"hit", "Hit"},
                              {"controller", "C.Change"},   {"pitch", "Pitch.wh"},
                              {"pressure", "Ch.pre"},       {"program", "Prog.ch"},
                              {"aftertouch", "Aftertouch"}, {"selected", ""}};
/// In the order of `EventRule::Field`.
constexpr const char* fields[] = {"key", "velocity", "value", "length", "channel", "bar", "beat"};

} // namespace

std::optional<EventRule> EventRule::read(const NotePlace& place, const CStr& text) {
    EventRule rule;
    std::istringstream words(text.asChar());
    for (std::string word; words >> word;) {
        const std::optional<Term> term = readTerm(place, word.c_str());
        if (!term) return std::nullopt;
        rule.terms.push_back(*term);
    }
    return rule;
}

std::optional<EventRule::Term> EventRule::readTerm(const NotePlace& place, const CStr& word) {
    for (const KindWord& kind : kinds)
        if (word == kind.word) return Term{.kind = kind.type};
    const char* at = word.asChar();
    const size_t named = std::strcspn(at, "=<>");
    if (at[named] == 0 || at[named + 1] == 0) return std::nullopt;
    for (size_t i = 0; i < std::size(fields); i++) {
        if (std::strlen(fields[i]) != named || std::strncmp(at, fields[i], named) != 0) continue;
        Term term{.field = Field(i), .compare = at[named]};
        const CStr operand = at + named + 1;
        char* end = nullptr;
        term.number = int(std::strtol(operand.asChar(), &end, 10));
        if (term.field == Field::length)
            term.number = spanOf(place.seq, operand);
        else if (*end)
            term.number = term.field == Field::key ? keyOf(operand) : -1;
        if (*end && term.number <= 0) return std::nullopt;
        return term;
    }
    return std::nullopt;
}

std::optional<int> EventRule::fieldOf(const NotePlace& place, const CBaseEvent* event, int tick,
                                      Field field) {
    const NoteFacts facts = factsOf(place.part, const_cast<CBaseEvent*>(event), tick);
    const bool timed = facts.length > 0;
    switch (field) {
    case Field::key:
        return timed ? std::optional(facts.row) : std::nullopt;
    case Field::velocity:
        return timed ? std::optional(facts.velocity) : std::nullopt;
    case Field::length:
        return timed ? std::optional(facts.length) : std::nullopt;
    case Field::bar:
        return barPlace(place.seq, place.part->pos + place.part->offset + tick).bar;
    case Field::beat:
        return barPlace(place.seq, place.part->pos + place.part->offset + tick).beat;
    default:
        break;
    }
    if (place.part->type != partMIDI) return std::nullopt;
    const auto* message = asMessage(event);
    return field == Field::channel ? messageChannel(message) : messageValue(message);
}

bool EventRule::holds(const NotePlace& place, const CBaseEvent* event, int tick) const {
    for (const Term& term : terms) {
        if (term.kind) {
            const bool is = *term.kind
                                ? std::strcmp(eventType(place.part->type, event), term.kind) == 0
                                : isSelected(event);
            if (!is) return false;
            continue;
        }
        const std::optional<int> own = fieldOf(place, event, tick, term.field);
        if (!own) return false;
        if (term.compare == '<'   ? *own >= term.number
            : term.compare == '>' ? *own <= term.number
                                  : *own != term.number)
            return false;
    }
    return true;
}
