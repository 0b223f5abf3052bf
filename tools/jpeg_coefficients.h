// The coefficients of a JPEG file, for a file of another form that shows exactly the same pixels.
#pragma once

#include "jpeg_reader.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace tympan::tool {

/// Coefficients of blocks of 8 x 8 samples, read while they are written. Memory is that of a row of
/// blocks, but for a file of several scans, which is held whole.
class JpegCoefficients {
  public:
    /// \throws FileFailure
    explicit JpegCoefficients(const std::string& path);

    /// Why they make no baseline file without subsampling, as "it is RGB"; empty when they do.
    std::string WhyNot() const;

    /// Reads up to the first of them.
    /// \throws FileFailure
    void Start();

    /// What ends the calls for a coefficient that a baseline file doesn't allow: `Messages().Code()`.
    static const int kTooLarge;

    /// \name Calls of libjpeg
    /// For an object that has `Messages().Manager()` as its `err`, inside of `Messages().Do`.
    /// @{
    JpegMessages& Messages() { return reader_.Messages(); }
    /// Describes the picture: size, colours, and two quantization tables, 0 for the first component
    /// and 1 for the others, or 0 alone for all.
    /// \return whether there are two.
    bool Describe(jpeg_compress_struct& jpeg);
    /// Begins, once the form of the picture is complete. `jpeg_finish_compress` does the work.
    void Begin(jpeg_compress_struct& jpeg);
    /// @}

  private:
    static constexpr std::size_t kMostComponents = 4;
    using Steps = std::array<std::uint16_t, DCTSIZE2>;

    static JBLOCKARRAY RowsToWrite(j_common_ptr jpeg, jvirt_barray_ptr array, JDIMENSION first,
                                   JDIMENSION count, boolean writable);

    std::span<const jpeg_component_info> Components() const;
    Steps CommonSteps(std::size_t from, std::size_t end) const;
    void ReadToEnd();
    JBLOCKARRAY Rows(jvirt_barray_ptr array, JDIMENSION first, JDIMENSION count);

    JpegReader reader_;
    jpeg_decompress_struct& jpeg_;
    bool oneScan_ = true;
    jvirt_barray_ptr* arrays_ = nullptr;
    std::array<Steps, kMostComponents> factors_{}; // from the file's steps to those written
};

} // namespace tympan::tool
