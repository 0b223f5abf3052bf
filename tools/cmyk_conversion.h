// From grey and RGB samples to ink, through the ICC profiles of picture and print.
#pragma once

#include "picture_source.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace tympan::tool {

/// The CMYK output profile that serves when the person names none: the first by path under
/// `color/icc` in the system's data folders, one named default_cmyk.icc before all others.
/// \throws FileFailure, with what to install, when there is none.
std::string FindCmykProfile();

/// Turns rows of a grey or RGB picture into ink, relative colorimetric with black point
/// compensation, so that white paper stays without ink.
class CmykConversion {
  public:
    /// The picture's colours are those of its own profile, else sRGB, or grey of gamma 2.2. A
    /// profile in the picture that can't serve is told and passed over.
    /// \param profile the path of a CMYK output profile
    /// \throws FileFailure for a profile that can't serve.
    CmykConversion(const std::string& picture, const SourceForm& form, const std::string& profile);
    CmykConversion(const CmykConversion&) = delete;
    CmykConversion& operator=(const CmykConversion&) = delete;
    ~CmykConversion();

    /// \param ink receives C, M, Y, K of each pixel, 255 for full ink.
    void Convert(std::span<const std::uint8_t> row, std::span<std::uint8_t> ink) const;

  private:
    struct Engine;
    std::unique_ptr<Engine> engine_;
};

} // namespace tympan::tool
