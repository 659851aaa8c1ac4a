#include "tabase/tacolortables.h"

#include <span>

namespace {

// Control colours, 0xRRGGBB, evenly spaced from the minimum to the maximum.

// S. van der Walt and N. Smith, 2015: every fifth of the 256 published colours, rounded to 8 bits.
// With 256 entries no channel is off by more than 1 from theirs.
constexpr std::uint32_t kViridis[]
    = { 0x440154, 0x46085C, 0x471063, 0x481769, 0x481D6F, 0x482475, 0x472A7A, 0x46307E, 0x453781,
          0x433D84, 0x414287, 0x3F4889, 0x3D4E8A, 0x3A538B, 0x38598C, 0x355E8D, 0x33638D, 0x31688E,
          0x2E6D8E, 0x2C718E, 0x2A768E, 0x297B8E, 0x27808E, 0x25848E, 0x23898E, 0x218E8D, 0x20928C,
          0x1F978B, 0x1E9C89, 0x1FA188, 0x21A585, 0x24AA83, 0x28AE80, 0x2EB37C, 0x35B779, 0x3DBC74,
          0x46C06F, 0x50C46A, 0x5AC864, 0x65CB5E, 0x70CF57, 0x7CD250, 0x89D548, 0x95D840, 0xA2DA37,
          0xB0DD2F, 0xBDDF26, 0xCAE11F, 0xD8E219, 0xE5E419, 0xF1E51D, 0xFDE725 };

// J. Nunez, C. Anderton and R. Renslow, "Optimizing colormaps with consideration for color vision
// deficiency to enable accurate interpretation of scientific data", PLoS ONE 13(7), 2018: every
// fifth of the 256 published colours, rounded to 8 bits. With 256 entries the channels beside the
// few bends of the published curve are off by up to 4 from theirs.
constexpr std::uint32_t kCividis[]
    = { 0x00224E, 0x002656, 0x002A5F, 0x002D68, 0x003070, 0x083370, 0x163770, 0x203A6F, 0x273E6E,
          0x2E416D, 0x34456C, 0x3A486C, 0x3F4C6C, 0x444F6C, 0x49536C, 0x4E566C, 0x535A6D, 0x575D6D,
          0x5C616E, 0x60646F, 0x656870, 0x696B71, 0x6D6F72, 0x727274, 0x767676, 0x7A7A78, 0x7E7D78,
          0x838179, 0x888578, 0x8D8878, 0x928C78, 0x969077, 0x9B9476, 0xA09875, 0xA59C74, 0xAAA073,
          0xAFA471, 0xB5A86F, 0xBAAC6D, 0xBFB06B, 0xC4B468, 0xC9B965, 0xCFBD62, 0xD4C15F, 0xDAC65B,
          0xDFCA57, 0xE5CF52, 0xEAD34C, 0xF0D846, 0xF6DD3F, 0xFCE236, 0xFEE838 };

// K. Moreland, "Diverging Color Maps for Scientific Visualization", International Symposium on
// Visual Computing, 2009: the table of 33 control colours, which is published in 8 bits.
constexpr std::uint32_t kCoolWarm[] = { 0x3B4CC0, 0x445ACC, 0x4D68D7, 0x5775E1, 0x6282EA, 0x6C8EF1,
    0x779AF7, 0x82A5FB, 0x8DB0FE, 0x98B9FF, 0xA3C2FF, 0xAEC9FD, 0xB8D0F9, 0xC2D5F4, 0xCCD9EE,
    0xD5DBE6, 0xDDDDDD, 0xE5D8D1, 0xECD3C5, 0xF1CCB9, 0xF5C4AD, 0xF7BBA0, 0xF7B194, 0xF7A687,
    0xF49A7B, 0xF18D6F, 0xEC7F63, 0xE57058, 0xDE604D, 0xD55042, 0xCB3E38, 0xC0282F, 0xB40426 };

/// In whole numbers, which are the same everywhere, rounded to the nearest.
std::uint32_t interpolateChannel(
    std::uint32_t a, std::uint32_t b, unsigned int shift, std::uint64_t part, std::uint64_t whole)
{
    const std::uint64_t from = a >> shift & 0xFFu;
    const std::uint64_t to = b >> shift & 0xFFu;
    const std::uint64_t channel = (from * (whole - part) + to * part + whole / 2) / whole;
    return static_cast<std::uint32_t>(channel) << shift;
}

TuSmartPointer<TaColorTable> createTable(
    std::span<const std::uint32_t> controls, unsigned long count, float minimum, float maximum)
{
    auto table = TuMake<TaColorTable>(count, minimum, maximum);
    const std::uint32_t last = table->GetCount() - 1;
    for (std::uint32_t entry = 0; entry <= last; ++entry) {
        // The place between the first control (0) and the last, as a fraction of `whole`. The only
        // entry of a table gets the first.
        const std::uint64_t whole = last != 0 ? last : 1;
        const std::uint64_t place = std::uint64_t{ entry } * (controls.size() - 1);
        const std::uint32_t a = controls[place / whole];
        const std::uint32_t b = controls[place / whole + (entry < whole ? 1 : 0)];
        std::uint32_t word = 0xFF000000u;
        for (const unsigned int shift : { 16u, 8u, 0u }) {
            word |= interpolateChannel(a, b, shift, place % whole, whole);
        }
        table->SetEntryColor(entry, TaColor::FromDword(word));
    }
    return table;
}

} // namespace

TuSmartPointer<TaColorTable> TaColorTables::CreateViridis(
    unsigned long count, float minimum, float maximum)
{
    return createTable(kViridis, count, minimum, maximum);
}

TuSmartPointer<TaColorTable> TaColorTables::CreateCividis(
    unsigned long count, float minimum, float maximum)
{
    return createTable(kCividis, count, minimum, maximum);
}

TuSmartPointer<TaColorTable> TaColorTables::CreateCoolWarm(
    unsigned long count, float minimum, float maximum)
{
    return createTable(kCoolWarm, count, minimum, maximum);
}
