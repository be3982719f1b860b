#pragma once

#include "base/Atomic.h"
#include "base/Newest.h"
#include "engine/CPreviewBase.h"

class CQV;
class CSample;
class ForgetSet;

/// Plays frames of a sample of the project through the audio outs, beside the song and at the
/// sample's own rate; the graph's share is free of locks.
class CSamplePreview : public CPreviewBase {
public:
    /// That of the host, which is made where there is none. Interface thread.
    static CSamplePreview* of(CQV* host);

    Shared<float> gain{1.0f};

    explicit CSamplePreview(CQV* root);

    // Interface thread.
    /// Frames `from` to below `to` of a sample of one or two channels, over and over with `loop`,
    /// in place of what plays. Nothing for an empty range.
    void play(const CSample* sample, int from, int to, bool loop);
    void stop();
    /// The frame that is heard; -1 when nothing plays any more, or not yet.
    int frame() const { return heard; }
    /// Whether something plays, or will with the next block.
    bool isOn() const { return wanted && getsBlocks(); }
    /// Whether the graph has let go of all that was played before the last request.
    bool settled() const { return served == asked; }
    void settle();                      ///< sees to it, with the graph held if it has to be
    void forget(const ForgetSet& gone); ///< samples that are about to die are not played any more

    void idle() override {}
    bool getPlaying() override { return getsBlocks(); }
    void process(float* left, float* right, float* tmpLeft, float* tmpRight, int frames) override;

private:
    struct Span {
        const CSample* sample = nullptr; ///< null stops
        int from = 0, to = 0;
        bool loop = false;
        int number = 0; ///< of the request
    };

    bool getsBlocks() const { return sounding || !settled(); }
    void ask(Span span);
    void takeRequest();
    void begin(const Span& span);

    CQV* host;
    bool wanted = false; ///< interface thread
    Newest<Span> requests;
    Shared<int> asked{0}, served{0}; ///< numbers of the latest requests
    Shared<bool> sounding{false};
    Shared<int> heard{-1};
    Span played;      ///< graph holder
    double pos = 0.0; ///< frame; graph holder
};
