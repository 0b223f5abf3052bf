// Any bytes as a TIFF/IT file: told its kind, checked, and drawn as either kind.
#include "core/findings.h"
#include "fuzz/any_file.h"
#include "platform/file.h"
#include "support/canvas.h"
#include "tiff/tiff_check.h"
#include "tiff/tiff_it_ct.h"
#include "tiff/tiff_it_lw.h"
#include "tympan/inspect.h"

namespace {

template <typename Picture>
void DrawAs()
{
    tympan::test::Canvas canvas(16, 16);
    Picture picture(tympan::fuzz::kPath, true);
    picture.Display(0, 12, canvas.dc);
    picture.Display(7, ~0UL, canvas.dc);
    picture.Display(2, 1, canvas.dc);
}

void Check()
{
    const tympan::FindingVisitor visit;
    const tympan::CheckProgress progress;
    tympan::Findings findings(visit, progress);
    CFile file(tympan::fuzz::kPath, CFile::modeRead);
    tympan::TiffItFileCheck().prove(file, findings);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    tympan::fuzz::WithFile(data, size, [] {
        tympan::OpenTiffIt(tympan::fuzz::kPath);
        Check();
        DrawAs<TiffItCtP1Interface>();
        DrawAs<TiffItLwP1Interface>();
    });
    return 0;
}
