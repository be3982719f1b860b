#pragma once

class CQV;

/// Ends every voice, and has all effects, equalisers and delay compensation forget what they have
/// heard: what comes next sounds as in a project just loaded. Interface thread, with the graph
/// held.
void silenceGraph(CQV* host);
