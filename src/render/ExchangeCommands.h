#pragma once

class CQV;
class CSeq;
class Workspace;

/// The actions that exchange songs with other programs. Without a song they are not ready, nor
/// inside a render. Interface thread.
class ExchangeCommands {
public:
    /// Binds them; outlives the table's use.
    explicit ExchangeCommands(Workspace& workspace);

private:
    CSeq* seq() const; ///< null without a song
    void exportDaw();
    void importDaw();

    Workspace& workspace;
    CQV* qv;
};
