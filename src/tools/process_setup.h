// What a tool's process does about signals, open files and memory before anything else.
#pragma once

namespace zelsvm_main {

// Standard streams that are closed are given a place that takes nothing, so that no file which is
// opened later is taken for one of them.
void occupyStandardStreams();

// Pipes without a reader and files beyond the limit are errors that we see, no signals that kill.
void ignoreWriteSignals();

// Signals that end the process from outside first remove its unfinished files, unless they are
// ignored already. Each engine has files of its own: the one that runs must call this.
void removeUnfinishedFilesAtSignals();

// Where the standard containers find no memory, the failure has a sentence, as that of our vectors.
void explainLackOfMemory();

}  // namespace zelsvm_main
