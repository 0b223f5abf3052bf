#include "progress.h"

#include "names.h"

#include <unistd.h>

#include <cstdio>

namespace tympan::tool {

namespace {

constexpr std::chrono::milliseconds kQuietTime{ 500 };
constexpr std::chrono::milliseconds kBetweenDrawings{ 100 };

} // namespace

Progress::Progress(const std::string& what, std::uint64_t total)
    : what_(Shown(what)), total_(total), nextDrawing_(Clock::now() + kQuietTime),
      onTerminal_(isatty(STDERR_FILENO) == 1)
{}

Progress::~Progress()
{
    if (drawn_)
        std::fputs("\r\033[K", stderr);
}

void Progress::Advance(std::uint64_t steps)
{
    done_ += steps;
    if (!onTerminal_ || total_ == 0)
        return;
    const Clock::time_point now = Clock::now();
    if (now < nextDrawing_)
        return;
    nextDrawing_ = now + kBetweenDrawings;
    Draw();
}

void Progress::Draw()
{
    const double share = static_cast<double>(done_) / static_cast<double>(total_);
    const int percent = share < 1.0 ? static_cast<int>(share * 100.0) : 100;
    if (percent == shownPercent_)
        return;
    shownPercent_ = percent;
    std::fprintf(stderr, "\r%s: %d%%\033[K", what_.c_str(), percent);
    drawn_ = true;
}

} // namespace tympan::tool
