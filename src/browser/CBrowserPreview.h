#pragma once

#include "base/CStringList.h"
#include "engine/CSamplePreview.h"

#include <functional>
#include <memory>
#include <vector>

class CAudioImport;
class CSample;
class PreviewStretch;

/// Plays a file from the disk through the audio outs, beside the song, which it never disturbs: of
/// the graph it takes only what is left over. Audio plays as it is, a clip at the song's tempo.
/// Interface thread, but for `process`.
class CBrowserPreview : public CPreviewBase {
public:
    static constexpr int64_t mostBytes = 512LL << 20; ///< of a file; larger ones are not played

    CStringList info;                ///< of the file: its format, or why it does not play
    std::function<void()> onChanged; ///< another file, or it has come to its end

    /// That of the host, which is made where there is none.
    static CBrowserPreview* of(CQV* host);

    explicit CBrowserPreview(CQV* root);
    ~CBrowserPreview() override;
    CBrowserPreview(const CBrowserPreview&) = delete;
    CBrowserPreview& operator=(const CBrowserPreview&) = delete;

    /// Plays a file from its start, in place of what plays; at the next tick if it has to be
    /// converted first. False, and nothing changes, unless it exists.
    bool play(const CStr& path);
    void playFrom(int frame); ///< of the file that was played last
    /// Frames of it that are meant alone: what plays from within them ends with them. An empty
    /// range for none; another file has none.
    void setRange(int from, int to);
    int rangeFrom() const { return range.from; }
    int rangeTo() const { return range.to; }
    bool hasRange() const { return range.from < range.to; }
    void stop();
    /// 0 to 1; what is heard is its square.
    void setVolume(float volume);
    float getVolume() const { return loudness; }
    /// Every file sounds about as loud as the others: those that are soft come up as far as their
    /// peak allows.
    void setMatched(bool on);
    bool isMatched() const { return matched; }
    void setLoop(bool on);
    bool loops() const { return looped; }
    /// From the next file on: one whose name tells its tempo plays at that of the song.
    void setInTempo(bool on) { inTempo = on; }
    bool playsInTempo() const { return inTempo; }
    /// The same for one whose name tells its key, in the scale of the song.
    void setInKey(bool on) { inKey = on; }
    bool playsInKey() const { return inKey; }

    const CStr& getFilename() const { return name; }          ///< empty before the first
    const CSample* getSample() const { return sample.get(); } ///< null without one
    int frame() const { return voice.frame(); }               ///< that is heard; -1 for nothing
    bool isOn() const { return voice.isOn() || importer || stretching; }

    void idle() override;
    bool getPlaying() override { return voice.getPlaying(); }
    void process(float* left, float* right, float* tmpLeft, float* tmpRight, int frames) override;

private:
    void open(const CStr& path);
    void show(std::unique_ptr<CSample> opened);
    void finishImport();
    /// By how much a file that tells its key is transposed.
    int transposition() const;
    /// Begins to bring it to the song's tempo and key; false where there is nothing to do.
    bool stretch(std::unique_ptr<CSample>& opened);
    void setGain();
    void fail(const char* why);
    void freeFormer();
    void tell() const;

    struct Range {
        int from = 0, to = 0; ///< frames
    };

    CQV* host;
    CSamplePreview voice; ///< it gets its blocks from here
    float loudness = 0.9f;
    float match = 1.0f; ///< factor that brings the sample to the loudness of all
    bool matched = false;
    bool looped = false, inTempo = false, inKey = false, wasOn = false;
    CStr name;
    Range range;
    std::unique_ptr<CSample> sample;
    std::unique_ptr<CAudioImport> importer;       ///< null while nothing is converted
    std::unique_ptr<PreviewStretch> stretching;   ///< the same
    std::vector<std::unique_ptr<CSample>> former; ///< the graph may still be at them
};
