#include "tabase/tapersistentoptions.h"

#include <benchmark/benchmark.h>
#if defined(TA_PEER_QT)
#include <QSettings>
#endif

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

namespace {

constexpr int kOthers = 100; // values beside the one that is measured

/// A folder in the working folder, not in memory: durable writes are to reach a disk.
class Folder
{
public:
    Folder()
        : m_path(std::filesystem::absolute(
            "options-benchmark-" + std::to_string(std::random_device()())))
    {
        std::filesystem::create_directory(m_path);
        setenv("TABASE_REGISTRY_FOLDER", m_path.c_str(), 1);
    }
    ~Folder() { std::filesystem::remove_all(m_path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string operator/(const char* name) const { return m_path / name; }

private:
    const std::filesystem::path m_path;
};

constexpr auto kUser = TaPersistentOptions::ePOC_CurrentUser;
const CString kKey = u"Software\\Benchmark\\Window";
const CString kName = u"Width";

void fill()
{
    for (int i = 0; i < kOthers; ++i) {
        TaPersistentOptions::WriteOption(
            kKey, CString::FromUtf8("Other" + std::to_string(i)), i, kUser);
    }
}

void BM_TaPersistentOptions_Write(benchmark::State& state)
{
    const Folder folder;
    fill();
    int value = 0;
    for (auto _ : state) {
        if (TaPersistentOptions::WriteOption(kKey, kName, ++value, kUser) == 0) {
            state.SkipWithError("not written");
            return;
        }
    }
}
BENCHMARK(BM_TaPersistentOptions_Write)->UseRealTime();

void BM_TaPersistentOptions_Read(benchmark::State& state)
{
    const Folder folder;
    fill();
    TaPersistentOptions::WriteOption(kKey, kName, 640, kUser);
    for (auto _ : state) {
        int value = 0;
        if (TaPersistentOptions::ReadOption(kKey, kName, value, kUser) == 0 || value != 640) {
            state.SkipWithError("not read");
            return;
        }
    }
}
BENCHMARK(BM_TaPersistentOptions_Read)->UseRealTime();

#if defined(TA_PEER_QT)

// With sync() in each step: what is written is on the disk, what is read is what other processes
// have written by then.

const QString kPath = "Software/Benchmark/Window/Width";

void fill(QSettings& settings)
{
    for (int i = 0; i < kOthers; ++i) {
        settings.setValue(QString("Software/Benchmark/Window/Other%1").arg(i), i);
    }
    settings.sync();
}

void BM_QSettings_Write(benchmark::State& state)
{
    const Folder folder;
    QSettings settings(QString::fromStdString(folder / "settings.ini"), QSettings::IniFormat);
    fill(settings);
    int value = 0;
    for (auto _ : state) {
        settings.setValue(kPath, ++value);
        settings.sync();
        if (settings.status() != QSettings::NoError) {
            state.SkipWithError("not written");
            return;
        }
    }
}
BENCHMARK(BM_QSettings_Write)->UseRealTime();

void BM_QSettings_Read(benchmark::State& state)
{
    const Folder folder;
    QSettings settings(QString::fromStdString(folder / "settings.ini"), QSettings::IniFormat);
    fill(settings);
    settings.setValue(kPath, 640);
    for (auto _ : state) {
        settings.sync();
        if (settings.value(kPath).toInt() != 640) {
            state.SkipWithError("not read");
            return;
        }
    }
}
BENCHMARK(BM_QSettings_Read)->UseRealTime();

/// As it is often used: an object for each step.
void BM_QSettings_MakeAndRead(benchmark::State& state)
{
    const Folder folder;
    const QString path = QString::fromStdString(folder / "settings.ini");
    {
        QSettings settings(path, QSettings::IniFormat);
        fill(settings);
        settings.setValue(kPath, 640);
    }
    for (auto _ : state) {
        if (QSettings(path, QSettings::IniFormat).value(kPath).toInt() != 640) {
            state.SkipWithError("not read");
            return;
        }
    }
}
BENCHMARK(BM_QSettings_MakeAndRead)->UseRealTime();

#endif

} // namespace
