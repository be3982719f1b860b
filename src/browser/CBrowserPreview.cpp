#include "browser/CBrowserPreview.h"

#include "audiofiles/AudioImport.h"
#include "audiofiles/CSample.h"
#include "base/CFileManager.h"
#include "base/Numbers.h"
#include "base/Paths.h"
#include "browser/FileFacts.h"
#include "browser/PreviewStretch.h"
#include "engine/CQV.h"
#include "project/BringIn.h"
#include "project/ClipPreview.h"
#include "sequencer/song/CSeq.h"
#include "ui/Song.h"

namespace {

/// The factor that brings the first seconds of a sample to a common loudness: of what is not
/// silence there, the mean square. It brings no peak over full scale.
float matchOf(const CSample& sample) {
    constexpr int seconds = 10, piecesInSecond = 10;
    constexpr double target = 0.01, silence = 1e-5; // mean squares: -20 and -50 dB
    constexpr double most = 8.0;
    const int piece = asMax(asRound(double(sample.rate)) / piecesInSecond, 1), chs = sample.chs;
    std::vector<float> values(size_t(piece) * size_t(chs));
    double sum = 0.0, peak = 0.0;
    int count = 0;
    for (int i = 0; i < seconds * piecesInSecond && i * int64_t(piece) < sample.frames; i++) {
        sample.readFrames(i * int64_t(piece), piece, values.data());
        double square = 0.0;
        for (const float v : values) {
            square += double(v) * double(v);
            peak = std::max(peak, double(std::fabs(v)));
        }
        square /= double(values.size());
        if (square < silence) continue;
        sum += square;
        count++;
    }
    if (count == 0) return 1.0f;
    return float(std::min({std::sqrt(target * count / sum), 1.0 / peak, most}));
}

} // namespace

CBrowserPreview* CBrowserPreview::of(CQV* host) {
    if (auto* known = playerIn<CBrowserPreview>(host->preview)) return known;
    auto made = std::make_unique<CBrowserPreview>(host);
    made->join(host);
    return made.release();
}

CBrowserPreview::CBrowserPreview(CQV* root) : host(root), voice(root) {
    setVolume(loudness);
}

CBrowserPreview::~CBrowserPreview() = default;

void CBrowserPreview::setVolume(float volume) {
    loudness = fLimit(volume, 0.0f, 1.0f);
    setGain();
}

void CBrowserPreview::setMatched(bool on) {
    matched = on;
    setGain();
}

void CBrowserPreview::setGain() {
    voice.gain = loudness * loudness * (matched ? match : 1.0f);
}

void CBrowserPreview::setLoop(bool on) {
    looped = on;
    if (voice.isOn()) playFrom(asMax(voice.frame(), 0));
}

bool CBrowserPreview::play(const CStr& path) {
    if (!fileExists(path)) return false;
    stop();
    info.clear();
    name = path;
    open(path);
    tell();
    return true;
}

void CBrowserPreview::stop() {
    if (importer || stretching) info.clear();
    importer.reset();
    stretching.reset();
    if (voice.isOn()) voice.stop();
}

void CBrowserPreview::playFrom(int frame) {
    if (!sample) return;
    const int end = sample->getFrames();
    const bool within = hasRange() && frame >= range.from && frame < range.to;
    voice.play(sample.get(), asMinMax(frame, 0, end - 1), within ? range.to : end, looped);
    wasOn = true;
}

void CBrowserPreview::setRange(int from, int to) {
    const int end = sample ? sample->getFrames() : 0;
    range = {asMinMax(from, 0, end), asMinMax(to, 0, end)};
}

void CBrowserPreview::open(const CStr& path) {
    if (getFileSize(path) > mostBytes) return fail("Too large to be played here");
    if (songFileOf(path) == SongFile::clip) return show(createFromQVC(host, path));
    auto opened = std::make_unique<CSample>();
    if (opened->open(path) && opened->chs <= 2) {
        if (!stretch(opened)) show(std::move(opened));
        return;
    }
    const CStr temp = getTempFolder();
    if (temp.empty()) return fail("There is no folder for temporary files");
    importer = std::make_unique<CAudioImport>(ImportWish{.path = path, .folder = temp});
    importer->start();
    show(nullptr);
}

void CBrowserPreview::finishImport() {
    const std::unique_ptr<CAudioImport> done = std::move(importer);
    const std::vector<CStr>& files = done->files();
    auto opened = std::make_unique<CSample>();
    const bool read =
        done->result() == ImportResult::good && files.size() == 1 && opened->open(files.front());
    for (const CStr& made : files)
        if (!samePlace(made, name)) CFileManager().deleteFile(made);
    if (!read || !stretch(opened)) show(read ? std::move(opened) : nullptr);
}

int CBrowserPreview::transposition() const {
    CSeq* seq = songOf(host);
    const auto key = inKey ? keyOfName(name) : std::nullopt;
    return seq && key ? semitonesTo(seq->scales.at(seq->getPos()), *key) : 0;
}

bool CBrowserPreview::stretch(std::unique_ptr<CSample>& opened) {
    const float tempo = inTempo ? tempoOfName(name) : 0.0f, wanted = host->tempoNow;
    const float factor = tempo > 0.0f && wanted > 0.0f ? tempo / wanted : 1.0f;
    const int semitones = transposition();
    if (factor == 1.0f && semitones == 0) return false;
    stretching = std::make_unique<PreviewStretch>(std::move(opened), factor, semitones);
    show(nullptr);
    return true;
}

void CBrowserPreview::fail(const char* why) {
    show(nullptr);
    info.clear();
    info.append(why);
}

void CBrowserPreview::show(std::unique_ptr<CSample> opened) {
    if (sample) former.push_back(std::move(sample));
    sample = std::move(opened);
    range = {};
    if (!sample) {
        info.append(importer     ? "Reading..."
                    : stretching ? "Coming to the song..."
                                 : "Cannot be played");
        return freeFormer();
    }
    info.clear();
    sample->peakfile();
    match = matchOf(*sample);
    setGain();
    const int seconds10 = asRound(10.0 * sample->getFrames() / double(sample->rate));
    info.append(CStr(sample->chs == 2 ? "Stereo " : "Mono ") + asStr(sample->bits) + "bit " +
                asStr(asRound(double(sample->rate))) + "Hz");
    info.append(asStr(seconds10 / 10) + "." + asStr(seconds10 % 10) + " s");
    playFrom(0);
    freeFormer();
}

/// Without audio nobody else would let the graph see that it has to let go.
void CBrowserPreview::freeFormer() {
    if (former.empty()) return;
    if (!voice.settled() && !host->mustQueue()) voice.settle();
    if (voice.settled()) former.clear();
}

void CBrowserPreview::tell() const {
    if (onChanged) onChanged();
}

void CBrowserPreview::idle() {
    if (importer && importer->finished()) {
        finishImport();
        tell();
    }
    if (stretching && stretching->finished()) {
        const std::unique_ptr<PreviewStretch> done = std::move(stretching);
        show(done->result());
        tell();
    }
    freeFormer();
    const bool on = voice.isOn();
    if (on == wasOn) return;
    wasOn = on;
    tell();
}

void CBrowserPreview::process(float* left, float* right, float* tmpLeft, float* tmpRight,
                              int frames) {
    voice.process(left, right, tmpLeft, tmpRight, frames);
}
