#pragma once

#include "tacompression/tafloatingpointquantizationuniform.h"
#include "tamesh/mesh.h"

#include <array>
#include <cstdint>

class TuStreamReadBinary;
class TuStreamWriteBinary;

namespace tamesh {

/// How the coordinates of a packed mesh are stored: what is coded for each, and how it is
/// predicted.
///
/// While a mesh is coded, a number stands for each coordinate (ToNumber), which both ends have
/// exactly: a quantized coordinate's code, else the coordinate, or what it can be made of again.
/// The coder takes a number as words of 32 bits that grow with it (Split), as many for each.
class CoordinateForm
{
public:
    enum EKind : unsigned char
    {
        eK_Float, // coordinates that floats hold exactly, bit for bit
        eK_Decimal, // ones that are the shortest decimal of a float: what programs print
        eK_Double, // any, bit for bit
        eK_Quantized,
    };

    static constexpr unsigned int kMostBits = 24; // of a float
    static constexpr std::size_t kMostWords = 2;
    using Words = std::array<std::uint32_t, kMostWords>;

    /// The first of the kinds that keeps all coordinates.
    static CoordinateForm MakeLossless(const Mesh& mesh);
    /// 2^bits - 1 steps, for 1 to kMostBits bits, over the longest side of the box, the same for
    /// all axes. Throws std::range_error where that side is longer than a double tells.
    static CoordinateForm MakeQuantized(const Mesh& mesh, unsigned int bits);

    /// Throws TuExceptionStream for what no form is.
    explicit CoordinateForm(TuStreamReadBinary& stream);
    void Serialize(TuStreamWriteBinary& stream) const;

    EKind GetKind() const { return m_kind; }
    /// Between neighbouring codes; 0 where coordinates are not quantized.
    double GetStep() const;
    /// How far a restored coordinate of this mesh may lie from the original: half a step, and what
    /// the rounding of the restored float and of the sum with the lower corner takes.
    double GetLargestError(const SBounds& bounds) const;

    SPoint ToNumbers(const SPoint& point) const;
    SPoint FromNumbers(const SPoint& numbers) const;

    /// a + b - c, or the nearest to it that can be split.
    double Predict(double a, double b, double c) const;

    std::size_t GetWordCount() const { return m_kind == eK_Double ? 2 : 1; }
    /// How many bits words differ by.
    std::uint32_t GetWordBits() const;
    Words Split(double number) const;
    /// Throws TuExceptionStream for words that no coordinate has.
    double Join(const Words& words) const;

private:
    explicit CoordinateForm(EKind kind)
        : m_kind(kind)
    {
    }

    double toCode(double coordinate, double lower) const;
    double fromCode(double code, double lower) const;

    EKind m_kind;
    // Of quantized coordinates. What is quantized is a coordinate's distance from the lower corner
    // of the box divided by 2^m_exponent, which is 1 at most.
    SPoint m_lower;
    std::int32_t m_exponent = 0;
    float m_maximum = 0.0f;
    float m_scale = 1.0f;
    TaFloatingPointQuantizationUniform m_quantization{ 0.0f, 0.0f, 1.0f };
};

} // namespace tamesh
