#include "jpeg_head.h"

#include "jpeg_form.h"

#include <jerror.h>

#include <array>
#include <cstdint>
#include <string>

namespace tympan::tool {

namespace {

// A file as libjpeg reads it, in small pieces: what the head has beside its tables isn't read.
class FileSource : public jpeg_source_mgr {
  public:
    explicit FileSource(CFile& file) : jpeg_source_mgr{}, file_(file)
    {
        file_.SeekToBegin();
        init_source = DoNothing;
        fill_input_buffer = Fill;
        skip_input_data = Skip;
        resync_to_restart = jpeg_resync_to_restart;
        term_source = DoNothing;
    }

  private:
    static FileSource& Of(j_decompress_ptr jpeg) { return static_cast<FileSource&>(*jpeg->src); }
    static void DoNothing(j_decompress_ptr) {}

    static boolean Fill(j_decompress_ptr jpeg)
    {
        FileSource& source = Of(jpeg);
        JpegMessages::CallBack(reinterpret_cast<j_common_ptr>(jpeg), [&] { source.Read(); });
        if (source.bytes_in_buffer == 0)
            ERREXIT(jpeg, JERR_INPUT_EOF);
        return TRUE;
    }

    static void Skip(j_decompress_ptr jpeg, long count)
    {
        FileSource& source = Of(jpeg);
        const auto held = static_cast<long>(source.bytes_in_buffer);
        if (count <= held) {
            source.next_input_byte += count;
            source.bytes_in_buffer -= static_cast<std::size_t>(count);
            return;
        }
        source.bytes_in_buffer = 0;
        JpegMessages::CallBack(reinterpret_cast<j_common_ptr>(jpeg),
                               [&] { source.file_.Seek(count - held, CFile::current); });
    }

    void Read()
    {
        next_input_byte = bytes_.data();
        bytes_in_buffer = file_.Read(bytes_.data(), static_cast<UINT>(bytes_.size()));
    }

    CFile& file_;
    std::array<JOCTET, 4096> bytes_{};
};

FileFailure OtherForm(const Picture& picture, const std::string& difference)
{
    return { picture.Path(),
             "its bands can't be decoded one by one: " + difference,
             {},
             "`tympan import FILE -o OUT.jpg` makes a JPEG whose bands can." };
}

std::string DifferenceFromRecord(const jpeg_decompress_struct& head, const Picture& picture)
{
    constexpr std::uint32_t kMostStored = 65535; // the index tells how many times more it is
    const auto components = static_cast<unsigned int>(head.num_components);
    if (components == picture.Object().FileNumberOfSeparations() &&
        head.image_width == picture.Width() && head.image_height <= picture.Height() &&
        (picture.Height() - head.image_height) % kMostStored == 0)
        return {};
    return "its head tells " + std::to_string(head.image_width) + " x " +
           std::to_string(head.image_height) + " pixels of " + std::to_string(components) +
           " components, other than what was taken for its head";
}

JpegColours ColoursOf(const jpeg_decompress_struct& head)
{
    switch (head.num_components) {
    case 1: return { head.jpeg_color_space, JCS_GRAYSCALE };
    case 3: return { head.jpeg_color_space, JCS_RGB };
    default: return { head.jpeg_color_space, JCS_CMYK, head.saw_Adobe_marker == 0 };
    }
}

} // namespace

JpegColours ReadJpegHead(const Picture& picture)
{
    FileSource source(*picture.AsJpeg()->JpegFileHandle());
    JpegMessages messages;
    JpegDecoder head;
    head.err = messages.Manager();
    const bool wasRead = messages.Do([&] {
        jpeg_create_decompress(&head);
        head.src = &source;
        jpeg_read_header(&head, TRUE);
    });
    if (!wasRead)
        throw OtherForm(picture, std::string("its head can't be read: ") + messages.Text());
    for (const std::string& difference :
         { DifferenceFromBandForm(head), DifferenceFromRecord(head, picture) })
        if (!difference.empty())
            throw OtherForm(picture, difference);
    return ColoursOf(head);
}

} // namespace tympan::tool
