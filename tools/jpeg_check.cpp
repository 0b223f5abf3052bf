#include "jpeg_check.h"

#include "failure.h"
#include "jpeg_bands.h"
#include "picture.h"
#include "progress.h"

#include <cctype>
#include <cstdint>
#include <optional>
#include <utility>

namespace tympan::tool {

namespace {

using TellFinding = std::function<void(const Finding&)>;

std::string Sentence(std::string text)
{
    if (!text.empty())
        text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    return text + '.';
}

// What keeps `work` from being done; nothing when it is done.
template <typename Work>
std::optional<std::string> FaultOf(const std::string& path, const Work& work)
{
    try {
        Guard(path, work);
    } catch (const FileFailure& failure) {
        return Sentence(failure.WhatHappened());
    }
    return std::nullopt;
}

void DecodeAll(const Picture& picture, JpegBands& bands, const TellFinding& tell)
{
    const std::optional<JpegIndex> index = IndexOf(picture.Object());
    const std::uint64_t length = picture.AsJpeg()->JpegFileHandle()->GetLength();
    Progress progress("Decoding " + picture.Path(), picture.Height());
    std::uint32_t row = 0;
    for (const CompressedLine& block : index->blocks) {
        if (row >= picture.Height())
            return;
        const bool isInside = block.StartOffset <= block.EndOffset && block.EndOffset < length;
        const auto fault =
            isInside ? FaultOf(picture.Path(), [&] { bands.Row(row); }) : std::nullopt;
        if (fault)
            tell({ &kBandRule, { row, block.StartOffset }, *fault });
        row += kJpegBandRows;
        progress.Advance(kJpegBandRows);
    }
}

} // namespace

void CheckJpegBands(const std::string& path, const TellFinding& tell)
{
    Opening opening = TryOpenPicture(path, "jpeg");
    if (opening.failure)
        return;
    const Picture picture(path, std::move(opening.opened));
    if (picture.Width() == 0 || picture.Height() == 0)
        return;
    const auto fault = FaultOf(path, [&] {
        JpegBands bands(picture, { 0, picture.Height() });
        DecodeAll(picture, bands, tell);
    });
    if (fault)
        tell({ &kBandRule, {}, *fault });
}

} // namespace tympan::tool
