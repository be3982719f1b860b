#pragma once

/// The right to write what a project stores (see base/Stored.h). Windows find a header of this name
/// that only declares it.
struct StoreRight {};
