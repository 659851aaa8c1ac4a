#include "tabase/tauniqueid.h"

#include <benchmark/benchmark.h>
#if defined(TA_PEER_QT)
#include <QUuid>
#endif

namespace {

constexpr char16_t kText[] = u"0F8FAD5B-D9CB-469F-A165-70867728950E";

void BM_TaUniqueID_Create(benchmark::State& state)
{
    for (auto _ : state) {
        TaUniqueID id;
        benchmark::DoNotOptimize(id);
    }
}
BENCHMARK(BM_TaUniqueID_Create);

void BM_TaUniqueID_Format(benchmark::State& state)
{
    TaUniqueID::UUID uuid = TaUniqueID(kText);
    for (auto _ : state) {
        benchmark::DoNotOptimize(uuid);
        String text = TaUniqueID::GetUniqueID(uuid);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_TaUniqueID_Format);

void BM_TaUniqueID_FormatKept(benchmark::State& state)
{
    TaUniqueID::UUID uuid = TaUniqueID(kText);
    for (auto _ : state) {
        benchmark::DoNotOptimize(uuid);
        TaUniqueID id(uuid);
        const String& text = id;
        benchmark::DoNotOptimize(text.GetString());
    }
}
BENCHMARK(BM_TaUniqueID_FormatKept);

// An identifier keeps the text, which the peer does not: here it has the memory for it already.

void BM_TaUniqueID_Parse(benchmark::State& state)
{
    const String text = kText;
    TaUniqueID id(TaUniqueID::GetInvalidID());
    for (auto _ : state) {
        id = text;
        benchmark::DoNotOptimize(id);
    }
}
BENCHMARK(BM_TaUniqueID_Parse);

void BM_TaUniqueID_ParseNew(benchmark::State& state)
{
    const String text = kText;
    for (auto _ : state) {
        TaUniqueID id(text);
        benchmark::DoNotOptimize(id);
    }
}
BENCHMARK(BM_TaUniqueID_ParseNew);

#if defined(TA_PEER_QT)
void BM_QUuid_Create(benchmark::State& state)
{
    for (auto _ : state) {
        QUuid id = QUuid::createUuid();
        benchmark::DoNotOptimize(id);
    }
}
BENCHMARK(BM_QUuid_Create);

void BM_QUuid_Format(benchmark::State& state)
{
    QUuid id = QUuid::fromString(QStringView(kText));
    for (auto _ : state) {
        benchmark::DoNotOptimize(id);
        QString text = id.toString(QUuid::WithoutBraces);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_QUuid_Format);

void BM_QUuid_Parse(benchmark::State& state)
{
    const QString text = QString::fromUtf16(kText);
    for (auto _ : state) {
        QUuid id = QUuid::fromString(text);
        benchmark::DoNotOptimize(id);
    }
}
BENCHMARK(BM_QUuid_Parse);
#endif

} // namespace
