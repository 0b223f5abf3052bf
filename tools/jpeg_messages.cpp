#include "jpeg_messages.h"

#include "picture_source.h"

#include <jerror.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>

namespace tympan::tool {

JpegMessages::JpegMessages()
{
    jpeg_std_error(&manager_);
    manager_.error_exit = Fail;
    manager_.emit_message = Tell;
}

JpegMessages& JpegMessages::Of(j_common_ptr jpeg)
{
    return *reinterpret_cast<JpegMessages*>(jpeg->err);
}

void JpegMessages::Jump(j_common_ptr jpeg)
{
    std::longjmp(Of(jpeg).jump_, 1); // NOLINT(cert-err52-cpp): the only way out
}

void JpegMessages::Fail(j_common_ptr jpeg)
{
    (*jpeg->err->format_message)(jpeg, Of(jpeg).text_.data());
    Jump(jpeg);
}

// Libjpeg goes on with grey pixels where the data is damaged or ends.
void JpegMessages::Tell(j_common_ptr jpeg, int level)
{
    const auto lost = { JWRN_JPEG_EOF, JWRN_HIT_MARKER, JWRN_HUFF_BAD_CODE, JWRN_ARITH_BAD_CODE,
                        JWRN_MUST_RESYNC };
    if (level < 0 && std::find(lost.begin(), lost.end(), jpeg->err->msg_code) != lost.end())
        Fail(jpeg);
}

FileFailure UnreadableJpeg(const std::string& path, const JpegMessages& messages)
{
    return { path,
             std::string("the JPEG data can't be read: ") + messages.Text(),
             {},
             "The file is damaged or was cut short." };
}

void RequireHeldCoefficients(const std::string& path, const jpeg_decompress_struct& jpeg)
{
    constexpr std::uint64_t kMostForByte = 512; // a flat block of 64 needs 2 bits
    const auto components = static_cast<std::uint64_t>(jpeg.num_components);
    RequireHeldClaim(path, sizeof(JCOEF) * components * jpeg.image_width * jpeg.image_height,
                     kMostForByte);
}

} // namespace tympan::tool
