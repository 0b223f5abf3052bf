// A page as a picture: its placed pictures laid one on the other.
#pragma once

#include "page_paths.h"

#include <tympan/tympan.h>

#include <cstdint>
#include <string>

namespace tympan::tool {

/// What a page is made as large as when nobody says.
inline constexpr std::uint32_t kUsualPageFit = 2000;

struct PagePreview {
    std::string file;
    std::string output; ///< a PNG file
    std::uint32_t fit = kUsualPageFit;
    std::uint64_t maxMemory = 0; ///< bytes
};

/// Writes a page with its pictures in the order of its entries, on white. A picture that can't be shown
/// is told, and a grey box with a cross stands in its place. Memory is that of the page as it is drawn
/// and of a band of one picture, whatever their number and size.
/// \param page one whose header could be read, be it refused for its entries
/// \param paths those of the page, in force
/// \throws FailuresReported when the page is written, but not all of it could be shown; FileFailure.
void WritePagePreview(const PagePreview& wanted, const PageFileInterface& page,
                      const PagePaths& paths);

} // namespace tympan::tool
