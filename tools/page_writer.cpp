#include "page_writer.h"

#include "failure.h"
#include "picture.h"

#include <tympan/check.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace tympan::tool {

namespace {

// A header holds no side below a tenth of an inch, and none of 100 million inches.
double PixelsOf(double inches, const PageForm& form)
{
    constexpr double kLeastInches = 0.1;
    constexpr double kEndOfInches = 1e8;
    const double pixels = std::round(inches * form.resolution);
    if (!(pixels >= 1.0 && pixels <= std::numeric_limits<std::int32_t>::max()))
        throw UsageFailure(
            "a page of this size and resolution has no pixel, or more on a side than "
            "its header can hold");
    if (!(pixels / form.resolution >= kLeastInches && pixels / form.resolution < kEndOfInches))
        throw UsageFailure("the header of a page holds sides from 0.1 to 99999999 inches");
    return pixels;
}

// The size of whole pixels, so that the resolution reads back as it is.
void Describe(PageFileInterface& page, const PageForm& form)
{
    PictureParameters& record = *page.PictureParams();
    record.WidthInPixels(PixelsOf(form.size.width, form));
    record.HeightInPixels(PixelsOf(form.size.height, form));
    record.WidthInUnits(record.WidthInPixels() / form.resolution);
    record.HeightInUnits(record.HeightInPixels() / form.resolution);
    record.NumberOfSeparations(PictureParameters::kSlots);
    for (unsigned int slot = 0; slot < PictureParameters::kSlots; ++slot)
        record.Separation(slot, BasePictureIF::AvailableSeps(slot));
}

void WriteHeader(PageFileInterface& page, const PageForm& form, const OutputFile& output)
{
    Describe(page, form);
    if (!page.SavePictureParams())
        throw FileFailure(output.Path(), "the page's sizes don't fit its header");
}

// What an entry can't hold has been asked for.
void WriteEntries(CFile& file, std::span<const Placement> placements)
{
    try {
        WritePlacements(file, placements);
    } catch (const std::invalid_argument& refusal) {
        throw UsageFailure(refusal.what());
    }
}

// ---- reading what was written

// The file keeps eight digits.
bool IsSameNumber(double read, double meant)
{
    return std::abs(read - meant) <= std::abs(meant) * 1e-7;
}

bool IsSame(const Placement& read, const Placement& meant)
{
    return read.type == meant.type && read.path == meant.path &&
           IsSameNumber(read.xOffset, meant.xOffset) && IsSameNumber(read.yOffset, meant.yOffset) &&
           IsSameNumber(read.width, meant.width) && IsSameNumber(read.height, meant.height) &&
           IsSameNumber(read.rotation, meant.rotation) && read.container == meant.container &&
           read.colours == meant.colours;
}

bool HoldsSame(const PageFileInterface& page, std::span<const Placement> placements)
{
    if (page.GetEntriesNumber() != placements.size())
        return false;
    for (std::size_t index = 0; index < placements.size(); ++index) {
        const auto* const entry = page.GetEntry(static_cast<unsigned short>(index));
        const auto read = entry != nullptr ? PlacementOf(*entry) : std::nullopt;
        if (!read || !IsSame(*read, placements[index]))
            return false;
    }
    return true;
}

bool IsAsWritten(const Picture& page, const PageForm& form, std::span<const Placement> placements)
{
    return page.AsPage() != nullptr && page.Width() == PixelsOf(form.size.width, form) &&
           page.Height() == PixelsOf(form.size.height, form) &&
           IsSameResolution(page.Object().ResolutionOnXScanAxis(), form.resolution) &&
           IsSameResolution(page.Object().ResolutionOnScanAxis(), form.resolution) &&
           HoldsSame(*page.AsPage(), placements);
}

// A remark of the check that isn't told: the person has given the size.
constexpr std::string_view kOtherSize = "TYM-PAGE-0013";

// An error is a fault of what was placed; a remark is told.
void RequireSound(const OutputFile& output)
{
    std::optional<FileFailure> failure;
    CheckOptions options;
    options.formats = FormatsFor("page");
    const CheckResult result = CheckFile(
        output.WritingPath().c_str(),
        [&](const Finding& finding) {
            const CheckRule& rule = *finding.rule;
            if (rule.severity == Severity::Error && !failure)
                failure.emplace(output.Path(), finding.found, std::nullopt,
                                std::string(rule.remedy));
            else if (rule.severity == Severity::Remark && rule.id != kOtherSize)
                Warn(output.Path(), finding.found);
        },
        options);
    if (failure)
        throw FileFailure(*failure);
    if (result.verdict == Verdict::Undetermined)
        throw FileFailure(output.Path(), "what was written can't be checked");
}

void RequireReadsBack(const OutputFile& output, const PageForm& form,
                      std::span<const Placement> placements, const PathOptions& paths)
{
    Opening opening = TryOpenPicture(output.WritingPath(), "page", paths);
    if (opening.failure)
        throw FileFailure(output.Path(), opening.failure->WhatHappened(), opening.failure->Code(),
                          opening.failure->Advice());
    const Picture page(output.WritingPath(), std::move(opening.opened), std::move(opening.paths));
    if (!IsAsWritten(page, form, placements))
        throw FileFailure(output.Path(),
                          "what was written doesn't read back as the page that it should be", {},
                          "Please report this, with the pictures.");
    RequireSound(output);
}

} // namespace

void WritePage(const OutputFile& output, const PageForm& form,
               std::span<const Placement> placements, const PathOptions& paths)
{
    PageFileInterface page;
    if (!page.OpenPictureFile(output.WritingPath().c_str(), false, true, nullptr))
        throw FileFailure(output.Path(), "the page can't be begun", page.TraceStatus());
    WriteHeader(page, form, output);
    WriteEntries(page.FileHandle(), placements);
    page.ClosePictureFile();
    RequireReadsBack(output, form, placements, paths);
}

} // namespace tympan::tool
