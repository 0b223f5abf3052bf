// The vector forms of the way from plates to screen colours, for the processors that have them.
#pragma once

#include "core/pixel_colour.h"

#include <span>

namespace tympan {

using PlatesToBgrForm = void (*)(const Plates& plates, std::uint8_t* bgr);

/// One set of the processor's instructions at the work.
struct VectorForm {
    const char* name;
    PlatesToBgrForm cached;
    PlatesToBgrForm streamed;
};

/// The forms that the processor that runs this has, the fastest first; none for one that has only
/// the plain form.
std::span<const VectorForm> VectorForms();

} // namespace tympan
