#include "tabase/taalgorithm.h"

#include "groundwork/tuloglistenermanager.h"
#include "support/cancelinjection.h"
#include "support/expectfailure.h"
#include "support/largestblock.h"
#include "support/samplealgorithm.h"
#include "support/temporaryfolder.h"
#include "tabase/cexception.h"
#include "tabase/taexceptioncontainer.h"
#include "tabase/tafilesystem.h"
#include "tabase/tarecordedtest.h"
#include "tabase/tataskalgorithm.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <iterator>
#include <ostream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using Algorithm = SampleAlgorithm;
constexpr const char16_t* kSource = u"core/talibraries/tabase/taalgorithm";

TuSmartPointer<Algorithm> makeAlgorithm()
{
    auto algorithm = TuMake<Algorithm>();
    algorithm->SetRange(1, 10);
    return algorithm;
}

/// Writes down what it is told, in percent.
class Sink : public TaProgressSink
{
public:
    void onProgress(double fraction, const CString& text) override
    {
        line += std::to_string(int(std::lround(fraction * 100))) + text.ToUtf8() + ' ';
    }
    std::string line;
};

class CountedException : public CException
{
public:
    static inline int s_living = 0;
    CountedException() { ++s_living; }
    ~CountedException() override { --s_living; }
};

enum EKind
{
    eK_Refused, // a condition answers false
    eK_Own,
    eK_Standard,
    eK_Framework,
    eK_Other,
};

bool fail(EKind kind)
{
    switch (kind) {
    case eK_Refused:
        return false;
    case eK_Own:
        throw TuExceptionStream(kSource, 1, u"text");
    case eK_Standard:
        throw std::runtime_error("text");
    case eK_Framework:
        throw new CountedException;
    default:
        throw 1;
    }
}

TEST(TaAlgorithmTest, AResultIsComputedOncePerInput)
{
    const auto algorithm = makeAlgorithm();
    std::string stages;
    algorithm->onStage = [&](Algorithm::EStage stage) {
        stages += std::to_string(stage);
        return true;
    };
    EXPECT_TRUE(algorithm->IsInitialized());
    ExpectFailure<TaAlgorithm::TaExceptionNoOutputData>([&] { algorithm->GetSum(); }, kSource, 531);
    EXPECT_TRUE(algorithm->Compute(TaAlgorithm::eCF_None));
    EXPECT_EQ(algorithm->GetSum(), 385);
    EXPECT_FALSE(algorithm->Compute(TaAlgorithm::eCF_None));
    EXPECT_FALSE(algorithm->IsCalculated());
    EXPECT_EQ(algorithm->GetException()->GetLine(), 302u);
    EXPECT_TRUE(algorithm->Compute(TaAlgorithm::eCF_None));
    EXPECT_TRUE(algorithm->GetException().IsNull());
    EXPECT_EQ(stages, "356356"); // nothing to initialise

    stages.clear();
    algorithm->setInputChanged();
    algorithm->setUninitialized();
    EXPECT_FALSE(algorithm->IsInitialized() || algorithm->IsCalculated());
    EXPECT_TRUE(algorithm->Compute(TaAlgorithm::eCF_None));
    EXPECT_EQ(stages, "012356");
    EXPECT_TRUE(algorithm->IsInitialized());
}

enum EOperation
{
    eO_Init,
    eO_Compute,
    eO_ComputeAndInit,
};

/// In which operation, at which stage, of which kind; the class and line of what is thrown, and the
/// line of what is kept.
struct SFailure
{
    EOperation operation;
    Algorithm::EStage stage;
    EKind kind;
    const TuRTTI& thrownClass;
    unsigned int thrownLine;
    unsigned int keptLine;

    friend void PrintTo(const SFailure& row, std::ostream* out)
    {
        *out << "operation " << row.operation << ", stage " << row.stage << ", kind " << row.kind;
    }
};

const TuRTTI& kPre = TuExceptionPreconditionViolation::RTTI;
const TuRTTI& kPost = TuExceptionPostconditionViolation::RTTI;
const TuRTTI& kOwn = TuExceptionStream::RTTI;
const TuRTTI& kAny = TuException::RTTI;

const SFailure kFailures[] = {
    { eO_Init, Algorithm::eS_PreConditionsInit, eK_Refused, kPre, 210, 210 },
    { eO_Init, Algorithm::eS_PostConditionsInit, eK_Refused, kPost, 219, 219 },
    { eO_Init, Algorithm::eS_Init, eK_Own, kOwn, 1, 1 },
    { eO_Init, Algorithm::eS_Init, eK_Standard, kAny, 244, 246 },
    { eO_Init, Algorithm::eS_Init, eK_Framework, kAny, 257, 259 },
    { eO_Init, Algorithm::eS_Init, eK_Other, kAny, 269, 271 },
    { eO_Compute, Algorithm::eS_PreConditions, eK_Refused, kPre, 312, 312 },
    { eO_Compute, Algorithm::eS_PostConditions, eK_Refused, kPost, 394, 394 },
    { eO_Compute, Algorithm::eS_Compute, eK_Own, kOwn, 1, 1 },
    { eO_Compute, Algorithm::eS_Compute, eK_Standard, kAny, 433, 435 },
    { eO_Compute, Algorithm::eS_Compute, eK_Framework, kAny, 447, 449 },
    { eO_Compute, Algorithm::eS_Compute, eK_Other, kAny, 460, 462 },
    // What Init throws into Compute is a TuException already.
    { eO_ComputeAndInit, Algorithm::eS_PreConditionsInit, eK_Refused, kPre, 210, 210 },
    { eO_ComputeAndInit, Algorithm::eS_Init, eK_Framework, kAny, 257, 257 },
    // A condition that throws fails by what it throws.
    { eO_Init, Algorithm::eS_PreConditionsInit, eK_Standard, kAny, 244, 246 },
    { eO_Compute, Algorithm::eS_PostConditions, eK_Other, kAny, 460, 462 },
};

class TaAlgorithmFailureTest : public testing::TestWithParam<std::tuple<SFailure, bool>>
{
};

TEST_P(TaAlgorithmFailureTest, IsThrownOrKeptAsTheTableSays)
{
    const auto& [row, throws] = GetParam();
    const auto algorithm = makeAlgorithm();
    algorithm->onStage
        = [&row = row](Algorithm::EStage stage) { return stage != row.stage || fail(row.kind); };
    if (row.operation != eO_Compute) {
        algorithm->setUninitialized();
    }
    const auto flags = throws ? TaAlgorithm::eCF_Throw : TaAlgorithm::eCF_Top;
    TuSmartPointer<const TuException> failure;
    try {
        EXPECT_FALSE(row.operation == eO_Init ? algorithm->Init(flags) : algorithm->Compute(flags));
        EXPECT_FALSE(throws);
        failure = algorithm->GetException();
    } catch (const TuException& thrown) {
        EXPECT_TRUE(throws && algorithm->GetException().IsNull());
        failure = TuSmartPointer<const TuException>(thrown.Clone().release());
    }
    ASSERT_FALSE(failure.IsNull());
    const bool isContained = !throws && row.keptLine != row.thrownLine;
    EXPECT_TRUE(failure->Is(isContained ? TaExceptionContainer::RTTI : row.thrownClass))
        << failure->what();
    EXPECT_EQ(failure->GetFile(), kSource);
    EXPECT_EQ(failure->GetLine(), throws ? row.thrownLine : row.keptLine);
    const bool hasText = row.kind == eK_Standard || row.kind == eK_Own;
    const CString otherText = row.kind == eK_Refused ? u"SampleAlgorithm" : u"";
    EXPECT_EQ(failure->GetCauseText(), hasText ? u"text" : otherText);
    EXPECT_EQ(CountedException::s_living, 0);
    EXPECT_EQ(algorithm->IsInitialized(), row.operation == eO_Compute);
    algorithm->onStage = [](Algorithm::EStage) { return true; };
    ExpectGoodRun(*algorithm);
}

INSTANTIATE_TEST_SUITE_P(Tables, TaAlgorithmFailureTest,
    testing::Combine(testing::ValuesIn(kFailures), testing::Bool()));

TEST(TaAlgorithmTest, AskingWhetherItIsComputableSwallowsAllAndChangesNothing)
{
    const auto algorithm = makeAlgorithm();
    EXPECT_TRUE(algorithm->Compute(TaAlgorithm::eCF_None));
    EXPECT_TRUE(algorithm->IsComputable());
    algorithm->Compute(TaAlgorithm::eCF_None);
    algorithm->setUninitialized();
    const TuSmartPointer<const TuException> kept = algorithm->GetException();
    for (const EKind kind : { eK_Refused, eK_Own, eK_Standard, eK_Framework, eK_Other }) {
        for (const auto failing :
            { Algorithm::eS_PreConditionsInit, Algorithm::eS_PreConditions }) {
            algorithm->onStage = [=](Algorithm::EStage stage) {
                EXPECT_LE(stage, failing) << "the first answer is enough";
                return stage != failing || fail(kind);
            };
            EXPECT_FALSE(algorithm->IsComputable());
        }
    }
    EXPECT_EQ(CountedException::s_living, 0);
    EXPECT_EQ(algorithm->GetException(), kept);
    EXPECT_FALSE(algorithm->IsInitialized());
}

TEST(TaAlgorithmTest, AKeptFailureLivesUntilTheNextStartAndOutlivesTheAlgorithm)
{
    auto algorithm = makeAlgorithm();
    algorithm->onStage = [](Algorithm::EStage) { return fail(eK_Standard); };
    EXPECT_FALSE(algorithm->Compute(TaAlgorithm::eCF_None));
    EXPECT_TRUE(algorithm->Init(TaAlgorithm::eCF_Throw)); // has nothing to do
    const TuSmartPointer<const TuException> kept = algorithm->GetException();
    const Algorithm copy = *algorithm;
    EXPECT_EQ(copy.GetException(), kept);
    EXPECT_THROW(algorithm->Compute(TaAlgorithm::eCF_Throw), TuException);
    EXPECT_TRUE(algorithm->GetException().IsNull());
    algorithm = nullptr;
    EXPECT_EQ(kept->GetLine(), 435u);

    Algorithm other = copy;
    other.onStage = [](Algorithm::EStage) { return true; };
    other.setUninitialized();
    EXPECT_TRUE(other.Init(TaAlgorithm::eCF_None));
    EXPECT_TRUE(other.GetException().IsNull());
}

TEST(TaAlgorithmTest, ARunStartsItsProgressAnewAndRemembersABreakThatOnePollHasTaken)
{
    TuEvent automatic(false);
    automatic.Set();
    Sink sink;
    const auto algorithm = makeAlgorithm();
    algorithm->SetRange(1, 2);
    algorithm->SetProgressSink(&sink);
    algorithm->SetBreakEvent(automatic);
    int prepared = 0;
    algorithm->onStage = [&](Algorithm::EStage stage) {
        prepared += stage == Algorithm::eS_Prepare;
        return stage != Algorithm::eS_Compute || algorithm->isBreak(); // one poll more
    };
    EXPECT_EQ(algorithm->RunUnitTest(), TaUnitTest::eR_Failed);
    EXPECT_EQ(algorithm->RunUnitTest(), TaUnitTest::eR_Different); // nothing was recorded
    EXPECT_EQ(prepared, 2);
    EXPECT_EQ(sink.line, "0 0squares 50squares 0 0squares 50squares ");
}

TEST(TaAlgorithmTest, WithoutMemoryToKeepAFailureOneMadeBeforeIsKept)
{
#if defined(_WIN32)
    GTEST_SKIP() << "a program's operator new serves that program alone here, not its libraries";
#else
    const auto algorithm = makeAlgorithm();
    algorithm->onStage = [](Algorithm::EStage) -> bool {
        s_isMemoryGone = true;
        throw 1;
    };
    const bool result = algorithm->Compute(TaAlgorithm::eCF_None);
    s_isMemoryGone = false;
    EXPECT_FALSE(result);
    EXPECT_EQ(algorithm->GetException(), TaExceptionContainer::GetReserve());
#endif
}

TEST(TaAlgorithmTest, ASubAlgorithmTakesOverEventAndProgressAsTheyAreNow)
{
    Sink sink;
    const auto caller = makeAlgorithm();
    const auto sub = TuMake<Algorithm>();
    sub->SetRange(1, 4);
    TuEvent event(true);
    caller->SetBreakEvent(event);
    caller->SetProgressSink(&sink);
    caller->SetProgressRange(0.25, 0.75);
    sub->SetBreakEvent(*caller);
    EXPECT_TRUE(sub->hasBreakEvent());
    sub->SetProgressRange(0, 0.5);
    EXPECT_TRUE(sub->Compute(TaAlgorithm::eCF_None));
    EXPECT_EQ(sink.line, "25squares 31squares 38squares 44squares ");

    sub->setInputChanged();
    event.Set();
    EXPECT_FALSE(sub->Compute(TaAlgorithm::eCF_None));
    EXPECT_THROW(sub->GetSum(), TaAlgorithm::TaExceptionNoOutputData);
    caller->ClearBreakEvent();
    EXPECT_FALSE(sub->Compute(TaAlgorithm::eCF_None)); // still has the event itself
    sub->SetBreakEvent(*caller);
    EXPECT_FALSE(sub->hasBreakEvent());
    EXPECT_TRUE(sub->Compute(TaAlgorithm::eCF_None));
}

TEST(TaAlgorithmTest, ABreakOrAFailedAllocationAnywhereLeavesItAsItWas)
{
    const auto makeUninitialized = [] {
        auto algorithm = makeAlgorithm();
        algorithm->setUninitialized();
        return algorithm;
    };
    InjectCancels(makeUninitialized, [](const Algorithm& algorithm) {
        EXPECT_EQ(algorithm.GetFirst(), 1);
        EXPECT_EQ(algorithm.GetLast(), 10);
    });
}

/// Recordings go to a folder of the test.
class TaAlgorithmRecordingTest : public testing::Test
{
protected:
    class Log : public TuLogListener
    {
    public:
        void onLog(const SLogLine& line) override { m_count += line.level == eLL_Warning; }
        int TakeCount() { return std::exchange(m_count, 0); }

    private:
        int m_count = 0;
    };

    TaAlgorithmRecordingTest()
    {
        std::filesystem::create_directory(m_folder.GetPath("SampleAlgorithm"));
        TaFileSystem::SetSpecialDirectory(TaFileSystem::eSD_UnitTests, m_folder / "");
        m_algorithm->AddFlags(TaAlgorithm::eF_RecordUnitTest);
        TuLogListenerManager::GetInstance().AddListener(m_log);
    }
    ~TaAlgorithmRecordingTest() override
    {
        TuLogListenerManager::GetInstance().RemoveListener(*m_log);
        TaFileSystem::SetSpecialDirectory(TaFileSystem::eSD_UnitTests, u"");
    }

    /// Records a run; returns whether there is a file of this name then.
    bool record(const CString& id, const char* name)
    {
        m_algorithm->setInputChanged();
        m_algorithm->SetUniqueID(id);
        EXPECT_TRUE(m_algorithm->Compute(TaAlgorithm::eCF_None)) << GetFailureText(*m_algorithm);
        EXPECT_EQ(m_algorithm->GetSum(), 385);
        return std::filesystem::exists(getPath(name));
    }
    std::filesystem::path getPath(const std::string& name) const
    {
        return m_folder.GetPath("SampleAlgorithm/" + name);
    }
    std::ptrdiff_t countRecordings() const
    {
        return std::distance(std::filesystem::directory_iterator(getPath("")), {});
    }
    TaUnitTest::EResult replay(const std::string& name) const
    {
        return TaRecordedTest::Run(u"SampleAlgorithm", m_folder / ("SampleAlgorithm/" + name));
    }

    TemporaryFolder m_folder;
    TuSmartPointer<Log> m_log = TuMake<Log>();
    TuSmartPointer<Algorithm> m_algorithm = makeAlgorithm();
};

TEST_F(TaAlgorithmRecordingTest, ItsNameIsUsedOnce)
{
    EXPECT_EQ(m_algorithm->GetUnitTestDirectory(), m_folder / "" + u"SampleAlgorithm\\");
    const CString folder = m_folder / "";
    TaFileSystem::SetSpecialDirectory(
        TaFileSystem::eSD_UnitTests, folder.Left(folder.GetLength() - 1));
    EXPECT_TRUE(record(u"a", "a.dat"));
    EXPECT_TRUE(record(u"a.x64", "a.dat.x64"));
    EXPECT_TRUE(record(u"b.x86", "b.dat.x86"));
    EXPECT_TRUE(record(u"c.X64", "c.X64.dat"));
    record(u"", "");
    m_algorithm->setInputChanged();
    EXPECT_TRUE(m_algorithm->Compute(TaAlgorithm::eCF_None));
    EXPECT_EQ(countRecordings(), 6);
    EXPECT_EQ(m_log->TakeCount(), 0);
}

TEST_F(TaAlgorithmRecordingTest, ReplaysAsATest)
{
    ASSERT_TRUE(record(u"a", "a.dat"));
    EXPECT_EQ(replay("a.dat"), TaUnitTest::eR_Passed);
    std::string bytes = ReadFile(getPath("a.dat"));
    ++bytes[bytes.size() - 8]; // the lowest byte of the sum
    m_folder.WriteAll("SampleAlgorithm/a.dat", bytes);
    EXPECT_EQ(replay("a.dat"), TaUnitTest::eR_Different);
    EXPECT_THROW(TaRecordedTest::Run(u"SampleAlgorithms", u""), TuException);
    EXPECT_THROW(replay("b.dat"), TuException);

    m_algorithm->setInputChanged();
    m_algorithm->SetUniqueID(u"failed");
    m_algorithm->onStage
        = [](Algorithm::EStage stage) { return stage != Algorithm::eS_Compute || fail(eK_Other); };
    EXPECT_EQ(m_algorithm->RunUnitTest(), TaUnitTest::eR_Failed);
    EXPECT_EQ(ReadFile(getPath("failed.dat")).size(), 12u); // the input stays, to be looked at
    EXPECT_THROW(replay("failed.dat"), TuException);
    EXPECT_THROW(m_algorithm->RunUnitTest(1), TuExceptionPreconditionViolation);
}

TEST_F(TaAlgorithmRecordingTest, WhatGoesWrongIsLoggedAndDisturbsNothing)
{
    std::filesystem::remove(getPath(""));
    EXPECT_FALSE(record(u"a", "a.dat"));
    EXPECT_EQ(m_log->TakeCount(), 1);
    std::filesystem::create_directory(getPath(""));
    m_algorithm->setInputChanged();
    EXPECT_TRUE(m_algorithm->Compute(TaAlgorithm::eCF_None));
    EXPECT_FALSE(std::filesystem::exists(getPath("a.dat"))); // the name has been used
    EXPECT_EQ(countRecordings(), 1);

    for (const auto failing : { Algorithm::eS_WriteInput, Algorithm::eS_WriteOutput }) {
        for (const EKind kind : { eK_Own, eK_Standard, eK_Framework, eK_Other }) {
            m_algorithm->onStage
                = [=](Algorithm::EStage stage) { return stage != failing || fail(kind); };
            EXPECT_FALSE(record(u"a", "a.dat"));
            EXPECT_EQ(m_log->TakeCount(), 1);
        }
    }
    EXPECT_EQ(CountedException::s_living, 0);
}

TEST_F(TaAlgorithmRecordingTest, OfARunThatABreakHasEndedNothingStays)
{
    TuEvent event(true);
    event.Set();
    m_algorithm->SetBreakEvent(event);
    EXPECT_FALSE(m_algorithm->Compute(TaAlgorithm::eCF_None));
    EXPECT_EQ(countRecordings(), 0);
    m_algorithm->onStage = [](Algorithm::EStage stage) {
        return stage != Algorithm::eS_PostConditions || fail(eK_Own);
    };
    EXPECT_FALSE(m_algorithm->Compute(TaAlgorithm::eCF_None)); // nor where it ends by throwing
    EXPECT_EQ(countRecordings(), 0);

    // One that counts in spite of the break is a run like others; its recording was removed, too.
    class Content : public Algorithm
    {
        bool checkPostConditions() const override { return true; }
    } content;
    content.SetRange(1, 10);
    content.SetBreakEvent(event);
    content.AddFlags(TaAlgorithm::eF_RecordUnitTest);
    EXPECT_TRUE(content.Compute(TaAlgorithm::eCF_None));
    EXPECT_EQ(countRecordings(), 1);
    EXPECT_EQ(m_log->TakeCount(), 0);
}

#if !defined(_WIN32)
TEST_F(TaAlgorithmRecordingTest, WhatIsLostInClosingIsLoggedToo)
{
    std::filesystem::create_symlink("/dev/full", getPath("a.dat"));
    EXPECT_TRUE(std::filesystem::exists("/dev/full"));
    EXPECT_FALSE(record(u"a", "a.dat"));
    EXPECT_EQ(m_log->TakeCount(), 1);
}
#endif

TEST_F(TaAlgorithmRecordingTest, WithoutMemoryDisturbsNothing)
{
    // Removing the rest of a recording took memory, and the process ended where there was none.
    for (const auto failing : { Algorithm::eS_WriteInput, Algorithm::eS_WriteOutput }) {
        m_algorithm->onStage = [=](Algorithm::EStage stage) {
            s_isMemoryGone = stage == failing;
            return stage != failing || fail(eK_Other);
        };
        m_algorithm->SetRange(1, 0);
        m_algorithm->SetUniqueID(u"a");
        const bool result = m_algorithm->Compute(TaAlgorithm::eCF_None);
        s_isMemoryGone = false;
        EXPECT_TRUE(result);
    }
}

TEST(TaAlgorithmTest, InputsOfFormerVersionsAreRead)
{
    const struct
    {
        unsigned int version;
        std::vector<unsigned int> words; // between the version and the range
        unsigned long flags;
    } rows[] = { { 0, { 7 }, 7 }, { 1, { 7 }, 7 }, { 2, { 1, 2, 7 }, 7 }, { 3, { 1, 2, 3 }, 0 },
        { 4, { 1, 2 }, 0 }, { 5, {}, 0 } };
    for (const auto& row : rows) {
        const std::vector<unsigned char> bytes = WriteToBytes([&](auto& stream) {
            stream.WriteVersion(row.version);
            for (const unsigned int word : row.words) {
                stream << word;
            }
            stream << 8 << 9;
        });
        Algorithm algorithm;
        EXPECT_TRUE(
            ReadFromBytes(bytes, [&](auto& stream) { algorithm.SerializeUnitTestInput(stream); }));
        EXPECT_EQ(algorithm.oldFlags, row.flags) << row.version;
        EXPECT_EQ(algorithm.GetFirst(), 8) << row.version;
        EXPECT_EQ(algorithm.GetLast(), 9) << row.version;
    }
    const auto newer = WriteToBytes([](auto& stream) { stream.WriteVersion(6); });
    EXPECT_THROW(ReadFromBytes(newer, [](auto& stream) { Algorithm().Serialize(stream); }),
        TuExceptionWrongFileVersion);
}

TEST(TaTaskAlgorithmTest, SucceedsExactlyWhenTheComputationDoes)
{
    const auto algorithm = makeAlgorithm();
    TaTaskAlgorithm task(*algorithm);
    TaTaskAlgorithm copy(task);
    EXPECT_TRUE(task.Execute());
    EXPECT_FALSE(copy.Execute()); // the same algorithm, whose result is there already
    EXPECT_EQ(algorithm->GetException()->GetLine(), 302u);
}

} // namespace
