// The groups of comparisons that the program is made of.
#pragma once

#include "bench/big_picture.h"

#include <memory>
#include <string>

namespace tympan::bench {

/// Rows of one separation against a bare loop of reads.
void RegisterRows(const std::shared_ptr<const BigPicture>& picture);

/// The colour preview in a bitmap against a loop in memory, with other ways to the same colours for
/// the record. Makes files of its own in `folder`.
void RegisterPreview(const std::shared_ptr<const BigPicture>& picture, const std::string& folder);

/// The way from plates to colours by itself, in the processor's caches.
void RegisterColours();

} // namespace tympan::bench
