// `tympan crop`: a rectangle of line work as a picture of its own.
#include "command.h"
#include "failure.h"
#include "names.h"
#include "output_file.h"
#include "picture.h"
#include "separation_bands.h"
#include "standard_output.h"
#include "verbosity.h"

#include <cmath>
#include <cstdint>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tympan::tool {

namespace {

struct CropOptions {
    std::string file;
    std::string output;
    std::string asFormat;
    std::optional<std::uint32_t> left;
    std::optional<std::uint32_t> right;
    std::optional<std::uint32_t> top;
    std::optional<std::uint32_t> bottom;
};

constexpr char kFooter[] =
    R"(Columns and rows count from 1; both ends are kept. A side that isn't given keeps all.
The colours stay, and the resolution of what is a tenth of an inch or more. Only line work (LW) can be cropped.

Example:
  tympan crop map.lw detail.lw --left 1001 --right 3000 --top 501 --bottom 2500)";

// Columns or rows, counted from 1, both ends included.
struct Span {
    std::uint32_t first;
    std::uint32_t last;

    std::uint32_t Length() const { return last - first + 1; }
};

std::string SizeText(std::uint32_t width, std::uint32_t height)
{
    return std::to_string(width) + " x " + std::to_string(height) + " pixels";
}

// The part that two options keep of what the picture has.
Span Kept(const char* firstName, std::optional<std::uint32_t> first, const char* lastName,
          std::optional<std::uint32_t> last, std::uint32_t all, const Picture& picture)
{
    const Span kept{ first.value_or(1), last.value_or(all) };
    const std::string told = "; the picture has " + SizeText(picture.Width(), picture.Height());
    if (kept.first > all)
        throw UsageFailure(firstName + (" " + std::to_string(kept.first)) + " is outside" + told);
    if (kept.last > all)
        throw UsageFailure(lastName + (" " + std::to_string(kept.last)) + " is outside" + told);
    if (kept.last < kept.first)
        throw UsageFailure(lastName + (" " + std::to_string(kept.last)) + " is before " +
                           firstName + " " + std::to_string(kept.first) + told);
    return kept;
}

// Opening proves all rows but the last, and cropping proves none.
void RequireSoundLastRow(const Picture& picture, LWFileInterface& lineWork)
{
    const std::uint32_t row = picture.Height() - 1;
    const unsigned long bytes = lineWork.GetLWBufferSize(row, row, 1, 0, false);
    std::vector<unsigned char> runs(bytes);
    if (bytes == 0 || lineWork.GetOriginalPictureRow(runs.data(), row, false) == 0)
        throw RowFailure(picture, row);
}

void WriteCrop(LWFileInterface& lineWork, const OutputFile& output, Span columns, Span rows)
{
    CompressParameters rectangle{ static_cast<double>(columns.first),
                                  static_cast<double>(columns.last),
                                  static_cast<double>(rows.first), static_cast<double>(rows.last) };
    CFile target(output.WritingPath().c_str(), CFile::modeWrite | CFile::typeBinary);
    lineWork.CreateCropedLWFile(lineWork.FileHandle(), target, &rectangle);
    target.Close();
}

// The header holds no side below a tenth of an inch.
void TellLostResolution(const BasePictureIF& source, const BasePictureIF& cropped,
                        const std::string& output)
{
    const bool isKept =
        IsSameResolution(cropped.ResolutionOnXScanAxis(), source.ResolutionOnXScanAxis()) &&
        IsSameResolution(cropped.ResolutionOnScanAxis(), source.ResolutionOnScanAxis());
    if (!isKept && std::isfinite(source.ResolutionOnXScanAxis()) &&
        std::isfinite(source.ResolutionOnScanAxis()))
        Warn(output, "the header can't hold so small a size in inches, so that the resolution is "
                     "not that of the input");
}

void RequireReadsBack(const Picture& source, const OutputFile& output, Span columns, Span rows)
{
    const OpenedPicture cropped = OpenPictureAs(output.WritingPath().c_str(), source.Format());
    if (!cropped.isOpen || cropped.picture->FileWidthInPixels() != columns.Length() ||
        cropped.picture->FileHeightInPixels() != rows.Length())
        throw FileFailure(output.Path(),
                          "what was written doesn't read back as the picture that it should be", {},
                          kReportAdvice);
    TellLostResolution(source.Object(), *cropped.picture, output.Path());
}

void Tell(const std::string& output, Span columns, Span rows)
{
    const auto text = [](const char* name, Span kept) {
        return std::string(name) + " " + std::to_string(kept.first) + " to " +
               std::to_string(kept.last);
    };
    if (IsQuiet())
        return;
    std::cout << Shown(output) << ": " << SizeText(columns.Length(), rows.Length()) << ", "
              << text("columns", columns) << ", " << text("rows", rows) << '\n';
    FinishStandardOutput();
}

void Crop(const CropOptions& options)
{
    const Picture picture = OpenPicture(options.file, options.asFormat);
    LWFileInterface& lineWork = RequireLineWork(picture, "cropped");
    const Span columns =
        Kept("--left", options.left, "--right", options.right, picture.Width(), picture);
    const Span rows =
        Kept("--top", options.top, "--bottom", options.bottom, picture.Height(), picture);
    if (rows.last == picture.Height())
        RequireSoundLastRow(picture, lineWork);
    OutputFile output(options.output, options.file);
    Guard(options.output, [&] {
        WriteCrop(lineWork, output, columns, rows);
        RequireReadsBack(picture, output, columns, rows);
        output.Commit();
    });
    Tell(options.output, columns, rows);
}

} // namespace

void DeclareCrop(const Options& command)
{
    const auto options = std::make_shared<CropOptions>();
    command.Add("IN", options->file, "An LW file").Required();
    command.Add("OUT", options->output, "The LW file to write").Required();
    const auto addSide = [&](const char* name, std::optional<std::uint32_t>& side,
                             const char* help) {
        command.Add(name, side, help)
            .Between(std::int32_t{ 1 }, std::numeric_limits<std::int32_t>::max());
    };
    addSide("--left", options->left, "The first column to keep, from 1");
    addSide("--right", options->right, "The last column to keep");
    addSide("--top", options->top, "The first row to keep, from 1");
    addSide("--bottom", options->bottom, "The last row to keep");
    AddAsOption(command, options->asFormat);
    command.AddFooter(kFooter);
    command.Run([options] { Guard(options->file, [&] { Crop(*options); }); });
}

} // namespace tympan::tool
