#include "lw/run_reader.h"

#include "core/failure_guard.h"
#include "core/failures.h"

#include <algorithm>

namespace tympan {

namespace {

constexpr std::uint64_t kSmallPiece = std::min<std::uint64_t>(kBlockBytes, 4096);

constexpr FailureRow kAnyFailure[] = { { Caught::Anything, 0, nullptr } };

} // namespace

std::span<Run> RunBlock::Room(std::uint64_t bytes)
{
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(bytes, kRunBlockBytes) + 1) / sizeof(Run);
    if (size_ < wanted) {
        size_ = 0;
        runs_.reset();
        runs_ = std::make_unique_for_overwrite<Run[]>(wanted);
        size_ = wanted;
    }
    return { runs_.get(), wanted };
}

RunReader::RunReader(CFile& file, RunBlock& block, std::uint64_t position,
                     std::uint64_t expectedEnd)
    : file_(file), block_(block), expectedEnd_(expectedEnd), end_(position)
{
    file_.Seek(static_cast<LONGLONG>(position), CFile::begin);
}

// What fails here is a file that failed before, and that has been told.
RunReader::~RunReader()
{
    Guarded(NoTrace(), kAnyFailure,
            [&] { file_.Seek(static_cast<LONGLONG>(Position()), CFile::begin); });
}

RunStretch RunReader::Take(std::uint64_t wanted, std::size_t expected)
{
    if (ahead_.empty())
        Refill();
    const RunStretch stretch = RunsThatHold(ahead_, wanted, expected);
    ahead_ = ahead_.subspan(stretch.runs.size());
    return stretch;
}

std::size_t RunReader::TakeSoundRows(std::uint64_t width, std::span<std::uint32_t> lengths)
{
    const std::size_t rows = SoundRows(ahead_, width, lengths);
    std::size_t taken = 0;
    for (const std::uint32_t runs : lengths.first(rows))
        taken += runs + kLwDelimiters;
    ahead_ = ahead_.subspan(taken);
    return rows;
}

RunStretch RunReader::TakeInside(std::uint64_t wanted, std::uint64_t end, std::size_t expected)
{
    if (ahead_.empty())
        Refill();
    const std::uint64_t place = Position();
    const std::uint64_t inside = end > place ? (end - place) / sizeof(Run) : 0;
    if (inside == 0)
        ThrowCouldNotRead();
    const auto runs =
        ahead_.first(static_cast<std::size_t>(std::min<std::uint64_t>(inside, ahead_.size())));
    const RunStretch stretch = RunsInsideThatHold(runs, wanted, expected);
    ahead_ = ahead_.subspan(stretch.runs.size());
    return stretch;
}

Run RunReader::TakeOne()
{
    if (ahead_.empty())
        Refill();
    const Run run = ahead_.front();
    ahead_ = ahead_.subspan(1);
    return run;
}

void RunReader::TakeDelimiter()
{
    if (!IsDelimiter(TakeOne()))
        ThrowRowDelimiterMissing();
}

void RunReader::GoTo(std::uint64_t position)
{
    const std::uint64_t start = end_ - oddBytes_ - held_.size_bytes();
    const std::uint64_t way = position - start;
    if (position >= start && way <= held_.size_bytes() && way % sizeof(Run) == 0) {
        ahead_ = held_.subspan(static_cast<std::size_t>(way / sizeof(Run)));
        return;
    }
    held_ = ahead_ = {};
    oddBytes_ = 0;
    end_ = position;
}

void RunReader::Refill()
{
    const std::uint64_t wanted = expectedEnd_ > end_ ? expectedEnd_ - end_ : kSmallPiece;
    held_ = ahead_ = {};
    const std::span<Run> room = block_.Room(wanted);
    file_.Seek(static_cast<LONGLONG>(end_), CFile::begin);
    const std::size_t count = file_.Read(room.data(), static_cast<unsigned int>(room.size_bytes()));
    end_ += count;
    oddBytes_ = 0;
    if (count < sizeof(Run))
        ThrowCouldNotRead();
    oddBytes_ = count % sizeof(Run);
    held_ = ahead_ = room.first(count / sizeof(Run));
}

void ThrowRowDelimiterMissing()
{
    throw new FileCorruptedException("Row delimiter missing!");
}

void ThrowBadRowIntegrity()
{
    throw new FileCorruptedException("Bad row integrity!");
}

void ThrowCouldNotRead()
{
    throw new ReadFileException("Could not read LW file!");
}

} // namespace tympan
