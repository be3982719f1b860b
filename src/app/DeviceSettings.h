#pragma once

class CAAM;
class CIniFile;

// The devices as the settings tell, at the start of the program.

constexpr int keptChannels = 32;  ///< of the device that the settings have places for, each way
constexpr int keptMidiPorts = 16; ///< likewise

/// Opens the device of section "audio" with its block, rate and channels; with none enabled the
/// first two of each direction are. Without any device it tells the user, and goes on.
void openAudio(CIniFile& ini, CAAM* bridge);
/// Enables the ports of the sections "MIDI inputs" and "MIDI outputs".
void enableMidi(CIniFile& ini, CAAM* bridge);
