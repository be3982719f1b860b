#pragma once

#include "plugins/Plugin.h"

#include <vector>

class CStream;

/// What the programs of a plug-in without chunks hold. Its own walk through them would be heard, so
/// it is made once, before it runs. Interface thread.
struct ProgramBank {
    struct Program {
        CStr name;
        std::vector<float> values;
    };
    std::vector<Program> programs;

    void takeAll(Plugin& plugin);     ///< nothing of one that has chunks; changes its program
    void takeCurrent(Plugin& plugin); ///< that which it plays
    /// The plug-in plays a program, as it is here: many begin one anew when they are led to it.
    void play(Plugin& plugin, int index) const;
};

/// How the words of a bank lie: as the files have it, or as an older block of projects.
enum class WordOrder { file, block };
enum class BankResult {
    good,
    damaged, ///< nothing that this plug-in could take; it was told nothing
    threw,   ///< the plug-in did
};

// Banks (.fxb) and programs (.fxp), and what projects keep of plug-ins in the same form. What is
// read is checked against the bytes there are, and against what the plug-in has, before the plug-in
// is told. Interface thread; for reading, with the plug-in claimed.

/// The whole state of a plug-in that has chunks, asked of it; for another one `bank` takes what it
/// plays.
Plugin::Bytes presentBank(Plugin& plugin, ProgramBank& bank);
/// A bank as a plug-in has it at present, in one order or in both.
void writeBank(CStream* stream, Plugin& plugin, const ProgramBank& bank, const Plugin::Bytes& chunk,
               WordOrder order);
void writeProgram(CStream* stream, Plugin& plugin);
/// `size` becomes that of a chunk, as far as it was read; `bank` what the plug-in has then.
BankResult readBank(CStream* stream, Plugin& plugin, ProgramBank& bank, WordOrder order, int& size);
BankResult readProgram(CStream* stream, Plugin& plugin, int& size);
