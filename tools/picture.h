// Opening a picture for a subcommand, with a message that helps when that fails.
#pragma once

#include "failure.h"
#include "options.h"
#include "page_paths.h"

#include <tympan/inspect.h>
#include <tympan/tympan.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tympan::tool {

/// A picture object on a file that took it.
class Picture {
  public:
    /// \param paths of a page file, in force as long as the picture lives
    Picture(std::string path, OpenedPicture opened, std::unique_ptr<PagePaths> paths = nullptr);

    const std::string& Path() const { return path_; }
    /// As in `FormatNames()`, or `kTiffItName`.
    std::string_view Format() const { return opened_.format; }
    BasePictureIF& Object() const { return *opened_.picture; }
    /// \throws FileFailure for a file without rows.
    PictureFileInterface& Rows() const;
    /// Null for a picture of another format.
    CtFileInterface* AsCt() const;
    LWFileInterface* AsLw() const;
    JpegFileInterface* AsJpeg() const;
    TiffFileInterface* AsTiff() const;
    PageFileInterface* AsPage() const;
    /// Of a page file; null for other formats.
    const PagePaths* Paths() const { return paths_.get(); }
    /// Whether the picture can be drawn only, as a whole: it has no rows.
    bool IsTiffIt() const { return Format() == kTiffItName; }

    std::uint32_t Width() const;
    std::uint32_t Height() const;

    /// The failure that the last operation left, by its code and text.
    FileFailure Failure(const std::string& advice = {}) const;
    /// \throws Failure() when an operation since the opening left a code.
    void RequireNoFailure() const;

  private:
    std::string path_;
    std::unique_ptr<PagePaths> paths_;
    OpenedPicture opened_;
};

/// Pixels per inch; for most formats not finite, for some not above 0, where the file tells none.
struct AxisResolution {
    double alongWidth, alongHeight;
};

/// As the header tells it, whatever its unit.
AxisResolution AxisResolutionOf(const BasePictureIF& picture);

/// What to do about a file whose rows are bad.
inline constexpr char kCheckAdvice[] = "`tympan check FILE` tells all that is wrong with it.";

/// What became of an opening: the object, if one was made, and the failure, if the file wasn't
/// taken.
struct Opening {
    std::unique_ptr<PagePaths> paths; ///< of a page file, in force as long as it lives
    OpenedPicture opened;
    std::optional<FileFailure> failure;
};

/// The library's names of the formats that a value of `--as` stands for; none for an empty value.
/// \throws UsageFailure for a format that this build doesn't read.
std::vector<std::string_view> FormatsFor(const std::string& asFormat);

/// Sets the path resolver for a file that is taken as a page: by its type letters, or by `--as`.
/// \return null for any other file, and for one that can't be read.
std::unique_ptr<PagePaths> UsePagePaths(const std::string& path, const std::string& asFormat,
                                        const PathOptions& options);

/// \param asFormat a value of `--as`; empty to ask the formats
/// \param paths where a page's pictures are
/// \throws UsageFailure for a format that this build doesn't read.
Opening TryOpenPicture(const std::string& path, const std::string& asFormat,
                       const PathOptions& paths = {});

/// A page comes out that could only be refused for its entries: whoever wants these asks for each.
/// \throws UsageFailure as above; FileFailure when the file isn't taken.
Picture OpenPicture(const std::string& path, const std::string& asFormat,
                    const PathOptions& paths = {});

/// Whether a file that opens as a TIFF of no known kind is taken for TIFF/IT.
/// \throws FileFailure when the file can't be read.
bool IsTiffItInTiff(const std::string& path);

/// Declares `--as`, which takes the same values in every build.
void AddAsOption(const Options& command, std::string& asFormat);

/// Whether a resolution read from a header is the one that was meant. The header holds sizes of
/// eight digits, and the library cuts what it works out of them to four decimals.
bool IsSameResolution(double read, double meant);

/// \throws FileFailure for a picture without a pixel, and for one whose rows are longer than the file
///   can fill.
void RequirePixels(const Picture& picture);

/// The line work of a picture, for what only runs can be asked.
/// \param wish what can't be done with another format, as "cropped"
/// \throws FileFailure for another format.
LWFileInterface& RequireLineWork(const Picture& picture, const std::string& wish);

/// Lets transparent colours show as paper. The library gives them ink values that no other colour
/// has, by which a program tells them, and which a person would see as ink. Other formats have none.
void ShowTransparentAsPaper(const Picture& picture);

/// The first row, of all that the header claims, that the file doesn't hold whole; nothing when it
/// holds them all, or the picture isn't a CT: only there opening doesn't look at the rows. For each
/// row all separations must be there; padding behind the last needn't.
/// \throws FileFailure when the file can't be read.
std::optional<std::uint32_t> FirstMissingRow(const Picture& picture);

/// The failure of a file that ends before its rows do.
FileFailure MissingRowFailure(const std::string& path, std::uint32_t firstMissing,
                              std::uint32_t height);

/// \throws MissingRowFailure when a row before `endRow` is missing.
void RequireRows(const Picture& picture, std::uint32_t endRow);

} // namespace tympan::tool
