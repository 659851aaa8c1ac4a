#include "tamesh/coordinateform.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"
#include "groundwork/tutextnumber.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string_view>

namespace tamesh {

namespace {

    constexpr std::uint32_t kSignBit = 0x80000000u;
    constexpr std::uint64_t kSignBit64 = std::uint64_t{ kSignBit } << 32;
    constexpr std::int32_t kLargestExponent = 1100; // a double's is less

    bool hasSameBits(double a, double b)
    {
        return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
    }

    // Of what is coded, finite or not, whole numbers that grow with it. (The sign bit of a negative
    // number is set, and the others grow with its magnitude.)
    std::uint32_t toOrdered(float value)
    {
        const auto bits = std::bit_cast<std::uint32_t>(value);
        return (bits & kSignBit) != 0 ? ~bits : bits | kSignBit;
    }
    std::uint64_t toOrdered(double value)
    {
        const auto bits = std::bit_cast<std::uint64_t>(value);
        return (bits & kSignBit64) != 0 ? ~bits : bits | kSignBit64;
    }
    float fromOrdered(std::uint32_t ordered)
    {
        return std::bit_cast<float>((ordered & kSignBit) != 0 ? ordered & ~kSignBit : ~ordered);
    }
    double fromOrdered(std::uint64_t ordered)
    {
        return std::bit_cast<double>(
            (ordered & kSignBit64) != 0 ? ordered & ~kSignBit64 : ~ordered);
    }

    /// The nearest float that is finite.
    float toFloat(double value)
    {
        constexpr double kLargest = std::numeric_limits<float>::max();
        return static_cast<float>(std::clamp(value, -kLargest, kLargest));
    }

    /// What a program reads that another one has printed the float for, with as few digits as tell
    /// it from other floats.
    double toDecimal(float value)
    {
        std::array<char, 32> digits;
        const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
        double decimal = 0.0;
        TuParseDouble(std::string_view(digits.data(), end), decimal);
        return decimal;
    }

    template <class Holds> bool doAllHold(const Mesh& mesh, Holds&& holds)
    {
        for (std::uint32_t i = 0; i < mesh.GetVertexCount(); ++i) {
            const SPoint& point = mesh.GetVertex(i);
            if (!holds(point.x) || !holds(point.y) || !holds(point.z)) {
                return false;
            }
        }
        return true;
    }

    template <class Convert> SPoint convertAll(const SPoint& point, Convert&& convert)
    {
        return { convert(point.x), convert(point.y), convert(point.z) };
    }

    double getLongestSide(const SBounds& bounds)
    {
        return std::max({ bounds.upper.x - bounds.lower.x, bounds.upper.y - bounds.lower.y,
            bounds.upper.z - bounds.lower.z });
    }

    [[noreturn]] void throwNotFinite()
    {
        throw TuExceptionStream(TU_HERE, u"a coordinate is not a finite number");
    }

} // namespace

CoordinateForm CoordinateForm::MakeLossless(const Mesh& mesh)
{
    if (doAllHold(mesh, [](double value) { return hasSameBits(value, toFloat(value)); })) {
        return CoordinateForm(eK_Float);
    }
    if (doAllHold(
            mesh, [](double value) { return hasSameBits(value, toDecimal(toFloat(value))); })) {
        return CoordinateForm(eK_Decimal);
    }
    return CoordinateForm(eK_Double);
}

CoordinateForm CoordinateForm::MakeQuantized(const Mesh& mesh, unsigned int bits)
{
    CoordinateForm form(eK_Quantized);
    if (mesh.GetVertexCount() == 0) {
        return form;
    }
    const SBounds bounds = FindBounds(mesh);
    form.m_lower = bounds.lower;
    const double longest = getLongestSide(bounds);
    if (!std::isfinite(longest)) {
        throw std::range_error("the coordinates lie too far apart to be quantized");
    }
    if (longest == 0.0) {
        return form;
    }
    const double side = std::frexp(longest, &form.m_exponent); // 0.5 to 1
    form.m_maximum = static_cast<float>(side);
    if (form.m_maximum < side) {
        form.m_maximum = std::nextafter(form.m_maximum, 2.0f);
    }
    const std::uint32_t largestCode = (1U << bits) - 1;
    form.m_scale = static_cast<float>(largestCode / side);
    const auto quantize = [&form] {
        return TaFloatingPointQuantizationUniform(0.0f, form.m_maximum, form.m_scale);
    };
    while (quantize().GetMaxValue() > largestCode) { // rounding may have come to one code more
        form.m_scale = std::nextafter(form.m_scale, 0.0f);
    }
    form.m_quantization = quantize();
    return form;
}

CoordinateForm::CoordinateForm(TuStreamReadBinary& stream)
{
    unsigned char kind = 0;
    stream >> kind;
    if (kind > eK_Quantized) {
        throw TuExceptionStream(TU_HERE, u"coordinates are stored in a form that is not known");
    }
    m_kind = static_cast<EKind>(kind);
    if (m_kind == eK_Quantized) {
        stream >> m_lower.x >> m_lower.y >> m_lower.z >> m_exponent >> m_maximum >> m_scale;
        m_quantization = TaFloatingPointQuantizationUniform(0.0f, m_maximum, m_scale);
        const bool isSound = std::isfinite(m_lower.x) && std::isfinite(m_lower.y)
            && std::isfinite(m_lower.z) && m_exponent >= -kLargestExponent
            && m_exponent <= kLargestExponent && m_maximum >= 0.0f && m_maximum <= 1.0f
            && m_scale > 0.0f && std::isfinite(m_scale)
            && m_quantization.GetBitCount() <= kMostBits;
        if (!isSound) {
            throw TuExceptionStream(TU_HERE, u"coordinates are quantized in an impossible way");
        }
    }
}

void CoordinateForm::Serialize(TuStreamWriteBinary& stream) const
{
    stream << static_cast<unsigned char>(m_kind);
    if (m_kind == eK_Quantized) {
        stream << m_lower.x << m_lower.y << m_lower.z << m_exponent << m_maximum << m_scale;
    }
}

double CoordinateForm::GetStep() const
{
    return m_kind == eK_Quantized ? std::ldexp(1.0 / m_scale, m_exponent) : 0.0;
}

double CoordinateForm::GetLargestError(const SBounds& bounds) const
{
    if (m_kind != eK_Quantized) {
        return 0.0;
    }
    constexpr int kHalfUnitOfFloat = -25; // of floats of 0.5 to 1
    double farthest = 0.0;
    for (const SPoint& corner : { bounds.lower, bounds.upper }) {
        farthest
            = std::max({ farthest, std::abs(corner.x), std::abs(corner.y), std::abs(corner.z) });
    }
    return 0.5 * GetStep() + std::ldexp(1.0, m_exponent + kHalfUnitOfFloat)
        + farthest * std::numeric_limits<double>::epsilon();
}

SPoint CoordinateForm::ToNumbers(const SPoint& point) const
{
    switch (m_kind) {
    case eK_Float:
    case eK_Decimal:
        return convertAll(point, [](double value) { return toFloat(value); });
    case eK_Double:
        return point;
    case eK_Quantized:
        break;
    }
    return { toCode(point.x, m_lower.x), toCode(point.y, m_lower.y), toCode(point.z, m_lower.z) };
}

SPoint CoordinateForm::FromNumbers(const SPoint& numbers) const
{
    switch (m_kind) {
    case eK_Float:
    case eK_Double:
        return numbers;
    case eK_Decimal:
        return convertAll(
            numbers, [](double number) { return toDecimal(static_cast<float>(number)); });
    case eK_Quantized:
        break;
    }
    return { fromCode(numbers.x, m_lower.x), fromCode(numbers.y, m_lower.y),
        fromCode(numbers.z, m_lower.z) };
}

/// The quantization rounds in single precision, where large codes have hardly a bit to spare: the
/// neighbours may be nearer.
double CoordinateForm::toCode(double coordinate, double lower) const
{
    const double distance = std::ldexp(coordinate - lower, -m_exponent);
    const auto getError
        = [&](std::uint32_t code) { return std::abs(m_quantization.Unmap(code) - distance); };
    std::uint32_t code = m_quantization.Map(static_cast<float>(distance));
    while (code > 0 && getError(code - 1) < getError(code)) {
        --code;
    }
    while (code < m_quantization.GetMaxValue() && getError(code + 1) < getError(code)) {
        ++code;
    }
    return code;
}

double CoordinateForm::fromCode(double code, double lower) const
{
    constexpr double kLargest = std::numeric_limits<double>::max();
    const double distance = m_quantization.Unmap(static_cast<std::uint32_t>(code));
    // Half a step beyond the box may be beyond the last number.
    return std::clamp(lower + std::ldexp(distance, m_exponent), -kLargest, kLargest);
}

double CoordinateForm::Predict(double a, double b, double c) const
{
    const double sum = a + b - c;
    switch (m_kind) {
    case eK_Quantized:
        return std::clamp(sum, 0.0, static_cast<double>(m_quantization.GetMaxValue()));
    case eK_Double:
        return std::isfinite(sum) ? sum : a;
    case eK_Float:
    case eK_Decimal:
        break;
    }
    return toFloat(sum);
}

std::uint32_t CoordinateForm::GetWordBits() const
{
    constexpr std::uint32_t kAllBits = 32;
    return m_kind == eK_Quantized ? m_quantization.GetBitCount() : kAllBits;
}

CoordinateForm::Words CoordinateForm::Split(double number) const
{
    switch (m_kind) {
    case eK_Double: {
        const std::uint64_t ordered = toOrdered(number);
        return { static_cast<std::uint32_t>(ordered >> 32), static_cast<std::uint32_t>(ordered) };
    }
    case eK_Quantized:
        return { static_cast<std::uint32_t>(number), 0 };
    case eK_Float:
    case eK_Decimal:
        break;
    }
    return { toOrdered(static_cast<float>(number)), 0 };
}

double CoordinateForm::Join(const Words& words) const
{
    if (m_kind == eK_Quantized) {
        if (words[0] > m_quantization.GetMaxValue()) {
            throw TuExceptionStream(TU_HERE, u"a coordinate lies outside the box of its mesh");
        }
        return words[0];
    }
    const double number = m_kind == eK_Double
        ? fromOrdered(std::uint64_t{ words[0] } << 32 | words[1])
        : static_cast<double>(fromOrdered(words[0]));
    if (!std::isfinite(number)) {
        throwNotFinite();
    }
    return number;
}

} // namespace tamesh
