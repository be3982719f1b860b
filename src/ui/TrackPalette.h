#pragma once

/// One of sixteen colours of even lightness for a track or part.
int trackColour(int index);
