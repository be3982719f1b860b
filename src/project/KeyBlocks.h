#pragma once

class CQV;
class CStream;
class GraphIndex;
class ItemView;

// Side chains in a project, behind all of its components: which strip keys which rack.

/// "sidechain" for each: a strip as the end of a cable, the strip that the rack is an insert of as
/// another, its place there, or that of a rack by itself with -1, and whether it is muted. One
/// outside of the lists of files, or with a number above 255, is none that a file can hold.
void writeKeys(CStream* stream, CQV* host, const GraphIndex& index);
/// One without both of its ends, and a second one of a rack, is left out.
void readKey(ItemView& item, GraphIndex& index);
