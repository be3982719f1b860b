#pragma once

/// Makes the strips of the sounds of kits known to the scenes of the mixer. Once, at start-up.
void enterKitStrips();
