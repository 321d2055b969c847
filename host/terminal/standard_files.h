// The three files that every process begins with, whatever it was started with.
#pragma once

namespace korvane::host {

// Takes the places of standard input, output and error that are closed. Else the next files to be opened
// would get their numbers, and what is printed would be written into one of them. Reading and writing there
// fail as they do on what is closed.
void hold_closed_standard_files();

// Waits until standard input can be read or another standard file can be written: a pipe that is shared with
// other programs may refuse to wait by itself.
void wait_for_standard_file(int number);

}  // namespace korvane::host
