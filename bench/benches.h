// The groups of comparisons that the program is made of.
#pragma once

#include "bench/big_picture.h"
#include "bench/comparison.h"

#include <string>

namespace tympan::bench {

/// Rows of one separation against a bare loop of reads.
void RegisterRows(PictureSize size, const Source<BigPicture>& picture);

/// The colour preview in a bitmap against a loop in memory, with other ways to the same colours for
/// the record. Makes files of its own in `folder`.
void RegisterPreview(const Source<BigPicture>& picture, const std::string& folder);

/// The way from plates to colours by itself, in the processor's caches.
void RegisterColours();

/// Line work, sparse and dense: opening, rows, run stream and crop against the system's own calls for
/// the same bytes, and rows against other decoders of the same runs. Makes files of its own in
/// `folder`.
void RegisterLineWork(const std::string& folder);

/// JPEG: bands handed out, and the index opened, against reads of the same bytes. Makes files of its own
/// in `folder`.
void RegisterJpeg(const std::string& folder);

/// TIFF: rows of one separation against libtiff's own calls on the same file, and other orders and
/// separations of them against each other. Makes files of its own in `folder`.
void RegisterTiff(const std::string& folder);

/// TIFF/IT: display of the picture's pixels against that of CT, and of line work against that of LW.
/// Makes files of its own in `folder`.
void RegisterTiffIt(const Source<BigPicture>& picture, const std::string& folder);

/// Growth: files of each format made of as many small pieces as their bytes hold, against files of a
/// quarter of them. Makes files of its own in `folder`.
void RegisterGrowth(const std::string& folder);

} // namespace tympan::bench
