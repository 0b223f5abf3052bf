// What a tool or a modern client needs beyond the interface of the picture objects.
#pragma once

#include "core/picture_object.h"
#include "jpeg/compressed_blocks.h"
#include "lw/lw_parameters.h"
#include "page/placement.h"
#include "platform/export.h"
#include "platform/text.h"
#include "tiff/tiff_details.h"
#include "tiff/tiff_it_kind.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace tympan {

/// The names of the formats that the library reads, such as "CT", in the order in which a path is
/// asked for them. The texts last as long as the library is loaded.
TYMPAN_API std::vector<std::string_view> FormatNames();

/// A picture object on an existing file, and the name of its format.
struct OpenedPicture {
    std::unique_ptr<BasePictureIF> picture; ///< null when no format recognises the file
    std::string_view format;                ///< empty when there is no object
    bool isOpen = false;                    ///< whether the object took the file
};

/// Opens a file as input. The formats' tests look at little, so that an object may refuse a file
/// that its format recognised: then the later formats are asked, and the first whose object opens
/// is taken. When the header names by its type a format that was asked before, as damaged line work
/// does that passes for a CT, that format's object is given, which refuses it. If none opens, the
/// first object that refused is given, for its codes and texts.
/// \throws CFileException* when the file can't be opened at all, or what the tests look at not be read;
///   std::bad_alloc.
TYMPAN_API OpenedPicture OpenAnyPicture(const CString& path);

/// Opens a file as input with an object of the named format, whatever the file looks like; of
/// `kTiffItName` as `OpenTiffIt` does.
/// \return without an object when there is no format of that name.
/// \throws what `OpenTiffIt` throws, for its name alone; std::bad_alloc.
TYMPAN_API OpenedPicture OpenPictureAs(const CString& path, std::string_view format);

/// What `OpenedPicture` and `OpenPictureAs` call a TIFF/IT file. It isn't one of `FormatNames()`: no
/// path is asked for it, and it has to be named, or tried where nothing else opens.
inline constexpr std::string_view kTiffItName = "TIFF/IT";

/// The kind of a TIFF/IT file by its structure; nothing for a file that is neither. It replaces what
/// an open TIFF/IT object has read, as any further one does.
/// \throws CFileException* when the file can't be read.
TYMPAN_API std::optional<TiffItKind> TiffItKindOf(const CString& path);

/// Opens a TIFF/IT file with an object of its kind. A file that is neither gives a closed one with the
/// code in its `TraceStatus`.
/// \throws CFileException* when the file can't be opened at all, or its directories not be read.
TYMPAN_API OpenedPicture OpenTiffIt(const CString& path);

/// The index of a JPEG, as its object read it from the side file.
struct JpegIndex {
    /// Where the bands of 8 rows stand; the object's, until it is opened again or destroyed.
    std::span<const CompressedLine> blocks;
    double factor = 0.0;         ///< from the side file's units to inches
    double heightInUnits = 0.0;  ///< in inches
    double widthInUnits = 0.0;   ///< in inches
    std::uint32_t mcuNumber = 0; ///< of the side file; 0 in one that this library wrote
    /// Whether there is a block for each 8 rows or part of them, all inside the open file, none
    /// reversed, each behind the one before.
    bool fitsFile = false;
};

/// The index of a JPEG object.
/// \return nothing for an object of another format, and without an open side file.
/// \throws CFileException* when the file can't tell its length.
TYMPAN_API std::optional<JpegIndex> IndexOf(const BasePictureIF& picture);

/// What stands where a line-work file's side file has its place (see
/// `VelmarLWFileInterface::CreateLwBinFile`).
enum class SideFileState {
    none,    ///< no file, or none that can be read
    ok,      ///< the size in it is that of a file of this length
    stale,   ///< it is another, or missing
    foreign, ///< a file of another kind: a JPEG file of the same name has such a one
};

/// A line-work file's side file.
struct LineWorkSideFile {
    CString path;                              ///< where it has its place
    SideFileState state = SideFileState::none; ///< what stands there
};

/// Compares the side file's number with the length of the file, without a look at the rows: they
/// must fill the file from the first on, and nothing stand behind them.
/// \param path the picture's
/// \param record of the open picture: its colours tell where the rows begin
/// \throws CFileException* when there is a side file and the picture can't be opened, and when either
///   can't be read; std::bad_alloc.
TYMPAN_API LineWorkSideFile SideFileOf(const CString& path, const LwPictureParameters& record);

/// Whether a file is a line-work file's side file with a size in it.
/// \throws as `SideFileOf`.
TYMPAN_API bool IsLineWorkSideFile(const CString& path);

} // namespace tympan
