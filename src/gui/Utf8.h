#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// The program's 8-bit text is read as UTF-8; a byte that is no part of it counts as Latin-1.

/// The character that begins at byte `at`, below the text's size, and moves `at` behind it.
uint32_t nextCharacter(std::string_view text, size_t& at);
/// One character; empty for what is none.
std::string utf8Of(uint32_t character);
/// Whether a text begins with another one, whatever the case of letters of Latin-1.
bool beginsWith(std::string_view text, std::string_view start);
/// The same text with all of it in UTF-8.
std::string asUtf8(std::string_view text);
/// The same text in Latin-1, with "?" for each character that this lacks.
std::string asLatin1(std::string_view text);
