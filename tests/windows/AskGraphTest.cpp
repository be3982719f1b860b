#include "Blocks.h"
#include "BusyComp.h"
#include "ModularFixture.h"

#include "audiofiles/CSample.h"
#include "common/fx/CEQ.h"
#include "effects/CEffect.h"
#include "engine/plan/GraphProbe.h"
#include "instruments/CSampler.h"
#include "instruments/CSynthProg.h"
#include "modular/AnswerList.h"
#include "modular/AskGraph.h"
#include "modular/FindField.h"
#include "modular/FindGraph.h"
#include "project/SongSounds.h"
#include "sequencer/edit/MoveEdits.h"
#include "sequencer/song/CPart.h"

namespace {

/// A component that takes its time.
class LateComp : public CGroupCh {
public:
    using CGroupCh::CGroupCh;
    int getDelay() override { return 441; }
};

/// A song of two instrument tracks, "Bass" and "Lead", with a part and a synthesizer each, and one
/// of audio, "Voice"; the bass goes through an effect. Nothing is wrong with it.
class AskGraphTest : public ModularFixture {
protected:
    void begin() {
        start();
        ASSERT_TRUE(load(kindEmpty));
        for (const auto& [kind, name] :
             {std::pair{trackMIDI, "Bass"}, {trackMIDI, "Lead"}, {trackAudio, "Voice"}}) {
            CTrack* track = seq()->addTrack(kind, seq()->getProg(), nullptr)->track;
            track->setId(name);
            if (kind != trackMIDI) continue;
            addSynthesizer(seq(), track, 0)->setId(CStr(name) + " synth");
            insertPart(seq(), songTrack(name), PartPlace{0, 3840});
        }
        rack = static_cast<CEffect*>(addComp(host.get(), compEffect, {}));
        rack->setId("Rack");
        toggleCable(synth("Bass")->output(), out()->input());
        toggleCable(synth("Bass")->output(), rack->input());
        toggleCable(rack->output(), out()->input());
        again();
    }
    /// Lets the engine see what has changed.
    void again() {
        ASSERT_TRUE(loaded());
        runBlocks(host.get(), 2);
    }
    CSongTrack* songTrack(const char* name) {
        for (auto* t : seq()->getProg()->tracks)
            if (t->track->id == name) return t;
        return nullptr;
    }
    CTrack* track(const char* name) { return songTrack(name)->track; }
    CSampler* synth(const char* name) {
        return static_cast<CSampler*>(comp((std::string(name) + " synth").c_str()));
    }
    CAudioCable* audioCable(CComp* from, CComp* to) {
        return getAudioCable(to, from->output(), nullptr);
    }
    GraphAnswer ask(GraphQuestion question, const CObject* about) {
        const GraphModel graph(host.get());
        GraphProbe probe(host.get());
        probe.ask();
        runBlocks(host.get(), 1);
        host->tasks->pump();
        EXPECT_TRUE(probe.take());
        return AskGraph(host.get(), graph, probe).ask(question, about);
    }
    static std::string said(const GraphAnswer& answer) {
        std::string all;
        for (const GraphCause& cause : answer.causes)
            all += std::string(cause.text.asChar()) + "\n";
        return all + answer.note.asChar();
    }

    template <class T>
    T* link(T* made, const char* name) {
        made->init();
        made->createBuffers(host->frames);
        made->setId(name);
        GraphHold hold(host.get());
        host->comps.add(made);
        return made;
    }
    static void muteSounds(CSampler* sampler, int on) {
        static_cast<CSynthProg*>(sampler->getProgram(-1))->eachSound([on](CSound* sound) {
            sound->mute = static_cast<unsigned char>(on);
        });
    }
    /// A part whose file is not there.
    void addLost() {
        auto* part = new CAudioPart;
        part->id = "Lost";
        CAudioEvent* event = createAudioEvent();
        event->sample = &lost;
        part->addEvent(0, event);
        songTrack("Voice")->linkPart(part);
    }
    void dropLost() {
        auto& parts = songTrack("Voice")->parts;
        auto* part = parts.items(0);
        parts.remove(part);
        delete part;
    }

    CEffect* rack = nullptr;
    CSample lost;
};

/// Each fault is planted, found with its cause and nothing else, and taken away again.
TEST_F(AskGraphTest, FindsEachPlantedFault) {
    begin();
    CSampler *bass = synth("Bass"), *lead = synth("Lead");
    CIO *bassPort = track("Bass")->outPort(), *voicePort = track("Voice")->output();
    auto* part = songTrack("Bass")->parts.items(0);
    auto* notes = static_cast<CObject*>(bass->midiCables.first());
    const auto cut = [](CIO* from, CIO* to) { return [=] { toggleCable(from, to); }; };
    struct Fault {
        const char* name;
        std::function<void()> plant, mend;
        const CObject* about;
        std::vector<GraphCause> causes;
    };
    const Fault faults[] = {
        {"muted cable on",
         [&] { toggleMute(host.get(), audioCable(rack, out())); },
         [&] { toggleMute(host.get(), audioCable(rack, out())); },
         rack,
         {{audioCable(rack, out()), "The cable Rack to Audio Out is muted."}}},
        {"muted cable in",
         [&] { toggleMute(host.get(), notes); },
         [&] { toggleMute(host.get(), notes); },
         bass,
         {{notes, "The cable Bass to Bass synth is muted."}}},
        {"strip muted",
         [&] { bass->output()->toggleMute(); },
         [&] { bass->output()->toggleMute(); },
         bass,
         {{bass, "Bass synth is muted."}}},
        {"fader",
         [&] { rack->output()->moveFader(0); },
         [&] { rack->output()->moveFader(1); },
         bass,
         {{rack, "The fader of Rack is at zero."}}},
        {"solo elsewhere",
         [&] { lead->output()->toggleSolo(); },
         [&] { lead->output()->toggleSolo(); },
         rack,
         {{lead, "Lead synth is soloed: all else is silent as long as it is."}}},
        {"switched off",
         [&] { rack->enable(0); },
         [&] { rack->enable(1); },
         rack,
         {{rack, "Rack is switched off."}}},
        {"asleep",
         [&] { rack->sleeping = 1; },
         [&] { rack->sleeping = 0; },
         bass,
         {{rack, "Rack sleeps."}}},
        {"no cable out",
         cut(rack->output(), out()->input()),
         cut(rack->output(), out()->input()),
         bass,
         {{rack->output(), "Nothing is cabled to Rack, out."}}},
        {"no cable in",
         cut(bass->output(), rack->input()),
         cut(bass->output(), rack->input()),
         rack,
         {{rack, "Nothing is cabled to the audio input of Rack."}}},
        {"no notes",
         cut(bassPort, bass->inPort()),
         cut(bassPort, bass->inPort()),
         bass,
         {{bass, "Nothing is cabled to the MIDI input of Bass synth."}}},
        {"track muted",
         [&] { songTrack("Bass")->setMuted(true); },
         [&] { songTrack("Bass")->setMuted(false); },
         bass,
         {{bassPort, "The track Bass is muted."}}},
        {"track soloed",
         [&] { songTrack("Lead")->setSoloed(true); },
         [&] { songTrack("Lead")->setSoloed(false); },
         rack,
         {{track("Lead")->outPort(),
           "The track Lead is soloed: Bass is silent as long as it is."}}},
        {"parts muted",
         [&] { part->setMuted(true); },
         [&] { part->setMuted(false); },
         bass,
         {{bassPort, "All parts of the track Bass are muted."}}},
        {"wrong channel",
         [&] { bass->mch = 4; },
         [&] { bass->mch = -1; },
         bass,
         {{bass, "Bass synth hears channel 5, and Bass plays on channel 1."}}},
        {"sounds muted",
         [&] { muteSounds(bass, 1); },
         [&] { muteSounds(bass, 0); },
         bass,
         {{bass, "All sounds of Bass synth are muted."}}},
        {"not armed",
         [] {},
         [] {},
         voicePort,
         {{voicePort, "The track Voice has no parts, and its input is not heard: it is not armed "
                      "or monitored."}}},
        {"sample missing",
         [&] { addLost(); },
         [&] { dropLost(); },
         voicePort,
         {{voicePort, "The sample of Lost on the track Voice is missing."}}},
        {"speakers",
         [&] { host->listenVolume = 0; },
         [&] { host->listenVolume = 1; },
         bass,
         {{out(), "The volume of your speakers, below the meter, is at zero."}}},
        // Two at once.
        {"mute and fader",
         [&] { bass->output()->toggleMute(), rack->output()->moveFader(0); },
         [&] { bass->output()->toggleMute(), rack->output()->moveFader(1); },
         bass,
         {{bass, "Bass synth is muted."}, {rack, "The fader of Rack is at zero."}}},
        {"track and strip",
         [&] {
             songTrack("Bass")->setMuted(true);
             bass->output()->toggleMute();
         },
         [&] {
             songTrack("Bass")->setMuted(false);
             bass->output()->toggleMute();
         },
         bass,
         {{bass, "Bass synth is muted."}, {bassPort, "The track Bass is muted."}}},
        {"both cables",
         [&] {
             toggleCable(bassPort, bass->inPort());
             toggleCable(rack->output(), out()->input());
         },
         [&] {
             toggleCable(bassPort, bass->inPort());
             toggleCable(rack->output(), out()->input());
         },
         bass,
         {{bass, "Nothing is cabled to the MIDI input of Bass synth."},
          {rack->output(), "Nothing is cabled to Rack, out."}}},
        {"off and asleep",
         [&] { rack->enable(0), rack->sleeping = 1; },
         [&] { rack->enable(1), rack->sleeping = 0; },
         rack,
         {{rack, "Rack is switched off."}, {rack, "Rack sleeps."}}},
        {"channel and mute",
         [&] {
             bass->mch = 4;
             rack->output()->toggleMute();
         },
         [&] {
             bass->mch = -1;
             rack->output()->toggleMute();
         },
         bass,
         {{bass, "Bass synth hears channel 5, and Bass plays on channel 1."},
          {rack, "Rack is muted."}}},
    };
    for (const Fault& fault : faults) {
        fault.plant();
        again();
        const GraphAnswer answer = ask(GraphQuestion::whySilent, fault.about);
        EXPECT_TRUE(answer.causes == fault.causes) << fault.name << ":\n" << said(answer);
        fault.mend();
        again();
    }
}

TEST_F(AskGraphTest, FindsNothingWrongWithAHealthyGraph) {
    begin();
    const std::vector<const CObject*> all = {
        synth("Bass"), rack, out(), audioCable(rack, out()), track("Lead")->outPort(),
        rack->input()};
    for (const CObject* about : all) {
        const GraphAnswer answer = ask(GraphQuestion::whySilent, about);
        EXPECT_TRUE(answer.causes.empty()) << said(answer);
        EXPECT_NE(said(answer).find("; the song stands still."), std::string::npos) << said(answer);
    }
    EXPECT_EQ(said(ask(GraphQuestion::whySilent, rack)),
              "Nothing keeps Rack silent; the song stands still.");
    EXPECT_EQ(said(ask(GraphQuestion::whyLate, rack)), "Rack is not late.");
    EXPECT_EQ(said(ask(GraphQuestion::whyLoud, rack)), "Rack is not loud.");
    // One of two sources is silent, and one of two ways is shut: that is no silence.
    synth("Lead")->output()->toggleMute();
    toggleCable(synth("Bass")->output(), out()->input());
    rack->output()->toggleMute();
    again();
    EXPECT_TRUE(ask(GraphQuestion::whySilent, synth("Bass")).causes.empty());
    EXPECT_TRUE(ask(GraphQuestion::whySilent, out()).causes.empty());
}

TEST_F(AskGraphTest, TellsWhatIsLateAndLoud) {
    begin();
    auto* late = link(new LateComp(host.get()), "Lookahead");
    toggleCable(rack->output(), out()->input());
    toggleCable(rack->output(), late->input());
    toggleCable(late->output(), out()->input());
    again();
    const GraphAnswer slow = ask(GraphQuestion::whyLate, rack);
    ASSERT_FALSE(slow.causes.empty());
    EXPECT_TRUE(slow.causes[0] == (GraphCause{late, "Lookahead takes 10.0 ms."})) << said(slow);
    const GraphAnswer waits = ask(GraphQuestion::whyLate, audioCable(synth("Lead"), out()));
    ASSERT_EQ(waits.causes.size(), 1u) << said(waits);
    EXPECT_EQ(waits.causes[0].blame, audioCable(synth("Lead"), out()));

    const auto loud = [&](const CObject* about) {
        return said(ask(GraphQuestion::whyLoud, about));
    };
    rack->output()->trim = 0.5f;
    EXPECT_EQ(loud(rack), "The trim of Rack is up.\n");
    rack->output()->trim = 0.0f;
    rack->output()->holdL = 2.0f;
    EXPECT_EQ(loud(rack), "Rack has reached 6.0 dB: it clips.\n");
    rack->output()->holdL = 0.0f;
    rack->output()->eq[0]->active = 1;
    rack->output()->setEqGain(0, 12.0f);
    EXPECT_EQ(loud(rack), "The equaliser of Rack adds 12.0 dB.\n");
    rack->output()->setEqGain(0, 0.0f);
    toggleCable(synth("Bass")->output(), out()->input());
    again();
    EXPECT_EQ(loud(rack), "Bass synth reaches the output by several ways.\n");
    toggleCable(synth("Bass")->output(), out()->input());
    toggleCable(late->output(), rack->input());
    again();
    EXPECT_EQ(loud(rack), "The cable Lookahead to Rack feeds back.\n");
}

TEST_F(AskGraphTest, TellsWhatCostsTime) {
    begin();
    auto* busy = link(new BusyComp(host.get()), "Busy");
    toggleCable(synth("Lead")->output(), busy->input());
    toggleCable(busy->output(), out()->input());
    runBlocks(host.get(), 16); // not all are measured
    for (const CObject* about :
         {static_cast<const CObject*>(synth("Lead")), static_cast<const CObject*>(busy)}) {
        const GraphAnswer answer = ask(GraphQuestion::whatCosts, about);
        ASSERT_FALSE(answer.causes.empty()) << said(answer);
        EXPECT_EQ(answer.causes[0].blame, busy) << said(answer);
        EXPECT_EQ(std::string(answer.causes[0].text.asChar()).find("Busy takes "), 0u);
    }
    for (const GraphCause& cause : ask(GraphQuestion::whatCosts, rack).causes)
        EXPECT_NE(cause.blame, busy) << "it is not on that path";
}

/// The answer stands beside the canvas, and its button goes to what is to blame.
TEST_F(AskGraphTest, TheMenuAsksAndTheButtonGoesThere) {
    begin();
    win->move(0, 0, 900, 640);
    win->runAction(win->getAction("modular"));
    rack->output()->toggleMute();
    again();
    key("ctrl+t");
    refresh();
    view()->zoomTo(1, {});
    view()->goTo(synth("Bass"));
    menuAt(middleOf(synth("Bass")), {"w", "Return"}); // the first entry that begins so
    auto* answers = find<AnswerList>("answers");
    ASSERT_EQ(answers->accessParts(), 1);
    Description d;
    answers->describe(d, 0);
    EXPECT_EQ(d.name, "Rack is muted.");
    EXPECT_TRUE(answers->hasKeyFocus());
    key("Return");
    EXPECT_TRUE(view()->item() == rack && rack->hasFlag(compSelected));
}

TEST_F(AskGraphTest, TypingFindsAndConnects) {
    begin();
    win->runAction(win->getAction("modular"));
    again();
    const GraphModel graph(host.get());
    struct Case {
        const char* typed;
        const CObject *first, *to; ///< what is found, or the two that are joined
    };
    const Case cases[] = {
        {"bass", synth("Bass"), nullptr},
        {"LEAD sy", synth("Lead"), nullptr},
        {"rack in", rack->input(), nullptr},
        {"lead midi out", track("Lead")->outPort(), nullptr},
        {"no such thing", nullptr, nullptr},
        {"", nullptr, nullptr},
        {"lead synth to rack", synth("Lead")->output(), rack->input()},
        {"connect Lead synth to Rack in", synth("Lead")->output(), rack->input()},
        {"bass midi out to lead synth", track("Bass")->outPort(), synth("Lead")->inPort()},
        {"rack to nothing", nullptr, nullptr},
    };
    for (const Case& c : cases) {
        const FoundItems found = findItems(graph, c.typed);
        const CObject* first = found.items.empty() ? nullptr : found.items.front();
        const auto port = [&](int i) {
            return i < 0 ? nullptr : static_cast<const CObject*>(graph.ports[size_t(i)].io);
        };
        if (found.joins) first = port(found.from);
        EXPECT_EQ(first, c.first) << c.typed;
        EXPECT_EQ(port(found.to), c.to) << c.typed;
    }
    key("ctrl+f");
    act({"type", "lead synth to rack"});
    settle();
    EXPECT_STREQ(find<FindField>("find")->told.asChar(),
                 "Return joins Lead synth, out and Rack, in");
    key("Return");
    refresh();
    EXPECT_TRUE(areJoined(synth("Lead")->output(), rack->input()));
    EXPECT_EQ(undoName(), "Connection");
}

} // namespace
