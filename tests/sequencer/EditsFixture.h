#pragma once

#include "SongFileFixture.h"

#include <functional>
#include <sstream>
#include <string>

/// Two seconds, which last 3840 ticks of 25 frames at 120 beats a minute.
constexpr int clipFrames = 96000, framesPerTick = 25;

inline CAudioEvent* clip(CSample* sample, int start = 0, int end = clipFrames - 1) {
    CAudioEvent* event = createAudioEvent();
    event->sample = sample;
    event->start = start;
    event->end = end;
    return event;
}

/// An instrument track with a part, a second one that is a ghost, a third that shows the same, a
/// section and tempos; empty tracks of audio and drums.
struct Edits : SongFileFixture {
    CSongTrack* midi = track(trackMIDI);
    CSongTrack* audio = track(trackAudio);
    CSongTrack* drums = track(trackDrum);
    CSample* sample = new CSample;

    Edits() {
        enterSequencer();
        sample->setFormat(48000, 16, 1);
        sample->takeData(static_cast<unsigned char*>(std::calloc(clipFrames, 2)), clipFrames);
        sample->filename = "clip.wav";
        host.samples.add(sample);
        CPart* a = midiPart(0);
        a->id = "A";
        a->addEvent(0, note(60));
        a->addEvent(1910, longNote(62, 960));
        for (int tick : {0, 1920}) a->addEventParam(tick, createEnvEvent(nullptr, 0.5f), 0);
        midi->addPart(a, nullptr);
        CPart* b = midiPart(3840, 1920);
        b->addEvent(100, note(64));
        midi->addPart(b, nullptr);
        step([&](CUndo* u) {
            CPart* ghost = seq->makeGhost(b, u);
            ghost->pos = 7680;
            midi->addPart(ghost, u);
        });
        auto* section = new CMarkerPart;
        section->length = 3840;
        prog()->addMarker(section, nullptr);
        for (auto [tick, bpm] : {std::pair{960, 100.0f}, {2880, 140.0f}, {4800, 90.0f}}) {
            auto* tempo = new CTempoPart;
            tempo->pos = tick;
            tempo->setTempo(bpm);
            prog()->addTempo(tempo, nullptr);
        }
        host.undoClear();
    }

    static CMIDIEvent* longNote(int number, int length) {
        CMIDIEvent* event = note(number);
        event->length = length;
        return event;
    }
    CPart* part(CSongTrack* on, int i) { return on->parts.items(i); }
    CPart* addAudio(int pos, std::vector<std::pair<int, CAudioEvent*>> clips) {
        auto* made = new CAudioPart;
        made->pos = pos;
        made->multiclip = clips.size() > 1;
        for (auto [tick, event] : clips) made->addEvent(tick, event);
        return audio->addPart(made, nullptr);
    }
    /// Selects parts of a track by their letters, "a" the first.
    void select(CSongTrack* on, const std::string& which) {
        seq->unselectParts();
        for (char c : which) part(on, c - 'a')->setSelected(true);
    }
    void at(int tick) { host.setPos(double(tick)); }
    void locators(int from, int to) { seq->setLoopSection(from, to); }
    void openTrack(CSongTrack* on) {
        on->track->setOpen(true);
        seq->selectTrack(on, true);
    }
    /// Position, locators and tracks, which no step records, as they were at first.
    void leaveView() {
        at(0);
        locators(0, 3840);
        seq->unselectTracks();
        for (auto* t : seq->tracks) t->setOpen(false);
    }
    std::string show(CSongTrack* on) {
        std::ostringstream out;
        for (auto* p : on->parts) {
            out << "| " << p->pos << ':' << seq->getTicks(p) << (p->ghostOf ? " ghost" : "")
                << (p->muted() ? " mute" : "");
            int tick = p->offset;
            for (CBaseEvent* e = p->getEvents(); e; e = e->next)
                showEvent(out, p, e, tick += e->delta);
            for (const auto& [point, value] : pointsOf(p, 0)) {
                out << " ~" << p->offset + point;
                if (value != 50) out << ':' << value << '%';
            }
            out << ' ';
        }
        return out.str();
    }
    std::string showPoints() {
        std::ostringstream out;
        for (auto* t : prog()->tempos) out << t->pos << '@' << t->getTempo() << ' ';
        for (auto* m : prog()->markers) out << 'M' << m->pos << ':' << m->length;
        return out.str();
    }
    /// The song as it would be stored with no part selected.
    std::string bytes() {
        std::vector<std::pair<CPart*, unsigned>> flags;
        seq->eachSongTrack([&flags](CSongTrack* t) {
            for (auto* p : t->parts) flags.emplace_back(p, p->flags);
        });
        seq->unselectParts();
        std::string written = write();
        for (const auto& [p, kept] : flags) p->flags = kept;
        return written;
    }

private:
    /// The velocity only of notes that differ from those of the fixture.
    static void showMessage(std::ostream& out, const CMIDIEvent* e) {
        if (!noteOn(e->data)) out << std::hex << statusByte(e->data) << std::dec << ':';
        out << asByte1(e->data) << '/' << (noteOn(e->data) ? e->length : asByte2(e->data));
        if (noteOn(e->data) && asByte2(e->data) != 100) out << 'v' << asByte2(e->data);
    }
    static void showEvent(std::ostream& out, CPart* p, CBaseEvent* e, int tick) {
        out << ' ' << tick << '=';
        if (p->type == partMIDI)
            showMessage(out, static_cast<CMIDIEvent*>(e));
        else if (p->type == partDrum)
            out << static_cast<CDrumEvent*>(e)->sound << '/' << static_cast<CDrumEvent*>(e)->length;
        else
            out << static_cast<CAudioEvent*>(e)->start << '-' << static_cast<CAudioEvent*>(e)->end;
    }
};

inline const std::string noteA = "| 0:3840 0=60/240 1910=62/960 ~0 ~1920 ";
inline const std::string halfA = "| 0:1920 0=60/240 1910=62/960 ~0 ~1920 ";
inline std::string ghost(int pos) {
    return "| " + std::to_string(pos) + ":1920 ghost 100=64/240 ";
}

/// An edit that is one step of the history.
struct EditCase {
    const char* name;
    std::function<void(Edits&)> prepare;
    std::function<void(CSeq*)> run;
    const char* title;
    std::string parts;                     ///< of a track afterwards
    const char* points = "";               ///< tempos and section; empty: as before
    int items = 0;                         ///< of the step; 0: any number
    CSongTrack* Edits::*on = &Edits::midi; ///< whose parts are told
};

/// Nothing of it reaches locked tracks.
inline void checkLocked(const EditCase& c) {
    Edits e;
    c.prepare(e);
    const auto shown = [&e] { return e.show(e.midi) + e.show(e.audio) + e.show(e.drums); };
    const std::string before = shown();
    for (auto* t : e.seq->tracks) t->locked = 1;
    c.run(e.seq);
    e.host.settle();
    EXPECT_EQ(shown(), before);
}

/// It does what it tells, and the way back and forth leads to equal files.
inline void checkEdit(const EditCase& c) {
    SCOPED_TRACE(c.name);
    Edits e;
    c.prepare(e);
    const std::string points = e.showPoints(), start = e.bytes();
    const int steps = e.host.undoList.getCount();
    c.run(e.seq);
    e.host.settle();
    EXPECT_STREQ(e.host.undoText().asChar(), c.title);
    ASSERT_EQ(e.host.undoList.getCount(), steps + 1);
    EXPECT_EQ(e.show(e.*c.on), c.parts);
    EXPECT_EQ(e.showPoints(), *c.points ? c.points : points);
    const auto* step = e.host.undoList.items(steps);
    EXPECT_TRUE(!c.items || step->items.getCount() == c.items);
    const std::string edited = e.bytes();
    EXPECT_NE(edited, start);
    e.undo();
    EXPECT_TRUE(e.bytes() == start) << "undone: " << e.show(e.*c.on);
    e.redo();
    EXPECT_TRUE(e.bytes() == edited) << "redone: " << e.show(e.*c.on);
    checkLocked(c);
}
