// The memory that a program holds when it has started.
#pragma once

namespace host {

// Gives back what only starting needed: freed heap, and pages of libraries that are as they
// are on disk (symbols and relocations of some fifty of them); who needs one reads it again.
void GiveBackWhatStartingTook();

}  // namespace host
