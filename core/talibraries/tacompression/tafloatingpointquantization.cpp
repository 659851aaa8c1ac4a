#include "tacompression/tafloatingpointquantization.h"

#include "groundwork/tuexceptions.h"
#include "tacompression/tafloatingpointquantizationuniform.h"

#include <typeinfo>

namespace {

/// The quantization as a uniform one, or null where it is another or may override something.
const TaFloatingPointQuantizationUniform* asUniform(const TaFloatingPointQuantization& quantization)
{
    return typeid(quantization) == typeid(TaFloatingPointQuantizationUniform)
        ? static_cast<const TaFloatingPointQuantizationUniform*>(&quantization)
        : nullptr;
}

void checkCounts(std::size_t values, std::size_t codes)
{
    if (values != codes) {
        throw TuExceptionPreconditionViolation(TU_HERE, u"there is a code for each value");
    }
}

} // namespace

void TaFloatingPointQuantization::MapValues(
    std::span<const float> values, std::span<std::uint32_t> codes) const
{
    checkCounts(values.size(), codes.size());
    if (const auto* uniform = asUniform(*this)) {
        uniform->mapAll(values, codes);
        return;
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        codes[i] = Map(values[i]);
    }
}

void TaFloatingPointQuantization::UnmapValues(
    std::span<const std::uint32_t> codes, std::span<float> values) const
{
    checkCounts(values.size(), codes.size());
    if (const auto* uniform = asUniform(*this)) {
        uniform->unmapAll(codes, values);
        return;
    }
    for (std::size_t i = 0; i < codes.size(); ++i) {
        values[i] = Unmap(codes[i]);
    }
}
