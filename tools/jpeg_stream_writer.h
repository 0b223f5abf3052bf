// Makes the JPEG file and its index that the library reads, of what libjpeg compresses.
#pragma once

#include "import_job.h"
#include "jpeg_band_finder.h"
#include "jpeg_messages.h"
#include "progress.h"

#include <tympan/tympan.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tympan::tool {

/// The sides that libjpeg writes, in pixels.
inline constexpr std::uint32_t kMostJpegSide = JPEG_MAX_DIMENSION;
/// Bytes of a colour profile that libjpeg writes: 255 segments.
inline constexpr std::size_t kMostJpegProfile = std::size_t{ 255 } * 65519;

/// Which tables the components use.
enum class JpegTables {
    Common,         ///< all the tables 0
    FirstAndOthers, ///< the first component the tables 0, all others the tables 1
};

/// Writes under the output's writing path, and the index beside it.
class JpegStreamWriter {
  public:
    /// \param job outlives the writer
    JpegStreamWriter(const OutputFile& output, const ImportJob& job);
    JpegStreamWriter(const JpegStreamWriter&) = delete;
    JpegStreamWriter& operator=(const JpegStreamWriter&) = delete;

    /// Lets a libjpeg object, whose picture is described but not begun, write here, and gives it the
    /// form of what is written. A call of libjpeg that can't be written throws out of
    /// `JpegMessages::Do`.
    void Attach(jpeg_compress_struct& jpeg, JpegTables tables);
    /// To be called when libjpeg has begun: the colour profile, unless it is too large.
    void WriteProfile(jpeg_compress_struct& jpeg) const;
    /// To be called when libjpeg has finished: records the sizes and closes the files.
    void Finish();

  private:
    struct Destination : jpeg_destination_mgr {
        JpegStreamWriter* writer;
    };

    static void Begin(j_compress_ptr jpeg);
    static boolean TakeFull(j_compress_ptr jpeg);
    static void TakeRest(j_compress_ptr jpeg);

    void Take(std::span<const std::uint8_t> bytes);
    void WriteScan(std::span<const std::uint8_t> bytes);
    void Write(std::span<const std::uint8_t> bytes);
    void StoreBand(std::uint64_t first, std::uint64_t end);

    const ImportJob& job_;
    std::string path_;
    std::unique_ptr<JpegFileInterface> file_;
    Progress progress_;
    std::vector<std::uint8_t> buffer_;
    Destination destination_{};
    std::optional<JpegBandFinder> bands_; // once the head is written
    std::uint64_t length_ = 0;
};

} // namespace tympan::tool
