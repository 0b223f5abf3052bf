// Writes a CT file: a step wedge, with a band for each plate that goes from paper to full ink.
#include "example.h"

#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr unsigned int kPlates = 4;
constexpr unsigned int kSteps = 11;
constexpr unsigned int kStepWidth = 20;  // pixels
constexpr unsigned int kBandHeight = 20; // pixels
constexpr unsigned int kWidth = kSteps * kStepWidth;
constexpr unsigned int kHeight = kPlates * kBandHeight;
constexpr double kResolution = 100.0; // pixels per inch
constexpr unsigned char kNoInk = 255; // the bytes of a plate are the inverse of ink

void Describe(CtFileInterface& picture)
{
    PictureParameters record;
    record.WidthInPixels(kWidth);
    record.HeightInPixels(kHeight);
    record.NumberOfSeparations(kPlates);
    for (unsigned int slot = 0; slot < kPlates; ++slot)
        record.Separation(slot, BasePictureIF::AvailableSeps(slot));
    picture.StorePictureParams(&record);
    // An assigned record doesn't carry these.
    picture.FileWidthInUnits(kWidth / kResolution);
    picture.FileHeightInUnits(kHeight / kResolution);
}

std::vector<unsigned char> Wedge()
{
    std::vector<unsigned char> row(kWidth);
    for (unsigned int x = 0; x < kWidth; ++x)
        row[x] = static_cast<unsigned char>(kNoInk - x / kStepWidth * kNoInk / (kSteps - 1));
    return row;
}

void WriteRows(CtFileInterface& picture)
{
    const std::vector<unsigned char> wedge = Wedge();
    const std::vector<unsigned char> paper(kWidth, kNoInk);
    for (unsigned int y = 0; y < kHeight; ++y)
        for (unsigned int plate = 0; plate < kPlates; ++plate) {
            const auto& row = y / kBandHeight == plate ? wedge : paper;
            picture.SavePictureRow(row.data(), y, BasePictureIF::AvailableSeps(plate), kWidth);
        }
}

void WriteCt(const example::Arguments& arguments)
{
    const std::string& path = arguments[0];
    const std::unique_ptr<CtFileInterface> picture(create_ct_file_object(path.c_str(), false));
    if (picture == nullptr)
        throw example::Failure(path, "there is no memory for a picture object");
    if (!picture->ObjectStatus())
        throw example::FailureOf(*picture, path, "can't be created");
    Describe(*picture);
    if (!picture->SavePictureParams())
        throw example::FailureOf(*picture, path, "its header can't be written");
    WriteRows(*picture);
    picture->ClosePictureFile();
    std::cout << path << ": " << kWidth << " x " << kHeight << " pixels, " << kPlates
              << " plates\n";
}

} // namespace

int main(int count, char** words)
{
    return example::Run(count, words, { "NEW.ct" }, WriteCt);
}
