#include "core/picture_object.h"

#include "core/failure_guard.h"
#include "core/whole_numbers.h"

const ColorSeparationType BasePictureIF::m_AvailableSeps[PictureParameters::kSlots] = {
    Cyan, Magenta, Yellow, Black
};

namespace {

// Closes a file of which nobody can be told that closing it failed, or has lost by that.
void CloseOrForget(CFile& file)
{
    static constexpr tympan::FailureRow kForgotten[] = { { tympan::Caught::File, 0, nullptr } };
    tympan::Guarded(tympan::NoTrace(), kForgotten, [&] { file.Close(); });
}

} // namespace

BasePictureIF::BasePictureIF() : failures_("BasePictureIF:\n No Error !") {}

BasePictureIF::~BasePictureIF()
{
    record_.reset();
}

bool BasePictureIF::OpenPictureFile(const CString& fileName, bool inputFile, bool reopen,
                                    CFileException* fileError)
{
    if (!reopen && PictureFileName() == fileName)
        return true;
    if (IsPictureFileOpen())
        ClosePictureFile();
    PictureFileType(inputFile);
    if (OpenAndLoad(fileName, fileError))
        return true;
    ObjectStatus(false);
    if (fileError != nullptr)
        throw fileError;
    return false;
}

bool BasePictureIF::OpenAndLoad(const CString& fileName, CFileException* fileError)
{
    constexpr UINT kInput = CFile::modeRead | CFile::shareDenyWrite | CFile::typeBinary;
    constexpr UINT kOutput = CFile::modeCreate | CFile::modeWrite | CFile::typeBinary;
    if (!file_.Open(fileName, IsPictureInputFile() ? kInput : kOutput, fileError))
        return false;
    file_.Seek(0, CFile::begin);
    if (!IsPictureInputFile())
        return true;
    const bool loaded = record_ != nullptr && record_->Load(file_);
    file_.Seek(0, CFile::begin);
    return loaded;
}

bool BasePictureIF::SavePictureParams()
{
    return record_ != nullptr && record_->Save(file_);
}

void BasePictureIF::Display(unsigned long, unsigned long, CDC&) {}

void BasePictureIF::ClosePictureFile()
{
    if (record_ != nullptr)
        record_->Clear(); // first: the closing of an output can fail
    if (!IsPictureFileOpen())
        return;
    if (IsPictureInputFile())
        CloseOrForget(file_);
    else
        file_.Close();
}

CString BasePictureIF::PictureFileName() const
{
    return file_.GetFileTitle();
}

void BasePictureIF::PictureParams(PictureParameters* const record)
{
    static_cast<void>(record_.release());
    record_.reset(record);
}

const PictureParameters& BasePictureIF::Record() const
{
    static const PictureParameters kEmpty;
    return record_ != nullptr ? *record_ : kEmpty;
}

const ColorSeparationType& BasePictureIF::AvailableSeps(unsigned int index)
{
    static constexpr ColorSeparationType kNone = NoSeparation;
    return index < PictureParameters::kSlots ? m_AvailableSeps[index] : kNone;
}

// ---- what the record knows

unsigned short BasePictureIF::FileSizeUnits() const
{
    return tympan::CutToWhole<unsigned short>(Record().FileSizeUnitsFactor());
}

double BasePictureIF::FileSizeUnitsFactor() const
{
    return Record().FileSizeUnitsFactor();
}

void BasePictureIF::FileSizeUnitsFactor(double factor)
{
    if (record_ != nullptr)
        record_->FileSizeUnitsFactor(factor);
}

const double& BasePictureIF::FileHeightInUnits() const
{
    return Record().HeightInUnits();
}

void BasePictureIF::FileHeightInUnits(double height)
{
    if (record_ != nullptr)
        record_->HeightInUnits(height);
}

const double& BasePictureIF::FileWidthInUnits() const
{
    return Record().WidthInUnits();
}

void BasePictureIF::FileWidthInUnits(double width)
{
    if (record_ != nullptr)
        record_->WidthInUnits(width);
}

unsigned long BasePictureIF::FileHeightInPixels() const
{
    return tympan::CutToWhole<unsigned long>(Record().HeightInPixels());
}

void BasePictureIF::FileHeightInPixels(unsigned long height)
{
    if (record_ != nullptr)
        record_->HeightInPixels(static_cast<double>(height));
}

unsigned long BasePictureIF::FileWidthInPixels() const
{
    return tympan::CutToWhole<unsigned long>(Record().WidthInPixels());
}

void BasePictureIF::FileWidthInPixels(unsigned long width)
{
    if (record_ != nullptr)
        record_->WidthInPixels(static_cast<double>(width));
}

double BasePictureIF::FileResolution() const
{
    return Record().Resolution();
}

double BasePictureIF::ResolutionOnScanAxis() const
{
    return Record().ResolutionOnScanAxis();
}

double BasePictureIF::ResolutionOnXScanAxis() const
{
    return Record().ResolutionOnXScanAxis();
}

unsigned int BasePictureIF::FileNumberOfSeparations() const
{
    return Record().NumberOfSeparations();
}

void BasePictureIF::FileNumberOfSeparations(int count)
{
    if (record_ != nullptr)
        record_->NumberOfSeparations(static_cast<unsigned int>(count));
}

const ColorSeparationType& BasePictureIF::FileSeparation(unsigned int slot) const
{
    return Record().Separation(slot);
}

bool BasePictureIF::SeparationExists(const ColorSeparationType& separation) const
{
    return Record().SeparationExists(separation);
}

CString BasePictureIF::FileType() const
{
    return Record().FileType();
}

bool BasePictureIF::Nlw() const
{
    return Record().Nlw();
}
