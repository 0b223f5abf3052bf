// The check of a JPEG: its head, and its index against the stream. Whether a band decodes is not looked
// at: the library doesn't.
#include "jpeg/jpeg_check.h"

#include "core/findings.h"
#include "jpeg/jpeg_check_parts.h"
#include "jpeg/jpeg_check_rules.h"
#include "jpeg/jpeg_head.h"
#include "platform/file.h"

namespace tympan {

using namespace jpeg_rule;

namespace {

constexpr const CheckRule* kRules[] = {
    &kNoJpeg,           &kNoJfif,         &kHeadDamaged, &kNotBaseline, &kSegmentMissing,
    &kSegmentElsewhere, &kFurtherSegment, &kTables,      &kFrameValues, &kSubsampled,
    &kTableNumbers,     &kScanForm,       &kRestarts,    &kNoSideFile,  &kSideCutShort,
    &kSideUnits,        &kSideNoSize,     &kSideRest,    &kBlockCount,  &kBlockSize,
    &kBlockOutside,     &kBlockOrder,     &kBlockInHead,
};

// A JPEG of another kind is told what it differs in.
bool Accepts(CFile& file, const CString&)
{
    const JpegHead head = ReadJpegHead(file);
    return head.begins && (head.isJfif || head.frame.IsThere());
}

void Prove(CFile& file, Findings& findings)
{
    const JpegHead head = ReadJpegHead(file);
    if (!head.begins) {
        findings.Tell(kNoJpeg, { {}, 0 }, [] { return "The bytes FF D8 were expected here."; });
        return;
    }
    const std::uint64_t rows = CheckJpegHead(file, head, findings);
    CheckJpegIndex(file, head, rows, findings);
}

} // namespace

FormatCheck JpegFileCheck()
{
    return { Accepts, Prove, kRules };
}

} // namespace tympan
