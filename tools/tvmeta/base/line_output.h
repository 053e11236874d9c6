// Standard output and standard error, written in whole lines.
#pragma once

// From here on std::cout and std::cerr write whole lines, each with one call of the system, so that the lines of
// threads and of several processes are not mixed. Called once at the start.
void writeWholeLines();

// Writes what is left in both streams, also the start of a line. Returns false if standard output has failed.
bool finishOutput();
