#pragma once

#include <string>
#include <vector>

// Project files as text and back, by the tables of the format alone: nothing of it is shared with
// the program. A line is an item or block and its values; what is nested in it stands below, two
// blanks further in.

/// The file of a text. Throws std::runtime_error where the text does not follow the tables.
std::string toFile(const std::string& text);

/// The text of a file. Throws std::runtime_error, which names the item, when it is not as the
/// tables say: a size that is not that of the fields, a value where there has to be a zero, an item
/// that is in no table.
std::string toText(const std::string& file);

/// The names of all items and blocks in the tables.
std::vector<std::string> itemNames();
