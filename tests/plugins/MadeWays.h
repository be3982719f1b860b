#pragma once

#include <string>

// How a plug-in made for the tests behaves: the name of its file tells it.

const std::string& ownName();             ///< of its library, without folder and ending
bool bad(const char* way);                ///< that name is "bad-" and the way
void waitWhileHeld();                     ///< while there is a file "held" beside its own
void misbehave(bool triggered);           ///< before it plays a block, of those that cannot wait
void spoil(float* played, size_t frames); ///< a side of it, behind that
[[noreturn]] void fail();                 ///< throws
[[noreturn]] void crash();                ///< as whoever handles the signal wants it
[[noreturn]] void crashAtOnce();          ///< the process ends by the signal, whoever handles it
