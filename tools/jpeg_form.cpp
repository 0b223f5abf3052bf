#include "jpeg_form.h"

#include <algorithm>
#include <span>

namespace tympan::tool {

namespace {

constexpr JDIMENSION kBlockSide = 8; // pixels

JDIMENSION BlocksOf(JDIMENSION pixels)
{
    return (pixels + kBlockSide - 1) / kBlockSide;
}

using Component = jpeg_component_info;

std::span<const Component> ComponentsOf(const jpeg_decompress_struct& head)
{
    return { head.comp_info, static_cast<std::size_t>(head.num_components) };
}

// A grey picture has rows of single blocks, whatever its sampling factors.
bool HasOneBlockOfEach(const jpeg_decompress_struct& head)
{
    const auto components = ComponentsOf(head);
    return components.size() == 1 ||
           std::all_of(components.begin(), components.end(), [](const Component& one) {
               return one.h_samp_factor == 1 && one.v_samp_factor == 1;
           });
}

// Whether the first component has the tables 0, and all others the same, 0 or 1 of each kind.
bool HasTablesInOrder(const jpeg_decompress_struct& head, int Component::*table)
{
    const auto components = ComponentsOf(head);
    const int others = components.back().*table;
    return components[0].*table == 0 && (others == 0 || others == 1) &&
           std::all_of(components.begin() + 1, components.end(),
                       [&](const Component& one) { return one.*table == others; });
}

bool EndsEachBand(const jpeg_decompress_struct& head)
{
    return head.restart_interval == BlocksOf(head.image_width) || head.image_height <= kBlockSide;
}

} // namespace

std::string DifferenceFromBandForm(const jpeg_decompress_struct& head)
{
    const int components = head.num_components;
    if (head.progressive_mode != 0 || head.arith_code != 0)
        return "it isn't baseline";
    if (components != 1 && components != 3 && components != 4)
        return "it has " + std::to_string(components) + " colour components instead of 1, 3 or 4";
    if (head.comps_in_scan != components)
        return "its colour components stand in scans of their own";
    if (!HasOneBlockOfEach(head))
        return "its colour components are subsampled, or have sampling factors other than 1";
    for (int Component::*const table :
         { &Component::quant_tbl_no, &Component::dc_tbl_no, &Component::ac_tbl_no })
        if (!HasTablesInOrder(head, table))
            return "its colour components use their tables in another order";
    if (!EndsEachBand(head))
        return "it has no restart marker behind each row of blocks";
    return {};
}

} // namespace tympan::tool
