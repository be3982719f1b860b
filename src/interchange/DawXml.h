#pragma once

#include "interchange/DawSong.h"

#include <string>

// The XML of exchange files: "project.xml" and "metadata.xml" of a DAWproject 1.0 archive. Any
// thread.

constexpr const char* dawProjectEntry = "project.xml";
constexpr const char* dawMetadataEntry = "metadata.xml";

std::string writeDawProject(const DawSong& song);
std::string writeDawMetadata(const DawSong& song);

/// Reads what anybody may have made. Numbers that are none, or beyond what a song holds, become
/// the nearest that is; what stands deeper than a song nests is left out. False for what is no
/// well-formed XML with a root "Project".
bool readDawProject(const std::string& xml, DawSong& song);
