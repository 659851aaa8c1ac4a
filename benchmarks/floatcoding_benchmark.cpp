// The floats of a scanned mesh and of a smooth field, bit for bit and at 16 bits, both ways. What
// makes the predictions belongs to the time, as it does for the peers. The counter "bytes" is per
// float, and every decoder's result is compared with the input.

#include "bytecodecs.h"
#include "floatcoders.h"
#include "floatpeers.h"
#include "scans.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

namespace {

template <class Input> Input makeInput(std::int64_t points)
{
    if constexpr (std::is_same_v<Input, SMesh>) {
        return makeMesh(static_cast<std::uint32_t>(std::lround(std::sqrt(points))));
    } else {
        return makeField(static_cast<std::uint32_t>(std::lround(std::cbrt(points))));
    }
}

/// The input of the last size stays, so that it is made once and not once a measurement.
template <class Input> const Input& getInput(std::int64_t points)
{
    static std::int64_t s_points = 0;
    static Input s_input;
    if (s_points != points) {
        s_input = {};
        s_input = makeInput<Input>(points);
        s_points = points;
    }
    return s_input;
}

/// Whether each value came back as well as the codec promises. Where points come in another order,
/// the values of each axis are compared by size.
template <class Codec>
bool isRight(const typename Codec::Input& input, const std::vector<float>& decoded)
{
    const std::size_t axes = input.lower.size();
    std::vector<float> expected = splitAxes(input.values, axes);
    std::vector<float> found = splitAxes(decoded, axes);
    if constexpr (requires { Codec::kReordersPoints; }) {
        const std::size_t count = decoded.size() / axes;
        for (std::size_t i = 0; i < decoded.size(); i += count) {
            std::sort(&expected[i], &expected[i] + count);
            std::sort(&found[i], &found[i] + count);
        }
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (!(std::abs(double{ found[i] } - expected[i])
                <= Codec::GetTolerance(input, expected[i]))) {
            return false;
        }
    }
    return true;
}

[[maybe_unused]] std::size_t getSize(const TaStreamWriteBinaryBuffer& encoded)
{
    return encoded.GetSize();
}
[[maybe_unused]] std::size_t getSize(const EncodedBytes& encoded) { return encoded.GetSize(); }
#if defined(TA_PEER_DRACO)
[[maybe_unused]] std::size_t getSize(const draco::EncoderBuffer& encoded) { return encoded.size(); }
#endif

template <class Input>
void setCounters(benchmark::State& state, const Input& input, std::size_t encodedSize)
{
    const std::size_t count = input.values.size();
    state.counters["bytes"] = static_cast<double>(encodedSize) / static_cast<double>(count);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(count * sizeof(float)));
}

template <class Codec> void BM_EncodeFloats(benchmark::State& state)
{
    const auto& input = getInput<typename Codec::Input>(state.range(0));
    typename Codec::Encoded encoded;
    for (auto _ : state) {
        Codec::Encode(input, encoded);
    }
    setCounters(state, input, getSize(encoded));
}

template <class Codec> void BM_DecodeFloats(benchmark::State& state)
{
    const auto& input = getInput<typename Codec::Input>(state.range(0));
    typename Codec::Encoded encoded;
    Codec::Encode(input, encoded);
    std::vector<float> decoded(input.values.size());
    for (auto _ : state) {
        Codec::Decode(encoded, input, decoded);
    }
    if (!isRight<Codec>(input, decoded)) {
        state.SkipWithError("other floats came back");
    }
    setCounters(state, input, getSize(encoded));
}

template <class Codec> bool registerCodec(const std::string& name)
{
    const auto add = [](const std::string& full, void (*function)(benchmark::State&)) {
        auto* added = benchmark::RegisterBenchmark(full.c_str(), function);
        added->Unit(benchmark::kMillisecond);
        if constexpr (std::is_same_v<typename Codec::Input, SMesh>) {
            for (const std::int64_t side : { 100, 224, 708, 2236 }) {
                added->Arg(side * side);
            }
        } else {
            for (const std::int64_t side : { 32, 128, 256 }) {
                added->Arg(side * side * side);
            }
        }
    };
    add("BM_" + name + "Encode", BM_EncodeFloats<Codec>);
    add("BM_" + name + "Decode", BM_DecodeFloats<Codec>);
    return true;
}

[[maybe_unused]] const bool s_ours = registerCodec<TaMesh<Exact>>("TaPredictiveCoder_ExactMesh")
    && registerCodec<TaField<Exact>>("TaPredictiveCoder_ExactField")
    && registerCodec<TaMesh<Quantized>>("TaCompressedFloats_Mesh")
    && registerCodec<TaField<Quantized>>("TaCompressedFloats_Field");
#if defined(TA_PEER_FPZIP)
[[maybe_unused]] const bool s_fpzip = registerCodec<Fpzip<InSequence, 32>>("Fpzip_ExactMesh")
    && registerCodec<Fpzip<InRows, 32>>("FpzipInRows_ExactMesh")
    && registerCodec<Fpzip<InCube, 32>>("Fpzip_ExactField")
    && registerCodec<Fpzip<InSequence, 24>>("Fpzip_Mesh")
    && registerCodec<Fpzip<InRows, 24>>("FpzipInRows_Mesh")
    && registerCodec<Fpzip<InCube, 24>>("Fpzip_Field");
#endif
#if defined(TA_PEER_ZFP)
[[maybe_unused]] const bool s_zfp
    = registerCodec<Zfp<InRows>>("ZfpInRows_Mesh") && registerCodec<Zfp<InCube>>("Zfp_Field");
#endif
#if defined(TA_PEER_MESHOPTIMIZER) && defined(TA_PEER_ZSTD)
[[maybe_unused]] const bool s_meshoptimizer = registerCodec<Meshoptimizer>("Meshoptimizer_Mesh");
#endif
#if defined(TA_PEER_DRACO)
[[maybe_unused]] const bool s_draco = registerCodec<Draco>("Draco_Mesh");
#endif
#if defined(TA_PEER_ZSTD)
[[maybe_unused]] const bool s_zstd = registerCodec<Raw<Zstd3, SMesh>>("Zstd3_ExactMesh")
    && registerCodec<Raw<Zstd3, SField>>("Zstd3_ExactField")
    && registerCodec<OnCodes<Zstd3, SMesh>>("Zstd3_Mesh")
    && registerCodec<OnCodes<Zstd3, SField>>("Zstd3_Field");
#endif
#if defined(TA_PEER_ZLIB)
[[maybe_unused]] const bool s_zlib = registerCodec<Raw<Zlib6, SMesh>>("Zlib6_ExactMesh")
    && registerCodec<Raw<Zlib6, SField>>("Zlib6_ExactField")
    && registerCodec<OnCodes<Zlib6, SMesh>>("Zlib6_Mesh")
    && registerCodec<OnCodes<Zlib6, SField>>("Zlib6_Field");
#endif

} // namespace
