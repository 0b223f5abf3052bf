#include "jpeg_file.h"

#include "failure.h"
#include "jpeg_messages.h"

#include <cerrno>
#include <cstdio>
#include <utility>

namespace tympan::tool {

namespace {

constexpr int kQuality = 85;

} // namespace

struct JpegFile::Writer {
    Writer(std::string writingPath, std::string shownPath)
        : path(std::move(writingPath)), shown(std::move(shownPath))
    {}
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer()
    {
        if (file == nullptr)
            return;
        std::fclose(file);
        std::remove(path.c_str());
    }

    void Open();
    void Begin(PixelSize size, JpegColour colour);
    /// Runs calls of libjpeg, which own nothing.
    template <typename Calls>
    void Do(const Calls& calls);

    std::string path;
    std::string shown;
    std::FILE* file = nullptr;
    JpegMessages messages;
    JpegEncoder jpeg;
};

template <typename Calls>
void JpegFile::Writer::Do(const Calls& calls)
{
    errno = 0;
    if (messages.Do(calls))
        return;
    if (std::ferror(file) != 0 && errno != 0)
        throw SystemFailure(shown, errno);
    throw FileFailure(shown, std::string("an image can't be written: ") + messages.Text());
}

void JpegFile::Writer::Open()
{
    file = std::fopen(path.c_str(), "wbe");
    if (file == nullptr)
        throw SystemFailure(shown, errno);
    jpeg.err = messages.Manager();
    Do([this] {
        jpeg_create_compress(&jpeg);
        jpeg_stdio_dest(&jpeg, file);
    });
}

void JpegFile::Writer::Begin(PixelSize size, JpegColour colour)
{
    Do([this, size, colour] {
        jpeg.image_width = size.width;
        jpeg.image_height = size.height;
        jpeg.input_components = static_cast<int>(colour);
        jpeg.in_color_space = colour == JpegColour::Grey ? JCS_GRAYSCALE : JCS_EXT_BGR;
        jpeg_set_defaults(&jpeg);
        jpeg_set_quality(&jpeg, kQuality, TRUE);
        // Half the colours would blur the edges of line work.
        jpeg.comp_info[0].h_samp_factor = 1;
        jpeg.comp_info[0].v_samp_factor = 1;
        jpeg.optimize_coding = TRUE;
        jpeg_start_compress(&jpeg, TRUE);
    });
}

JpegFile::JpegFile(const std::string& path, const std::string& shown, PixelSize size,
                   JpegColour colour)
    : writer_(std::make_unique<Writer>(path, shown))
{
    writer_->Open();
    writer_->Begin(size, colour);
}

JpegFile::~JpegFile() = default;

void JpegFile::Write(std::span<const std::uint8_t> row)
{
    writer_->Do([this, row] {
        JSAMPROW line = const_cast<JSAMPROW>(row.data()); // which libjpeg only reads
        jpeg_write_scanlines(&writer_->jpeg, &line, 1);
    });
}

void JpegFile::Finish()
{
    writer_->Do([this] { jpeg_finish_compress(&writer_->jpeg); });
    if (std::fclose(std::exchange(writer_->file, nullptr)) != 0)
        throw SystemFailure(writer_->shown, errno);
}

} // namespace tympan::tool
