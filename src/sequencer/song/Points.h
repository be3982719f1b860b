#pragma once

#include "sequencer/song/CPart.h"

constexpr float minTempo = 10.0f;
constexpr float maxTempo = 250.0f;
constexpr int maxTimesig = 960; ///< of numerator and denominator

/// A point, or a section, of the song's timeline. Copies take the header of a part and leave the
/// fields of the class at their defaults.
class CMarkerPart : public CPart {
public:
    Shared<unsigned char> colourIndex{0}, flag{0};

    CMarkerPart();
    CPart* copy(int withoutParams = 0) override;
    int endTick() const { return pos + length; }
};

class CTimesigPart : public CPart {
public:
    explicit CTimesigPart(int num = 4, int den = 4); ///< as by `setTimesig`
    CPart* copy(int withoutParams = 0) override;
    /// Each 1 to 960; 0 counts as 4.
    void setTimesig(ToStore<int> num, ToStore<int> den);
    int getNum() const { return num; }
    int getDen() const { return den; }
    int spare = 0; ///< kept with the song, without effect

private:
    Stored<int> num, den;
};

class CTempoPart : public CPart {
public:
    Stored<float> tempo{120.0f}; ///< for the record makers of undo; else use the two below

    CTempoPart();
    CPart* copy(int withoutParams = 0) override;
    /// Beats per minute, kept within 10 to 250; not a number gives 10.
    void setTempo(ToStore<float> bpm);
    float getTempo() const { return tempo; }
    /// The tempo goes to that of the next point in a line, if there is one.
    Stored<unsigned char> ramp{0};
};
