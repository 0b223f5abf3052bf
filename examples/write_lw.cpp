// Writes an LW file of grey pixels: a black disc on paper, kept as runs.
#include "example.h"

#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr unsigned int kSize = 200;      // pixels of width and height
constexpr unsigned int kRadius = 80;     // pixels
constexpr double kResolution = 100.0;    // pixels per inch
constexpr unsigned char kNoInk = 255;    // the bytes of a plate are the inverse of ink
constexpr const char* kTitle = "a disc"; // the name in the header

void WriteHeader(LWFileInterface& picture, const std::string& path)
{
    auto& record = dynamic_cast<LwPictureParameters&>(*picture.PictureParams());
    record.WidthInPixels(kSize);
    record.HeightInPixels(kSize);
    record.WidthInUnits(kSize / kResolution);
    record.HeightInUnits(kSize / kResolution);
    record.NumberOfSeparations(1);
    record.LwFileName(kTitle);
    record.SaveHader(picture.FileHandle());
    if (record.TraceStatus() != 0)
        throw example::FailureOf(picture, path, "its header can't be written");
}

bool IsInDisc(unsigned int x, unsigned int y)
{
    const double across = x + 0.5 - kSize / 2.0;
    const double down = y + 0.5 - kSize / 2.0;
    return across * across + down * down <= double{ kRadius } * kRadius;
}

unsigned int WriteRows(LWFileInterface& picture)
{
    unsigned int runs = 0;
    std::vector<unsigned char> row(kSize);
    for (unsigned int y = 0; y < kSize; ++y) {
        for (unsigned int x = 0; x < kSize; ++x)
            row[x] = IsInDisc(x, y) ? 0 : kNoInk;
        runs += picture.SetLWPictureRow(row.data(), picture.FileHandle(), kSize);
    }
    return runs;
}

void WriteLw(const example::Arguments& arguments)
{
    const std::string& path = arguments[0];
    const std::unique_ptr<LWFileInterface> picture(create_lw_file_object(path.c_str(), false));
    if (picture == nullptr)
        throw example::Failure(path, "there is no memory for a picture object");
    if (!picture->ObjectStatus())
        throw example::FailureOf(*picture, path, "can't be created");
    WriteHeader(*picture, path);
    const unsigned int runs = WriteRows(*picture);
    picture->ClosePictureFile();
    std::cout << path << ": " << kSize << " x " << kSize << " pixels, " << runs << " runs\n";
}

} // namespace

int main(int count, char** words)
{
    return example::Run(count, words, { "NEW.lw" }, WriteLw);
}
