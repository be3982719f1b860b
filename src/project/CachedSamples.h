#pragma once

class CQV;

/// Samples of a project on a removable medium that were written to a temporary place: brings their
/// files into the project's audio folder, telling its progress in the status line. What cannot be
/// copied stays where it is, after a message. Interface thread.
void archiveCachedSamples(CQV* host);
