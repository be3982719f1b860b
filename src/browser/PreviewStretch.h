#pragma once

#include "base/CThread.h"

#include <memory>

class CElastiqueRender;
class CSample;

/// Stretches and transposes a sample as a whole, on a thread of its own. Deleting it gives up.
class PreviewStretch : public CThread {
public:
    static constexpr double mostSeconds = 60.0; ///< of a sample; longer ones are cut

    /// `factor`: so many times as long; so many semitones higher. Begins at once. Interface thread.
    PreviewStretch(std::unique_ptr<CSample> source, float factor, int semitones);
    ~PreviewStretch() override;
    PreviewStretch(const PreviewStretch&) = delete;
    PreviewStretch& operator=(const PreviewStretch&) = delete;

    void execute() override;
    bool finished() const { return ready.loadAcquire(); }
    std::unique_ptr<CSample> result(); ///< once finished; the source if it could not be done

private:
    bool stretch();

    std::unique_ptr<CSample> source, made;
    const std::unique_ptr<CElastiqueRender> stretcher;
    const float factor, pitch;
    Shared<bool> ready{false};
};
