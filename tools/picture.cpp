#include "picture.h"

#include "page_entry.h"
#include "picture_source.h"
#include "separations.h"
#include "tiff_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace tympan::tool {

namespace {

// The values of --as, each with the start of the format names that it stands for.
struct AsValue {
    const char* option;
    std::string_view formats;
};
constexpr std::array kAsValues{
    AsValue{ "ct", "CT" },     AsValue{ "lw", "LW" },     AsValue{ "jpeg", "JPEG" },
    AsValue{ "page", "Page" }, AsValue{ "tiff", "TIFF" }, AsValue{ "tiffit", "TIFF/IT" },
};

constexpr char kDamagedAdvice[] = "The file is damaged or of another format.";
constexpr char kFormatAdvice[] =
    "The file is damaged or of another format; --as FORMAT names the format.";
constexpr char kPageAdvice[] = "`tympan info` tells of all entries; --root and --map say where a "
                               "page's pictures are.";

constexpr unsigned long kEntryRefused = 90065;

// What a code means to a person, and what to do about it.
struct CodeText {
    unsigned long code;
    const char* text;
    const char* advice;
};
constexpr std::array kCodeTexts{
    CodeText{ 90001, "the file can't be opened or read, or it ends too early", "" },
    CodeText{ 90020,
              "the line work can't be read: it names a colour that its table doesn't have, or the "
              "file ends too early",
              kCheckAdvice },
    CodeText{ 90024, "the line work is wrong: a row's delimiter is missing", kCheckAdvice },
    CodeText{ 90025,
              "the line work is wrong: a row's runs don't add up to the width, or its delimiter is "
              "missing",
              kCheckAdvice },
    CodeText{ 90030, "the picture's rows can't be read or drawn", "" },
    CodeText{ 90052, "the TIFF/IT file ends inside a directory or its values", kDamagedAdvice },
    CodeText{ 90053, "is neither a TIFF/IT CT nor a TIFF/IT LW file", kFormatAdvice },
    CodeText{ 90056, "doesn't begin as a TIFF/IT file does", kFormatAdvice },
    CodeText{ 90057, "the first directory of the TIFF/IT file stands at an odd place",
              kDamagedAdvice },
    CodeText{ 90058, "a field of the TIFF/IT file has an unknown type", kDamagedAdvice },
    CodeText{ kEntryRefused,
              "an entry of the page isn't taken: its picture isn't found or is of no known format, "
              "its type is unknown, or the file ends in it",
              kPageAdvice },
    CodeText{ 90066,
              "the header is refused: its number of separations is neither 1 nor 4, or its "
              "mask names another number",
              kFormatAdvice },
};

const CodeText* TextOfCode(unsigned long code)
{
    const auto* const found = std::find_if(kCodeTexts.begin(), kCodeTexts.end(),
                                           [&](const CodeText& one) { return one.code == code; });
    return found == kCodeTexts.end() ? nullptr : found;
}

// TIFF/IT comes last: it is tried where nothing else opens.
std::vector<std::string_view> ReadFormats()
{
    std::vector<std::string_view> names = FormatNames();
    names.push_back(kTiffItName);
    return names;
}

std::string FormatsOfThisBuild()
{
    std::string names;
    for (const std::string_view name : ReadFormats())
        names += (names.empty() ? "" : ", ") + std::string(name);
    return names;
}

// The library's texts run over several lines.
std::string OnOneLine(std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

// What the last failure left in the object, else in its record.
unsigned long CodeOf(const BasePictureIF& picture)
{
    if (picture.TraceStatus() != 0 || picture.PictureParams() == nullptr)
        return picture.TraceStatus();
    return picture.PictureParams()->TraceStatus();
}

// A text of the object belongs to a code of the object: there is one before any failure.
FileFailure FailureOf(const std::string& path, const BasePictureIF& picture,
                      const std::string& fallback, const std::string& advice)
{
    const unsigned long code = CodeOf(picture);
    if (const CodeText* const known = TextOfCode(code))
        return { path, known->text, code, *known->advice != '\0' ? known->advice : advice };
    std::string told = OnOneLine(picture.ErrorMsg().GetString());
    if (told.rfind(path + ": ", 0) == 0) // as the TIFF library begins; the failure tells it itself
        told.erase(0, path.size() + 2);
    return { path, picture.TraceStatus() != 0 ? told : fallback, code, advice };
}

// A folder, a pipe or a device is told as what it is; all else is left to the opening.
void RequirePlainFile(const std::string& path)
{
    struct stat found {};
    if (stat(path.c_str(), &found) != 0)
        return;
    if (S_ISDIR(found.st_mode))
        throw FileFailure(path, "is a folder", std::nullopt, "Give the name of a picture file.");
    if (!S_ISREG(found.st_mode))
        throw FileFailure(path, "is not a plain file", std::nullopt,
                          "Pictures are read at many places, so they have to be plain files.");
}

OpenedPicture OpenAsAnyOf(const CString& path, const std::vector<std::string_view>& formats)
{
    OpenedPicture refused;
    for (const std::string_view format : formats) {
        OpenedPicture opened = OpenPictureAs(path, format);
        if (opened.isOpen)
            return opened;
        if (refused.picture == nullptr)
            refused = std::move(opened);
    }
    return refused;
}

// The test of CT looks at little, so that it takes many a JPEG for one: what is wrong with that as a
// CT helps nobody.
OpenedPicture OpenByContent(const std::string& path, const CString& name)
{
    OpenedPicture opened = OpenAnyPicture(name);
    const bool isJpeg = dynamic_cast<JpegFileInterface*>(opened.picture.get()) != nullptr;
    if (!opened.isOpen && !isJpeg && IsJpegFile(path))
        return {};
    return opened;
}

// Whether a refused TIFF may be TIFF/IT all the same: not when it is an ordinary picture of another kind.
bool MayBeTiffIt(const BasePictureIF* refused)
{
    constexpr unsigned long kSeparated = 5;
    constexpr unsigned long kFirstOwnCompression = 32895;
    constexpr unsigned long kLastOwnCompression = 32898;
    const auto* const tiff = dynamic_cast<const TiffFileInterface*>(refused);
    if (tiff == nullptr || !TiffDetailsOf(*tiff))
        return true;
    const TiffFileParam& record = *tiff->GetPictureParams();
    return record.Photometric() == kSeparated &&
           (record.ColorSeparation() == 1 || (record.Compression() >= kFirstOwnCompression &&
                                              record.Compression() <= kLastOwnCompression));
}

OpenedPicture OpenAny(const std::string& path, const CString& name)
{
    OpenedPicture opened = OpenByContent(path, name);
    if (opened.isOpen || !MayBeTiffIt(opened.picture.get()))
        return opened;
    OpenedPicture drawn = OpenTiffIt(name);
    return drawn.isOpen ? std::move(drawn) : std::move(opened);
}

OpenedPicture Open(const std::string& path, const std::vector<std::string_view>& formats)
{
    const CString name(path.c_str());
    RequirePlainFile(path);
    const CFile readable(name, CFile::modeRead); // throws what keeps the file from being read
    return formats.empty() ? OpenAny(path, name) : OpenAsAnyOf(name, formats);
}

FileFailure OtherJpegHead(const std::string& path, std::optional<unsigned long> code = {})
{
    return { path, "is a JPEG whose head has another form than is read here", code,
             "`tympan import FILE -o OUT.jpg` makes a JPEG that has it." };
}

// Once the head is read, only the side file can be missing.
FileFailure JpegRefusal(const std::string& path, const BasePictureIF& picture)
{
    constexpr unsigned long kFileFailed = 90001;
    constexpr unsigned long kNoFrameHeader = 90040;
    const unsigned long code = CodeOf(picture);
    if (code == kNoFrameHeader)
        return OtherJpegHead(path, code);
    if (code == kFileFailed && picture.FileNumberOfSeparations() > 0)
        return { path,
                 "its side file, of the same name with .bin, can't be opened or read; it tells "
                 "where the rows stand",
                 kFileFailed, "`tympan index FILE` makes it." };
    return FailureOf(path, picture, "the head can't be read", kDamagedAdvice);
}

// The first entry that isn't taken tells more than the code.
FileFailure PageRefusal(const std::string& path, PageFileInterface& page, const PagePaths* paths)
{
    FileFailure told = FailureOf(path, page, "an entry of the page isn't taken", kDamagedAdvice);
    if (paths == nullptr || page.FileNumberOfSeparations() == 0)
        return told;
    CFile file(path.c_str(), CFile::modeRead);
    for (unsigned short index = 0; index < page.GetEntriesNumber(); ++index) {
        const PageEntryReading reading = ReadPageEntry(file, index);
        if (reading.state != PageEntryState::fine)
            return { path, "entry " + std::to_string(index) + ": " + ProblemOf(reading, *paths),
                     told.Code(), told.Advice() };
    }
    return told;
}

// Whether all that is refused are entries.
bool IsPageWithHeader(const Opening& opening)
{
    const auto* const page = dynamic_cast<const PageFileInterface*>(opening.opened.picture.get());
    return page != nullptr && page->PictureParams()->TraceStatus() == kEntryRefused;
}

FileFailure Refusal(const std::string& path, const Opening& opening)
{
    const OpenedPicture& opened = opening.opened;
    if (opened.picture == nullptr && IsJpegFile(path))
        return OtherJpegHead(path);
    if (opened.picture == nullptr)
        return { path,
                 "is none of the formats that this build reads (" + FormatsOfThisBuild() + ")",
                 std::nullopt, "If you know its format, name it with --as." };
    if (dynamic_cast<const JpegFileInterface*>(opened.picture.get()) != nullptr)
        return JpegRefusal(path, *opened.picture);
    if (auto* const page = dynamic_cast<PageFileInterface*>(opened.picture.get()))
        return PageRefusal(path, *page, opening.paths.get());
    const bool isOtherTiff = TiffDetailsOf(*opened.picture).has_value();
    return FailureOf(
        path, *opened.picture, "the header claims rows that the file can't hold or memory can't",
        isOtherTiff ? "Save the picture as grey, palette, RGB, or 4 to 8 inks of 8 bits "
                      "a sample, or as bits of which 0 is white."
                    : kDamagedAdvice);
}

bool HasPageLetters(const std::string& path)
{
    try {
        return tool::Guard(path, [&] {
            CFile file(path.c_str(), CFile::modeRead);
            return PageFileInterface::isTypeOf(file);
        });
    } catch (const FileFailure&) { // the opening tells it
        return false;
    }
}

// A row that isn't there leaves its bytes as they were, so that what two different fills have in
// common after reading was read.
bool HoldsRow(const Picture& picture, std::uint32_t row, ColorSeparationType separation)
{
    std::vector<unsigned char> bytes(picture.Width());
    for (const std::uint8_t fill : { std::uint8_t{ 0x00 }, std::uint8_t{ 0xFF } }) {
        bytes.back() = fill;
        unsigned int rowsInfo = 0;
        picture.Rows().GetPictureRows(bytes.data(), row, row + 1, rowsInfo, nullptr, separation,
                                      static_cast<unsigned long>(bytes.size()), false);
        picture.RequireNoFailure();
        if (bytes.back() != fill)
            return true;
    }
    return false;
}

} // namespace

Picture::Picture(std::string path, OpenedPicture opened, std::unique_ptr<PagePaths> paths)
    : path_(std::move(path)), paths_(std::move(paths)), opened_(std::move(opened))
{}

PictureFileInterface& Picture::Rows() const
{
    auto* const rows = dynamic_cast<PictureFileInterface*>(opened_.picture.get());
    if (rows != nullptr && !IsTiffIt())
        return *rows;
    throw FileFailure(path_, "a " + std::string(Format()) + " file gives no rows", std::nullopt,
                      IsTiffIt()
                          ? "It can only be drawn, by `tympan preview`; if it is a TIFF too, "
                            "--as tiff takes it as that."
                          : "`tympan preview` shows it, and `tympan info` names its pictures.");
}

CtFileInterface* Picture::AsCt() const
{
    return dynamic_cast<CtFileInterface*>(opened_.picture.get());
}

LWFileInterface* Picture::AsLw() const
{
    return dynamic_cast<LWFileInterface*>(opened_.picture.get());
}

JpegFileInterface* Picture::AsJpeg() const
{
    return dynamic_cast<JpegFileInterface*>(opened_.picture.get());
}

TiffFileInterface* Picture::AsTiff() const
{
    return dynamic_cast<TiffFileInterface*>(opened_.picture.get());
}

PageFileInterface* Picture::AsPage() const
{
    return dynamic_cast<PageFileInterface*>(opened_.picture.get());
}

std::uint32_t Picture::Width() const
{
    constexpr unsigned long kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::uint32_t>(std::min(Object().FileWidthInPixels(), kMost));
}

std::uint32_t Picture::Height() const
{
    constexpr unsigned long kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::uint32_t>(std::min(Object().FileHeightInPixels(), kMost));
}

FileFailure Picture::Failure(const std::string& advice) const
{
    return FailureOf(path_, Object(), "the picture can't be read", advice);
}

void Picture::RequireNoFailure() const
{
    if (Object().TraceStatus() != 0)
        throw Failure();
}

AxisResolution AxisResolutionOf(const BasePictureIF& picture)
{
    // TIFF and TIFF/IT don't count their separations.
    if (picture.FileNumberOfSeparations() > 0)
        return { picture.ResolutionOnXScanAxis(), picture.ResolutionOnScanAxis() };
    const double perInch = TiffDetailsOf(picture).value_or(TiffDetails{}).perInch;
    const auto inInches = [&](double told) { // 0 stands for none
        return told * perInch > 0.0 ? told * perInch : std::numeric_limits<double>::quiet_NaN();
    };
    return { inInches(picture.ResolutionOnXScanAxis()), inInches(picture.ResolutionOnScanAxis()) };
}

std::vector<std::string_view> FormatsFor(const std::string& asFormat)
{
    if (asFormat.empty())
        return {};
    const auto* const value =
        std::find_if(kAsValues.begin(), kAsValues.end(),
                     [&](const AsValue& one) { return one.option == asFormat; });
    std::vector<std::string_view> formats;
    for (const std::string_view name : ReadFormats())
        if (value != kAsValues.end() &&
            (name == value->formats || name.substr(0, name.find(' ')) == value->formats))
            formats.push_back(name);
    if (formats.empty())
        throw UsageFailure("--as " + asFormat + ": this build doesn't read that format; it reads " +
                           FormatsOfThisBuild());
    return formats;
}

std::unique_ptr<PagePaths> UsePagePaths(const std::string& path, const std::string& asFormat,
                                        const PathOptions& options)
{
    const bool isPage = asFormat.empty() ? HasPageLetters(path) : asFormat == "page";
    return isPage ? std::make_unique<PagePaths>(path, options) : nullptr;
}

Opening TryOpenPicture(const std::string& path, const std::string& asFormat,
                       const PathOptions& paths)
{
    const std::vector<std::string_view> formats = FormatsFor(asFormat);
    Opening opening;
    opening.paths = UsePagePaths(path, asFormat, paths);
    try {
        opening.opened = tool::Guard(path, [&] { return Open(path, formats); });
        if (!opening.opened.isOpen)
            opening.failure = tool::Guard(path, [&] { return Refusal(path, opening); });
    } catch (const FileFailure& failure) {
        opening.failure = failure;
    }
    return opening;
}

Picture OpenPicture(const std::string& path, const std::string& asFormat, const PathOptions& paths)
{
    Opening opening = TryOpenPicture(path, asFormat, paths);
    if (opening.failure && !IsPageWithHeader(opening))
        throw FileFailure(*opening.failure);
    return { path, std::move(opening.opened), std::move(opening.paths) };
}

bool IsTiffItInTiff(const std::string& path)
{
    const CString name(path.c_str());
    const OpenedPicture tiff = OpenPictureAs(name, "TIFF");
    return tiff.picture != nullptr && !tiff.isOpen && TiffDetailsOf(*tiff.picture) &&
           MayBeTiffIt(tiff.picture.get()) &&
           tool::Guard(path, [&] { return TiffItKindOf(name).has_value(); });
}

void AddAsOption(const Options& command, std::string& asFormat)
{
    std::vector<std::string> values(kAsValues.size());
    std::transform(kAsValues.begin(), kAsValues.end(), values.begin(),
                   [](const AsValue& value) { return value.option; });
    command.Add("--as", asFormat, "Read the file as this format, whatever it looks like")
        .OneOf(values);
}

bool IsSameResolution(double read, double meant)
{
    return std::isfinite(read) && std::abs(read - meant) <= std::abs(read) * 1e-6 + 1e-4;
}

void RequirePixels(const Picture& picture)
{
    if (picture.Width() == 0 || picture.Height() == 0)
        throw FileFailure(picture.Path(),
                          "the picture has no pixels: its header says " +
                              std::to_string(picture.Width()) + " x " +
                              std::to_string(picture.Height()),
                          std::nullopt, kDamagedAdvice);
    if (picture.AsTiff() != nullptr)
        RequireHeldClaim(picture.Path(),
                         std::uint64_t{ picture.Width() } * SeparationsOf(picture.Object()).size(),
                         kMostForTiffByte);
}

LWFileInterface& RequireLineWork(const Picture& picture, const std::string& wish)
{
    if (LWFileInterface* const lineWork = picture.AsLw())
        return *lineWork;
    throw FileFailure(picture.Path(), "is a " + std::string(picture.Format()) +
                                          " file; only line work (LW) can be " + wish);
}

void ShowTransparentAsPaper(const Picture& picture)
{
    constexpr unsigned char kPaper = 255;
    auto* const colours = dynamic_cast<LwPictureParameters*>(picture.Object().PictureParams());
    if (colours == nullptr)
        return;
    for (unsigned char row = 0; row < colours->TableColorsNumber(); ++row)
        for (const ColorSeparationType separation : SeparationsOf(picture.Object()))
            if (colours->IsColorTransparent(row, separation))
                colours->SetColor(separation, row, kPaper);
}

std::optional<std::uint32_t> FirstMissingRow(const Picture& picture)
{
    const auto separations = SeparationsOf(picture.Object());
    if (picture.AsCt() == nullptr || picture.Width() == 0 || separations.empty())
        return std::nullopt;
    std::uint32_t held = 0; // rows in front that are there; the file is missing its end only
    for (std::uint32_t end = picture.Height(); held < end;) {
        const std::uint32_t middle = held + (end - held) / 2;
        if (HoldsRow(picture, middle, separations.back()))
            held = middle + 1;
        else
            end = middle;
    }
    return held < picture.Height() ? std::optional(held) : std::nullopt;
}

FileFailure MissingRowFailure(const std::string& path, std::uint32_t firstMissing,
                              std::uint32_t height)
{
    std::string advice = "The file was cut short: get it again from where it came.";
    if (firstMissing > 0)
        advice +=
            " The rows that it holds can be had with --rows 0:" + std::to_string(firstMissing) +
            " of preview and rows.";
    return { path,
             "the file is shorter than its header says: row " + std::to_string(firstMissing) +
                 " of " + std::to_string(height) + " is the first that is missing",
             std::nullopt, advice };
}

void RequireRows(const Picture& picture, std::uint32_t endRow)
{
    const std::optional<std::uint32_t> missing = FirstMissingRow(picture);
    if (missing && *missing < endRow)
        throw MissingRowFailure(picture.Path(), *missing, picture.Height());
}

} // namespace tympan::tool
