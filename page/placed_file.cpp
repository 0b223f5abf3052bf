// Opens and proves the pictures that a page places, each by its own format.
#include "page/placed_file.h"

#include "core/failure_guard.h"
#include "core/findings.h"
#include "core/format.h"
#include "lw/lw_file.h"
#include "page/page_layout.h"
#include "platform/file.h"

#include <algorithm>

namespace tympan {

namespace {

constexpr FailureRow kNotReadable[] = { { Caught::File, 0, nullptr } };
constexpr FailureRow kRefusesToOpen[] = { { Caught::Anything, 0, nullptr } };

void ProvePicture(CFile& file, const Format& format, PlacedFile& placed)
{
    const FindingVisitor keepFirst = [&](const Finding& finding) {
        if (finding.rule->severity == Severity::Error && placed.firstError.empty())
            placed.firstError = finding.found;
    };
    const CheckProgress none;
    Findings findings(keepFirst, none);
    format.check.prove(file, findings);
    placed.errors = findings.CountOf(Severity::Error);
}

void OpenPicture(const CString& path, const Format& format, PlacedFile& placed)
{
    const auto picture = format.make();
    Guarded(NoTrace(), kRefusesToOpen,
            [&] { placed.isOpen = picture->OpenPictureFile(path, true, false, nullptr); });
    if (!placed.isOpen)
        return;
    placed.size = SizeInInchesOf(*picture);
    if (const auto* const lineWork =
            dynamic_cast<const LwPictureParameters*>(picture->PictureParams()))
        placed.colours = lineWork->TableColorsNumber();
}

void LookAt(CFile& file, const CString& path, PlacedFile& placed)
{
    const auto formats = FormatsByCertainty();
    const auto found = std::find_if(formats.begin(), formats.end(),
                                    [&](const Format* one) { return one->recognises(file, path); });
    placed.state = PlacedFile::State::unrecognised;
    if (found == formats.end())
        return;
    const Format& format = **found;
    placed.format = format.name;
    placed.isLineWork = format.name == LwFormat().name;
    placed.state =
        format.typeLetters == kPageLetters ? PlacedFile::State::page : PlacedFile::State::picture;
    if (placed.state == PlacedFile::State::page)
        return;
    ProvePicture(file, format, placed);
    OpenPicture(path, format, placed);
}

} // namespace

PlacedFile LookAtPlaced(const CString& path)
{
    PlacedFile placed;
    CFile file;
    if (!file.Open(path, CFile::modeRead))
        return placed;
    if (!Guarded(NoTrace(), kNotReadable, [&] { LookAt(file, path, placed); }))
        placed = {};
    return placed;
}

} // namespace tympan
