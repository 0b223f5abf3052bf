// Recognising, opening and closing a TIFF.
#include "core/failure_codes.h"
#include "core/failure_guard.h"
#include "core/format.h"
#include "platform/tiff_library.h"
#include "tiff/tiff_check.h"
#include "tiff/tiff_details.h"
#include "tiff/tiff_file.h"
#include "tiff/tiff_kind.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr tympan::FailureRow kFileFailures[] = { { tympan::Caught::File, 0, nullptr } };
constexpr char kReading[] = "r";

// Leaves a file at the place where it stood.
class KeptPosition {
  public:
    explicit KeptPosition(CFile& file) : file_(file), position_(file.GetPosition()) {}
    KeptPosition(const KeptPosition&) = delete;
    KeptPosition& operator=(const KeptPosition&) = delete;
    ~KeptPosition()
    {
        tympan::Guarded(tympan::NoTrace(), kFileFailures,
                        [&] { file_.Seek(static_cast<LONGLONG>(position_), CFile::begin); });
    }

  private:
    CFile& file_;
    ULONGLONG position_;
};

struct KnownKind {
    std::uint16_t bits, samples, photometric;
    ColorSetType kind;
};

constexpr KnownKind kKnownKinds[] = {
    { 1, 1, tympan::photometric::kWhiteIsZero, BilevelColorSet },
    { 8, 1, tympan::photometric::kWhiteIsZero, InverseGrayColorSet },
    { 8, 1, tympan::photometric::kBlackIsZero, GrayColorSet },
    { 8, 1, tympan::photometric::kPalette, GrayColorSet },
    { 8, 3, tympan::photometric::kRgb, RgbColorSet },
    { 8, 3, tympan::photometric::kYCbCr, YCbCrColorSet },
    { 8, 4, tympan::photometric::kSeparated, CmykColorSet },
    { 8, 5, tympan::photometric::kSeparated, FiveColorSet },
    { 8, 6, tympan::photometric::kSeparated, SixColorSet },
    { 8, 7, tympan::photometric::kSeparated, SevenColorSet },
    { 8, 8, tympan::photometric::kSeparated, EightColorSet },
};

} // namespace

ColorSetType tympan::KindOf(std::uint16_t bits, std::uint16_t samples, std::uint16_t photometric)
{
    const auto* const known =
        std::find_if(std::begin(kKnownKinds), std::end(kKnownKinds), [&](const KnownKind& one) {
            return one.bits == bits && one.samples == samples && one.photometric == photometric;
        });
    return known == std::end(kKnownKinds) ? NoColorSet : known->kind;
}

void tympan::CloseTiff::operator()(tiff* file) const noexcept
{
    TiffClose(file);
}

TiffFileInterface::TiffFileInterface()
{
    PictureParams(new TiffFileParam);
}

TiffFileInterface::~TiffFileInterface() = default;

bool TiffFileInterface::isTypeOf(CFile& file, const CString& name)
{
    bool isTiff = false;
    tympan::Guarded(tympan::NoTrace(), kFileFailures, [&] {
        const KeptPosition kept(file);
        file.SeekToBegin();
        const std::unique_ptr<tiff, tympan::CloseTiff> probe(
            TifffdOpen(file.m_hFile, name, kReading));
        isTiff = probe != nullptr;
    });
    return isTiff;
}

bool TiffFileInterface::OpenPictureFile(const CString& fileName, bool, bool, CFileException*)
{
    tiff_.reset();
    TiffFileParam& record = *GetPictureParams();
    record.InitTiff(1);
    tiff_.reset(TiffOpen(fileName, kReading));
    if (tiff_ == nullptr)
        return FailAsLibrary(tympan::code::kTiffNotOpened);
    record.WidthInPixels(tiff_->ImageWidth);
    record.HeightInPixels(tiff_->ImageLength);
    record.Resolution({ tiff_->XResolution, tiff_->YResolution });
    record.Compression(tiff_->Compression == 1 ? 0 : tiff_->Compression);
    record.BitsPerSample(tiff_->BitsPerSample);
    record.Photometric(tiff_->PhotometricInterpretation);
    record.ColorSeparation(tiff_->SamplesPerPixel);
    const bool isKnown = TakeKind();
    record.RowSize(static_cast<std::uint32_t>(TiffScanlineSize(tiff_.get())));
    return isKnown;
}

bool TiffFileInterface::TakeKind()
{
    TiffFileParam& record = *GetPictureParams();
    record.ColorSet(tympan::KindOf(tiff_->BitsPerSample, tiff_->SamplesPerPixel,
                                   tiff_->PhotometricInterpretation));
    if (record.ColorSet() != NoColorSet)
        return true;
    TiffWarning("Open for reading",
                "Unknown palette type.\nBitPerSample=%d,\nSamplePerPixel=%d,\nPhotometric=%d.",
                tiff_->BitsPerSample, tiff_->SamplesPerPixel, tiff_->PhotometricInterpretation);
    record.BitsPerSample(0);
    return FailAsLibrary(tympan::code::kTiffFailed);
}

void TiffFileInterface::ClosePictureFile()
{
    tiff_.reset();
    GetPictureParams()->Clear();
}

bool TiffFileInterface::Fail(unsigned long code, const CString& text)
{
    TraceStatus(code);
    ErrorMsg(text);
    TraceStatusString(text);
    return false;
}

bool TiffFileInterface::FailAsLibrary(unsigned long code)
{
    return Fail(code, TiffErrorMsg());
}

bool TiffFileInterface::IsTiff8Bit() const
{
    return GetPictureParams()->ColorSet() == GrayColorSet;
}

bool TiffFileInterface::IsTiff1Bit() const
{
    return GetPictureParams()->ColorSet() == BilevelColorSet;
}

bool TiffFileInterface::IsTiffCMYK() const
{
    return GetPictureParams()->ColorSet() == CmykColorSet;
}

TiffFileParam* TiffFileInterface::GetPictureParams()
{
    return static_cast<TiffFileParam*>(PictureParams());
}

const TiffFileParam* TiffFileInterface::GetPictureParams() const
{
    return static_cast<const TiffFileParam*>(PictureParams());
}

tympan::Format tympan::TiffFormat()
{
    return {
        .name = "TIFF",
        .recognises = TiffFileInterface::isTypeOf,
        .make = [] { return std::unique_ptr<BasePictureIF>(new TiffFileInterface); },
        .check = TiffFileCheck(),
        .perInch = [](const BasePictureIF& picture) -> std::optional<double> {
            const auto details = TiffDetailsOf(picture);
            return details ? std::optional(details->perInch) : std::nullopt;
        },
    };
}
