// From colour indexes to the ink values of one separation, for stretches of runs: into pixels, and
// into runs of ink values.
#pragma once

#include "core/picture_parameters.h"
#include "lw/ink_forms.h"

#include <cstdint>
#include <span>

class LwPictureParameters;

namespace tympan {

class RunReader;

/// Throws as the look-up of a colour does: IllegalSeparationException* for a separation that isn't 0
/// to 3, then IllegalColorIndexException* for an index that is none of a table of `colours`.
void RequireSeparation(ColorSeparationType separation);
void RequireColour(int index, unsigned int colours);

/// The ink values of one separation by colour index, and what is made of runs with them. A run of
/// index 0 without pixels has no colour and is no ink. At another run whose colour has no value, both
/// ways throw as `RequireSeparation` and `RequireColour` do, with what is in front of it stored and the
/// reader, whose last stretch the runs are of, behind it.
class InkValues {
  public:
    InkValues(const LwPictureParameters& record, ColorSeparationType separation);

    /// Stores the pixels of the runs at `out`, up to its end at most. \return behind them.
    std::uint8_t* Expand(const RunStretch& stretch, std::span<std::uint8_t> out,
                         RunReader& reader) const;

    /// Stores the runs with values in place of the indexes at `out`, which moves on.
    void Translate(std::span<const Run> runs, RunOrder order, std::uint8_t*& out,
                   RunReader& reader) const;

  private:
    std::uint8_t Of(const Run& run, RunReader& reader) const;
    bool HasAll(std::span<const Run> runs) const;

    ColorSeparationType separation_;
    std::uint8_t colours_;
    ByteTable values_{};
};

} // namespace tympan
