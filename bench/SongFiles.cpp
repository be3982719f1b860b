#include "audiofiles/CSample.h"
#include "engine/CMixer.h"
#include "engine/CQV.h"
#include "project/CompTable.h"
#include "project/ProjectFile.h"
#include "project/ProjectUi.h"
#include "project/SongSounds.h"
#include "sequencer/midi/MidiExport.h"
#include "sequencer/song/CSeq.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

// Writes the songs that latency_bench opens:
//   notes.mid  60 tracks with 1,600 notes each, in one part of a hundred bars: any program reads it
//   large.qv   200 tracks with 25 parts of 100 notes, and 32 with half an hour of audio (large.wav)

namespace {

constexpr int barTicks = 3840, notePitches = 40, lowestPitch = 40;
constexpr int instruments = 16; ///< that the large song plays
constexpr int audioTracks = 32, audioMinutes = 30, audioRate = 44100;

class Session {
public:
    Session() {
        enterCompTypes();
        host = std::make_unique<CQV>();
        qv = host.get();
        host->settingsEnabled = false;
        host->init();
        mixer = std::make_unique<CMixer>(host.get());
        mixer->init();
        seq = addSequencer(host.get());
        seq->setLoop(0);
    }
    CPart* addNotes(CSongTrack* track, int from, int ticks, int notes, int first) {
        auto* part = new CMIDIPart;
        part->pos = from;
        part->length = ticks;
        EventCollector events;
        for (int n = 0; n < notes; n++) {
            CMIDIEvent* note = createMIDIEvent();
            const int pitch = lowestPitch + (n * 7 + first) % notePitches;
            note->data = 0x640090 | pitch << 8;
            note->length = ticks / notes * 4 / 5;
            events.add(int(int64_t(n) * ticks / notes), note);
        }
        part->setEvents(events.takeList());
        return track->linkPart(part);
    }
    CSongTrack* addTrack(int kind, int number) {
        CSongTrack* track = seq->addTrack(kind, seq->getProg(), nullptr);
        track->track->id = CStr("Track ") + CStr(std::to_string(number + 1).c_str());
        return track;
    }
    bool save(const std::string& path) {
        seq->orderParts(nullptr, nullptr, true);
        const Project project{host.get(), mixer.get(), &ui};
        return saveProject(project, path.c_str());
    }
    std::unique_ptr<CQV> host;
    std::unique_ptr<CMixer> mixer;
    CSeq* seq = nullptr;

private:
    ProjectUi ui;
};

bool writeNotes(const std::string& path) {
    constexpr int tracks = 60, notes = 1600, bars = 100;
    Session session;
    for (int t = 0; t < tracks; t++)
        session.addNotes(session.addTrack(trackMIDI, t), 0, bars * barTicks, notes, t);
    return exportMIDIFile(session.seq, path.c_str()) == MidiExport::good;
}

/// Beats that die away, so that a wave has peaks and a body.
bool writeAudio(const std::string& path) {
    CSample file;
    file.setFormat(audioRate, 16, 1);
    file.create(path.c_str());
    if (!file.validHandle()) return false;
    file.writeHeader();
    std::vector<float> beat(audioRate / 2);
    for (int b = 0; b < audioMinutes * 60 * 2; b++) {
        const double hz = 110 * (1 + b % 7);
        for (size_t i = 0; i < beat.size(); i++) {
            const double s = double(i) / audioRate;
            beat[i] = float(std::exp(-6 * s) * 0.7 * std::sin(2 * std::numbers::pi * hz * s));
        }
        file.writeFrames(int(beat.size()), beat.data(), beat.data());
    }
    file.writeHeader();
    file.close();
    return true;
}

void addAudio(Session& session, CSample* sample, int number) {
    auto* part = new CAudioPart;
    part->length = audioMinutes * 60 * 2 * 960;
    CAudioEvent* clip = createAudioEvent();
    clip->sample = sample;
    clip->start = 0;
    clip->end = sample->getFrames();
    part->addEvent(0, clip);
    session.addTrack(trackAudio, number)->linkPart(part);
}

bool writeLarge(const std::string& folder) {
    constexpr int tracks = 200, parts = 25, notes = 100, bars = 4;
    if (!writeAudio(folder + "large.wav")) return false;
    Session session;
    CSample* sample = session.host->addSample((folder + "large.wav").c_str(), 1);
    if (!sample) return false;
    for (int t = 0; t < tracks; t++) {
        CSongTrack* track = session.addTrack(trackMIDI, t);
        if (t % (tracks / instruments) == 0) addSynthesizer(session.seq, track->track, t);
        for (int p = 0; p < parts; p++) {
            const int shorter = t * 37 % 8 * 240;
            session.addNotes(track, p * bars * barTicks, bars * barTicks - shorter, notes, t + p);
        }
        if (t % (tracks / audioTracks) == 0 && t / (tracks / audioTracks) < audioTracks)
            addAudio(session, sample, tracks + t);
    }
    return session.save(folder + "large.qv");
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) return std::fprintf(stderr, "song_files FOLDER\n"), 2;
    const std::string folder = std::filesystem::absolute(argv[1]).string() + "/";
    const bool written = writeNotes(folder + "notes.mid") && writeLarge(folder);
    if (!written) std::fprintf(stderr, "the songs could not be written\n");
    return written ? 0 : 1;
}
