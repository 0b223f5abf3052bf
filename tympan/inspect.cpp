#include "tympan/inspect.h"

#include "core/failure_codes.h"
#include "core/failure_guard.h"
#include "core/format.h"
#include "jpeg/jpeg_file.h"
#include "jpeg/side_file.h"
#include "lw/lw_layout.h"
#include "lw_variant/lw_side_file.h"
#include "platform/file.h"
#include "tiff/tiff_it_access.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace tympan {

namespace {

constexpr FailureRow kRefusals[] = {
    { Caught::Anything, 0, nullptr },
};

OpenedPicture Open(const CString& path, std::unique_ptr<BasePictureIF> picture,
                   std::string_view format)
{
    OpenedPicture opened{ std::move(picture), format };
    Guarded(NoTrace(), kRefusals,
            [&] { opened.isOpen = opened.picture->OpenPictureFile(path, true, false, nullptr); });
    return opened;
}

OpenedPicture OpenAs(const CString& path, const Format& format)
{
    return Open(path, format.make(), format.name);
}

const Format* Named(std::span<const Format* const> formats, std::string_view name)
{
    const auto named = std::find_if(formats.begin(), formats.end(),
                                    [&](const Format* one) { return one->name == name; });
    return named == formats.end() ? nullptr : *named;
}

// The format that a header names by its type, in capitals or not.
const Format* OfType(std::span<const Format* const> formats, const CString& type)
{
    std::string letters(type.View());
    for (char& letter : letters)
        letter = letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    const auto owner = std::find_if(formats.begin(), formats.end(), [&](const Format* one) {
        return (one->typeLetters.empty() ? one->name : one->typeLetters) == letters;
    });
    return owner == formats.end() ? nullptr : *owner;
}

// The start of a file, longer than any side file of line work; nothing when it can't be opened.
std::optional<std::string> ReadSideFile(const CString& path)
{
    CFile file;
    if (!file.Open(path, CFile::modeRead))
        return std::nullopt;
    std::string content(kLwSideFileBytes + 1, '\0');
    content.resize(file.Read(content.data(), static_cast<UINT>(content.size())));
    return content;
}

// The size of the stream of rows that fill a file.
std::uint64_t StreamSize(const CString& path, const LwPictureParameters& record)
{
    constexpr std::uint64_t kMoreThanTheRows = 2;
    const auto firstRow = static_cast<std::uint64_t>(LwFirstRow(record.TableColorsNumber()));
    const std::uint64_t length = CFile(path, CFile::modeRead).GetLength();
    return std::max(length, firstRow) - firstRow + kMoreThanTheRows;
}

SideFileState StateOf(std::string_view content, std::uint64_t streamSize)
{
    if (!IsLwSideFile(content))
        return SideFileState::foreign;
    const bool fits = !content.empty() && LwSizeIn(content) == KeptLwSize(streamSize);
    return fits ? SideFileState::ok : SideFileState::stale;
}

} // namespace

LineWorkSideFile SideFileOf(const CString& path, const LwPictureParameters& record)
{
    const CString sidePath = LwSideFileName(path);
    const std::optional<std::string> content = ReadSideFile(sidePath);
    return { sidePath,
             content ? StateOf(*content, StreamSize(path, record)) : SideFileState::none };
}

bool IsLineWorkSideFile(const CString& path)
{
    const std::optional<std::string> content = ReadSideFile(path);
    return content && !content->empty() && IsLwSideFile(*content);
}

std::vector<std::string_view> FormatNames()
{
    std::vector<std::string_view> names;
    for (const Format& format : Formats())
        names.push_back(format.name);
    return names;
}

std::optional<TiffItKind> TiffItKindOf(const CString& path)
{
    CFile file(path, CFile::modeRead);
    const auto probe = TiffItAccess::Make(TiffItKind::ContinuousTone);
    const auto kind = TiffItAccess::KindOf(*probe, file);
    if (probe->TraceStatus() == code::kFileFailed)
        AfxThrowFileException(CFileException::genericException, -1, path.GetString());
    return kind;
}

OpenedPicture OpenTiffIt(const CString& path)
{
    CFile file(path, CFile::modeRead);
    auto probe = TiffItAccess::Make(TiffItKind::ContinuousTone);
    if (const auto kind = TiffItAccess::KindOf(*probe, file)) {
        probe.reset(); // one object at a time
        return Open(path, TiffItAccess::Make(*kind), kTiffItName);
    }
    if (probe->TraceStatus() == 0)
        probe->TraceStatus(code::kTiffItNeitherKind);
    return { std::move(probe), kTiffItName };
}

OpenedPicture OpenPictureAs(const CString& path, std::string_view format)
{
    if (format == kTiffItName)
        return OpenTiffIt(path);
    const Format* const named = Named(FormatsByCertainty(), format);
    return named == nullptr ? OpenedPicture{} : OpenAs(path, *named);
}

OpenedPicture OpenAnyPicture(const CString& path)
{
    CFile probe(path, CFile::modeRead);
    const auto formats = FormatsByCertainty();
    OpenedPicture refused;
    for (std::size_t i = 0; i < formats.size(); ++i) {
        if (!formats[i]->recognises(probe, path))
            continue;
        OpenedPicture opened = OpenAs(path, *formats[i]);
        if (opened.isOpen) {
            const Format* const owner = OfType(formats.first(i), opened.picture->FileType());
            return owner == nullptr ? std::move(opened) : OpenAs(path, *owner);
        }
        if (refused.picture == nullptr)
            refused = std::move(opened);
    }
    return refused;
}

struct JpegIndexAccess {
    static const JpegCompBlocksInfo& Of(const JpegFileInterface& picture)
    {
        return picture.CompressedBlocksInfo();
    }
    static bool HasPicture(const JpegFileInterface& picture) { return picture.IsPictureFileOpen(); }
};

std::optional<JpegIndex> IndexOf(const BasePictureIF& picture)
{
    const auto* const jpeg = dynamic_cast<const JpegFileInterface*>(&picture);
    if (jpeg == nullptr || !JpegIndexAccess::Of(*jpeg).IsOpen())
        return std::nullopt;
    const JpegCompBlocksInfo& index = JpegIndexAccess::Of(*jpeg);
    const bool isOpen = JpegIndexAccess::HasPicture(*jpeg);
    return JpegIndex{ index.Blocks(),
                      index.FileSizeUnitsFactor(),
                      index.HeightInUnits(),
                      index.WidthInUnits(),
                      index.McuNumber(),
                      isOpen && IndexFits(index.Blocks(), jpeg->FileHeightInPixels(),
                                          jpeg->JpegFileHandle()->GetLength()) };
}

} // namespace tympan
