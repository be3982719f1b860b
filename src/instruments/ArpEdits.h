#pragma once

class CArp;

/// A program like the current one comes to the end of the list, and is the current one then: one
/// step of the history, carried out on return. Interface thread.
void addArpProgram(CArp* arp);
