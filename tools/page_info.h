// The part of `tympan info` that tells the entries of a page file.
#pragma once

#include "page_paths.h"
#include "picture_facts.h"
#include "standard_output.h"

#include <tympan/inspect.h>
#include <tympan/tympan.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tympan::tool {

/// A picture's file as it opens by itself.
struct PlacedFile {
    std::string path;
    std::string_view format; ///< as in `FormatNames()`; empty when there is none
    Json header;             ///< format and geometry; null when no header was read
    std::string text;        ///< the same for a person
    std::string problem;     ///< why it doesn't open; empty when it does
};

/// An entry, and the file that was found for its path.
struct ToldEntry {
    std::uint8_t typeByte = 0;
    std::optional<Placement> placement;     ///< nothing of an entry that can't be read
    std::shared_ptr<const PlacedFile> file; ///< null when there is none
    std::string problem;                    ///< empty when there is none
};

/// All entries that a page counts and has room for, each read by itself. A file that is placed often
/// is opened once.
/// \param page has read its header; its entries may have been refused
/// \throws FileFailure when the page can't be read.
std::vector<ToldEntry> TellEntries(const std::string& path, const PageFileInterface& page,
                                   const PagePaths& paths);

/// The first problem and how many more there are; empty for entries without one.
std::string ProblemsOf(const std::vector<ToldEntry>& entries);

Json AsJson(const std::vector<ToldEntry>& entries);
Lines LinesOf(const std::vector<ToldEntry>& entries);

} // namespace tympan::tool
