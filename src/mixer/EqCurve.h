#pragma once

#include "base/CObject.h"
#include "base/Geometry.h"

#include <memory>
#include <vector>

class CCtrl;
class CEQ;
class CGraphic;
class COutputChannel;
class EqCurve;
struct StoredValue;

/// The point of one band on a curve: its gain, frequency and width, or those of a strip's band.
class EqHandle : public CObject {
public:
    int kind; ///< EqType
    int active = 1;
    double gain = 0.0; ///< dB
    double q = 0.71;
    double freq; ///< Hz
    EqCurve* curve;
    COutputChannel* strip = nullptr; ///< what it shows and sets; not owned, null for none
    int band = 0;                    ///< of the strip

    EqHandle(int form, int frequency, EqCurve* owner) : kind(form), freq(frequency), curve(owner) {}

    // Clamped to the ranges of CEQ; for a strip through the host's values.
    void SetGain(double db);
    void SetQ(double value);
    void SetFreq(double hz);
    double GetGain() const;
    double GetQ() const;
    double GetFreq() const;
    int getKind() const;
    bool getActive() const;

    /// Adds its response in dB, not below -120, to a value for each of the frequencies.
    void GetRealCurve(const std::vector<double>& freqs, double rate,
                      std::vector<double>& response) const;

private:
    const CEQ* shown() const; ///< the strip's band, or null
    /// Within the drag that is under way, else as one of a run of steps.
    void tell(const StoredValue& value, double to);
};

/// The response of four bands over three decades of frequency, from about 20 Hz on, and from -24 to
/// 24 dB, with a handle for each band. Interface thread.
class EqCurve : public CObject {
public:
    static constexpr int numHandles = 4;
    static constexpr int handleSize = 9; ///< pixels

    CCtrl* ctrl;                      ///< shows it; may be null
    int colour;                       ///< of the background; -1 is that of panels
    std::vector<double> curve, freqs; ///< dB and Hz of each column of pixels
    std::unique_ptr<EqHandle> handles[numHandles];
    int width = 0, height = 0; ///< height of the half above 0 dB
    double scale = 0.0;        ///< decades of a column
    double rate = 44100.0;

    explicit EqCurve(CCtrl* owner);

    void SetNewWidth(int n);  ///< at least 40
    void SetNewHeight(int n); ///< of both halves, at least 2
    void SetSamplerate(double hz);

    double ScreenToFreq(int x) const; ///< columns beyond the ends count as these
    int FreqToScreen(double hz) const;
    int GainToScreen(double db) const;
    double ScreenToGain(int y) const;
    double ScreenToQ(int y) const;

    /// Painted behind the curve: dB of full scale of each column, of which 0 stands at the top and
    /// `leastSpectrum` at the bottom. Not owned; null for none.
    const std::vector<double>* spectrum = nullptr;
    static constexpr double leastSpectrum = -90.0;

    void CalcCurve(); ///< after a change of the handles
    void Paint(CGraphic* g, CRect rect);
    void Invalidate(); ///< works the curve out and asks for a repaint

    CRect handleRect(int index) const; ///< inside the curve's area
    int handleAt(int x, int y) const;  ///< the topmost one, or -1

private:
    int curveY(int column) const;
    void paintSpectrum(CGraphic* g, int paper) const;
    void paintGrid(CGraphic* g, int paper) const;
    void paintHandles(CGraphic* g, int paper) const;
};
