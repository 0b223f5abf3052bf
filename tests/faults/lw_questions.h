// The steps of both kinds of line-work objects.
#pragma once

#include "faults/scenarios.h"
#include "lw/lw_file.h"
#include "support/lw_samples.h"

namespace tympan::test {

inline constexpr char kLwPath[] = "pic.lw";

/// Three rows of a few runs in three colours, one of them transparent.
LwPicture LwFaultSample();
/// The head, the colours and the runs.
std::vector<Field> LwFields();

/// Rows as pixels and as runs, streams, display and crop; what needs room that nobody told is left
/// out.
void AskLw(Run& run, LWFileInterface& picture);
/// The placing stream and its size.
void AskPlacingStream(Run& run, LWFileInterface& picture);

} // namespace tympan::test
