// Adds to the results what a reader of the figures must know: processor, operating system, compiler and peers.

#pragma once

void RecordMachine();
