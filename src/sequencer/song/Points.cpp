#include "sequencer/song/Points.h"

#include <algorithm>

namespace {

int signaturePart(int value) {
    if (value == 0) return 4;
    return value < 1 ? 1 : value > maxTimesig ? maxTimesig : value;
}

} // namespace

CMarkerPart::CMarkerPart() : CPart(partMarker) {
    id = "marker";
    length = quarterTicks;
}

CPart* CMarkerPart::copy(int) {
    auto* part = new CMarkerPart;
    copyHeader(part);
    return part;
}

CTimesigPart::CTimesigPart(int numerator, int denominator)
    : CPart(partTimesig), num(signaturePart(numerator)), den(signaturePart(denominator)) {
    id = "timesig";
    length = quarterTicks;
}

CPart* CTimesigPart::copy(int) {
    auto* part = new CTimesigPart;
    copyHeader(part);
    return part;
}

void CTimesigPart::setTimesig(ToStore<int> newNum, ToStore<int> newDen) {
    num = signaturePart(newNum);
    den = signaturePart(newDen);
}

CTempoPart::CTempoPart() : CPart(partTempo) {
    id = "tempo";
    length = quarterTicks;
}

CPart* CTempoPart::copy(int) {
    auto* part = new CTempoPart;
    copyHeader(part);
    return part;
}

void CTempoPart::setTempo(ToStore<float> bpm) {
    tempo = bpm > minTempo ? std::min(float(bpm), maxTempo) : minTempo;
}
