#pragma once

#include "mixer/StripModel.h"
#include "ui/CStoredCtrl.h"

class CMixerStrip;

/// Where a level in decibels stands on the scale of faders and meters, 0 to 1: both go by the
/// square of the place.
double placeOfDb(double db);
/// The place of an amplitude there.
double placeOfLevel(float amplitude);

/// A control of a strip for one of its values: those that are selected with the strip go along.
class StripValue : public CStoredCtrl {
public:
    using Of = StoredValue (*)(const MixerStrip& strip);

    StripValue(CMixerStrip& strip, const char* name, Of of);

protected:
    CMixerStrip& owner;
};

/// The fader, whose square is the gain.
class CVolFader : public StripValue {
public:
    explicit CVolFader(CMixerStrip& strip);
    void paint(CGraphic* g, CRect rect) override;

private:
    double along(const DragPoint& point) const override;
    double travel() const override;
};

/// The pan as a knob, which drags to the right and up turn to the right.
class CPanValue : public StripValue {
public:
    explicit CPanValue(CMixerStrip& strip);
    void paint(CGraphic* g, CRect rect) override;

private:
    double along(const DragPoint& point) const override;
    double travel() const override;
};

/// What the fader is at in decibels; a drag up and down moves it too.
class CDBLabel : public StripValue {
public:
    explicit CDBLabel(CMixerStrip& strip);
    void paint(CGraphic* g, CRect rect) override;

private:
    double along(const DragPoint& point) const override;
    double travel() const override;
};

/// The highest level so far in decibels; a press clears it, with Control it goes to where it has
/// first been over 0 dB.
class PeakLabel : public CCtrl {
public:
    explicit PeakLabel(CMixerStrip& strip);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override; ///< Return and Delete clear it
    void describe(Description& d, int part) const override;
    bool pressPart(int part) override;
    bool refresh();

private:
    void clear();
    void goToClip();

    CMixerStrip& owner;
    CStr shown;
    bool over = false;
    double clippedAt = -1.0; ///< ticks, of the first level over 0 dB; below 0: not while playing
};

/// A stereo meter in two columns, whose scale is that of the fader beside it: the peak, in it the
/// mean as a brighter body, and the highest peak as a line; with a light on top that tells of
/// levels beyond full scale until a press clears it.
class CAudioLed : public CCtrl {
public:
    explicit CAudioLed(CMixerStrip& strip);

    void paint(CGraphic* g, CRect rect) override;
    void mouseDown(int x, int y, int btn) override;
    bool keyDown(int key, int mods) override; ///< Return and Delete clear the peak
    void describe(Description& d, int part) const override;
    bool refresh(); ///< asks for a repaint of what has changed alone; whether anything has

private:
    /// In pixels of the scale.
    struct Level {
        int bar = 0, body = 0, hold = 0; ///< `body` is the mean of about 0.3 s
        bool clipped = false;
        bool operator==(const Level&) const = default;
    };
    Level levelOf(float peak, float power, float hold) const;
    int scaleLength() const;
    CRect column(int index) const;
    void redrawBetween(int index, const Level& a, const Level& b);
    void paintColumn(CGraphic* g, CRect at, const Level& level) const;

    CMixerStrip& owner;
    Level shown[2];
};

/// The figures beside a fader.
class DbScale : public CCtrl {
public:
    explicit DbScale(CMixerStrip& strip);
    void paint(CGraphic* g, CRect rect) override;
    void describe(Description& d, int part) const override;
};
