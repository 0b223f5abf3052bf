// The pictures of a page as layers that are laid one on the other.
#pragma once

#include "page_layer.h"
#include "picture.h"

#include <cstdint>
#include <span>

namespace tympan::tool {

/// A picture as `ShownRows` has it. Line work is clear where its own colours are transparent: in the
/// separations that they are transparent in, what is beneath shows, and it is darkened by the black of
/// a colour that has some. The colour table of line work is changed.
/// \param picture one that outlives the layer
LayerRows LayerOf(const Picture& picture);

/// Line work as a container, with the bytes of a `WindowPixel`: open where its rows name one of these
/// colours. Numbers count from 1; those that its table doesn't have stand for nothing. The colour table is
/// changed.
/// \param lineWork one that outlives the layer
LayerRows WindowOf(const Picture& lineWork, std::span<const std::uint8_t> colours);

} // namespace tympan::tool
