// The header record of a TIFF: a plain holder.
#include "tiff/tiff_file.h"

TiffFileParam::TiffFileParam(const TiffFileParam& other) : TiffFileParam()
{
    CopyParameters(other);
}

TiffFileParam& TiffFileParam::operator=(const TiffFileParam& other)
{
    if (this != &other) {
        CopyParameters(other);
        PictureParameters::operator=(other);
    }
    return *this;
}

TiffFileParam::~TiffFileParam() = default;

bool TiffFileParam::Load(CFile&)
{
    return false;
}

bool TiffFileParam::Save(CFile&) const
{
    return false;
}

void TiffFileParam::Clear()
{
    PictureParameters::Clear();
    colorSet_ = NoColorSet;
    compression_ = 0;
    pictureFileName_.Empty();
    photometric_ = 0;
    colorSeparation_ = 0;
    initTiff_ = 0;
}

void TiffFileParam::CopyParameters(const TiffFileParam& other)
{
    colorSet_ = other.colorSet_;
    compression_ = other.compression_;
    pictureFileName_ = other.pictureFileName_;
    photometric_ = other.photometric_;
    colorSeparation_ = other.colorSeparation_;
    initTiff_ = other.initTiff_;
    RowSize(other.RowSize());
    BitsPerSample(other.BitsPerSample());
}
