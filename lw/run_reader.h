// Reads the rows of a line-work file: blocks of file in, stretches of runs out. Nothing else in the
// library takes runs out of a file.
#pragma once

#include "core/block_size.h"
#include "core/whole_numbers.h"
#include "lw/run_sums.h"
#include "platform/file.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace tympan {

[[noreturn]] void ThrowRowDelimiterMissing();
[[noreturn]] void ThrowBadRowIntegrity();
[[noreturn]] void ThrowCouldNotRead();

/// Bytes of a block. Rows are proved nearly as fast as they are read, so that calls of the system
/// count: larger than other readers' blocks.
inline constexpr std::uint64_t kRunBlockBytes = 2 * kBlockBytes;

/// Memory for a block of a file's runs, which serves one reader after the other.
class RunBlock {
  public:
    /// Room for as many bytes, or a whole block when that is less. What was held is gone.
    /// \throws std::bad_alloc
    std::span<Run> Room(std::uint64_t bytes);

  private:
    std::unique_ptr<Run[]> runs_;
    std::size_t size_ = 0;
};

/// Takes runs from a place in a file on.
///
/// It reads whole blocks up to the place where the operation expects to end, and beyond it in small
/// pieces, for a file that is not what it was. When it goes, the file stands behind the last run that
/// was taken, as if they had been read one by one.
class RunReader {
  public:
    RunReader(CFile& file, RunBlock& block, std::uint64_t position, std::uint64_t expectedEnd);
    RunReader(const RunReader&) = delete;
    RunReader& operator=(const RunReader&) = delete;
    ~RunReader();

    /// Takes as few runs as hold `wanted` pixels or more, or all that the block still has, but at
    /// least one. They hold until the next call. `expected` as for `RunsThatHold`.
    /// \throws ReadFileException* ("Could not read LW file!") at the end of the file;
    ///   CFileException*.
    RunStretch Take(std::uint64_t wanted, std::size_t expected = 0);
    /// The same up to a place inside a row, of the runs in front of `end` alone. \throws as
    /// `Take`, at `end` as at the end of the file.
    RunStretch TakeInside(std::uint64_t wanted, std::uint64_t end, std::size_t expected);
    /// Takes one. \throws as `Take`.
    Run TakeOne();
    /// Takes a delimiter. \throws as `Take`; FileCorruptedException* ("Row delimiter missing!").
    void TakeDelimiter();

    /// Takes the runs of a row in one stretch or several, and gives each to `take`, which may throw:
    /// as many as it needs to hold `width` pixels.
    /// \return the pixels: `width`, or more when the last run passes it. \throws as `Take`.
    template <typename Use>
    std::uint64_t TakeRow(std::uint64_t width, Use&& use)
    {
        std::uint64_t pixels = 0;
        std::size_t runs = 0;
        while (pixels < width) {
            const RunStretch stretch =
                Take(width - pixels, expectedRuns_ - std::min(expectedRuns_, runs));
            use(stretch);
            pixels += stretch.pixels;
            runs += stretch.runs.size();
        }
        expectedRuns_ = runs - runs / 8; // rows are like the rows before them, most of them
        return pixels;
    }

    /// Takes sound rows that the block still has, many at a time, as `SoundRows` finds them. The next
    /// row after them may be sound too: it is taken by itself.
    /// \return their number.
    std::size_t TakeSoundRows(std::uint64_t width, std::span<std::uint32_t> lengths);

    /// Goes back behind one of the runs of the last stretch, at which the work on it ended.
    void StandBehind(const Run& run)
    {
        ahead_ = held_.subspan(static_cast<std::size_t>(&run - held_.data()) + 1);
    }

    /// The file offset of the next run.
    std::uint64_t Position() const { return end_ - ahead_.size_bytes() - oddBytes_; }
    /// Goes on from another place, without a read when the block holds it.
    void GoTo(std::uint64_t position);

  private:
    void Refill();

    CFile& file_;
    RunBlock& block_;
    std::uint64_t expectedEnd_;
    std::uint64_t end_;            // file offset behind the bytes read
    std::span<const Run> held_;    // the block's
    std::span<const Run> ahead_;   // not taken yet: the end of what is held
    std::size_t expectedRuns_ = 0; // at least, of the next row
    std::size_t oddBytes_ = 0;     // a byte at the end of the file that makes no run
};

/// The width of a picture's rows.
struct RowWidth {
    double pixels;         // as the record has it
    std::uint64_t toReach; // the least whole number that isn't below it

    explicit RowWidth(double width)
        : pixels(width), toReach(CutToWhole<std::uint64_t>(std::ceil(width)))
    {}
    bool IsWhole() const { return static_cast<double>(toReach) == pixels; }
    /// \throws FileCorruptedException* ("Bad row integrity!") for a row of another sum.
    void Require(std::uint64_t sum) const
    {
        if (static_cast<double>(sum) != pixels)
            ThrowBadRowIntegrity();
    }
};

} // namespace tympan
