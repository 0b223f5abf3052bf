// The library's own way into the TIFF/IT classes, for inspecting and checking files.
#pragma once

#include "tiff/tiff_it_kind.h"
#include "tiff/tiff_it_parser.h"

#include <memory>
#include <optional>
#include <span>

namespace tympan {

/// What was read of a file last.
struct TiffItFacts {
    std::uint32_t width, height; // pixels
    std::span<const StripInfo> strips;
    std::span<const IfdEntries> directories;
};

struct TiffItAccess {
    /// An object without a file.
    static std::unique_ptr<TiffItP1Interface> Make(TiffItKind kind);
    /// By the file's structure; nothing for neither, for which `picture` may have a code.
    /// \throws as `TiffItP1Interface::OpenPictureFile`.
    static std::optional<TiffItKind> KindOf(TiffItP1Interface& picture, CFile& file);
    static TiffItFacts Facts();
};

} // namespace tympan
