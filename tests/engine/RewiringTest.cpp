#include "StripFixture.h"
#include "base/Numbers.h"

#include <cmath>
#include <cstring>
#include <random>
#include <sstream>

namespace {

/// Content that a step may swap whole.
class Content : public CUndoContent {
public:
    Shared<std::vector<int>*> values{new std::vector<int>};
    ~Content() override { delete values.load(); }
    void listWords(CUndoContent* other, WordChanges& words) override {
        words.exchange(values, static_cast<Content*>(other)->values);
    }
};

/// Makes random edits of every kind, each as one step of undo, and tells the graph as text. They
/// are about the components that it adds itself.
class EditScenario {
public:
    /// `foreign` is a bus that is moved, but neither fed nor removed.
    EditScenario(CQV* root, CGroupCh* foreign, unsigned seed)
        : host(root), out(root->getAudioOut()), foreignBus(foreign), random(seed) {}

    /// One step, left to the next block to be carried out.
    void edit() {
        CUndo* u = host->undoStart("Edit", host, {.graph = true});
        ListOf<CComp>* const lists[] = {&host->comps, &host->sends, &anyStrip()->inserts};
        const int kind = below(6);
        if (kind < 3) editList(u, lists[kind]);
        if (kind == 3 || kind == 4) toggleCable(u, kind == 3);
        // One structural change a step, as all are recorded against the present
        // lists. Values change when they are recorded, so a level is not to be one
        // that moves with its bus.
        for (int more = below(3); more > 0 && kind != 1; --more) changeValues(u);
        host->undoEnd(u, false);
    }
    /// All that a step may change. With the graph.
    std::string dump() const {
        std::ostringstream text;
        for (const auto* list : listsOf(host->comps, host->sends))
            for (auto* c : *list) {
                text << c->id.asChar() << c->enabled << c->sleeping << "\n";
                for (auto* cable : c->audioCables)
                    text << "  audio " << cable->fromComp->id.asChar() << "\n";
                for (auto* cable : c->midiCables)
                    text << "  midi " << cable->fromComp->id.asChar() << "\n";
                for (auto* ch : c->outputs) {
                    text << "  strip " << ch->vol;
                    for (const CSend* send : ch->sendLevels) text << " " << send->level;
                    for (auto* insert : ch->inserts) text << " " << insert->id.asChar();
                    text << "\n";
                }
            }
        text << pointer;
        for (const int v : *content.values) text << " " << v;
        return text.str();
    }

private:
    static constexpr int mostComps = 24, mostSends = 8;
    /// So quiet that all of them together fade in small steps, and one that is cut makes a large
    /// one.
    static constexpr float level = 0.005f;

    int below(int n) { return n > 0 ? int(random() % unsigned(n)) : 0; }
    /// One of its own in a list, or the foreign bus; null for none.
    CComp* anyOf(const ListOf<CComp>* list) {
        std::vector<CComp*> found;
        for (auto* c : *list)
            if (c == foreignBus || c->id.pos(ownName) == 0) found.push_back(c);
        return found.empty() ? nullptr : found[size_t(below(int(found.size())))];
    }
    COutputChannel* anyStrip() {
        CComp* c = anyOf(&host->comps);
        return (c ? c : out)->output();
    }
    CComp* newFor(const CList* list) {
        CComp* c = nullptr;
        if (list == &host->comps)
            c = quietSignal();
        else if (list == &host->sends)
            c = new CGroupCh(host);
        else
            c = new GainComp(host);
        c->id = CStr(ownName) + asStr(serial++);
        c->init();
        c->createBuffers(host->frames);
        return c;
    }
    SignalComp* quietSignal() {
        auto* c = new SignalComp(host);
        c->left = c->right = [](long) { return level; };
        return c;
    }
    void editList(CUndo* u, ListOf<CComp>* list) {
        const bool inserts = list != &host->comps && list != &host->sends;
        const int count = list->getCount(), most = list == &host->comps ? mostComps : mostSends;
        CComp* c = anyOf(list);
        const int kind = below(4);
        if (kind < 2 && count < most) {
            c = newFor(list);
            u->asAdd(c, list, below(count + 2) - 1);
            if (!inserts && below(4))
                u->asAdd(createAudioCable(out, c->output(), nullptr), &out->audioCables);
        } else if (c && kind == 2) {
            u->asMove(c, list, inserts ? &anyStrip()->inserts : list, below(count + 2) - 1);
        } else if (c && c != foreignBus) {
            host->stripCables(c, u);
            u->asRemove(c, list);
        }
    }
    void toggleCable(CUndo* u, bool audio) {
        CComp *from = anyOf(&host->comps), *to = audio && below(2) ? out : anyOf(&host->comps);
        if (!from) return;
        if (audio && to != out) to = led(from, to); // no loops: what goes round grows
        if (!to) return;
        CList* list = listsOf(to->midiCables, to->audioCables)[audio ? 1 : 0];
        CObject* known = audio ? static_cast<CObject*>(getAudioCable(to, from->output(), nullptr))
                               : getMIDICable(to, from->outPort(), nullptr);
        if (known) return void(u->asRemove(known, list));
        if (audio)
            u->asAdd(createAudioCable(to, from->output(), nullptr), list);
        else
            u->asAdd(createMIDICable(to, from->outPort(), nullptr), list);
    }
    /// The one of both that came later leads to the other; null where that is the same.
    CComp* led(CComp*& from, CComp* to) const {
        const auto number = [](const CComp* c) {
            return std::atoi(c->id.asChar() + strlen(ownName));
        };
        if (number(from) < number(to)) std::swap(from, to);
        return from == to ? nullptr : to;
    }
    void changeValues(CUndo* u) {
        COutputChannel* ch = anyStrip();
        u->asInt(ch->comp->enabled.address());
        ch->comp->enabled = below(2);
        u->asFloat(ch->vol.address());
        ch->vol = float(below(100)) / 100;
        const int bus = below(mostSends);
        if (host->sends.items(bus) != foreignBus) {
            u->asFloat(ch->sendLevels[bus]->level.address());
            ch->sendLevels[bus]->level = float(below(100)) / 4000; // it jumps there
        }
        u->asPtr(&pointer);
        pointer = ch;
        auto* edited = new Content;
        for (int i = below(5); i >= 0; --i) edited->values->push_back(below(1000));
        u->asSwap(&content, edited);
    }

    static constexpr const char* ownName = "own";
    CQV* host;
    CComp* out;
    CGroupCh* foreignBus;
    Content content;
    void* pointer = nullptr; ///< a field that steps exchange
    std::mt19937 random;
    int serial = 0;
};

constexpr int blockFrames = 64;

/// A playing graph with three paths, to device channels of their own, that no edit touches: a late
/// source, one through inserts and a group, and a bus that both of them send to.
class Studio : public StripFixture {
public:
    Studio() : StripFixture(blockFrames), late(add(new SignalComp(host))) {
        auto* grouped = add(new SignalComp(host));
        auto* group = add(new CGroupCh(host));
        late->latency = 100;
        for (SignalComp* s : {late, grouped}) {
            const long prime = s == late ? 7919 : 6007;
            s->left = [prime](long at) { return float(at * prime % 1009) / 2048; };
            s->right = [prime](long at) { return float(at * prime % 997) / -2048; };
            addInsert(s->output(), new GainComp(host, 0.75f));
        }
        bus = addBus();
        delete connect(bus); // away from the out
        connect(grouped, group);
        int device = 0;
        for (CComp* c : std::initializer_list<CComp*>{late, group, bus}) {
            auto* own = add(new CAudioOut(host));
            device += 2;
            own->channelUsed[device] = own->channelUsed[device + 1] = 1;
            connect(c, own);
        }
        late->output()->sendLevels[0]->level = 0.5f;
        grouped->output()->sendLevels[0]->level = 0.25f;
        host->listenVolume = 1.0f;
        host->start();
    }
    /// One block; what the three paths play joins `heard`, unless the graph was not free.
    void play() {
        float buffers[deviceChannels][blockFrames];
        float* outs[deviceChannels];
        std::copy(std::begin(buffers), std::end(buffers), outs);
        const long before = late->at;
        libio(nullptr, outs, 0, deviceChannels, blockFrames, nullptr, 0);
        if (late->at == before) return;
        heard.insert(heard.end(), buffers[2], buffers[deviceChannels - 1] + blockFrames);
        for (const float sample : buffers[0]) {
            largestStep = std::max(largestStep, std::fabs(sample - last));
            last = sample;
        }
    }

    CGroupCh* bus;
    std::vector<float> heard;
    float largestStep = 0.0f; ///< of what the edits are about, from frame to frame

private:
    static constexpr int deviceChannels = 8;
    SignalComp* late;
    float last = 0.0f;
};

/// Against what the paths play without edits.
void expectUndisturbed(const std::vector<float>& heard) {
    Studio studio;
    while (studio.heard.size() < heard.size()) studio.play();
    EXPECT_GT(heard.size(), 0u);
    EXPECT_TRUE(heard == studio.heard) << "an edit was heard";
}

Studio* pumped = nullptr; ///< plays on where an edit waits for the graph

} // namespace

/// A thousand edits of every kind between the blocks, with some taken back on the way: paths that
/// they don't touch play on bit for bit, those that they touch fade, and every state that is
/// reached again is the one that was left.
TEST(Rewiring, LeavesOtherPathsAloneAndLeadsBackToEachState) {
    std::vector<float> heard;
    {
        Studio studio;
        pumped = &studio;
        messageHooks().pumpIdle = [] { pumped->play(); };
        EditScenario scenario(studio.host, studio.bus, 1);
        std::mt19937 random(1);
        std::vector<std::string> states = {scenario.dump()};
        const auto now = [&] { return size_t(studio.host->undoIndex + 1); };
        const auto turn = [&](void (UndoHost::*click)(CObject*)) {
            (studio.host->*click)(nullptr);
            studio.play();
            ASSERT_EQ(scenario.dump(), states[now()]) << "at step " << now();
        };
        rtReset();
        for (int i = 0; i < 1000 && !testing::Test::HasFatalFailure(); ++i) {
            for (unsigned n = random() % 8; n < 3; ++n) turn(&UndoHost::undoClicked);
            for (unsigned n = random() % 8; n < 2; ++n) turn(&UndoHost::redoClicked);
            scenario.edit();
            studio.play();
            if (now() < size_t(studio.host->undoList.getCount())) continue; // nothing to be done
            states.resize(now());
            states.push_back(scenario.dump());
        }
        while (studio.host->undoIndex >= 0) turn(&UndoHost::undoClicked);
        while (now() + 1 < states.size()) turn(&UndoHost::redoClicked);
        studio.host->settle(); // the last step tells of what the scenario owns
        messageHooks().pumpIdle = nullptr;
        EXPECT_EQ(rtViolations(), 0) << "a task allocates, frees or locks";
        EXPECT_LT(studio.largestStep, 0.001f);
        EXPECT_GT(studio.largestStep, 0.0f);
        heard = studio.heard;
    }
    expectUndisturbed(heard);
}

namespace {

/// A tone through two inserts, of which none may be left out or change places unheard, with a send
/// to a bus. It also goes through two groups, of which one leads to the other as well.
class Touched : public StripFixture {
public:
    Touched() : StripFixture(blockFrames), tone(addSignal()) {
        tone->left = tone->right = [](long at) { return amplitude * std::sin(float(at) * turn); };
        half = addInsert(tone->output(), new GainComp(host, 0.5f));
        shift = addInsert(tone->output(), new GainComp(host, 1.0f, 0.1f));
        bus = addBus();
        tone->output()->sendLevels[0]->level = 0.8f;
        for (CGroupCh** made : {&back, &group}) {
            *made = add(new CGroupCh(host));
            connect(tone, *made);
            connect(*made);
            (*made)->output()->vol = std::sqrt(0.5f);
            (*made)->output()->setVol(std::sqrt(0.5f), false);
        }
        connect(group, back);
        host->listenVolume = 1.0f;
        play(20);
        steepest = 0.0f;
    }
    void play(int blocks) {
        forget();
        run(blocks);
        for (const float sample : left) {
            steepest = std::max(steepest, std::fabs(sample - last));
            last = sample;
        }
    }
    template <class F>
    void edit(F&& record) {
        CUndo* u = host->undoStart("Edit", host, {.graph = true});
        record(u);
        host->undoEnd(u, false);
    }
    static constexpr float amplitude = 0.1f, turn = 0.01f;
    SignalComp* tone;
    GainComp *half, *shift;
    CGroupCh *bus, *group, *back;
    float steepest = 0.0f, last = 0.0f;
};

} // namespace

/// Whatever goes, comes or changes places, with the way back after as many blocks as a fade lasts,
/// in its middle or at once, the sound goes no steeper than it does by itself and a thousandth.
TEST(Rewiring, TouchedPathsMakeNoStep) {
    using Edit = void (*)(Touched&, CUndo*);
    const std::pair<const char*, Edit> edits[] = {
        {"component",
         [](Touched& t, CUndo* u) {
             t.host->stripCables(t.tone, u);
             u->asRemove(t.tone, &t.host->comps);
         }},
        {"bus",
         [](Touched& t, CUndo* u) {
             t.host->stripCables(t.bus, u);
             u->asRemove(t.bus, &t.host->sends);
         }},
        {"insert", [](Touched& t, CUndo* u) { u->asRemove(t.shift, &t.tone->output()->inserts); }},
        {"moved insert",
         [](Touched& t, CUndo* u) {
             CList* inserts = &t.tone->output()->inserts;
             u->asMove(t.shift, inserts, inserts, 0);
         }},
        {"insert of another strip",
         [](Touched& t, CUndo* u) {
             u->asMove(t.shift, &t.tone->output()->inserts, &t.bus->output()->inserts, 0);
         }},
        {"cable to what feeds it instead",
         [](Touched& t, CUndo* u) {
             auto* other = t.made(new SignalComp(t.host));
             other->left = other->right = [](long) { return 0.0f; };
             u->asAdd(other, &t.host->comps);
             t.host->stripCables(t.tone, u);
             u->asAdd(createAudioCable(other, t.tone->output(), nullptr), &other->audioCables);
             u->asAdd(createAudioCable(t.out, other->output(), nullptr), &t.out->audioCables);
         }},
        {"loop",
         [](Touched& t, CUndo* u) {
             u->asAdd(createAudioCable(t.group, t.back->output(), nullptr), &t.group->audioCables);
         }},
    };
    const auto nothing = [](CUndo* u) { u->asName(&u->name); };
    for (const auto& [name, record] : edits)
        for (const int blocks : {1, 4, 20}) {
            Touched t;
            for (int turn = 0; turn < 3; turn++) {
                t.edit([&](CUndo* u) { record(t, u); });
                t.play(blocks);
                t.host->undoClicked();
                t.play(blocks);
                t.host->redoClicked();
                t.play(blocks);
                t.host->undoClicked();
                t.play(blocks);
                t.edit(nothing); // frees what was taken back
                t.play(20);
            }
            constexpr float ways = 1.0f + 0.8f * 0.8f + 2.0f;
            EXPECT_LT(t.steepest, Touched::amplitude * Touched::turn * ways + 0.001f)
                << name << ", " << blocks;
        }
    Touched t;
    for (int i = 0; i < 9; i++) {
        t.tone->output()->sendLevels[0]->muted = i % 2;
        t.play(i);
    }
    EXPECT_LT(t.steepest, Touched::amplitude * Touched::turn * 3 + 0.001f) << "send";
}

/// The same with blocks on a thread of their own.
TEST(Rewiring, GoesOnWhileAnotherThreadRunsBlocks) {
    std::vector<float> heard;
    {
        Studio studio;
        EditScenario scenario(studio.host, studio.bus, 3);
        const std::string atStart = scenario.dump();
        {
            const BlockThread audio([&] {
                studio.play();
                std::this_thread::sleep_for(std::chrono::microseconds(200)); // as between real ones
            });
            std::mt19937 random(4);
            for (int i = 0; i < 300; ++i) {
                scenario.edit();
                for (unsigned n = random() % 3; n > 0; --n) studio.host->undoClicked();
                if (random() % 3 == 0) studio.host->redoClicked();
                if (random() % 8 == 0) studio.host->idle();
            }
            studio.host->settle();
        }
        while (studio.host->undoIndex >= 0) studio.undo();
        EXPECT_EQ(scenario.dump(), atStart);
        heard = studio.heard;
    }
    expectUndisturbed(heard);
}
