// Libjpeg keeps the coefficients of a whole picture in arrays of its memory manager. Of a file of one
// scan they are read and written from the top down, so that arrays of some rows can pose as whole
// ones: the reading object gets a manager that makes such arrays, the writing one a manager that lets
// the other read on until they have the rows that it wants.
#include "jpeg_coefficients.h"

#include <jerror.h>

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace tympan::tool {

namespace {

// The last rows of blocks that were read of one component.
struct Window {
    JBLOCKARRAY rows;
    JDIMENSION first, count, width;

    bool Has(JDIMENSION row, JDIMENSION rowCount) const
    {
        return first <= row && rowCount <= count && row - first <= count - rowCount;
    }
};

// `count` is still 0: no row has been read.
jvirt_barray_ptr MakeWindow(j_common_ptr jpeg, int pool, boolean /*zeros*/, JDIMENSION width,
                            JDIMENSION /*height*/, JDIMENSION rows)
{
    auto* const window =
        static_cast<Window*>((*jpeg->mem->alloc_small)(jpeg, pool, sizeof(Window)));
    *window = { (*jpeg->mem->alloc_barray)(jpeg, pool, width, rows), 0, 0, width };
    return reinterpret_cast<jvirt_barray_ptr>(window);
}

// Rows without coefficients, for libjpeg puts down only those that aren't 0.
JBLOCKARRAY MoveWindow(j_common_ptr /*jpeg*/, jvirt_barray_ptr array, JDIMENSION first,
                       JDIMENSION count, boolean /*writable*/)
{
    Window& window = *reinterpret_cast<Window*>(array);
    for (JDIMENSION row = 0; row < count; ++row)
        std::fill_n(&window.rows[row][0][0], std::size_t{ window.width } * DCTSIZE2, JCOEF{ 0 });
    window.first = first;
    window.count = count;
    return window.rows;
}

template <typename Object>
[[noreturn]] void Fail(Object& jpeg, int code)
{
    jpeg.err->msg_code = code;
    (*jpeg.err->error_exit)(reinterpret_cast<j_common_ptr>(&jpeg));
    std::abort(); // which it never comes to
}

// Whether all the products are what a baseline file can hold.
bool Multiply(JCOEF* block, const std::array<std::uint16_t, DCTSIZE2>& factors)
{
    constexpr int kMost = 1023;
    const int mean = block[0] * factors[0];
    block[0] = static_cast<JCOEF>(mean);
    int largest = 0;
    for (std::size_t i = 1; i < factors.size(); ++i) {
        const int product = block[i] * factors[i];
        largest = std::max(largest, std::abs(product));
        block[i] = static_cast<JCOEF>(product);
    }
    return largest <= kMost && mean >= -kMost - 1 && mean <= kMost;
}

} // namespace

const int JpegCoefficients::kTooLarge = JERR_BAD_DCT_COEF;

JpegCoefficients::JpegCoefficients(const std::string& path) : reader_(path), jpeg_(reader_.Jpeg())
{
    reader_.Do([this] { jpeg_read_header(&jpeg_, TRUE); });
    oneScan_ = jpeg_has_multiple_scans(&jpeg_) == 0;
}

std::span<const jpeg_component_info> JpegCoefficients::Components() const
{
    return { jpeg_.comp_info, static_cast<std::size_t>(jpeg_.num_components) };
}

std::string JpegCoefficients::WhyNot() const
{
    const auto components = Components();
    const auto isSampledAsFirst = [&](const jpeg_component_info& one) {
        return one.h_samp_factor == components[0].h_samp_factor &&
               one.v_samp_factor == components[0].v_samp_factor;
    };
    if (jpeg_.jpeg_color_space == JCS_RGB)
        return "it is RGB, not YCbCr";
    if (components.size() == kMostComponents && jpeg_.saw_Adobe_marker == 0)
        return "it is CMYK without Adobe's mark, so that its samples have to be inverted";
    if (!std::all_of(components.begin(), components.end(), isSampledAsFirst))
        return "its colour components are subsampled";
    return {};
}

void JpegCoefficients::Start()
{
    if (!oneScan_)
        RequireHeldCoefficients(reader_.Path(), jpeg_);
    reader_.Do([this] {
        jpeg_.buffered_image = TRUE; // so that the coefficients can be had before they are read
        if (oneScan_) {
            jpeg_.mem->request_virt_barray = MakeWindow;
            jpeg_.mem->access_virt_barray = MoveWindow;
        }
        jpeg_start_decompress(&jpeg_);
        arrays_ = jpeg_read_coefficients(&jpeg_);
        if (!oneScan_)
            ReadToEnd();
    });
    for (const jpeg_component_info& component : Components())
        if (component.quant_table == nullptr)
            throw FileFailure(reader_.Path(),
                              "the JPEG data can't be read: a colour component is missing", {},
                              "The file is damaged or was cut short.");
}

void JpegCoefficients::ReadToEnd()
{
    while (jpeg_consume_input(&jpeg_) != JPEG_REACHED_EOI)
        ;
}

// The steps of which those of all these components are multiples. A baseline file has bytes for them.
JpegCoefficients::Steps JpegCoefficients::CommonSteps(std::size_t from, std::size_t end) const
{
    constexpr std::uint16_t kMost = 255;
    Steps common{};
    for (const jpeg_component_info& component : Components().subspan(from, end - from))
        for (std::size_t i = 0; i < common.size(); ++i)
            common[i] = std::gcd(common[i], component.quant_table->quantval[i]);
    const auto isNoByte = [](std::uint16_t step) { return step == 0 || step > kMost; };
    std::replace_if(common.begin(), common.end(), isNoByte, std::uint16_t{ 1 });
    return common;
}

bool JpegCoefficients::Describe(jpeg_compress_struct& jpeg)
{
    jpeg.image_width = jpeg_.image_width;
    jpeg.image_height = jpeg_.image_height;
    jpeg.input_components = jpeg_.num_components;
    jpeg.in_color_space = jpeg_.jpeg_color_space;
    jpeg_set_defaults(&jpeg);

    const auto components = Components();
    std::array<Steps, 2> tables{ CommonSteps(0, 1), CommonSteps(1, components.size()) };
    const bool areTwo = components.size() > 1 && tables[0] != tables[1];
    for (std::size_t i = 0; i < components.size(); ++i)
        for (std::size_t k = 0; k < DCTSIZE2; ++k)
            factors_[i][k] = static_cast<std::uint16_t>(components[i].quant_table->quantval[k] /
                                                        tables[areTwo && i > 0 ? 1 : 0][k]);
    for (int table = 0; table < (areTwo ? 2 : 1); ++table) {
        const Steps& steps = tables[static_cast<std::size_t>(table)];
        std::array<unsigned int, DCTSIZE2> values{};
        std::copy(steps.begin(), steps.end(), values.begin());
        jpeg_add_quant_table(&jpeg, table, values.data(), 100, TRUE);
    }
    return areTwo;
}

void JpegCoefficients::Begin(jpeg_compress_struct& jpeg)
{
    jpeg.client_data = this;
    jpeg.mem->access_virt_barray = RowsToWrite;
    jpeg_write_coefficients(&jpeg, arrays_);
}

JBLOCKARRAY JpegCoefficients::RowsToWrite(j_common_ptr jpeg, jvirt_barray_ptr array,
                                          JDIMENSION first, JDIMENSION count, boolean /*writable*/)
{
    auto& self = *static_cast<JpegCoefficients*>(jpeg->client_data);
    const auto* const found =
        std::find(self.arrays_, self.arrays_ + self.jpeg_.num_components, array);
    const auto component = static_cast<std::size_t>(found - self.arrays_);
    const JBLOCKARRAY rows = self.Rows(array, first, count);
    const JDIMENSION width = self.Components()[component].width_in_blocks;
    for (JDIMENSION row = 0; row < count; ++row)
        for (JDIMENSION block = 0; block < width; ++block)
            if (!Multiply(rows[row][block], self.factors_[component]))
                Fail(*jpeg, kTooLarge);
    return rows;
}

JBLOCKARRAY JpegCoefficients::Rows(jvirt_barray_ptr array, JDIMENSION first, JDIMENSION count)
{
    const auto reader = reinterpret_cast<j_common_ptr>(&jpeg_);
    if (!oneScan_)
        return (*jpeg_.mem->access_virt_barray)(reader, array, first, count, TRUE);
    const Window& window = *reinterpret_cast<Window*>(array);
    while (!window.Has(first, count))
        if (jpeg_consume_input(&jpeg_) == JPEG_REACHED_EOI)
            Fail(jpeg_, JERR_INPUT_EOF);
    return window.rows + (first - window.first);
}

} // namespace tympan::tool
