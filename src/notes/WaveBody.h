#pragma once

#include "notes/EditorBody.h"
#include "notes/WaveState.h"
#include "ui/PlayFollow.h"

#include <map>
#include <string>

class CRangebar;
class LevelScale;
class RangeSpectrum;
class WaveInfo;
class WaveRuler;
class WaveView;

/// The editor of sound: the waveform of a clip of an audio part, with what can be done to it.
/// Interface thread.
class WaveBody : public EditorBody, private WaveState {
public:
    WaveBody(CWin* owner, Workspace& workspace);
    ~WaveBody() override;

    bool shows(const CPart* part) const override; ///< audio parts
    void setPart(CPart* part, CTrack* track) override;
    void songChanged() override;
    void idle() override;
    bool onFrame() override;
    CCtrl* keyCtrl() override;
    bool knowsAction(const CStr& name) const override;
    bool runAction(const CStr& name) override;
    void fillPart(CPopup* popup) override;
    void fillOptions(CPopup* popup) override;
    void resized() override;

private:
    void scrollTo(double frame) override;
    void zoomAtPos(int x, double framesPerPixel) override;
    void zoomTo(const FrameRange& frames) override;
    void zoomBack() override;
    void setLevelZoom(double factor) override;
    void scrollInView(int frame) override;
    bool chooseClip(int number) override;
    void rangeChanged() override;
    void shownChanged() override;
    void showSpectrum(bool on) override;
    void editDone() override;
    int viewWidth() const override;

    void stopPreview();
    void chooseSelected();
    void followSample();
    void setPlaces(FrameRange places, std::vector<int> frameMarks);
    void layout();
    void fit();
    void showRange();
    double mostPerPixel() const;
    void acrossMoved(CObject* sender);
    void openMenu(CObject* sender);
    void followPlay();
    void moveTo(double frame); ///< as far as there is any

    WaveRuler* ruler;
    LevelScale* levels;
    WaveView* view;
    CRangebar* across;
    RangeSpectrum* spectrumView;
    WaveInfo* info;
    /// How a file was seen last.
    struct Seen {
        FrameAxis axis;
        int frames = 0;
    };

    PlayFollow following;
    std::string shownFile;            ///< of the sample that shows; empty for none
    int shownFrames = 0;              ///< of it
    std::map<std::string, Seen> seen; ///< by file
    std::vector<FrameAxis> zooms;     ///< before each `zoomTo`
};
