// Reads one separation of a CT or LW file row by row: its ink in the mean, and the row with the most.
#include "example.h"

#include <iomanip>
#include <iostream>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

namespace {

constexpr unsigned int kFullInk = 255;

// The pictures whose rows are a byte for each pixel, 255 for no ink.
bool HasInkRows(const PictureFileInterface& picture)
{
    return dynamic_cast<const CtFileInterface*>(&picture) != nullptr ||
           dynamic_cast<const LWFileInterface*>(&picture) != nullptr;
}

// Asked for at the file's own resolution, a row comes as it is stored.
void ReadRow(PictureFileInterface& picture, unsigned int row, ColorSeparationType separation,
             std::vector<unsigned char>& pixels)
{
    const auto size = static_cast<unsigned long>(pixels.size());
    if (picture.GetPictureRow(pixels.data(), row, separation, picture.ResolutionOnScanAxis(),
                              picture.ResolutionOnXScanAxis(), size) != size)
        throw example::FailureOf(picture, picture.PictureFileName().GetString(),
                                 "row " + std::to_string(row) + " can't be read");
}

unsigned long InkOf(const std::vector<unsigned char>& pixels)
{
    return std::accumulate(
        pixels.begin(), pixels.end(), 0UL,
        [](unsigned long ink, unsigned char pixel) { return ink + kFullInk - pixel; });
}

// Of a separation; in steps of 1 from paper to 255.
struct Ink {
    double total = 0.0;
    unsigned long most = 0; // of a row
    unsigned int mostRow = 0;
};

Ink Measure(PictureFileInterface& picture, ColorSeparationType separation)
{
    Ink ink;
    std::vector<unsigned char> pixels(picture.FileWidthInPixels());
    const auto rows = static_cast<unsigned int>(picture.FileHeightInPixels());
    for (unsigned int row = 0; row < rows; ++row) {
        ReadRow(picture, row, separation, pixels);
        const unsigned long inRow = InkOf(pixels);
        ink.total += static_cast<double>(inRow);
        if (inRow > ink.most) {
            ink.most = inRow;
            ink.mostRow = row;
        }
    }
    return ink;
}

void ReadRows(const example::Arguments& arguments)
{
    const std::string& path = arguments[0];
    const ColorSeparationType separation = example::SeparationNamed(arguments[1]);
    const auto picture = example::Open<PictureFileInterface>(path);
    if (!HasInkRows(*picture))
        throw example::Failure(path, "is no CT or LW file");

    const Ink ink = Measure(*picture, separation);
    const double pixels = static_cast<double>(picture->FileWidthInPixels()) *
                          static_cast<double>(picture->FileHeightInPixels());
    std::cout << path << ", " << arguments[1] << ": " << std::fixed << std::setprecision(1)
              << (pixels > 0.0 ? 100.0 * ink.total / (kFullInk * pixels) : 0.0) << " % ink";
    if (ink.most > 0)
        std::cout << ", most of it in row " << ink.mostRow;
    std::cout << '\n';
}

} // namespace

int main(int count, char** words)
{
    return example::Run(count, words, { "FILE", "SEPARATION" }, ReadRows);
}
