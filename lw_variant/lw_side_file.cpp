// Makes, reads and recognises the side file of line work.
#include "lw_variant/lw_side_file.h"

#include "core/whole_or_empty.h"
#include "lw_variant/velmar_lw_file.h"
#include "platform/file_system.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <system_error>

namespace {

// Whether two paths lead to one file, however they are written.
bool AreSame(const CString& left, const CString& right)
{
    if (left == right)
        return true;
    const std::optional<CString> leftPath = tympan::ResolvePath(left);
    const std::optional<CString> rightPath = tympan::ResolvePath(right);
    if (!leftPath || !rightPath)
        return false;
    const std::filesystem::path first(leftPath->GetString());
    const std::filesystem::path second(rightPath->GetString());
    std::error_code unknown;
    return std::filesystem::equivalent(first, second, unknown);
}

// Creating a file empties it; where sharing is kept to, the open picture can't be created anew.
void RequireOtherFile(const CString& path, const CString& pictureName, const CFile& picture)
{
    const CString opened = picture.GetFilePath();
    if (!AreSame(path, pictureName) && !AreSame(path, opened))
        return;
    auto failure = std::make_unique<CFileException>();
    failure->m_cause = CFileException::sharingViolation;
    failure->m_strFileName = path;
    throw failure.release();
}

bool IsBlank(char character)
{
    return character == ' ' || (character >= '\t' && character <= '\r');
}

bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}

} // namespace

namespace tympan {

CString LwSideFileName(const CString& pictureName)
{
    return pictureName.Left(pictureName.ReverseFind('.')) + ".bin";
}

std::uint32_t KeptLwSize(std::uint64_t size)
{
    return size <= std::numeric_limits<std::uint32_t>::max() ? static_cast<std::uint32_t>(size) : 0;
}

LwSideFileContent LwSideFileOf(std::uint64_t size)
{
    LwSideFileContent content{};
    std::to_chars(content.data(), content.data() + content.size(),
                  static_cast<std::int32_t>(KeptLwSize(size)));
    return content;
}

std::uint32_t LwSizeIn(std::string_view content)
{
    const auto* const end = content.data() + content.size();
    const auto* start = std::find_if_not(content.data(), end, IsBlank);
    if (start != end && *start == '+')
        start += start + 1 != end && IsDigit(start[1]) ? 1 : 0;
    std::int64_t number = 0;
    const bool isNumber = std::from_chars(start, end, number).ec == std::errc();
    const bool isHeld = number >= std::numeric_limits<std::int32_t>::min() &&
                        number <= std::numeric_limits<std::uint32_t>::max();
    return isNumber && isHeld ? static_cast<std::uint32_t>(number) : 0;
}

bool IsLwSideFile(std::string_view content)
{
    if (content.empty())
        return true;
    const std::string_view text = content.substr(0, content.find('\0'));
    const std::string_view digits = text.substr(text.starts_with('-') ? 1 : 0);
    return content.size() == kLwSideFileBytes && !digits.empty() &&
           std::all_of(digits.begin(), digits.end(), IsDigit) &&
           content.find_first_not_of('\0', text.size()) == std::string_view::npos;
}

} // namespace tympan

unsigned long VelmarLWFileInterface::CreateLwBinFile(CString& fileName, bool readExisting,
                                                     bool& fileIsValid)
{
    const CString path = tympan::LwSideFileName(fileName);
    if (!readExisting) {
        RequireOtherFile(path, fileName, FileHandle());
        MakeSideFile(path, fileIsValid);
        return 0;
    }
    CFile file;
    if (file.Open(path, CFile::modeRead | CFile::shareDenyWrite)) {
        tympan::LwSideFileContent content{};
        const unsigned int read = file.Read(content.data(), content.size());
        file.Close();
        if (const std::uint32_t size = tympan::LwSizeIn({ content.data(), read }))
            return size;
    }
    return GetLWBufferSize();
}

void VelmarLWFileInterface::MakeSideFile(const CString& path, bool& fileIsValid)
{
    CFile file(path, CFile::modeCreate | CFile::modeWrite);
    tympan::WholeOrEmpty keeper(file, path);
    fileIsValid = FileValidityCheck();
    if (fileIsValid) {
        GetLWBufferSize();
        const LwPictureParameters* const record = GetLwPictureParams();
        const tympan::LwSideFileContent content =
            tympan::LwSideFileOf(record != nullptr ? record->LwFileSize() : 0);
        file.Write(content.data(), content.size());
    }
    file.Close();
    keeper.IsWhole();
}
