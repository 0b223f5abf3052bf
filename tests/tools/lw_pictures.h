// LW files for the tests of the command, and what the library makes of their transparent colours.
#pragma once

#include "support/lw_samples.h"
#include "tools/command_runner.h"
#include "tools/ct_pictures.h"

#include <cstddef>
#include <cstdint>

namespace tympan::test {

/// A picture of all separations at 100 pixels to the inch, some of its colours transparent.
LwPicture RandomLw(std::uint32_t width, std::uint32_t height, LwRuns kind = LwRuns::dense,
                   std::uint32_t seed = 1);

/// The picture with the ink values that loading gives to transparent colours: in each separation
/// the smallest that no colour has.
LwPicture AsLoaded(LwPicture picture);
/// The picture with its transparent colours without ink.
LwPicture OnPaper(LwPicture picture);

/// The pixels of a picture, of all separations or of cyan alone, as a CT has them.
CtPicture PlatesOf(const LwPicture& picture);

/// A folder with the picture as "a.lw", without so many bytes at its end.
struct LwFolder : TemporaryFolder {
    explicit LwFolder(const LwPicture& picture, std::size_t cut = 0);
};

} // namespace tympan::test
