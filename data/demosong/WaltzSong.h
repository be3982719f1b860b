#pragma once

class CQV;
class CSeq;

/// Builds the second demo song in the host's empty project: a jazz waltz of a minute for piano,
/// bass, brushes, flute and strings, which slows down at its end. Interface thread.
CSeq* buildWaltzSong(CQV* host);
