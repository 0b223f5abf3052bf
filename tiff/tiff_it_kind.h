// The kinds of TIFF/IT pictures.
#pragma once

namespace tympan {

/// What a TIFF/IT file holds.
enum class TiffItKind {
    ContinuousTone, ///< a `TiffItCtP1Interface` draws it
    LineWork        ///< a `TiffItLwP1Interface` does
};

} // namespace tympan
