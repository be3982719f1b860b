#include "Blocks.h"
#include "MainFixture.h"
#include "ProjectMask.h"
#include "SentEvents.h"

#include "base/Messages.h"
#include "base/Numbers.h"
#include "driver/libaam.h"
#include "effects/CEffect.h"
#include "effects/Inserts.h"
#include "engine/CClick.h"
#include "engine/DeviceComps.h"
#include "engine/KeyInput.h"
#include "engine/StripValues.h"
#include "engine/ValueDoor.h"
#include "gui/controls/CMenu.h"
#include "gui/controls/CPopup.h"
#include "modular/GraphEdits.h"
#include "project/ProjectFile.h"
#include "sequencer/song/CSubTrack.h"
#include "sequencer/song/CTrack.h"
#include "shell/Pages.h"
#include "ui/Commands.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>

namespace {

/// Another project or file comes out of these, or none at all.
const std::set<std::string> leftOut = {"new",    "open", "openlast",   "saveas", "setup",
                                       "render", "save", "setdefault", "exit"};
constexpr int leastPerSeed = 100, seeds = 20;
constexpr int gesturesPerSeed = 250;

/// Of the song and of its notes, those that a hand has no gesture for.
constexpr std::array handActions = {
    "quantize",   "duplicate", "copy",    "paste",         "cut",  "selectAll", "delete",
    "insertnote", "zoomin",    "zoomout", "splitatcursor", "glue", "snap",      "rangetool"};

/// Where two projects differ first, with the bytes of both from there on.
std::string difference(const std::string& a, const std::string& b) {
    const auto at = std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin();
    std::string text = blockAt(a, size_t(at)) + " of " + std::to_string(a.size()) + "/" +
                       std::to_string(b.size()) + ": ";
    for (auto i = size_t(at); i < std::min({size_t(at) + 8, a.size(), b.size()}); i++)
        text += std::to_string(static_cast<unsigned char>(a[i])) + "/" +
                std::to_string(static_cast<unsigned char>(b[i])) + " ";
    return text;
}

int fromEnvironment(const char* name, int usual) {
    const char* text = std::getenv(name);
    return text ? std::atoi(text) : usual;
}

} // namespace

/// Somebody who uses every action, menu entry and control of the window at random, with notes that
/// come in and blocks that run between. SONDRAVA_ACTIONS and SONDRAVA_SEED choose how many, and
/// which first.
class RandomUseTest : public MainWinTest {
protected:
    using Keys = std::vector<std::string>;
    using Use = std::pair<std::string, std::function<void()>>;

    void begin(unsigned seed) {
        chance.seed(seed);
        constexpr std::array kinds = {kindSequencer, kindDemo,        kindDefault,
                                      kindGuitarist, kindPortaStudio, kindDrumAndBass};
        start();
        ASSERT_TRUE(load(where == anywhere ? kinds[seed % kinds.size()] : kindDemo));
        if (where == rooms) addComps();
        messageHooks().showMsg = [](CWin*, const CStr&, const CStr&, int flags) {
            return answerOfEscape(flags);
        };
        host->click->enabled = 0; // no count-in
        refusesDialogs = true;
        settled();
        save();
        states = {content()};
        stepsMade = 0;
    }
    void use(int count) {
        for (int i = 0; i < count && !HasFailure(); i++) {
            const Use what = pick();
            SCOPED_TRACE(std::to_string(i) + ": " + what.first);
            act(what);
        }
    }
    /// SONDRAVA_GESTURES tells how many.
    void gestures() {
        const int first = fromEnvironment("SONDRAVA_SEED", 0);
        const int wanted = fromEnvironment("SONDRAVA_GESTURES", gesturesPerSeed);
        const int inOneGo = fromEnvironment("SONDRAVA_IN_ONE_GO", gesturesPerSeed);
        for (int seed = first, done = 0; done < wanted && !HasFailure(); seed++) {
            SCOPED_TRACE("SONDRAVA_SEED=" + std::to_string(seed));
            begin(unsigned(seed));
            use(inOneGo);
            EXPECT_GT(stepsMade, inOneGo / 20) << "few of them changed anything";
            walkTheHistory();
            stop();
            done += inOneGo;
        }
    }
    /// All the way back, there again, and to where it was saved.
    void walkTheHistory() {
        const Use stop{"stop", [this] { host->stop(); }};
        act(stop);
        const std::string end = content();
        const int last = host->undoIndex;
        while (host->undoIndex >= 0 && !HasFailure()) step(true);
        while (host->undoIndex < last && !HasFailure()) step(false);
        EXPECT_TRUE(content() == end) << difference(content(), end);
        while (savedIndex >= -1 && host->undoIndex > savedIndex && !HasFailure()) step(true);
        if (savedIndex >= -1) {
            EXPECT_EQ(host->modified(), content() != saved);
        }
    }

private:
    int upTo(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(chance); }
    std::string content() {
        std::vector<KeptValue> moved = automated();
        for (KeptValue& value : moved) value.exchange();
        const std::string now = projectContent(host.get(), &win->flows->mixer);
        for (auto value = moved.rbegin(); value != moved.rend(); ++value) value->exchange();
        return now;
    }
    /// What the song's lanes move while it plays is no change: zeros for all of it.
    std::vector<KeptValue> automated() {
        std::vector<KeptValue> all;
        for (auto* track : seq()->tracks)
            for (auto* lane : track->subTracks)
                if (lane->automation() && lane->object && lane->target == targetParam)
                    for (const StoredValue& part : parameterOf(lane->object, lane->param).parts())
                        all.push_back({part, {}});
        return all;
    }

    /// Whether a step sets nothing but values of what lanes move, which the project that is
    /// compared leaves out: and it did set them, unless automation may have moved them back.
    bool onlyAutomated(int index) {
        const std::vector<KeptValue> lanes = automated(); // of a sampler: its sounds
        const auto moved = [&](const CObject* object) {
            for (auto* track : seq()->tracks)
                for (auto* lane : track->subTracks)
                    if (lane->automation() && lane->object == object) return true;
            return std::ranges::any_of(
                lanes, [object](const KeptValue& v) { return v.value.object == object; });
        };
        const auto* step = host->undoList.items(index);
        bool changed = host->playing;
        for (auto* item : step->items) {
            if (!item->kept || !moved(item->kept->value.object)) return false;
            changed = changed || item->kept->value.get() != item->kept->other;
        }
        return changed;
    }

    /// Into a menu, which may lead to others, and out of all of them.
    const Keys someKeys = {"Down", "Return", "Escape", "Escape", "Escape"};

    // What is done.
    Use pick() {
        if (where != anywhere) return anyGesture();
        if (host->recording && upTo(5) == 0) return {"stop", [this] { run("stop"); }};
        const int choice = upTo(100);
        if (choice < 45) return anyAction();
        if (choice < 60) return anyEntry();
        if (choice < 80) return anyControl();
        if (choice < 86) return {"undo", [this] { run("undo"); }};
        if (choice < 91) return {"redo", [this] { run("redo"); }};
        if (choice < 93) return {"save", [this] { save(); }};
        return {"notes", [this] { play(); }};
    }
    void run(const char* name) { win->onAction(win->getAction(name)); }
    Use anyAction() {
        std::vector<CAction*> all;
        for (auto* action : win->actions->actions)
            if (action->isReady() && !leftOut.count(action->name.asChar())) all.push_back(action);
        CAction* action = all[size_t(upTo(int(all.size())))];
        return {action->name.asChar(), [this, action] { win->onAction(action); }};
    }
    /// An entry of any menu but that of files, dialogs apart.
    Use anyEntry() {
        std::vector<CCtrl*> menus;
        for (auto* entry : win->menu->controls)
            if (entry->id != "File") menus.push_back(entry);
        CCtrl* entry = menus[size_t(upTo(int(menus.size())))];
        const auto popup = std::make_shared<CPopup>(app.get(), win.get());
        popup->tag = entry->tag;
        (*entry->onChange)(popup.get());
        std::vector<CMenuItem*> items;
        collect(popup.get(), items);
        if (items.empty()) return anyAction();
        CMenuItem* item = items[size_t(upTo(int(items.size())))];
        return {std::string("menu ") + item->text.asChar(),
                [popup, item] { (*item->onChange)(item); }};
    }
    static void collect(CPopup* popup, std::vector<CMenuItem*>& items) {
        for (auto* item : popup->items) {
            if (item->kind == menuSeparator || !item->enabled) continue;
            if (item->subMenu)
                collect(item->subMenu, items);
            else if (item->onChange &&
                     std::string(item->text.asChar()).find("...") == std::string::npos)
                items.push_back(item);
        }
    }
    static void collect(CGroup* group, std::vector<CCtrl*>& found) {
        for (auto* ctrl : group->controls) {
            if (!ctrl->shown() || !ctrl->enabled || ctrl->id == "recent") continue;
            if (ctrl->category == catGroup) collect(static_cast<CGroup*>(ctrl), found);
            const auto* action = static_cast<const CAction*>(ctrl->userPtr);
            if (!action || !leftOut.count(action->name.asChar())) found.push_back(ctrl);
        }
    }
    /// Presses, turns and drags, by real events.
    Use anyControl() {
        std::vector<CCtrl*> all;
        collect(win->clientGroup, all);
        if (CCompEditor* page = win->pages->current()) collect(page->clientGroup, all);
        const CCtrl* ctrl = all[size_t(upTo(int(all.size())))];
        const CPoint corner = ctrl->win->getPos(true), at = ctrl->win->controlPos(ctrl);
        const auto place = [&] {
            return std::vector<std::string>{
                "mousemove", std::to_string(corner.x + at.x + upTo(asMax(1, ctrl->width))),
                std::to_string(corner.y + at.y + upTo(asMax(1, ctrl->height)))};
        };
        std::vector<std::string> words = place();
        const auto add = [&words](std::initializer_list<const char*> more) {
            words.insert(words.end(), more.begin(), more.end());
        };
        const int how = upTo(10);
        if (how < 5) {
            add({"click", "1"});
        } else if (how < 6) {
            add({"click", "--repeat", "2", "--delay", "10", "1"});
        } else if (how < 7) {
            add({"click", upTo(2) ? "4" : "5"});
        } else {
            add({"mousedown", "1"});
            for (int i = 0; i < 3; i++)
                for (const std::string& word : place()) words.push_back(word);
            if (how == 9) add({"key", "Escape"});
            add({"mouseup", "1"});
        }
        const bool chooses = upTo(2) == 0;
        return {std::string("control ") + ctrl->id.asChar() + " " + std::to_string(how),
                [this, words, chooses] {
                    // For a menu that opens, whose loop runs inside the press.
                    inMenu(chooses ? someKeys : Keys{"Escape", "Escape"});
                    GuiTest::act(words);
                    inMenu({});
                }};
    }
    /// Over the song, or over the notes of one of its parts.
    Use anyGesture() {
        const int choice = upTo(100);
        if (choice < 10) return {"undo", [this] { run("undo"); }};
        if (choice < 17) return {"redo", [this] { run("redo"); }};
        if (where == rooms) {
            if (choice < 30) return anyRoom();
            if (choice < 34) return anyInsert();
        } else if (choice < 20) {
            return {"song", [this] { win->openEditor(seq()); }};
        } else if (choice < 24) {
            return {"open", [this] { win->openPart(anyPart()); }};
        }
        if (where == song && choice < 32) {
            CAction* action = win->getAction(handActions[size_t(upTo(int(handActions.size())))]);
            if (action) return {action->name.asChar(), [this, action] { win->runAction(action); }};
        }
        CCompEditor* page = win->pages->current();
        if (!page && where == rooms) return anyOfGraph();
        if (!page) return {"song", [this] { win->openEditor(seq()); }};
        std::vector<CCtrl*> all, views;
        collect(page->clientGroup, all);
        for (CCtrl* ctrl : all)
            if (ctrl->id == "grid" || ctrl->id == "notes" || ctrl->id == "lane")
                views.push_back(ctrl);
        const std::vector<CCtrl*>& some = !views.empty() && upTo(4) ? views : all;
        if (some.empty()) return anyAction();
        return gestureOn(page, some[size_t(upTo(int(some.size())))]);
    }
    static CGroup* groupNamed(CGroup* in, const char* id) {
        for (auto* c : in->controls) {
            if (c->category != catGroup) continue;
            auto* group = static_cast<CGroup*>(c);
            if (c->id == id) return group;
            if (CGroup* found = groupNamed(group, id)) return found;
        }
        return nullptr;
    }
    /// On the page of the graph: a key of its canvas, or a gesture there or beside it.
    Use anyOfGraph() {
        std::vector<CCtrl*> all;
        collect(groupNamed(win->clientGroup, "modularpage"), all);
        const auto canvas = std::ranges::find_if(all, [](CCtrl* c) { return c->id == "modular"; });
        if (canvas == all.end() || upTo(8) == 0)
            return gestureOn(win.get(), all[size_t(upTo(int(all.size())))]);
        if (upTo(4)) return gestureOn(win.get(), *canvas);
        constexpr KeySym keys[] = {XK_Delete, XK_Left, XK_Down, XK_Return, XK_p, XK_u, XK_m, XK_v};
        const KeySym key = keys[upTo(int(std::size(keys)))];
        return {"graph key " + std::to_string(key), [this, key, view = *canvas] {
                    win->setKeyCtrl(view);
                    SentEvents(app.get()).key(win.get(), key);
                }};
    }
    /// One of each kind that has a panel, besides what the song has.
    void addComps() {
        for (const int type : {compArp, compEffect, compGroupCh, compSampler})
            addComp(host.get(), type, asPoint(40, 40));
        host->addSendClicked();
        host->settle();
        host->undoClear();
    }
    /// The graph, the mixer, or the panel of a component, an insert or a kit.
    Use anyRoom() {
        if (upTo(4) == 0) return {"graph", [this] { win->runAction(win->getAction("modular")); }};
        if (upTo(4) == 0) return {"mixer", [this] { win->openEditor(&win->flows->mixer); }};
        std::vector<CComp*> all;
        const auto add = [&](CComp* c) {
            if (c != seq() && win->hasEditor(c)) all.push_back(c);
        };
        for (const auto* list : listsOf(host->comps, host->sends))
            for (auto* c : *list) {
                add(c);
                c->eachInsert(add);
            }
        for (auto* track : seq()->tracks) add(track);
        CComp* one = all[size_t(upTo(int(all.size())))];
        return {std::string("panel ") + one->id.asChar(), [this, one] { win->openEditor(one); }};
    }
    /// It comes to a strip, or goes from there; some follow another strip.
    Use anyInsert() {
        std::vector<COutputChannel*> strips;
        for (auto* c : host->comps)
            for (auto* ch : c->outputs) strips.push_back(ch);
        COutputChannel* ch = strips[size_t(upTo(int(strips.size())))];
        COutputChannel* other = strips[size_t(upTo(int(strips.size())))];
        auto* there = ch->inserts.getFirst();
        if (!there) return {"insert", [this, ch] { addInsert(ch, upTo(effectKindCount), -1); }};
        if (upTo(3) == 0) return {"no insert", [ch, there] { removeInsert(ch, there); }};
        return {"key", [there, other] {
                    if (offersKey(there) && mayKey(there, other)) setKey(there, other);
                }};
    }
    CPart* anyPart() {
        std::vector<CPart*> parts;
        for (auto* track : seq()->getProg()->tracks)
            for (auto* part : track->parts) parts.push_back(part);
        return parts.empty() ? nullptr : parts[size_t(upTo(int(parts.size())))];
    }
    /// One that may change its modifiers on the way, and may be given up.
    Use gestureOn(CWin* page, const CCtrl* ctrl) {
        const CPoint in = page->controlPos(ctrl);
        const auto place = [&] {
            constexpr int beyond = 40;
            return asPoint(in.x + upTo(ctrl->width + beyond) - beyond / 2,
                           in.y + upTo(ctrl->height + beyond) - beyond / 2);
        };
        const CPoint from =
            asPoint(in.x + upTo(asMax(1, ctrl->width)), in.y + upTo(asMax(1, ctrl->height)));
        const int how = upTo(10);
        const unsigned button = upTo(6) ? Button1 : upTo(3) ? Button3 : Button2;
        struct Move {
            CPoint to;
            unsigned held;
        };
        std::vector<Move> moves;
        const unsigned first = anyModifier();
        for (int i = upTo(5); i >= 0; i--)
            moves.push_back({place(), upTo(3) ? first : anyModifier()});
        const auto go = [this, page, from, how, button, first, moves] {
            inMenu(upTo(2) ? someKeys : Keys{"Escape", "Escape"});
            SentEvents hand(app.get());
            hand.held = first;
            if (how == 0) return hand.wheel(page, from, upTo(2) ? Button4 : Button5);
            hand.press(page, from, button);
            if (how < 3) {
                hand.release(page, from, button);
                if (how == 2) hand.press(page, from, button, true);
            }
            CPoint last = from;
            for (const Move& move : moves) {
                if (how < 3) break;
                hand.held = move.held;
                hand.move(page, last = move.to);
                if (upTo(8) == 0) app->paintFrame();
            }
            if (how == 3) hand.key(win.get(), XK_Escape);
            if (how != 1) hand.release(page, last, button);
            inMenu({});
        };
        return {std::string("hand ") + ctrl->id.asChar() + " " + std::to_string(how) + " button " +
                    std::to_string(button) + " held " + std::to_string(first),
                go};
    }
    unsigned anyModifier() {
        constexpr unsigned some[] = {
            0, 0, 0, ShiftMask, ControlMask, Mod1Mask, ShiftMask | ControlMask};
        return some[upTo(int(std::size(some)))];
    }
    /// Notes of the keyboard, with blocks between.
    void play() {
        auto* in = static_cast<CMIDIIn*>(host->getMIDIIn());
        const int note = 36 + upTo(48);
        in->playNote(note, true);
        blocks(1 + upTo(20));
        in->playNote(note, false);
        blocks(1 + upTo(4));
    }
    void save() {
        ProjectUi ui;
        ASSERT_TRUE(saveProject({host.get(), &win->flows->mixer, &ui}, at("song.qv").c_str()));
        const bool inTake = host->recUndo && !host->recUndo->items.empty();
        EXPECT_EQ(host->modified(), inTake);
        saved = content();
        savedIndex = inTake ? lost : host->undoIndex;
    }

    // What must be so.
    void blocks(int count) { runBlocks(host.get(), count); }
    void settled() {
        for (int i = 0; i < 2; i++) {
            blocks(1);
            host->settle();
            host->idle();
        }
    }
    /// The song and the keyboard, which the test itself works with, are not to be deleted.
    void spareWhatIsNeeded() {
        for (auto* comp : host->comps)
            if (comp->type == compSeq || comp->type == compMIDIIn)
                comp->setFlag(compSelected, false);
    }
    /// As a window manager does when the window that had the keys has gone.
    void keepFocus() {
        Window focused = 0;
        int revert = 0;
        XGetInputFocus(liveDisplay(), &focused, &revert);
        if (focused == None || focused == PointerRoot) win->setFocus(true);
    }
    void act(const Use& what) {
        spareWhatIsNeeded();
        keepFocus();
        const std::string before = content();
        const int index = host->undoIndex;
        what.second();
        if (host->playing || host->recording) blocks(2);
        settled();
        const bool take = host->recUndo;
        const auto lookAgain = [&] {
            const bool made = host->undoIndex >= index && isNew(host->undoIndex);
            if (made && savedIndex > index) savedIndex = lost;
            return made;
        };
        lookAgain();
        const std::string now = content();
        if (now != saved) {
            EXPECT_TRUE(host->modified()) << "lost when the window is closed";
        }
        if (now == saved && host->modified()) {
            EXPECT_TRUE(take || host->values->moved() || host->undoIndex != savedIndex)
                << "nothing is unsaved";
        }
        host->values->end();
        settled();
        const bool made = lookAgain();
        for (auto* step : host->undoList) step->flags |= seen;
        if (made) {
            stepsMade++;
            states.resize(size_t(index) + 2); // of several steps, only the last is known
            states.resize(size_t(host->undoIndex) + 2);
        }
        if (take || taking) return endTake(take);
        if (!made) return stayed(now);
        if (host->undoIndex == index + 1) {
            EXPECT_TRUE(now != before || onlyShown(host->undoIndex) ||
                        onlyAutomated(host->undoIndex))
                << "a step that changes nothing: " << toldOf(host->undoIndex);
        }
        states.back() = now;
    }
    /// Past undo and redo, nothing but steps changes the project.
    void stayed(const std::string& now) {
        const std::string& then = states[size_t(host->undoIndex) + 1];
        if (then.empty()) return;
        EXPECT_TRUE(now == then) << "not as between " << host->undoIndex << " "
                                 << nameAt(host->undoIndex) << " and "
                                 << nameAt(host->undoIndex + 1) << ": " << difference(now, then);
    }
    /// Steps of the time of a take are not told apart.
    void endTake(bool running) {
        taking = running;
        if (running) return;
        std::string& then = states[size_t(host->undoIndex) + 1];
        if (then.empty()) then = content();
        stayed(content());
    }
    /// What a step sets, and from where.
    std::string toldOf(int i) {
        std::string text = nameAt(i);
        for (auto* item : host->undoList.items(i)->items)
            if (item->kept)
                text += std::string("; ") + item->kept->value.name().asChar() + " of " +
                        item->kept->value.object->id.asChar() + ": " +
                        std::to_string(item->kept->other[0]) + " to " +
                        std::to_string(item->kept->value.get()[0]);
        return text;
    }
    std::string nameAt(int i) {
        const auto* step = host->undoList.items(i);
        return step ? step->name.asChar() : "";
    }
    /// It moves windows, which `content` leaves out.
    bool onlyShown(int i) { return host->undoList.items(i)->viewOnly; }
    bool isNew(int i) {
        const auto* step = host->undoList.items(i);
        return step && !(step->flags & seen);
    }
    void step(bool back) {
        if (back)
            host->undoClicked();
        else
            host->redoClicked();
        settled();
        stayed(content());
        if (host->undoIndex == savedIndex) {
            EXPECT_FALSE(host->modified());
        }
    }

protected:
    enum { anywhere, song, rooms } where = anywhere; ///< gestures alone, but for the first
    int stepsMade = 0;                               ///< since it began
private:
    static constexpr int lost = -2;
    static constexpr unsigned seen = 1u << 30; ///< of a step: no flag of the program
    std::mt19937 chance;
    std::string saved;
    int savedIndex = -1;
    bool taking = false;
    std::vector<std::string> states; ///< behind each step; the first is the start
};

/// Whatever is done: the project is modified when the file would be another one, every way back
/// leads to the bytes that were there, and what is saved is unmodified.
TEST_F(RandomUseTest, ModifiedTellsWhetherTheFileWouldDiffer) {
    const int first = fromEnvironment("SONDRAVA_SEED", 0);
    const int actions = fromEnvironment("SONDRAVA_ACTIONS", leastPerSeed * 3);
    const int count = std::max(leastPerSeed, actions / seeds);
    for (int seed = first, done = 0; done < actions && !HasFailure(); seed++, done += count) {
        SCOPED_TRACE("SONDRAVA_SEED=" + std::to_string(seed));
        begin(unsigned(seed));
        use(count);
        walkTheHistory();
        stop();
    }
}

/// The same of gestures over the song and its notes.
TEST_F(RandomUseTest, GesturesLeadBackToTheBytesOfTheStart) {
    where = song;
    gestures();
}

/// And over the graph, the mixer and panels.
TEST_F(RandomUseTest, GesturesInRoomsLeadBackToTheBytesOfTheStart) {
    where = rooms;
    gestures();
}

TEST(ProjectMask, IsTheListOfTheDocument) {
    EXPECT_EQ(maskedBlocks(), toldBlocks());
}
