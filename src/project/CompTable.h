#pragma once

/// Enters every type of component that this program can make by number. Once, at start, before the
/// first component is made.
void enterCompTypes();
