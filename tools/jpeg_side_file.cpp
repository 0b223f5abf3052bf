#include "jpeg_side_file.h"

#include "failure.h"
#include "picture_source.h"
#include "plain_file.h"

#include <tympan/tympan.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

namespace tympan::tool {

namespace {

constexpr std::size_t kHeadBytes = 256;

// It begins with the code of the units and two sizes as text. One of no bytes was given up.
bool IsIndex(std::string_view head)
{
    constexpr char kInches = 1;
    constexpr std::size_t kSizesBytes = 28;
    constexpr std::string_view kOfSizes("0123456789.+-eE \0", 17);
    if (head.empty())
        return true;
    return head.size() == kHeadBytes && (head[0] == 0 || head[0] == kInches) &&
           head.substr(1, kSizesBytes).find_first_not_of(kOfSizes) == std::string_view::npos;
}

} // namespace

std::string JpegSideFilePath(const std::string& jpegPath)
{
    CString name;
    FileNameParser::StripExtension(jpegPath.c_str(), name);
    return std::string(name.GetString()) + ".bin";
}

void RequireNoOtherSideFile(const std::string& sidePath)
{
    std::error_code ignored;
    if (!std::filesystem::exists(sidePath, ignored))
        return;
    std::string head(kHeadBytes, ' ');
    head.resize(std::fread(head.data(), 1, head.size(), OpenStream(sidePath).get()));
    if (!IsIndex(head))
        throw FileFailure(sidePath, "is no side file of a JPEG, and is left as it is", {},
                          "Line work of the same name has such a one: rename one of the two "
                          "pictures, or remove it.");
}

void RequireWritten(const OutputFile& side, std::size_t bands)
{
    if (std::filesystem::file_size(side.WritingPath()) != 0)
        return;
    PlainFile tried(side);
    tried.Write(std::vector<std::uint8_t>(kHeadBytes + bands * sizeof(CompressedLine)));
    tried.Finish();
    throw FileFailure(side.Path(), "the side file can't be written", {}, kReportAdvice);
}

} // namespace tympan::tool
