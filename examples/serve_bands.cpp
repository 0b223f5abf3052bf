// Serves some rows of a JPEG as a JPEG of their own, for a client that wants no more: the head of the
// file with another height, and the bands that the rows are in, without decoding any.
#include "example.h"
#include "jpeg_frame.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <memory>
#include <span>
#include <string>

namespace {

constexpr unsigned int kMostRows = 65535; // the head has 16 bits for them

struct Rows {
    unsigned int first;
    unsigned int last; // is one of them
};

// The rows of the bands that the rows asked for are in.
Rows WholeBands(const example::Arguments& arguments, unsigned int height)
{
    const unsigned int first = example::NumberIn(arguments[1]);
    const unsigned int last = example::NumberIn(arguments[2]);
    if (first > last || last >= height)
        throw example::Failure(arguments[0], "doesn't have these rows");
    const Rows rows{ first / example::kBandRows * example::kBandRows,
                     std::min((last / example::kBandRows + 1) * example::kBandRows, height) - 1 };
    if (rows.last - rows.first >= kMostRows)
        throw example::Failure(arguments[0], "these are more rows than a JPEG can have");
    return rows;
}

example::Bytes HeadFor(JpegFileInterface& picture, const std::string& path, Rows rows)
{
    const auto index = tympan::IndexOf(picture);
    if (!index || !index->fitsFile || index->blocks.empty())
        throw example::Failure(path, "its side file doesn't fit it");
    example::Bytes head(index->blocks.front().StartOffset);
    CFile& file = *picture.JpegFileHandle();
    file.SeekToBegin();
    head.resize(file.Read(head.data(), static_cast<UINT>(head.size())));
    const auto frame = example::FrameOf(head);
    if (!frame)
        throw example::Failure(path, "has no whole head of a baseline JPEG");
    const unsigned int height = rows.last - rows.first + 1;
    head[frame->heightAt] = static_cast<std::uint8_t>(height >> 8U);
    head[frame->heightAt + 1] = static_cast<std::uint8_t>(height);
    return head;
}

void WriteMarker(CFile& file, unsigned int marker)
{
    const std::array<std::uint8_t, 2> bytes{ example::kMarker, static_cast<std::uint8_t>(marker) };
    file.Write(bytes.data(), bytes.size());
}

// The restart markers between the bands are numbered from 0 to 7, over and over.
void WriteBands(CFile& file, const PictureRowsData& bands)
{
    const std::span<const unsigned int> places(bands.RowsOffsets(), bands.DataBlocks());
    for (unsigned int i = 0; i < places.size(); ++i) {
        const bool isLast = i + 1 == places.size();
        const unsigned int end = isLast ? bands.DataSize() : places[i + 1];
        file.Write(bands.Data() + places[i], end - places[i]);
        WriteMarker(file, isLast ? example::kEndOfImage : example::kFirstRestart + i % 8);
    }
}

void ServeBands(const example::Arguments& arguments)
{
    const std::string& path = arguments[0];
    const auto picture = example::Open<JpegFileInterface>(path);
    const auto height = static_cast<unsigned int>(picture->FileHeightInPixels());
    const Rows rows = WholeBands(arguments, height);
    const example::Bytes head = HeadFor(*picture, path, rows);
    // A band has all separations, whichever is asked for.
    const std::unique_ptr<PictureRowsData> bands(
        picture->GetPictureRows(AllSeparations, rows.first, rows.last, false));
    if (bands == nullptr || bands->TraceStatus() != 0)
        throw example::FailureOf(*picture, path, "its bands can't be read");

    CFile served(arguments[3].c_str(), CFile::modeCreate | CFile::modeWrite);
    served.Write(head.data(), static_cast<UINT>(head.size()));
    WriteBands(served, *bands);
    served.Close();
    std::cout << arguments[3] << ": rows " << rows.first << " to " << rows.last << " of " << height
              << ", " << bands->DataBlocks() << " bands\n";
}

} // namespace

int main(int count, char** words)
{
    return example::Run(count, words, { "FILE.jpg", "FIRST", "LAST", "NEW.jpg" }, ServeBands);
}
