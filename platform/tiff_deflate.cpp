#include "platform/tiff_deflate.h"

#include <algorithm>
#include <cstring>

namespace tympan {

namespace {

constexpr std::byte kMark{ 0xA5 };

bool IsDeflate(TIFF* open)
{
    const auto compression = TiffField<std::uint16_t>(open, TIFFTAG_COMPRESSION);
    return compression == COMPRESSION_ADOBE_DEFLATE || compression == COMPRESSION_DEFLATE;
}

// Whether the last sample is the mark and the sample of the pixel before, which libtiff has added to
// what was there; `pixel` samples lie between the two.
template <typename Sample>
bool EndsByMark(std::span<const std::byte> decoded, std::size_t pixel)
{
    const auto fromEnd = [&](std::size_t samples) {
        Sample value = 0;
        std::memcpy(&value, decoded.data() + decoded.size() - samples * sizeof value, sizeof value);
        return value;
    };
    Sample mark = 0;
    std::fill_n(reinterpret_cast<std::byte*>(&mark), sizeof mark, kMark);
    return static_cast<Sample>(fromEnd(1) - fromEnd(1 + pixel)) == mark;
}

} // namespace

DeflateEnd::DeflateEnd(TIFF* open, const TiffLayout& layout, std::span<std::byte> decoded)
    : layout_(layout), decoded_(decoded)
{
    constexpr std::size_t kLongestSample = 2;
    if (!IsDeflate(open) || decoded.empty())
        return;
    predictor_ = TiffField<std::uint16_t>(open, TIFFTAG_PREDICTOR);
    std::fill_n(decoded.rbegin(), std::min(kLongestSample, decoded.size()), kMark);
}

bool DeflateEnd::SeemsUnwritten() const
{
    if (predictor_ == 0)
        return false;
    if (predictor_ == PREDICTOR_NONE || layout_.blockWidth == 1)
        return decoded_.back() == kMark;
    const bool isPlain = predictor_ == PREDICTOR_HORIZONTAL && !layout_.SharesChroma();
    if (isPlain && layout_.bits == 8)
        return EndsByMark<std::uint8_t>(decoded_, layout_.PlaneSamples());
    if (isPlain && layout_.bits == 16)
        return EndsByMark<std::uint16_t>(decoded_, layout_.PlaneSamples());
    return true; // what is there can't be told: the slow way is always gone
}

SlowDeflate::SlowDeflate(TIFF* open) : open_(open)
{
    TIFFGetField(open, TIFFTAG_DEFLATE_SUBCODEC, &before_);
    TIFFSetField(open, TIFFTAG_DEFLATE_SUBCODEC, DEFLATE_SUBCODEC_ZLIB);
}

SlowDeflate::~SlowDeflate()
{
    TIFFSetField(open_, TIFFTAG_DEFLATE_SUBCODEC, before_);
}

} // namespace tympan
