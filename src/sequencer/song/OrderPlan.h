#pragma once

class CSeq;
class CUndo;
class UndoPlan;

/// Parts and points that a step brings, moves or makes longer or shorter come to stand in order
/// with the step itself, parts by the places and lengths that they are about to have. The way back
/// leads to the order before, also of parts between which the order makes no difference. Interface
/// thread.
void planOrder(CSeq* seq, UndoPlan& plan, CUndo* step);
