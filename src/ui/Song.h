#pragma once

class CQV;
class CSeq;

/// The song of the host, null when there is none. Interface thread.
CSeq* songOf(CQV* host);
/// The same, null as well while the song has no program to play.
CSeq* playableSongOf(CQV* host);
