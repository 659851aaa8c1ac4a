// Writing and reading mixed primitives, and small versioned records, to memory and to a file. Each
// library is used its usual way; the bytes that they make differ.

#include "groundwork/iserializable.h"
#include "groundwork/tuexceptions.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamreadbinaryfile.h"
#include "tabase/tastreamwritebinarybuffer.h"
#include "tabase/tastreamwritebinaryfile.h"

#include <benchmark/benchmark.h>
#if defined(TA_PEER_CEREAL)
#include <cereal/archives/binary.hpp>
#include <cereal/types/string.hpp>
#endif
#if defined(TA_PEER_BOOST)
#include <boost/archive/binary_iarchive.hpp>
#include <boost/archive/binary_oarchive.hpp>
#include <boost/serialization/string.hpp>
#include <boost/serialization/tracking.hpp>
#include <boost/serialization/version.hpp>
#endif
#if defined(TA_PEER_QT)
#include <QByteArray>
#include <QDataStream>
#include <QFile>
#endif

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <streambuf>
#include <string>
#include <utility>

/// Ten primitives.
struct SRow
{
    bool flag = true;
    signed char int8 = -5;
    unsigned char uint8 = 200;
    short int16 = -3000;
    unsigned short uint16 = 60000;
    int int32 = -100000;
    unsigned int uint32 = 3000000000u;
    long long int64 = 123456789012345;
    float float32 = 0.5f;
    double float64 = 0.1;
};

template <class Text> struct SParticle
{
    Text label = "particle";
    unsigned int id = 7;
    double position[3]{ 0.1, 0.2, 0.3 };
    float weight = 1.5f;
    bool visible = true; // since version 1
};

/// The record as this library has it: it writes itself through the base of all streams.
class OurParticle final : public ISerializable, public SParticle<CStringA>
{
    TU_DECLARE_RTTI

public:
    TU_DECLARE_EXTENSIONS;

    void Serialize(TuStreamWriteBinary& stream) const override
    {
        stream.WriteVersion(1);
        stream << label << id << position[0] << position[1] << position[2] << weight << visible;
    }
    void Serialize(TuStreamReadBinary& stream) override
    {
        const unsigned int version = stream.ReadAndCompareVersion(1);
        stream >> label >> id >> position[0] >> position[1] >> position[2] >> weight;
        if (version >= 1) {
            stream >> visible;
        }
    }
};

TU_DEFINE_RTTI_ROOT(OurParticle, nullptr, nullptr);
TU_DEFINE_EXTENSIONS(OurParticle, ISerializable)

struct TaStreams
{
    using Record = OurParticle;
    using Memory = std::unique_ptr<TaStreamWriteBinaryBuffer>;

    template <class Action> static Memory WriteMemory(Action&& action)
    {
        auto stream = std::make_unique<TaStreamWriteBinaryBuffer>();
        action(*stream);
        return stream;
    }
    template <class Action> static void ReadMemory(const Memory& memory, Action&& action)
    {
        TaStreamReadBinaryBuffer stream(*memory);
        action(stream);
    }
    template <class Action> static void WriteFile(const std::string& path, Action&& action)
    {
        TaStreamWriteBinaryFile stream(CString::FromUtf8(path));
        action(stream);
        stream.Close();
    }
    template <class Action> static void ReadFile(const std::string& path, Action&& action)
    {
        TaStreamReadBinaryFile stream(CString::FromUtf8(path));
        action(stream);
    }
    static void WriteRecord(TuStreamWriteBinary& stream, const Record& record)
    {
        record.Serialize(stream);
    }
    static void ReadRecord(TuStreamReadBinary& stream, Record& record) { record.Serialize(stream); }
};

#if defined(TA_PEER_CEREAL) || defined(TA_PEER_BOOST)
using StandardParticle = SParticle<std::string>;

/// One function serves both libraries, and both directions.
template <class Archive>
void serialize(Archive& archive, StandardParticle& record, const unsigned int version)
{
    archive& record.label;
    archive& record.id;
    archive& record.position[0];
    archive& record.position[1];
    archive& record.position[2];
    archive& record.weight;
    if (version >= 1) {
        archive& record.visible;
    }
}

/// Reads memory in place, where std::istringstream would copy it.
class MemoryBuffer final : public std::streambuf
{
public:
    explicit MemoryBuffer(const std::string& memory)
    {
        char* begin = const_cast<char*>(memory.data());
        setg(begin, begin, begin + memory.size());
    }
};

template <class Writer, class Reader> struct StandardStreams
{
    using Record = StandardParticle;
    using Memory = std::string;

    template <class Action> static Memory WriteMemory(Action&& action)
    {
        std::ostringstream stream;
        write(stream, action);
        return std::move(stream).str();
    }
    template <class Action> static void ReadMemory(const Memory& memory, Action&& action)
    {
        MemoryBuffer buffer(memory);
        std::istream stream(&buffer);
        read(stream, action);
    }
    template <class Action> static void WriteFile(const std::string& path, Action&& action)
    {
        std::ofstream stream(path, std::ios::binary);
        write(stream, action);
    }
    template <class Action> static void ReadFile(const std::string& path, Action&& action)
    {
        std::ifstream stream(path, std::ios::binary);
        read(stream, action);
    }
    static void WriteRecord(Writer& archive, const Record& record) { archive << record; }
    static void ReadRecord(Reader& archive, Record& record) { archive >> record; }

private:
    template <class Action> static void write(std::ostream& stream, Action& action)
    {
        Writer archive(stream);
        action(archive);
    }
    template <class Action> static void read(std::istream& stream, Action& action)
    {
        Reader archive(stream);
        action(archive);
    }
};
#endif

#if defined(TA_PEER_CEREAL)
CEREAL_CLASS_VERSION(StandardParticle, 1)
using Cereal = StandardStreams<cereal::BinaryOutputArchive, cereal::BinaryInputArchive>;
#endif

#if defined(TA_PEER_BOOST)
BOOST_CLASS_VERSION(StandardParticle, 1)
BOOST_CLASS_TRACKING(StandardParticle, boost::serialization::track_never)
using BoostArchive
    = StandardStreams<boost::archive::binary_oarchive, boost::archive::binary_iarchive>;
#endif

#if defined(TA_PEER_QT)
struct QtStreams
{
    using Record = SParticle<QByteArray>;
    using Memory = QByteArray;

    template <class Action> static Memory WriteMemory(Action&& action)
    {
        QByteArray memory;
        QDataStream stream(&memory, QIODevice::WriteOnly);
        action(stream);
        return memory;
    }
    template <class Action> static void ReadMemory(const Memory& memory, Action&& action)
    {
        QDataStream stream(memory);
        action(stream);
    }
    template <class Action> static void WriteFile(const std::string& path, Action&& action)
    {
        QFile file(QString::fromStdString(path));
        file.open(QIODevice::WriteOnly);
        QDataStream stream(&file);
        action(stream);
    }
    template <class Action> static void ReadFile(const std::string& path, Action&& action)
    {
        QFile file(QString::fromStdString(path));
        file.open(QIODevice::ReadOnly);
        QDataStream stream(&file);
        action(stream);
    }
    static void WriteRecord(QDataStream& stream, const Record& record)
    {
        stream << quint32(1) << record.label << record.id << record.position[0]
               << record.position[1] << record.position[2] << record.weight << record.visible;
    }
    static void ReadRecord(QDataStream& stream, Record& record)
    {
        quint32 version = 0;
        stream >> version >> record.label >> record.id >> record.position[0] >> record.position[1]
            >> record.position[2] >> record.weight;
        if (version >= 1) {
            stream >> record.visible;
        }
    }
};
#endif

namespace {

template <class Library> struct Primitives
{
    template <class Stream> static void Write(Stream& stream, int count)
    {
        SRow row;
        for (int i = 0; i < count / 10; ++i) {
            row.int32 = i;
            stream << row.flag << row.int8 << row.uint8 << row.int16 << row.uint16 << row.int32
                   << row.uint32 << row.int64 << row.float32 << row.float64;
        }
    }
    template <class Stream> static void Read(Stream& stream, int count)
    {
        SRow row;
        for (int i = 0; i < count / 10; ++i) {
            stream >> row.flag >> row.int8 >> row.uint8 >> row.int16 >> row.uint16 >> row.int32
                >> row.uint32 >> row.int64 >> row.float32 >> row.float64;
            benchmark::DoNotOptimize(row);
        }
    }
};

template <class Library> struct Records
{
    template <class Stream> static void Write(Stream& stream, int count)
    {
        typename Library::Record record;
        for (int i = 0; i < count; ++i) {
            record.id = static_cast<unsigned int>(i);
            Library::WriteRecord(stream, record);
        }
    }
    template <class Stream> static void Read(Stream& stream, int count)
    {
        typename Library::Record record;
        for (int i = 0; i < count; ++i) {
            Library::ReadRecord(stream, record);
            benchmark::DoNotOptimize(record.id);
        }
    }
};

/// A file of this process, gone at its end.
class ScratchFile
{
public:
    ScratchFile()
        : m_path(std::filesystem::temp_directory_path() / "tabase-streams-benchmark.bin")
    {
    }
    ~ScratchFile()
    {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    std::string GetPath() const { return m_path.string(); }

private:
    std::filesystem::path m_path;
};

template <class Library, class Content> struct Measures
{
    static void WriteMemory(benchmark::State& state)
    {
        for (auto _ : state) {
            auto memory = Library::WriteMemory(writer(state));
            benchmark::DoNotOptimize(memory);
        }
        count(state);
    }
    static void ReadMemory(benchmark::State& state)
    {
        const auto memory = Library::WriteMemory(writer(state));
        for (auto _ : state) {
            Library::ReadMemory(memory, reader(state));
        }
        count(state);
    }
    static void WriteFile(benchmark::State& state)
    {
        const ScratchFile file;
        for (auto _ : state) {
            Library::WriteFile(file.GetPath(), writer(state));
        }
        count(state);
    }
    static void ReadFile(benchmark::State& state)
    {
        const ScratchFile file;
        Library::WriteFile(file.GetPath(), writer(state));
        for (auto _ : state) {
            Library::ReadFile(file.GetPath(), reader(state));
        }
        count(state);
    }

    /// The size of a full run is the one that goals are stated for.
    static void Register(const std::string& library, const std::string& content, int full)
    {
        using Function = void (*)(benchmark::State&);
        constexpr std::pair<const char*, Function> kMeasures[] = { { "WriteMemory", WriteMemory },
            { "ReadMemory", ReadMemory }, { "WriteFile", WriteFile }, { "ReadFile", ReadFile } };
        for (const auto& [name, function] : kMeasures) {
            const std::string base = "BM_" + library + "_" + content + name;
            benchmark::RegisterBenchmark((base + "/quick").c_str(), function)->Arg(full / 1000);
            for (const int size : { full / 10, full, full * 10 }) {
                benchmark::RegisterBenchmark((base + "/full").c_str(), function)
                    ->Arg(size)
                    ->Unit(benchmark::kMillisecond);
            }
        }
    }

private:
    static auto writer(const benchmark::State& state)
    {
        return [&state](auto& stream) { Content::Write(stream, static_cast<int>(state.range(0))); };
    }
    static auto reader(const benchmark::State& state)
    {
        return [&state](auto& stream) { Content::Read(stream, static_cast<int>(state.range(0))); };
    }
    static void count(benchmark::State& state)
    {
        state.SetItemsProcessed(state.iterations() * state.range(0));
    }
};

template <class Library> bool registerLibrary(const std::string& name)
{
    Measures<Library, Primitives<Library>>::Register(name, "Primitives", 10'000'000);
    Measures<Library, Records<Library>>::Register(name, "Records", 1'000'000);
    return true;
}

[[maybe_unused]] const bool s_ours = registerLibrary<TaStreams>("TaStream");
#if defined(TA_PEER_CEREAL)
[[maybe_unused]] const bool s_cereal = registerLibrary<Cereal>("Cereal");
#endif
#if defined(TA_PEER_BOOST)
[[maybe_unused]] const bool s_boost = registerLibrary<BoostArchive>("Boost");
#endif
#if defined(TA_PEER_QT)
[[maybe_unused]] const bool s_qt = registerLibrary<QtStreams>("QDataStream");
#endif

} // namespace
