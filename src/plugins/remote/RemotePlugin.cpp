#include "plugins/remote/RemotePlugin.h"

#include "base/Futex.h"
#include "base/Numbers.h"
#include "plugins/remote/PluginProcesses.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace {

/// A trip that takes so long is none that comes back.
constexpr int64_t hangsAfterNs = 500'000'000, hangsOfflineNs = 10'000'000'000;
constexpr int64_t longestSleepNs = 1'000'000;
constexpr int spins = 500; ///< some 20 microseconds
constexpr auto keepsEvery = std::chrono::milliseconds(1000);
constexpr int keepingShare = 20; ///< keeping the state takes a 20th of the time at most
constexpr int countsEvery = 10;  ///< seconds

CStr textOf(const std::string& bytes) {
    return bytes.c_str();
}

/// Each has a zero behind.
std::vector<CStr> textsOf(const std::string& bytes) {
    std::vector<CStr> texts;
    size_t from = 0;
    for (size_t end; (end = bytes.find('\0', from)) != std::string::npos; from = end + 1)
        texts.emplace_back(bytes.c_str() + from);
    return texts;
}

} // namespace

// Loading.

RemotePlugin::RemotePlugin(std::shared_ptr<PluginProcesses> all, const CStr& library,
                           PluginHost& answers)
    : processes(std::move(all)), path(library), host(answers) {
    notes.reserve(PluginRoom::mostMidi);
}

std::unique_ptr<RemotePlugin> RemotePlugin::load(std::shared_ptr<PluginProcesses> processes,
                                                 const CStr& path, PluginHost& host, CStr& why) {
    std::unique_ptr<RemotePlugin> made(new RemotePlugin(std::move(processes), path, host));
    if (!made->moveIn(why)) return nullptr;
    const auto answer = made->helper->call(made->loading(), PluginHelper::loadHangs);
    if (!made->takeFacts(answer ? &*answer : nullptr, why)) return nullptr;
    made->takeRoom();
    made->serving = true;
    made->crashCount = made->processes->trust.crashes(path);
    made->keptAt = Clock::now();
    return made;
}

RemotePlugin::~RemotePlugin() {
    if (!helper) return;
    if (!helper->gone()) helper->post(message(HelperCall::unload));
    helper->leave(number);
}

/// While no block is there. The former room stands as long as this has not come back.
bool RemotePlugin::moveIn(CStr& why) {
    if (helper) helper->leave(number);
    std::shared_ptr<Room>& next = rooms[nextRoom];
    next = std::make_shared<Room>(PluginRoom::soundBytes);
    helper = processes->helperFor(path);
    number = helper ? helper->join(next) : 0;
    if (number > 0) return true;
    why = "The program that runs plug-ins does not start.";
    helper = nullptr;
    return false;
}

/// While no block is there: the helper that has loaded it counts from now on.
void RemotePlugin::takeRoom() {
    room.storeRelease(&**rooms[nextRoom]);
    nextRoom = 1 - nextRoom;
    trip = 0;
    lateSince = 0;
    heard = here().told;
}

HelperMessage RemotePlugin::loading() const {
    HelperMessage made = message(HelperCall::load, host.blockFrames(), host.sampleRate(),
                                 bytesOf(path) + '\0' + bytesOf(host.libraryFolder()));
    made.file = rooms[nextRoom]->file();
    return made;
}

bool RemotePlugin::takeFacts(const HelperMessage* answer, CStr& why) {
    if (!answer) {
        why = helper->gone() ? helper->why() : CStr("It did not come back.");
        if (!helper->gone()) helper->endHanging(false);
        return false;
    }
    const size_t end = std::min(answer->bytes.find('\0'), answer->bytes.size());
    why = textOf(answer->bytes);
    if (!(answer->head.index & loaded)) return false;
    const std::string product = answer->bytes.substr(std::min(end + 1, answer->bytes.size()));
    facts = {why, textOf(product), answer->head.index, int(answer->head.number)};
    return true;
}

// Questions.

HelperMessage RemotePlugin::message(HelperCall what, int index, double value,
                                    std::string bytes) const {
    return {{what, number, 0, index, value}, std::move(bytes)};
}

std::optional<HelperMessage> RemotePlugin::call(HelperCall what, int index, double value,
                                                PluginHelper::Time wait) {
    if (phase != Phase::good) return std::nullopt;
    return helper->call(message(what, index, value), wait);
}

/// A change that no trip may meet: none is sent before it has its answer.
bool RemotePlugin::callWhole(HelperCall what, int index, double value, std::string bytes) {
    if (phase != Phase::good || helper->gone()) return false;
    auto good = std::make_shared<bool>(true);
    wholeCalls->fetchAdd(1);
    const auto taken = [good, open = wholeCalls](const HelperMessage* answer) {
        open->fetchAdd(-1);
        *good = answer && answer->head.index;
    };
    const unsigned turn = helper->post(message(what, index, value, std::move(bytes)), taken);
    helper->waitFor(turn, PluginHelper::hangs);
    return *good;
}

CStr RemotePlugin::ask(HelperCall what, int index, std::string& known) {
    if (const auto answer = call(what, index)) known = answer->bytes;
    return textOf(known);
}

int RemotePlugin::pins(int count) {
    return std::clamp(count, 0, int(mostPins));
}

bool RemotePlugin::stereoPair(bool input, int index) {
    const auto answer = call(HelperCall::stereoPair, index, input);
    return answer && answer->head.index;
}

// Parameters.

int RemotePlugin::numParams() const {
    return std::clamp(int(here().params), 0, int(PluginRoom::mostParams));
}

CStr RemotePlugin::paramName(int index) {
    if (!isParam(index)) return "";
    const auto known = names.find(index);
    return known != names.end() ? textOf(known->second)
                                : ask(HelperCall::paramName, index, names[index]);
}

CStr RemotePlugin::paramText(int index) {
    return isParam(index) ? ask(HelperCall::paramText, index, texts[index]) : CStr();
}

std::vector<CStr> RemotePlugin::paramTexts() {
    if (const auto answer = call(HelperCall::paramTexts)) {
        int index = 0;
        for (const CStr& one : textsOf(answer->bytes)) texts[index++] = bytesOf(one);
    }
    std::vector<CStr> known;
    for (int i = 0; i < numParams(); i++) known.push_back(textOf(texts[i]));
    return known;
}

void RemotePlugin::setParam(int index, float share) {
    if (!isParam(index)) return;
    here().want(index, share);
    noteMove(index);
}

float RemotePlugin::param(int index) {
    const float share = isParam(index) ? here().value(index) : 0.0f;
    return std::isfinite(share) ? share : 0.0f;
}

// Programs and state.

int RemotePlugin::numPrograms() const {
    constexpr int most = 65536;
    return std::clamp(int(here().programs), 0, most);
}

int RemotePlugin::program() {
    return here().program;
}

void RemotePlugin::setProgram(int index) {
    callWhole(HelperCall::setProgram, index);
    forgetMoves();
    stateOld = true;
}

CStr RemotePlugin::programName(int index) {
    return ask(HelperCall::programName, index, programNames[index]);
}

CStr RemotePlugin::currentProgramName() {
    return ask(HelperCall::currentProgramName, 0, currentName);
}

void RemotePlugin::renameProgram(const CStr& name) {
    currentName = bytesOf(name);
    callWhole(HelperCall::renameProgram, 0, 0.0, currentName);
    stateOld = true;
}

Plugin::Bytes RemotePlugin::chunk(bool whole) {
    if (const auto answer = call(HelperCall::chunk, whole, 0.0, PluginHelper::hangs))
        chunks[whole].assign(answer->bytes.begin(), answer->bytes.end());
    return chunks[whole];
}

bool RemotePlugin::setChunk(const Bytes& data, bool whole) {
    if (!callWhole(HelperCall::setChunk, whole, 0.0, {data.begin(), data.end()})) return false;
    chunks[whole] = data;
    forgetMoves();
    stateOld = true;
    return true;
}

std::vector<Plugin::File> RemotePlugin::files() {
    const auto answer = has(hasFiles) ? call(HelperCall::files) : std::nullopt;
    if (!answer) return knownFiles;
    const std::vector<CStr> told = textsOf(answer->bytes);
    knownFiles.clear();
    for (size_t i = 0; i + 1 < told.size(); i += 2) knownFiles.push_back({told[i], told[i + 1]});
    return knownFiles;
}

void RemotePlugin::setFile(int index, const CStr& file) {
    callWhole(HelperCall::setFile, index, 0.0, bytesOf(file));
    stateOld = true;
}

// What has moved since the state was taken is in none yet.

void RemotePlugin::noteMove(int index) {
    movedSince[index / PluginRoom::wordBits].fetchOr(1u << index % PluginRoom::wordBits);
    stateOld = true;
}

void RemotePlugin::forgetMoves() {
    for (Shared<unsigned>& word : movedSince) word = 0;
}

std::vector<std::pair<int, float>> RemotePlugin::movesSince() const {
    std::vector<std::pair<int, float>> moves;
    for (int i = 0; i < numParams(); i++)
        if (movedSince[i / PluginRoom::wordBits].load() >> i % PluginRoom::wordBits & 1u)
            moves.emplace_back(i, here().value(i));
    return moves;
}

/// Takes the state while it works, so that it is there when it does not.
void RemotePlugin::keepState() {
    const auto now = Clock::now();
    const auto pause = std::max<Clock::duration>(keepsEvery, keeping * keepingShare);
    if (!hasChunks() || stateAsked || (!stateOld && !window) || now - keptAt < pause) return;
    stateAsked = true;
    stateOld = false;
    const auto taken = [this, now, moves = movesSince()](const HelperMessage* answer) {
        stateAsked = false;
        keptAt = Clock::now();
        keeping = keptAt - now;
        if (answer)
            chunks[1].assign(answer->bytes.begin(), answer->bytes.end());
        else
            for (const auto& [index, share] : moves) noteMove(index);
    };
    forgetMoves();
    helper->post(message(HelperCall::chunk, 1), mine(taken));
}

template <class F>
PluginHelper::Answer RemotePlugin::mine(F&& taken) {
    return [there = std::weak_ptr(alive), taken](const HelperMessage* answer) {
        if (there.lock()) taken(answer);
    };
}

void RemotePlugin::setRate(double rate) {
    callWhole(HelperCall::setRate, 0, rate);
}

void RemotePlugin::setBlock(int frames) {
    callWhole(HelperCall::setBlock, frames);
}

void RemotePlugin::setRunning(bool on) {
    callWhole(HelperCall::setRunning, on);
}

// The editor.

CPoint RemotePlugin::openEditor(unsigned long in) {
    window = in;
    if (phase == Phase::good) helper->post(message(HelperCall::openEditor, 0, double(in)));
    return {};
}

void RemotePlugin::closeEditor() {
    window = 0;
    stateOld = true;
    call(HelperCall::closeEditor);
}

// Sound.

bool RemotePlugin::answered() const {
    return here().answered.loadAcquire() == trip;
}

void RemotePlugin::addMidi(int frame, int data) {
    if (notes.size() < size_t(PluginRoom::mostMidi)) notes.push_back({frame, data});
}

void RemotePlugin::begin(float** in, int frames) {
    begun = true;
    wentOut = serving && !helper->gone() && send(in, frames);
    if (!wentOut) keepNoteEnds();
}

bool RemotePlugin::process(float** in, float** out, int frames) {
    if (!begun) begin(in, frames);
    begun = false;
    away = !wentOut || !await() || turnedAway();
    constexpr int64_t mostNs = 10'000'000'000;
    worked = away ? 0 : std::clamp<int64_t>(here().workNs, 0, mostNs);
    return !away && receive(out);
}

/// What ends must end, though the block that it ended in was not played.
void RemotePlugin::keepNoteEnds() {
    constexpr int statusBits = 0xf0, noteOn = 0x90;
    std::erase_if(notes, [](const PluginRoom::Midi& m) {
        return (m.data & statusBits) == noteOn && (m.data >> 16 & 0x7f) != 0;
    });
    for (PluginRoom::Midi& m : notes) m.frame = 0;
}

/// False where it is not there to be sent.
bool RemotePlugin::send(float** in, int frames) {
    PluginRoom& r = here();
    if (frames > PluginRoom::mostFrames || wholeCalls->loadAcquire() > 0 || !answered())
        return false;
    lateSince = 0;
    sentFrames = r.frames = frames;
    sentIn = r.inCount = inputs();
    sentOut = r.outCount = outputs();
    r.level = host.level();
    r.time = host.songTime();
    r.midiCount = int(notes.size());
    std::ranges::copy(notes, r.midi);
    notes.clear();
    float* sound = soundOf(r);
    for (int i = 0; i < sentIn; i++)
        std::copy_n(in[i], frames, sound + PluginRoom::stride(frames) * size_t(i));
    trip = trip + 1;
    r.asked.storeRelease(trip);
    helper->ring(number);
    return true;
}

bool RemotePlugin::await() {
    for (int i = 0; i < spins; i++) {
        if (answered()) return true;
        spinPause();
    }
    PluginRoom& r = here();
    const bool offline = r.level == PluginLevel::offline;
    const int64_t until =
        offline ? steadyNs() + hangsOfflineNs
                : processes->endOf(host.blockNumber(), host.blockFrames() / host.sampleRate());
    while (!answered()) {
        const int64_t now = steadyNs(), left = until - now;
        if (helper->gone()) return false;
        if (left <= 0) {
            lateSince = now;
            return false;
        }
        const int seen = r.answered.load();
        r.waiting.exchange(1);
        if (!answered()) sharedFutexWait(r.answered, seen, std::min(left, longestSleepNs));
    }
    return true;
}

/// The ends of the notes that it has not heard come with the next trip.
bool RemotePlugin::turnedAway() {
    PluginRoom& r = here();
    if (r.outcome != PluginRoom::Outcome::busy) return false;
    notes.assign(r.midi, r.midi + std::clamp(r.midiCount, 0, int(PluginRoom::mostMidi)));
    keepNoteEnds();
    return true;
}

bool RemotePlugin::receive(float** out) {
    PluginRoom& r = here();
    if (r.outcome != PluginRoom::Outcome::whole) return false;
    const float* sound = soundOf(r);
    const size_t stride = PluginRoom::stride(sentFrames);
    for (int i = 0; i < sentOut; i++)
        std::copy_n(sound + stride * size_t(sentIn + i), sentFrames, out[i]);
    const int sent = std::clamp(r.sentCount, 0, int(PluginRoom::mostMidi));
    for (int i = 0; i < sent; i++) host.sendMidi(r.sent[i].frame, r.sent[i].data);
    return true;
}

// What it tells, and its end.

void RemotePlugin::idle() {
    if (helper) helper->poll();
    watchHelper();
    if (phase != Phase::good) return;
    serveEvents();
    keepState();
    countHours();
}

void RemotePlugin::serveEvents() {
    const PluginRoom& r = here();
    const unsigned told = r.told.loadAcquire();
    if (told - heard > unsigned(PluginRoom::mostEvents)) {
        heard = told;
        host.displayChanged();
    }
    while (heard != told) serve(r.events[heard++ % PluginRoom::mostEvents]);
}

void RemotePlugin::serve(const PluginRoom::Event& event) {
    using Event = PluginRoom::Event;
    const float value = std::isfinite(event.value) ? event.value : 0.0f;
    stateOld = true;
    switch (event.kind) {
    case Event::moved:
        if (isParam(event.index)) noteMove(event.index);
        return host.parameterMoved(event.index, value);
    case Event::drifted:
        return host.parameterDrifted(event.index, value);
    case Event::gestureBegins:
        return host.gestureBegins(event.index);
    case Event::gestureEnds:
        return host.gestureEnds(event.index);
    case Event::editorSize:
        return host.sizeEditor(asPoint(event.index, asRound(double(value))));
    case Event::channels:
        return host.channelsChanged();
    case Event::display:
        names.clear();
        return host.displayChanged();
    default:
        return;
    }
}

void RemotePlugin::watchHelper() {
    if (phase == Phase::lost || !helper) return;
    const int64_t late = lateSince;
    if (phase == Phase::good && late != 0 && !answered() && steadyNs() - late > hangsAfterNs)
        helper->endHanging(true);
    if (!helper->gone()) {
        if (answerLoaded) comeBack();
        return;
    }
    const int culprit = helper->culprit();
    lose(helper->why(), culprit == 0 || culprit == number);
}

/// Those that had no part in the end of their helper come back in any case.
void RemotePlugin::lose(const CStr& why, bool guilty) {
    const bool first = phase == Phase::good;
    serving = false;
    phase = Phase::lost;
    fault = why;
    if (guilty) processes->trust.failed(path);
    crashCount = processes->trust.crashes(path);
    if (first) host.pluginLost();
    if (guilty && !std::exchange(mayReturn, false)) return;
    beginAnew();
}

void RemotePlugin::restart() {
    if (phase != Phase::lost) return;
    mayReturn = true;
    beginAnew();
}

void RemotePlugin::beginAnew() {
    bool there = false;
    host.betweenBlocks([&] { there = moveIn(fault); });
    if (!there) return;
    phase = Phase::loading;
    answerLoaded = false;
    helper->post(loading(), mine([this](const HelperMessage* answer) {
                     if (!answer) return; // its end is noticed
                     answerLoaded = takeFacts(answer, fault);
                     if (!answerLoaded) phase = Phase::lost;
                 }),
                 PluginHelper::loadHangs);
}

void RemotePlugin::comeBack() {
    answerLoaded = false;
    const auto moves = movesSince();
    host.pluginReturns();
    host.betweenBlocks([this] { takeRoom(); });
    phase = Phase::good;
    fault = "";
    stateAsked = false;
    host.pluginReturned();
    for (const auto& [index, share] : moves) setParam(index, share);
    if (window) helper->post(message(HelperCall::openEditor, 0, double(window)));
    serving = true;
}

/// Only those count in which it plays.
void RemotePlugin::countHours() {
    const int64_t now = processes->trust.clock();
    if (now - countedAt < countsEvery) return;
    countedAt = now;
    if (trip != countedTrip) processes->trust.works(path);
    countedTrip = trip;
}
