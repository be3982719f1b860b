#pragma once

#include <set>
#include <string>

class CMixer;
class CQV;

/// The project as it would be saved, without what only tells how it is shown: that is what decides
/// whether it is modified. Which blocks and bits these are stands in docs/files.md.
std::string projectContent(CQV* host, CMixer* mixer);

/// Where that byte of a project lies, for people: its block, by names.
std::string blockAt(const std::string& project, size_t place);

/// The blocks that `projectContent` masks, all or in part; and those of the list in the document.
std::set<std::string> maskedBlocks();
std::set<std::string> toldBlocks();
