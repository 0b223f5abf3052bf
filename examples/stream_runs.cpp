// Streams the runs of one separation of an LW file into a file, some rows at a time, each row filled up
// with paper: what a program takes that places line work on a plate.
#include "example.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr unsigned int kRowsAtATime = 64;
constexpr unsigned int kCopies = 1;
constexpr unsigned long kGap = 0; // pixels between copies
constexpr unsigned char kPaper = 255;
constexpr bool kColourFirst = true;

std::string RowsNamed(unsigned int first, unsigned int last)
{
    return "rows " + std::to_string(first) + " to " + std::to_string(last);
}

// The rows from `first` to `last`, both included.
std::vector<unsigned char> Runs(LWFileInterface& picture, unsigned int first, unsigned int last,
                                ColorSeparationType separation)
{
    const std::string path = picture.PictureFileName().GetString();
    const unsigned long room = picture.GetLWBufferSize(first, last, kCopies, kGap, true);
    if (room == 0)
        throw example::FailureOf(picture, path, RowsNamed(first, last) + " can't be counted");
    std::vector<unsigned char> runs(room);
    std::vector<unsigned long> places(last - first + 1);
    unsigned char* end = runs.data(); // moves on behind what is written, as `place` does
    unsigned long* place = places.data();
    if (picture.GetLWPictureRows(end, first, last, place, 0, separation, kGap, kCopies, kPaper, 0,
                                 kColourFirst) != last + 1)
        throw example::FailureOf(picture, path, RowsNamed(first, last) + " can't be streamed");
    runs.resize(static_cast<std::size_t>(end - runs.data()));
    return runs;
}

void StreamRuns(const example::Arguments& arguments)
{
    const std::string& path = arguments[0];
    const ColorSeparationType separation = example::SeparationNamed(arguments[1]);
    const auto picture = example::Open<LWFileInterface>(path);
    CFile stream(arguments[2].c_str(), CFile::modeCreate | CFile::modeWrite);

    const auto rows = static_cast<unsigned int>(picture->FileHeightInPixels());
    for (unsigned int first = 0; first < rows; first += kRowsAtATime) {
        const unsigned int last = std::min(first + kRowsAtATime, rows) - 1;
        const std::vector<unsigned char> runs = Runs(*picture, first, last, separation);
        stream.Write(runs.data(), static_cast<UINT>(runs.size()));
    }
    std::cout << arguments[2] << ": " << rows << " rows, " << stream.GetLength() << " bytes\n";
    stream.Close();
}

} // namespace

int main(int count, char** words)
{
    return example::Run(count, words, { "FILE.lw", "SEPARATION", "NEW.runs" }, StreamRuns);
}
