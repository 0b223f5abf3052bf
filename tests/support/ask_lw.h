// Puts every question to an LW object, and holds the answers together; for the tests of bad files
// and the fuzz target.
#pragma once

#include "core/whole_numbers.h"
#include "lw/lw_file.h"
#include "platform/file.h"
#include "support/canvas.h"
#include "support/require.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tympan::test {

/// Asks all that an LW object answers, with buffers of the very sizes that it tells. Whatever the
/// file is, nothing may crash, hang, or read or write where it shouldn't. Of a file whose rows are
/// all sound, all ways to its pixels have to give the same.
class LwQuestions {
  public:
    explicit LwQuestions(LWFileInterface& picture)
        : picture_(picture), width_(CutToWhole<std::uint32_t>(Record().WidthInPixels())),
          height_(CutToWhole<unsigned int>(Record().HeightInPixels()))
    {}

    /// \param cropped where a crop may be written.
    void AskAll(const std::string& cropped)
    {
        AskWhatIsNotThere();
        if (height_ == 0 || width_ * height_ > kMostRoom)
            return;
        for (const ColorSeparationType separation : { Cyan, Black }) {
            separation_ = separation;
            AskRows();
            AskEachRow();
            AskStream(1, 0, true);
            AskStream(3, 100, false);
            AskPlainStream();
        }
        AskDisplay();
        AskCrop({ 0, 0, 0, 0 }, cropped);
        AskCrop({ 2, static_cast<double>(width_) - 1, 2, 1e9 }, cropped);
        AskCrop({ static_cast<double>(width_), 0, 1, 1 }, cropped);
        Require(picture_.FileValidityCheck() || !areSound_, "sound rows are valid");
    }

  private:
    using Bytes = std::vector<unsigned char>;
    static constexpr std::uint64_t kMostRoom = 64U << 20U;
    static constexpr unsigned long kFullGap = 255, kPart = 4096;

    const LwPictureParameters& Record() const
    {
        return dynamic_cast<const LwPictureParameters&>(
            *static_cast<const LWFileInterface&>(picture_).PictureParams());
    }
    /// Memory that the sanitizer knows to the byte, not set; null above the limit.
    static std::unique_ptr<unsigned char[]> Room(std::uint64_t bytes)
    {
        return std::unique_ptr<unsigned char[]>(bytes <= kMostRoom ? new unsigned char[bytes]
                                                                   : nullptr);
    }
    /// Room of the size that was told for rows. `most` when none was, as for a file that ends, and
    /// for rows without a pixel, whose size leaves out delimiters.
    std::unique_ptr<unsigned char[]> RoomOf(std::uint64_t told, std::uint64_t size,
                                            std::uint64_t most) const
    {
        return Room(told != 0 && width_ != 0 ? size : most);
    }
    std::uint64_t FileLength() const
    {
        return picture_.FileHandle().m_hFile == CFile::hFileNull
                   ? 0
                   : picture_.FileHandle().GetLength();
    }
    const unsigned char* Row(unsigned int row) const { return pixels_.data() + row * width_; }

    template <typename Failure>
    void RequireNoColour(int index, int separation)
    {
        try {
            picture_.GetColorValue(index, static_cast<ColorSeparationType>(separation));
            Require(false, "there is no such colour");
        } catch (Failure* failure) {
            delete failure;
        }
    }

    void AskWhatIsNotThere()
    {
        RequireNoColour<IllegalSeparationException>(0, 4);
        RequireNoColour<IllegalSeparationException>(1, -1);
        RequireNoColour<IllegalColorIndexException>(0, 0);
        RequireNoColour<IllegalColorIndexException>(Record().TableColorsNumber() + 1, 3);
        unsigned char none[1] = {};
        unsigned int rowsInfo = 0;
        unsigned long offsets[3] = {};
        for (const unsigned int row : { height_, 2147483647U, 4294967293U }) {
            const auto after = row + 2;
            unsigned char* buffer = none;
            unsigned long* places = offsets;
            const double across = picture_.ResolutionOnScanAxis();
            const double down = picture_.ResolutionOnXScanAxis();
            Require(picture_.GetPictureRow(none, row, Black, across, down, 0) == 0 &&
                        picture_.GetPictureRows(none, row, after, rowsInfo, offsets, Black, 0,
                                                false) == 0 &&
                        picture_.GetOriginalPictureRow(none, row, false) == 0 &&
                        picture_.GetLWPictureRows(none, row, after, offsets, Black, { 1, 1, 1 }, 0,
                                                  false) == 0 &&
                        picture_.GetLWPictureRows(buffer, row, after, places, 0, Black, 0, 1, 255,
                                                  0, true) == 0 &&
                        picture_.GetLWBufferSize(row, after, 1, 0, true) == 0,
                    "there is no such row");
        }
        for (const int separation : { 4, -1 })
            Require(picture_.GetPictureRows(none, 0, 1, rowsInfo, offsets,
                                            static_cast<ColorSeparationType>(separation), 0,
                                            false) == 0,
                    "there is no such separation");
    }

    void AskRows()
    {
        const unsigned long size = picture_.GetBufferSize(0, height_ - 1, false);
        const auto room = Room(size);
        std::vector<unsigned long> offsets(height_);
        unsigned int rowsInfo = 0;
        const unsigned long stored = picture_.GetPictureRows(
            room.get(), 0, height_, rowsInfo, offsets.data(), separation_, size, false);
        Require(stored == 0 || stored == width_ * rowsInfo, "rows are as long as the width");
        areSound_ = rowsInfo == height_;
        pixels_.assign(room.get(), room.get() + (areSound_ ? size : 0));
    }

    void AskEachRow()
    {
        for (unsigned int row = 0; row < height_; ++row) {
            for (const unsigned int halves : { 2U, 4U, 1U })
                AskRow(row, halves);
            AskOriginalRow(row, false);
            AskOriginalRow(row, true);
        }
    }

    /// \param halves of the width that the output row has.
    void AskRow(unsigned int row, unsigned int halves)
    {
        const double ratio = halves / 2.0;
        const std::uint64_t size = (width_ * halves + 1) / 2;
        const auto room = Room(size);
        if (!room)
            return;
        const double across = picture_.ResolutionOnScanAxis();
        const double down = picture_.ResolutionOnXScanAxis();
        const unsigned long pixels = picture_.GetPictureRow(
            room.get(), row, separation_, across * ratio, down, static_cast<unsigned long>(size));
        const bool hasResolution =
            std::isfinite(across * 2.0) && std::isfinite(down) && across > 0.0 && down > 0.0;
        if (!areSound_ || !hasResolution)
            return;
        Require(pixels == width_, "a sound row is decoded");
        for (std::uint64_t x = 0; x < size; ++x)
            Require(room[x] == Row(row)[x * 2 / halves], "a row by itself is that of all rows");
    }

    void AskOriginalRow(unsigned int row, bool lengthFirst)
    {
        const unsigned long size = picture_.GetLWBufferSize(row, row, 1, 0, false);
        const auto room = RoomOf(size, size - 2, FileLength() + 4);
        const unsigned int runs = picture_.GetOriginalPictureRow(room.get(), row, lengthFirst);
        if (!areSound_ || width_ == 0)
            return;
        Require(size == 2UL * runs + 6, "a row's size is that of its runs");
        Bytes pixels;
        for (const unsigned char* run = room.get() + 2; run < room.get() + size - 4; run += 2) {
            const unsigned int index = run[lengthFirst ? 1 : 0], length = run[lengthFirst ? 0 : 1];
            hasInnerDelimiter_ |= index == 0 && length == 0;
            if (length != 0)
                pixels.insert(pixels.end(), length,
                              picture_.GetColorValue(static_cast<int>(index), separation_));
        }
        Require(std::equal(pixels.begin(), pixels.end(), Row(row), Row(row) + width_),
                "a row's runs are its pixels");
    }

    /// Room for a stream of a file that ends, which no size is told for.
    std::uint64_t MostOfStream(unsigned int copies, unsigned long gap) const
    {
        const std::uint64_t whiteRuns = kPart / kFullGap + 2 + copies * (gap / kFullGap + 2);
        return copies * FileLength() + height_ * (2 * whiteRuns + 4);
    }

    /// The pixels of a row of a stream, which are `count`.
    static Bytes PixelsOf(const unsigned char* row, std::uint64_t count, bool valueFirst)
    {
        Bytes pixels;
        for (const unsigned char* run = row + 2; pixels.size() < count; run += 2)
            pixels.insert(pixels.end(), run[valueFirst ? 1 : 0], run[valueFirst ? 0 : 1]);
        Require(pixels.size() == count, "a stream's row has its width");
        return pixels;
    }

    void AskStream(unsigned int copies, unsigned long gap, bool colorFirst)
    {
        const unsigned long size = picture_.GetLWBufferSize(0, height_ - 1, copies, gap, true);
        const auto room = RoomOf(size, size, MostOfStream(copies, gap));
        std::vector<unsigned long> offsets(height_);
        unsigned char* end = room.get();
        unsigned long* offsetsEnd = offsets.data();
        if (!room)
            return;
        const unsigned long next = picture_.GetLWPictureRows(
            end, 0, height_ - 1, offsetsEnd, 1000, separation_, gap, copies, 255, 0, colorFirst);
        if (!areSound_)
            return;
        Require(next == height_ && offsetsEnd == offsets.data() + height_, "all rows are streamed");
        const std::uint64_t placed = copies * width_ + (copies - 1) * gap;
        const std::uint64_t whole = (placed + kPart - 1) / kPart * kPart;
        for (unsigned int row = 0; row < height_; ++row) {
            const Bytes pixels = PixelsOf(room.get() + offsets[row] - 1000, whole, colorFirst);
            Bytes expected(whole - placed, 255);
            for (unsigned int copy = 0; copy < copies; ++copy) {
                expected.insert(expected.end(), copy == 0 ? 0 : gap, 255);
                expected.insert(expected.end(), Row(row), Row(row) + width_);
            }
            Require(pixels == expected, "a stream's row is white, then the copies");
        }
    }

    void AskPlainStream()
    {
        const LwRowPadding padding{ 2, 7, 1 };
        const unsigned long size = picture_.GetLWBufferSize(0, height_ - 1, 1, 0, false);
        const auto room = RoomOf(size, size - 2 + 6UL * height_, MostOfStream(1, 517));
        std::vector<unsigned long> offsets(height_);
        if (!room)
            return;
        const unsigned long next = picture_.GetLWPictureRows(
            room.get(), 0, height_ - 1, offsets.data(), separation_, padding, 0, true);
        if (!areSound_ || Record().TableColorsNumber() == 0)
            return;
        Require(next == height_, "all rows are streamed");
        for (unsigned int row = 0; row < height_; ++row) {
            Bytes expected(Row(row), Row(row) + width_);
            expected.insert(expected.end(), 517, picture_.GetColorValue(1, separation_));
            Require(PixelsOf(room.get() + offsets[row], width_ + 517, false) == expected,
                    "a stream's row is the row, then the padding");
        }
    }

    void AskDisplay()
    {
        Canvas canvas(16, 16);
        picture_.Display(0, ~0UL, canvas.dc);
        picture_.Display(2, 1, canvas.dc);
        picture_.Display(height_ - 1, height_ - 1, canvas.dc);
    }

    void AskCrop(CompressParameters crop, const std::string& path)
    {
        {
            CFile target(path.c_str(), CFile::modeCreate | CFile::modeWrite);
            picture_.CreateCropedLWFile(picture_.FileHandle(), target, &crop);
        }
        const auto side = [](double wanted, std::uint64_t otherwise, std::uint64_t most) {
            return wanted <= 0
                       ? otherwise
                       : static_cast<std::uint64_t>(std::min(wanted, static_cast<double>(most)));
        };
        const std::uint64_t left = side(crop.CropLeft, 1, width_ + 1);
        const std::uint64_t right = side(crop.CropRight, width_, width_);
        const std::uint64_t top = side(crop.CropTop, 1, height_ + std::uint64_t{ 1 });
        const std::uint64_t bottom = side(crop.CropBottom, height_, height_);
        if (!areSound_ || hasInnerDelimiter_ || right < left || bottom < top)
            return;
        const std::unique_ptr<LWFileInterface> kept(create_lw_file_object(path.c_str(), true));
        Require(kept->ObjectStatus(), "a crop of sound rows is sound");
        LwQuestions asked(*kept);
        asked.separation_ = separation_;
        asked.AskRows();
        Require(asked.areSound_ && asked.width_ == right - left + 1 &&
                    asked.height_ == bottom - top + 1,
                "a crop has its rectangle's size");
        for (unsigned int row = 0; row < asked.height_; ++row)
            Require(std::equal(asked.Row(row), asked.Row(row) + asked.width_,
                               Row(row + static_cast<unsigned int>(top) - 1) + left - 1),
                    "a crop has its rectangle's pixels");
    }

    LWFileInterface& picture_;
    std::uint64_t width_;
    unsigned int height_;
    ColorSeparationType separation_ = Black;
    bool areSound_ = false; // all rows, by the separation in hand
    bool hasInnerDelimiter_ = false;
    Bytes pixels_; // of all rows, when they are sound
};

inline void AskEverything(LWFileInterface& picture, const std::string& cropped)
{
    LwQuestions(picture).AskAll(cropped);
}

} // namespace tympan::test
