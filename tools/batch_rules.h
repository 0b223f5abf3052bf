// What the command finds of a run over many files beyond what is wrong in one of them.
#pragma once

#include <tympan/check.h>

namespace tympan::tool {

/// The job that checked a file ended, or had to be ended, before it was done.
inline constexpr CheckRule kEndedRule{
    "TYM-RUN-0001",
    Severity::Error,
    "The check of the file ended before it was done",
    "In a run over many files each is checked by a process of its own. This one was ended by a "
    "signal, "
    "ran out of time or memory, or could not go on. The other files are checked all the same.",
    "Check the file by itself with \"tympan check\"; if that ends in the same way, please report "
    "it "
    "with the file.",
};

/// A folder that should have been walked.
inline constexpr CheckRule kFolderRule{
    "TYM-RUN-0002",
    Severity::Error,
    "A folder can't be read",
    "The files in it, and in the folders below it, could not be listed and were not checked.",
    "See whether the folder is there, can be read by you, and stands on a sound disk; then check "
    "it "
    "again.",
};

} // namespace tympan::tool
