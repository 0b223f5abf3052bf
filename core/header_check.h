// Checks the header that CT, LW and page files have in common.
#pragma once

#include "core/findings.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

class CFile;

namespace tympan {

/// What the common header says; 0 for what can't be taken from it.
struct HeaderFacts {
    std::uint32_t width = 0; // pixels
    std::uint32_t height = 0;
    unsigned int separations = 0;
};

std::span<const CheckRule* const> HeaderRules();

/// \param front the file's first bytes, up to the header's end or beyond; all of a shorter file
HeaderFacts CheckHeader(std::string_view front, Findings& findings);

/// The first `count` bytes of a file, or all of them. \throws CFileException*.
std::string FrontOf(CFile& file, std::size_t count);

} // namespace tympan
