#include "progress.h"

#include "names.h"
#include "verbosity.h"

#include <unistd.h>

#include <cstdio>

namespace tympan::tool {

namespace {

constexpr std::chrono::milliseconds kQuietTime{ 500 };
constexpr std::chrono::milliseconds kBetweenDrawings{ 200 }; // slow enough to be read

// The terminal cuts what is between these at its edge: a second line could not be wiped out.
constexpr char kKeepOnOneLine[] = "\033[?7l";
constexpr char kWrapAgain[] = "\033[?7h";
constexpr char kWipeRest[] = "\033[K";

} // namespace

Progress::Progress(const std::string& what, std::uint64_t total, ProgressUnit unit)
    : what_(Shown(what)), total_(total), unit_(unit), begin_(Clock::now()),
      nextDrawing_(begin_ + kQuietTime), isShown_(isatty(STDERR_FILENO) == 1 && !IsQuiet())
{}

Progress::~Progress()
{
    if (drawn_)
        std::fprintf(stderr, "\r%s", kWipeRest);
}

void Progress::Advance(std::uint64_t steps)
{
    done_ += steps;
    if (!isShown_ || total_ == 0)
        return;
    const Clock::time_point now = Clock::now();
    if (now < nextDrawing_)
        return;
    nextDrawing_ = now + kBetweenDrawings;
    Draw(now);
}

void Progress::Draw(Clock::time_point now)
{
    const std::string text = ProgressText({ done_, total_, unit_, now - begin_ });
    std::fprintf(stderr, "\r%s%s: %s%s%s", kKeepOnOneLine, what_.c_str(), text.c_str(), kWipeRest,
                 kWrapAgain);
    drawn_ = true;
}

} // namespace tympan::tool
