#pragma once

#include "base/CStr.h"

#include <vector>

class CQV;
class CSeq;
class Workspace;

/// The actions that exchange songs with other programs. Without a song they are not ready, nor
/// inside a render. Interface thread.
class ExchangeCommands {
public:
    /// Binds them; outlives the table's use.
    explicit ExchangeCommands(Workspace& workspace);

    /// Takes a song of another program, which comes at the next `serve`; false for other files.
    bool openFile(const CStr& path);
    void serve();

private:
    CSeq* seq() const; ///< null without a song
    void exportDaw();
    void importDaw();
    void importFile(const CStr& path);

    Workspace& workspace;
    CQV* qv;
    std::vector<CStr> waiting; ///< to be brought in
};
