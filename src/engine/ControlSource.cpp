#include "engine/ControlSource.h"

#include "base/Numbers.h"
#include "engine/MidiBytes.h"

namespace {

enum Controller : int {
    ccData = 6,
    ccDataFine = 38,
    ccNrpnFine = 98,
    ccNrpn = 99,
    ccRpnFine = 100,
    ccRpn = 101
};
constexpr int fineControllers = 32, noNumber = 16383;
constexpr float most7 = 127.0f, most14 = 16383.0f;

float fine(int high, int low) {
    return float(high << 7 | low) / most14 * most7;
}

} // namespace

CStr controlSourceText(int source) {
    if (source >= firstNrpnSource) return "N" + asStr(source - firstNrpnSource);
    if (source >= firstFineSource) {
        const int number = source - firstFineSource;
        return asStr(number) + "+" + asStr(number + fineControllers);
    }
    if (source == bendSource) return "Bend";
    if (source == pressureSource) return "Press.";
    if (source >= firstNoteSource) return "Key " + asStr(source - firstNoteSource);
    return asStr(source);
}

int ControlReader::read(int message, ControlMove (&moves)[most]) {
    const int one = asByte1(message) & 127, two = asByte2(message) & 127;
    switch (statusByte(message)) {
    case midiController:
        return readController(channels[size_t(chByte(message))], one, two, moves);
    case midiNoteOn:
    case midiNoteOff:
        moves[0] = {firstNoteSource + one, noteOn(message) ? float(two) : 0.0f};
        return 1;
    case midiPressure:
        moves[0] = {pressureSource, float(one)};
        return 1;
    case midiPitchBend:
        moves[0] = {bendSource, fine(two, one)};
        return 1;
    default:
        return 0;
    }
}

int ControlReader::readController(Channel& ch, int number, int value, ControlMove (&moves)[most]) {
    if (number == ccNrpn) ch.nrpnHigh = value;
    if (number == ccNrpnFine) ch.nrpn = ch.nrpnHigh << 7 | value;
    if (number == ccRpn || number == ccRpnFine || ch.nrpn == noNumber) ch.nrpn = -1;
    const bool data = number == ccData || number == ccDataFine;
    if (number == ccData) ch.data = value;
    moves[0] = {number, float(value)};
    if (data && ch.nrpn >= 0) {
        // A coarse value alone reaches both ends.
        moves[0].source = firstNrpnSource + ch.nrpn;
        moves[0].value = fine(ch.data, value);
        return 1;
    }
    if (number < fineControllers) {
        ch.coarse[size_t(number)] = static_cast<unsigned char>(value);
        return 1;
    }
    if (number >= 2 * fineControllers) return 1;
    const int coarse = number - fineControllers;
    moves[1] = {firstFineSource + coarse, fine(ch.coarse[size_t(coarse)], value)};
    return 2;
}
