// Puts every question to a JPEG object; for the tests of bad files and the fuzz target.
#pragma once

#include "core/failures.h"
#include "jpeg/jpeg_file.h"
#include "support/canvas.h"
#include "tympan/inspect.h"

#include <memory>
#include <vector>

namespace tympan::test {

/// Does something with a picture; a file that can't be read further may end it.
template <typename Work>
void AskOrStop(Work&& work)
{
    try {
        work();
    } catch (ReadFileException* stop) {
        delete stop;
    }
}

/// Asks all that a JPEG object answers. Whatever that is: nothing may crash, hang, or read or write
/// where it shouldn't.
inline void AskEverything(JpegFileInterface& picture)
{
    constexpr unsigned long kSize = 700;
    std::vector<unsigned char> buffer(kSize);
    std::vector<unsigned long> offsets(kSize + 1);
    unsigned int rowsInfo = 0;
    unsigned long start = 0, end = 0;
    const unsigned int rows[] = { 0U, 26U, 4294967295U };
    for (const unsigned int first : rows)
        for (const unsigned int last : rows)
            for (const bool wrap : { false, true }) {
                AskOrStop([&] {
                    picture.GetPictureRows(buffer.data(), first, last, rowsInfo, offsets.data(),
                                           Cyan, kSize, wrap);
                });
                AskOrStop([&] {
                    const std::unique_ptr<PictureRowsData> object(
                        picture.GetPictureRows(Cyan, first, last, wrap));
                });
                AskOrStop([&] { picture.GetPictureRow(buffer.data(), first, Black, 1, 1, kSize); });
                picture.GetCompressedBlocksOffsetInfo(first, last, start, end);
            }
    Canvas canvas(4, 4);
    AskOrStop([&] { picture.Display(0, ~0UL, canvas.dc); });
    unsigned char* table = nullptr;
    unsigned short dcLength = 0;
    picture.RetrieveQuantizationTable(table);
    delete[] table;
    picture.RetrieveHuffmanTable(table, dcLength);
    delete[] table;
    IndexOf(picture);
}

} // namespace tympan::test
