#include "picture.h"

#include "separations.h"

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
    AsValue{ "page", "PAGE" }, AsValue{ "tiff", "TIFF" }, AsValue{ "tiffit", "TIFF/IT" },
};

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
    CodeText{ 90066,
              "the header is refused: its number of separations is neither 1 nor 4, or its "
              "mask names another number",
              "The file is damaged or of another format; --as FORMAT names the format." },
};

constexpr char kDamagedAdvice[] = "The file is damaged or of another format.";

const CodeText* TextOfCode(unsigned long code)
{
    const auto* const found = std::find_if(kCodeTexts.begin(), kCodeTexts.end(),
                                           [&](const CodeText& one) { return one.code == code; });
    return found == kCodeTexts.end() ? nullptr : found;
}

std::string FormatsOfThisBuild()
{
    std::string names;
    for (const std::string_view name : FormatNames())
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
    const std::string told = OnOneLine(picture.ErrorMsg().GetString());
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

OpenedPicture Open(const std::string& path, const std::vector<std::string_view>& formats)
{
    const CString name(path.c_str());
    RequirePlainFile(path);
    const CFile readable(name, CFile::modeRead); // throws what keeps the file from being read
    return formats.empty() ? OpenAnyPicture(name) : OpenAsAnyOf(name, formats);
}

// Once the head is read, only the side file can be missing.
FileFailure JpegRefusal(const std::string& path, const BasePictureIF& picture)
{
    constexpr unsigned long kFileFailed = 90001;
    if (CodeOf(picture) == kFileFailed && picture.FileNumberOfSeparations() > 0)
        return { path,
                 "its side file, of the same name with .bin, can't be opened or read; it tells "
                 "where the rows stand",
                 kFileFailed, "`tympan index FILE` makes it." };
    return FailureOf(path, picture, "the head can't be read",
                     "Its head has another form than is read here: `tympan import FILE -o OUT.jpg` "
                     "makes a JPEG that has it.");
}

FileFailure Refusal(const std::string& path, const OpenedPicture& opened)
{
    if (opened.picture == nullptr)
        return { path,
                 "is none of the formats that this build reads (" + FormatsOfThisBuild() + ")",
                 std::nullopt, "If you know its format, name it with --as." };
    if (dynamic_cast<const JpegFileInterface*>(opened.picture.get()) != nullptr)
        return JpegRefusal(path, *opened.picture);
    return FailureOf(path, *opened.picture,
                     "the header claims rows that the file can't hold or memory can't",
                     kDamagedAdvice);
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

Picture::Picture(std::string path, OpenedPicture opened)
    : path_(std::move(path)), opened_(std::move(opened))
{}

PictureFileInterface& Picture::Rows() const
{
    if (auto* const rows = dynamic_cast<PictureFileInterface*>(opened_.picture.get()))
        return *rows;
    throw FileFailure(path_, "a " + std::string(Format()) + " file has no rows");
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

std::vector<std::string_view> FormatsFor(const std::string& asFormat)
{
    if (asFormat.empty())
        return {};
    const auto* const value =
        std::find_if(kAsValues.begin(), kAsValues.end(),
                     [&](const AsValue& one) { return one.option == asFormat; });
    std::vector<std::string_view> formats;
    for (const std::string_view name : FormatNames())
        if (value != kAsValues.end() &&
            (name == value->formats || name.substr(0, name.find(' ')) == value->formats))
            formats.push_back(name);
    if (formats.empty())
        throw UsageFailure("--as " + asFormat + ": this build doesn't read that format; it reads " +
                           FormatsOfThisBuild());
    return formats;
}

Opening TryOpenPicture(const std::string& path, const std::string& asFormat)
{
    const std::vector<std::string_view> formats = FormatsFor(asFormat);
    Opening opening;
    try {
        opening.opened = tool::Guard(path, [&] { return Open(path, formats); });
        if (!opening.opened.isOpen)
            opening.failure = Refusal(path, opening.opened);
    } catch (const FileFailure& failure) {
        opening.failure = failure;
    }
    return opening;
}

Picture OpenPicture(const std::string& path, const std::string& asFormat)
{
    Opening opening = TryOpenPicture(path, asFormat);
    if (opening.failure)
        throw FileFailure(*opening.failure);
    return { path, std::move(opening.opened) };
}

void AddAsOption(CLI::App& command, std::string& asFormat)
{
    std::vector<std::string> values(kAsValues.size());
    std::transform(kAsValues.begin(), kAsValues.end(), values.begin(),
                   [](const AsValue& value) { return value.option; });
    command.add_option("--as", asFormat, "Read the file as this format, whatever it looks like")
        ->check(CLI::IsMember(values));
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
