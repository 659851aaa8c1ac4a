// Colours of 10 million scalars, by a table and by a map, one by one and all at once; conversions
// between colour spaces. The rate is in values.

#include "tabase/tacolormap.h"
#include "tabase/tacolortables.h"

#include <benchmark/benchmark.h>
#if defined(TA_PEER_VTK)
#include <vtkFloatArray.h>
#include <vtkLookupTable.h>
#include <vtkMath.h>
#include <vtkNew.h>
#endif

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace {

constexpr float kLower = -2.0f;
constexpr float kUpper = 5.0f;
constexpr unsigned int kEntries = 256;

/// Some below the range and some above, like the values of a measurement.
const std::vector<float>& getValues(std::int64_t count)
{
    static std::vector<float> s_values;
    if (s_values.size() != static_cast<std::size_t>(count)) {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> value(kLower - 0.1f, kUpper + 0.1f);
        s_values.resize(static_cast<std::size_t>(count));
        for (float& scalar : s_values) {
            scalar = value(random);
        }
    }
    return s_values;
}

void setRate(benchmark::State& state)
{
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Look> void mapEach(benchmark::State& state, Look&& look)
{
    const std::vector<float>& values = getValues(state.range(0));
    std::vector<TaColor> colors(values.size());
    for (auto _ : state) {
        for (std::size_t i = 0; i != values.size(); ++i) {
            colors[i] = look(values[i]);
        }
        benchmark::DoNotOptimize(colors.data());
        benchmark::ClobberMemory();
    }
    setRate(state);
}

template <class Source> void mapAll(benchmark::State& state, const Source& source)
{
    const std::vector<float>& values = getValues(state.range(0));
    std::vector<TaColor> colors(values.size());
    for (auto _ : state) {
        source.GetColorValues(values.data(), colors.data(), values.size());
        benchmark::ClobberMemory();
    }
    setRate(state);
}

TaColorMap makeMap()
{
    TaColorMap map(kLower, kUpper);
    map.SetMinColor(TaColor(0, 0, 255, 255));
    map.SetMaxColor(TaColor(255, 0, 0, 255));
    return map;
}

void BM_TaColorTable_Each(benchmark::State& state)
{
    const auto table = TaColorTables::CreateViridis(kEntries, kLower, kUpper);
    mapEach(state, [&](float value) { return table->GetColorValue(value); });
}

void BM_TaColorTable_All(benchmark::State& state)
{
    mapAll(state, *TaColorTables::CreateViridis(kEntries, kLower, kUpper));
}

void BM_Plain_Table(benchmark::State& state)
{
    const auto table = TaColorTables::CreateViridis(kEntries, kLower, kUpper);
    std::vector<TaColor> entries;
    for (unsigned int i = 0; i != kEntries; ++i) {
        entries.push_back(table->GetEntryColor(i));
    }
    mapEach(state, [&](float value) {
        if (!(value >= kLower)) {
            return kTaDefaultUnderflowColor;
        }
        if (value > kUpper) {
            return kTaDefaultOverflowColor;
        }
        const float entry = (value - kLower) * static_cast<float>(kEntries) / (kUpper - kLower);
        return entries[entry < static_cast<float>(kEntries) ? static_cast<std::size_t>(entry)
                                                            : kEntries - 1];
    });
}

void BM_TaColorMap_Each(benchmark::State& state)
{
    const TaColorMap map = makeMap();
    mapEach(state, [&](float value) { return map.GetColorValue(value); });
}

void BM_TaColorMap_All(benchmark::State& state) { mapAll(state, makeMap()); }

#if defined(TA_PEER_VTK)
void setUp(vtkLookupTable& table)
{
    table.SetNumberOfTableValues(kEntries);
    table.SetRange(static_cast<double>(kLower), static_cast<double>(kUpper));
    table.UseBelowRangeColorOn();
    table.UseAboveRangeColorOn();
    table.Build();
}

void BM_VtkLookupTable_All(benchmark::State& state)
{
    const std::vector<float>& values = getValues(state.range(0));
    vtkNew<vtkLookupTable> table;
    setUp(*table);
    vtkNew<vtkFloatArray> scalars;
    scalars->SetArray(const_cast<float*>(values.data()), state.range(0), 1);
    std::vector<unsigned char> colors(4 * values.size());
    for (auto _ : state) {
        table->MapScalarsThroughTable(scalars, colors.data(), VTK_RGBA);
        benchmark::ClobberMemory();
    }
    setRate(state);
}

void BM_VtkLookupTable_Each(benchmark::State& state)
{
    vtkNew<vtkLookupTable> table;
    setUp(*table);
    mapEach(state, [&](float value) {
        const unsigned char* const color = table->MapValue(static_cast<double>(value));
        std::uint32_t word = 0;
        std::memcpy(&word, color, sizeof(word));
        return TaColor::FromDword(word);
    });
}

/// The same work as our map does.
void BM_VtkMath_HsvMap(benchmark::State& state)
{
    const auto toChannel
        = [](double channel) { return static_cast<unsigned long>(channel * 255.0); };
    mapEach(state, [&](float value) {
        if (!(value >= kLower)) {
            return kTaDefaultUnderflowColor;
        }
        if (value > kUpper) {
            return kTaDefaultOverflowColor;
        }
        const double t = static_cast<double>((value - kLower) / (kUpper - kLower));
        double red = 0.0;
        double green = 0.0;
        double blue = 0.0;
        vtkMath::HSVToRGB(2.0 / 3.0 * (1.0 - t), 1.0, 1.0, &red, &green, &blue);
        return TaColor(toChannel(red), toChannel(green), toChannel(blue), 255ul);
    });
}
#endif

/// Triples of numbers from 0 to 1.
template <class Number> const std::vector<Number>& getTriples(std::int64_t count)
{
    static std::vector<Number> s_numbers;
    if (s_numbers.size() != 3 * static_cast<std::size_t>(count)) {
        std::mt19937 random(2);
        s_numbers.resize(3 * static_cast<std::size_t>(count));
        for (Number& number : s_numbers) {
            number = static_cast<Number>(random() >> 8) / static_cast<Number>(1 << 24);
        }
    }
    return s_numbers;
}

template <class Number, class Convert> void convertEach(benchmark::State& state, Convert&& convert)
{
    const std::vector<Number>& from = getTriples<Number>(state.range(0));
    std::vector<Number> to(from.size());
    for (auto _ : state) {
        for (std::size_t i = 0; i != from.size(); i += 3) {
            convert(from[i], from[i + 1], from[i + 2], to[i], to[i + 1], to[i + 2]);
        }
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
    }
    setRate(state);
}

void BM_TaColor_HsvToRgb(benchmark::State& state)
{
    convertEach<float>(state, [](float h, float s, float v, float& r, float& g, float& b) {
        TaColor::HsvToRgb(360.0f * h, s, v, r, g, b);
    });
}

void BM_TaColor_RgbToHsv(benchmark::State& state) { convertEach<float>(state, TaColor::RgbToHsv); }

void BM_TaColor_HslToRgb(benchmark::State& state)
{
    convertEach<float>(state, [](float h, float s, float l, float& r, float& g, float& b) {
        TaColor::HslToRgb(360.0f * h, s, l, r, g, b);
    });
}

void BM_TaColor_RgbToHsl(benchmark::State& state) { convertEach<float>(state, TaColor::RgbToHsl); }

#if defined(TA_PEER_VTK)
void BM_VtkMath_HsvToRgb(benchmark::State& state)
{
    convertEach<double>(state, [](double h, double s, double v, double& r, double& g, double& b) {
        vtkMath::HSVToRGB(h, s, v, &r, &g, &b);
    });
}

void BM_VtkMath_RgbToHsv(benchmark::State& state)
{
    convertEach<double>(state, [](double r, double g, double b, double& h, double& s, double& v) {
        vtkMath::RGBToHSV(r, g, b, &h, &s, &v);
    });
}
#endif

constexpr std::int64_t kValues = 10'000'000;
constexpr std::int64_t kFew = 10'000; // in the cache

BENCHMARK(BM_TaColorTable_Each)->Arg(kFew)->Arg(kValues / 10)->Arg(kValues);
BENCHMARK(BM_TaColorTable_All)->Arg(kFew)->Arg(kValues / 10)->Arg(kValues);
BENCHMARK(BM_Plain_Table)->Arg(kFew)->Arg(kValues / 10)->Arg(kValues);
BENCHMARK(BM_TaColorMap_Each)->Arg(kFew)->Arg(kValues / 10)->Arg(kValues);
BENCHMARK(BM_TaColorMap_All)->Arg(kFew)->Arg(kValues / 10)->Arg(kValues);
BENCHMARK(BM_TaColor_HsvToRgb)->Arg(kFew)->Arg(kValues);
BENCHMARK(BM_TaColor_RgbToHsv)->Arg(kFew)->Arg(kValues);
BENCHMARK(BM_TaColor_HslToRgb)->Arg(kFew)->Arg(kValues);
BENCHMARK(BM_TaColor_RgbToHsl)->Arg(kFew)->Arg(kValues);
#if defined(TA_PEER_VTK)
BENCHMARK(BM_VtkLookupTable_All)->Arg(kFew)->Arg(kValues / 10)->Arg(kValues);
BENCHMARK(BM_VtkLookupTable_Each)->Arg(kFew)->Arg(kValues / 10)->Arg(kValues);
BENCHMARK(BM_VtkMath_HsvMap)->Arg(kFew)->Arg(kValues / 10)->Arg(kValues);
BENCHMARK(BM_VtkMath_HsvToRgb)->Arg(kFew)->Arg(kValues);
BENCHMARK(BM_VtkMath_RgbToHsv)->Arg(kFew)->Arg(kValues);
#endif

} // namespace
