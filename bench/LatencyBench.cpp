#include "OwnDisplay.h"
#include "PaintWatch.h"

#include <X11/Xlib.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

// From one event of the hand to its first paint, in the window of any program, on an X server that
// is started for it: wheel, wheel with Shift and Control, the drag of a part, sizes of the window.
// Then a stream of 100 events a second for two seconds.

namespace {

using Clock = PaintWatch::Clock;
using Area = PaintWatch::Area;

constexpr int streamEvents = 200;
constexpr double streamMs = 10, tailMs = 50, gapMs = 8; ///< `gapMs`: between two paints, at least
constexpr const char* usage =
    "latency_bench [options] -- PROGRAM [ARGUMENT ...]\n"
    "  --name TEXT       what the lines begin with\n"
    "  --folder FOLDER   to start it in (.)\n"
    "  --screen W,H      (1700,1100)\n"
    "  --window W,H      (1600,1000)\n"
    "  --canvas X,Y,W,H  the part of the window that counts (all of it)\n"
    "  --part X,Y        where the part to drag is; without, none is\n"
    "  --drag PIXELS     of a step (40)\n"
    "  --steps N         of each kind (200)\n"
    "  --wait SECONDS    longest wait for the song (60)\n"
    "  --titled TEXT     what the window is called once it shows the song\n"
    "  --keys A+B,C      pressed first, such as ctrl+a\n"
    "  --only WHAT       wheel, shift, zoom, drag, resize, or streams alone\n"
    "  --play KEY        plays: paints a second are counted meanwhile\n"
    "  --loud            shows what the program prints\n";

struct Options {
    std::string name = "program", folder = ".", titled, keys, play, only;
    std::vector<int> screen{1700, 1100}, window{1600, 1000}, canvas, part;
    int drag = 40, steps = 200, wait = 60;
    bool loud = false;
    std::vector<std::string> program;
};

std::vector<std::string> pieces(const std::string& text, char at) {
    std::vector<std::string> found;
    std::istringstream in(text);
    for (std::string piece; std::getline(in, piece, at);) found.push_back(piece);
    return found;
}

bool numbers(const char* text, size_t count, std::vector<int>& found) {
    found.clear();
    for (const std::string& piece : pieces(text, ',')) found.push_back(std::atoi(piece.c_str()));
    return found.size() == count;
}

bool readOption(Options& o, const std::string& word, const char* value) {
    if (word == "--name") return o.name = value, true;
    if (word == "--folder") return o.folder = value, true;
    if (word == "--titled") return o.titled = value, true;
    if (word == "--keys") return o.keys = value, true;
    if (word == "--only") return o.only = value, true;
    if (word == "--play") return o.play = value, true;
    if (word == "--screen") return numbers(value, 2, o.screen);
    if (word == "--window") return numbers(value, 2, o.window);
    if (word == "--canvas") return numbers(value, 4, o.canvas);
    if (word == "--part") return numbers(value, 2, o.part);
    if (word == "--drag") return (o.drag = std::atoi(value)) > 0;
    if (word == "--steps") return (o.steps = std::atoi(value)) > 0;
    if (word == "--wait") return (o.wait = std::atoi(value)) > 0;
    return false;
}

bool readOptions(int argc, char** argv, Options& o) {
    for (int i = 1; i < argc; i++) {
        const std::string word = argv[i];
        if (word == "--") {
            o.program.assign(argv + i + 1, argv + argc);
            return !o.program.empty();
        }
        if (word == "--loud")
            o.loud = true;
        else if (i + 1 >= argc || !readOption(o, word, argv[++i]))
            return false;
    }
    return false;
}

/// What the first thread of a program has used of a processor, and the memory of all.
class Use {
public:
    explicit Use(pid_t of) : folder("/proc/" + std::to_string(of) + "/") {}
    double ms() const {
        double ns = 0;
        std::ifstream(folder + "schedstat") >> ns;
        return ns / 1e6;
    }
    double megabytes(const char* which) const {
        std::ifstream status(folder + "status");
        for (std::string line; std::getline(status, line);)
            if (line.rfind(which, 0) == 0)
                return std::atof(line.c_str() + std::strlen(which) + 1) / 1024;
        return 0;
    }

private:
    std::string folder;
};

double share(const std::vector<double>& sorted, double part) {
    return sorted.empty()
               ? -1
               : sorted[std::min(sorted.size() - 1, size_t(double(sorted.size()) * part))];
}

class Bench {
public:
    explicit Bench(const Options& chosen)
        : o(chosen), desk(o.screen[0], o.screen[1]), pid(begin()), use(pid), served(desk.server) {}

    bool run() {
        if (!desk.display) return std::fprintf(stderr, "no X server could be started\n"), false;
        top = awaitWindow();
        if (!top) return std::fprintf(stderr, "no window appeared\n"), false;
        PaintWatch paints(desk.display, top);
        watch = &paints;
        opened();
        arrange();
        for (const std::string& stroke : pieces(o.keys, ',')) press(stroke);
        paints.settle(300, 5000);
        if (!o.play.empty()) playing();
        steps();
        std::printf("%s: %.0f MB resident, %.0f at most\n", o.name.c_str(), use.megabytes("VmRSS"),
                    use.megabytes("VmHWM"));
        return true;
    }

private:
    pid_t begin() {
        begun = Clock::now();
        return desk.display ? desk.start(o.program, o.folder, o.loud) : -1;
    }
    double sinceStart() const {
        return std::chrono::duration<double, std::milli>(Clock::now() - begun).count();
    }

    /// The first window of some size.
    Window awaitWindow() {
        constexpr int least = 600;
        while (sinceStart() < o.wait * 1000) {
            for (const Window w : shownWindows()) {
                XWindowAttributes is;
                if (XGetWindowAttributes(desk.display, w, &is) && is.width >= least) return w;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return None;
    }
    std::vector<Window> shownWindows() const {
        Window root, parent, *children = nullptr;
        unsigned count = 0;
        std::vector<Window> found;
        if (!XQueryTree(desk.display, DefaultRootWindow(desk.display), &root, &parent, &children,
                        &count))
            return found;
        for (unsigned i = 0; i < count; i++) {
            XWindowAttributes is;
            if (XGetWindowAttributes(desk.display, children[i], &is) && is.map_state == IsViewable)
                found.push_back(children[i]);
        }
        XFree(children);
        return found;
    }

    bool titled() const {
        char* name = nullptr;
        if (o.titled.empty() || !XFetchName(desk.display, top, &name) || !name)
            return o.titled.empty();
        const bool found = std::strstr(name, o.titled.c_str());
        XFree(name);
        return found;
    }
    /// Waits for the song: until the program paints nothing large any more, and rests.
    void opened() {
        constexpr double quiet = 1500, busy = 0.3;
        XWindowAttributes is{};
        XGetWindowAttributes(desk.display, top, &is);
        const Area all{0, 0, is.width, is.height};
        const double shown = sinceStart();
        double painted = shown;
        watch->setCanvas(all);
        for (double still = 0; still < quiet && sinceStart() < o.wait * 1000;) {
            const double before = use.ms();
            bool large = false;
            for (const PaintWatch::Paint& p : watch->paintsFor(quiet / 5)) {
                if (p.area.pixels() < all.pixels() / 10) continue;
                large = true;
                painted = std::chrono::duration<double, std::milli>(p.at - begun).count();
            }
            large = large || !titled() || use.ms() - before > busy * quiet / 5;
            still = large ? 0 : still + quiet / 5;
        }
        std::printf("%s: window after %.0f ms, song painted after %.0f ms, first thread %.0f ms of "
                    "processor\n",
                    o.name.c_str(), shown, painted, use.ms());
    }

    /// The window in the corner, all others answered by Escape or out of sight.
    void arrange() {
        for (const Window w : shownWindows()) {
            if (w == top) continue;
            XSetInputFocus(desk.display, w, RevertToPointerRoot, CurrentTime);
            press("Escape");
            XMoveWindow(desk.display, w, o.screen[0] + 10, 0);
        }
        XMoveResizeWindow(desk.display, top, 0, 0, unsigned(o.window[0]), unsigned(o.window[1]));
        XSetInputFocus(desk.display, top, RevertToPointerRoot, CurrentTime);
        const std::vector<int>& c = o.canvas;
        canvas = c.empty() ? Area{0, 0, o.window[0], o.window[1]} : Area{c[0], c[1], c[2], c[3]};
        watch->setCanvas(canvas);
        watch->point(canvas.x + canvas.width / 2, canvas.y + canvas.height / 2);
        watch->send();
        watch->settle(500, 20000);
    }

    void press(const std::string& stroke) {
        std::vector<std::string> keys = pieces(stroke, '+');
        for (std::string& k : keys) {
            if (k == "ctrl") k = "Control_L";
            if (k == "shift") k = "Shift_L";
            watch->key(k.c_str(), true);
        }
        for (auto k = keys.rbegin(); k != keys.rend(); ++k) watch->key(k->c_str(), false);
        watch->send();
        watch->settle(200, 3000);
    }

    using Step = std::function<void(int)>;

    void steps() {
        std::printf("%-10s %-8s %8s %8s %8s %8s %8s %6s %8s\n", "", "", "median", "90 %", "99 %",
                    "all 50 %", "all 99 %", "none", "own ms");
        const auto turn = [](int i) { return i / 8 % 2 ? 4 : 5; };
        const Step wheel = [&](int i) { watch->click(turn(i)); };
        const Step zoom = [&](int i) { watch->click(i / 5 % 2 ? 5 : 4); };
        const Step drag = [&](int i) {
            const int at = i % 10 < 5 ? i % 5 : 5 - i % 5;
            watch->point(o.part[0] + o.drag * (1 + at), o.part[1]);
        };
        if (wanted("wheel")) both("wheel", nullptr, wheel);
        if (wanted("shift")) both("shift", "Shift_L", wheel);
        if (wanted("zoom")) both("zoom", "Control_L", zoom);
        if (wanted("drag") && !o.part.empty()) {
            watch->point(o.part[0], o.part[1]);
            watch->button(1, true);
            watch->send();
            watch->settle(200, 2000);
            both("drag", nullptr, drag);
            watch->key("Escape", true);
            watch->key("Escape", false);
            watch->button(1, false);
            watch->point(canvas.x + canvas.width / 2, canvas.y + canvas.height / 2);
            watch->send();
            watch->settle(200, 2000);
        }
        if (o.only != "streams" && wanted("resize")) resizes();
    }
    bool wanted(const char* kind) const {
        return o.only.empty() || o.only == "streams" || o.only == kind;
    }

    void both(const char* kind, const char* held, const Step& step) {
        if (held) watch->key(held, true);
        watch->send();
        watch->settle(200, 2000);
        if (o.only != "streams")
            answers(kind, [&](int i) { return watch->answerTo([&] { step(i); }, tailMs); });
        stream(kind, step);
        if (held) watch->key(held, false);
        watch->send();
        watch->settle(200, 2000);
    }

    void resizes() {
        answers("resize", [&](int i) {
            return i % 2 ? watch->resize(o.window[0], o.window[1], tailMs)
                         : watch->resize(o.window[0] - 60, o.window[1] - 40, tailMs);
        });
    }

    void answers(const char* kind, const std::function<PaintWatch::Answer(int)>& one) {
        std::vector<double> first, last;
        int none = 0;
        double own = 0;
        for (int i = 0; i < o.steps; i++) {
            watch->settle(20 + i * 7 % 17, 1000);
            const double before = use.ms();
            const PaintWatch::Answer a = one(i);
            own += use.ms() - before;
            if (a.first < 0) {
                none++;
                continue;
            }
            first.push_back(a.first);
            last.push_back(a.last);
        }
        std::sort(first.begin(), first.end());
        std::sort(last.begin(), last.end());
        std::printf("%-10s %-8s %8.1f %8.1f %8.1f %8.1f %8.1f %6d %8.2f\n", o.name.c_str(), kind,
                    share(first, 0.5), share(first, 0.9), share(first, 0.99), share(last, 0.5),
                    share(last, 0.99), none, own / o.steps);
        std::fflush(stdout);
    }

    /// Paints, of what was told of them: those that come close on another belong to it.
    static std::vector<Clock::time_point> paintsOf(const std::vector<PaintWatch::Paint>& told) {
        std::vector<Clock::time_point> found;
        const PaintWatch::Paint* last = nullptr;
        for (const PaintWatch::Paint& p : told) {
            if (!last || ms(last->at, p.at) > gapMs) found.push_back(p.at);
            last = &p;
        }
        return found;
    }
    static double ms(Clock::time_point from, Clock::time_point to) {
        return std::chrono::duration<double, std::milli>(to - from).count();
    }

    void stream(const char* kind, const Step& step) {
        watch->settle(200, 2000);
        std::vector<PaintWatch::Paint> told;
        const auto add = [&](double forMs) {
            for (const PaintWatch::Paint& p : watch->paintsFor(forMs)) told.push_back(p);
        };
        const double own = use.ms(), server = served.ms();
        const auto start = Clock::now();
        Clock::time_point lastSent;
        for (int i = 0; i < streamEvents; i++) {
            add(streamMs * i - ms(start, Clock::now()));
            step(i);
            watch->send();
            lastSent = Clock::now();
        }
        add(1500);
        double gap = 0, tail = 0;
        int within = 0, behind = 0;
        const auto paints = paintsOf(told);
        auto former = start;
        for (const auto& at : paints) {
            (at <= lastSent ? within : behind)++;
            if (former <= lastSent) gap = std::max(gap, ms(former, std::min(at, lastSent)));
            former = at;
        }
        if (!told.empty()) tail = std::max(0.0, ms(lastSent, told.back().at));
        std::printf("%-10s %-8s stream: %.0f paints a second, longest gap %.0f ms, %d paints after "
                    "the last event, the last %.0f ms after it; ms of processor a paint: %.2f, "
                    "server %.2f\n",
                    o.name.c_str(), kind, within * 1000 / (streamEvents * streamMs), gap, behind,
                    tail, (use.ms() - own) / std::max(1, within),
                    (served.ms() - server) / std::max(1, within));
    }

    void playing() {
        constexpr double seconds = 3;
        press(o.play);
        watch->paintsFor(6000); // until the position is in the middle of the view
        const double before = use.ms(), serverBefore = served.ms();
        const auto paints = paintsOf(watch->paintsFor(seconds * 1000));
        double gap = 0;
        for (size_t i = 1; i < paints.size(); i++)
            gap = std::max(gap, ms(paints[i - 1], paints[i]));
        std::printf("%-10s playing: %.0f paints a second, longest gap %.0f ms, %.1f %% of a core, "
                    "server %.1f %%\n",
                    o.name.c_str(), double(paints.size()) / seconds, gap,
                    (use.ms() - before) / seconds / 10,
                    (served.ms() - serverBefore) / seconds / 10);
        press(o.play);
        watch->settle(300, 5000);
    }

    const Options& o;
    OwnDisplay desk;
    Clock::time_point begun;
    const pid_t pid;
    const Use use, served;
    Window top = None;
    PaintWatch* watch = nullptr;
    Area canvas;
};

int ignored(Display*, XErrorEvent*) {
    return 0; // windows come and go while they are asked
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!readOptions(argc, argv, options)) return std::fprintf(stderr, "%s", usage), 2;
    XSetErrorHandler(ignored);
    return Bench(options).run() ? 0 : 1;
}
