// The rows of an LW file as a stream of runs of one separation, and the room that it takes.
#include "core/failure_guard.h"
#include "core/failures.h"
#include "core/whole_numbers.h"
#include "lw/ink_values.h"
#include "lw/lw_failures.h"
#include "lw/lw_file.h"
#include "lw/placed_rows.h"
#include "lw/row_range.h"
#include "lw/run_reader.h"

namespace {

using tympan::kLongestRun;
using tympan::RunOrder;
using tympan::StoreRun;

constexpr std::uint64_t kWholeWidth = 4096; // rows of a placing stream are a multiple of it wide
constexpr std::uint8_t kFullRun = 255;
static_assert(kFullRun == kLongestRun);

// A stretch of one colour as runs: full ones, and one for the rest.
struct FullRuns {
    std::uint64_t count;
    std::uint8_t rest;

    explicit FullRuns(std::uint64_t pixels)
        : count(pixels / kLongestRun), rest(static_cast<std::uint8_t>(pixels % kLongestRun))
    {}
    std::uint64_t Records() const { return count + (rest != 0 ? 1 : 0); }
    std::uint64_t Bytes() const { return Records() * sizeof(tympan::Run); }
};

std::uint8_t* StoreFullRuns(std::uint8_t value, std::uint64_t count, RunOrder order,
                            std::uint8_t* out)
{
    for (std::uint64_t i = 0; i < count; ++i)
        out = StoreRun(value, kFullRun, order, out);
    return out;
}

std::uint8_t* StoreRest(std::uint8_t value, std::uint8_t rest, RunOrder order, std::uint8_t* out)
{
    return rest != 0 ? StoreRun(value, rest, order, out) : out;
}

// Completed rows keep an even number of records, delimiters left out, by an odd one of white.
bool IsDividedCompletion(const FullRuns& white, std::uint64_t runsBefore)
{
    return white.count != 0 && (runsBefore + white.Records()) % 2 == 0;
}

unsigned long RowBehind(unsigned int firstRow, unsigned int lastRow)
{
    return firstRow > lastRow ? firstRow : lastRow + 1UL;
}

} // namespace

unsigned long LWFileInterface::GetLWPictureRows(unsigned char* buffer, unsigned int firstRow,
                                                unsigned int lastRow, unsigned long* rowOffsets,
                                                const ColorSeparationType& separation,
                                                const LwRowPadding& padding, unsigned long,
                                                bool lengthFirst)
{
    const bool cameBack = tympan::Guarded(Failures(), tympan::kLwRowFailures, [&] {
        const RunOrder order = tympan::OrderOf(!lengthFirst);
        const tympan::InkValues inks(LwRecord(), separation);
        unsigned char run[2] = {};
        unsigned char& value = run[lengthFirst ? 1 : 0];
        unsigned char& length = run[lengthFirst ? 0 : 1];
        unsigned char* out = buffer;
        const tympan::RowWidth width = Width();
        ForEachRow(firstRow, lastRow + std::uint64_t{ 1 },
                   [&](tympan::RunReader& reader, std::uint64_t row) {
                       rowOffsets[row - firstRow] = static_cast<unsigned long>(out - buffer);
                       reader.TakeDelimiter();
                       out = StoreRun(0, 0, order, out);
                       width.Require(
                           reader.TakeRow(width.toReach, [&](const tympan::RunStretch& stretch) {
                               inks.Translate(stretch.runs, order, out, reader);
                           }));
                       if (padding.FullRuns != 0 || padding.LastRun != 0)
                           RowPadding(padding, separation, &value, &length, run, run + 1, out);
                       reader.TakeDelimiter();
                       out = StoreRun(0, 0, order, out);
                   });
    });
    return cameBack ? RowBehind(firstRow, lastRow) : 0;
}

unsigned long LWFileInterface::RowPadding(const LwRowPadding& padding,
                                          const ColorSeparationType& separation,
                                          unsigned char* const value, unsigned char* const length,
                                          unsigned char* const first, unsigned char* const second,
                                          unsigned char*& buffer)
{
    *value = GetColorValue(padding.ColorIndex, separation);
    unsigned char* const start = buffer;
    const auto append = [&](unsigned char pixels) {
        *length = pixels;
        *buffer++ = *first;
        *buffer++ = *second;
    };
    for (unsigned long i = 0; i < padding.FullRuns; ++i)
        append(kFullRun);
    if (padding.LastRun != 0)
        append(padding.LastRun);
    return static_cast<unsigned long>(buffer - start);
}

unsigned long LWFileInterface::GetLWPictureRows(unsigned char*& buffer, unsigned int firstRow,
                                                unsigned int lastRow, unsigned long*& rowOffsets,
                                                unsigned long baseOffset,
                                                const ColorSeparationType& separation,
                                                unsigned long whiteGap, unsigned int copies,
                                                unsigned char white, unsigned long, bool colorFirst)
{
    const bool cameBack = tympan::Guarded(Failures(), tympan::kLwRowFailures, [&] {
        const tympan::InkValues inks(LwRecord(), separation);
        tympan::PlacedRows rows{ Width(),  buffer, rowOffsets, baseOffset,
                                 whiteGap, copies, white,      tympan::OrderOf(colorFirst) };
        PlaceRows(
            rows, [&](auto&& place) { ForEachRow(firstRow, lastRow + std::uint64_t{ 1 }, place); },
            [&](std::span<const tympan::Run> runs, std::uint8_t*& out, tympan::RunReader& reader) {
                inks.Translate(runs, rows.order, out, reader);
            });
    });
    return cameBack ? RowBehind(firstRow, lastRow) : 0;
}

unsigned long LWFileInterface::AddWhiteColsGap(unsigned long whiteGap, unsigned char*& buffer,
                                               unsigned char white, bool lengthFirst)
{
    const FullRuns gap(whiteGap);
    const RunOrder order = tympan::OrderOf(!lengthFirst);
    buffer = StoreFullRuns(white, gap.count, order, buffer);
    buffer = StoreRest(white, gap.rest, order, buffer);
    return static_cast<unsigned long>(gap.Bytes());
}

// The pixels that bring a row of the placing form to a whole multiple of its width.
std::uint64_t LWFileInterface::CompletionOf(unsigned int copies, unsigned long whiteGap) const
{
    if (copies == 0)
        return 0;
    const double width = copies * Width().pixels + (copies - 1.0) * static_cast<double>(whiteGap);
    const std::uint64_t beyond = tympan::CutToWhole<std::uint64_t>(width) % kWholeWidth;
    return beyond == 0 ? 0 : kWholeWidth - beyond;
}

unsigned long LWFileInterface::CompleteLineTo4096(unsigned char*& buffer, unsigned long whiteGap,
                                                  unsigned int copies, unsigned char white,
                                                  unsigned long runs, bool colorFirst)
{
    const FullRuns completion(CompletionOf(copies, whiteGap));
    const RunOrder order = tympan::OrderOf(colorFirst);
    const unsigned char* const start = buffer;
    const bool isDivided = IsDividedCompletion(completion, runs);
    buffer = StoreFullRuns(white, completion.count - (isDivided ? 1 : 0), order, buffer);
    if (isDivided) {
        buffer = StoreRun(white, kFullRun - 1, order, buffer);
        buffer = StoreRun(white, 1, order, buffer);
    }
    buffer = StoreRest(white, completion.rest, order, buffer);
    return static_cast<unsigned long>(buffer - start);
}

// What a row of the placing form has beside its copies: completion, gaps, and what dividing the last
// run of each copy can add.
std::uint64_t LWFileInterface::BytesBesideRuns(unsigned int copies, unsigned long whiteGap,
                                               bool complete) const
{
    const std::uint64_t gaps =
        tympan::Required(tympan::Product(copies - 1U, FullRuns(whiteGap).Bytes()));
    if (!complete)
        return gaps;
    const FullRuns completion(CompletionOf(copies, whiteGap));
    const std::uint64_t divided =
        completion.Records() == 0 ? std::uint64_t{ copies } * sizeof(tympan::Run) : 0;
    return tympan::Required(tympan::Sum(gaps, completion.Bytes() + divided));
}

unsigned long LWFileInterface::GetLWBufferSize(unsigned int firstRow, unsigned int lastRow,
                                               unsigned int copies, unsigned long whiteGap,
                                               bool complete)
{
    unsigned long size = 0;
    tympan::Guarded(Failures(), tympan::kLwSizeFailures, [&] {
        std::uint64_t beside = BytesBesideRuns(copies, whiteGap, complete);
        if (complete && IsDividedCompletion(FullRuns(CompletionOf(copies, whiteGap)), 0))
            beside = tympan::Required(tympan::Sum(beside, sizeof(tympan::Run)));
        size = SizeOfRows(copies, beside, [&](auto&& measure) {
            ForEachRow(firstRow, lastRow + std::uint64_t{ 1 }, measure);
        });
    });
    return size;
}
