#include "tabase/taalgorithm.h"

#include "groundwork/tucheckedcast.h"
#include "groundwork/tucondition.h"
#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"
#include "tabase/cexception.h"
#include "tabase/ialgorithm.h"
#include "tabase/taalgorithmrecording.h"
#include "tabase/taexceptioncontainer.h"
#include "tabase/tafilesystem.h"

#include <algorithm>
#include <memory>
#include <utility>

TU_DEFINE_RTTI(TaAlgorithm, TaUnitTest, nullptr, nullptr);
TU_DEFINE_RTTI(TaAlgorithm::TaExceptionNoOutputData, TuException, nullptr,
    &TaAlgorithm::TaExceptionNoOutputData::CloneByFactory);

/// Where the failures of Init and of Compute come from, by the kind of what was caught, thrown on
/// or kept.
struct TaAlgorithm::SFailureLines
{
    unsigned int standardThrown;
    unsigned int standardKept;
    unsigned int frameworkThrown;
    unsigned int frameworkKept;
    unsigned int otherThrown;
    unsigned int otherKept;
};

namespace {

constexpr const char16_t* kSource = u"core/talibraries/tabase/taalgorithm";
constexpr unsigned int kLinePreConditionInit = 210;
constexpr unsigned int kLinePostConditionInit = 219;
constexpr unsigned int kLineNotCalculatedYet = 302;
constexpr unsigned int kLinePreCondition = 312;
constexpr unsigned int kLinePostCondition = 394;
constexpr unsigned int kLineNoOutputData = 531;

constexpr unsigned int kVersion = 5;

} // namespace

bool TaAlgorithm::Init(EComputeFlags flags)
{
    static constexpr SFailureLines kLines{ 244, 246, 257, 259, 269, 271 };
    if (m_isInitialized) {
        return true;
    }
    m_exception = nullptr;
    m_wasBroken = false;
    try {
        initialize();
        return true;
    } catch (...) {
        return takeFailure(flags, kLines);
    }
}

void TaAlgorithm::initialize()
{
    TuPreCondition<2>(GetClassName(), kSource, kLinePreConditionInit,
        [this] { return checkPreConditionsInit(); });
    init();
    TuPostCondition<2>(GetClassName(), kSource, kLinePostConditionInit,
        [this] { return checkPostConditionsInit(); });
    m_isInitialized = true;
}

bool TaAlgorithm::Compute(EComputeFlags flags)
{
    static constexpr SFailureLines kLines{ 433, 435, 447, 449, 460, 462 };
    m_exception = nullptr;
    m_wasBroken = false;
    TaAlgorithmRecording recording;
    try {
        run(recording);
        return true;
    } catch (...) {
        m_isCalculated = false;
        if (m_wasBroken) {
            recording.Remove();
        }
        return takeFailure(flags, kLines);
    }
}

void TaAlgorithm::run(TaAlgorithmRecording& recording)
{
    TuPreCondition<2>(
        GetClassName(), kSource, kLineNotCalculatedYet, [this] { return !m_isCalculated; });
    Init(eCF_Throw | eCF_Nested);
    TuPreCondition<2>(
        GetClassName(), kSource, kLinePreCondition, [this] { return checkPreConditions(); });

    if (m_flags.IsSet(eF_RecordUnitTest)) {
        recording.Begin(*this, std::exchange(m_uniqueID, CString()));
    }
    setProgress(0.0, CString());
    compute();
    TuPostCondition<2>(
        GetClassName(), kSource, kLinePostCondition, [this] { return checkPostConditions(); });
    m_isCalculated = true;
    recording.End(*this);
}

/// To be called while an exception is handled. Rows of the same kind in both operations differ in
/// their lines alone.
bool TaAlgorithm::takeFailure(EComputeFlags flags, const SFailureLines& lines)
{
    const bool throws = (flags & eCF_Throw) != 0;
    try {
        throw;
    } catch (const TuException& failure) { // before the standard exceptions, for it is one
        if (throws) {
            throw;
        }
        keep([&failure] { return failure.Clone(); });
    } catch (const std::exception& failure) {
        if (throws) {
            throw TuException(kSource, lines.standardThrown, failure);
        }
        keep([&] {
            return std::make_unique<TaExceptionContainer>(
                kSource, lines.standardKept, CString::FromUtf8(failure.what()));
        });
    } catch (CException* failure) {
        delete failure;
        if (throws) {
            throw TuException(kSource, lines.frameworkThrown);
        }
        keep([&] { return std::make_unique<TaExceptionContainer>(kSource, lines.frameworkKept); });
    } catch (...) {
        if (throws) {
            throw TuException(kSource, lines.otherThrown);
        }
        keep([&] { return std::make_unique<TaExceptionContainer>(kSource, lines.otherKept); });
    }
    return false;
}

template <class Make> void TaAlgorithm::keep(Make&& make) noexcept
{
    try {
        m_exception = TuSmartPointer<const TuException>(make().release());
    } catch (...) {
        m_exception = TaExceptionContainer::GetReserve();
    }
}

bool TaAlgorithm::IsComputable() const
{
    const bool wasBroken = m_wasBroken; // a precondition may poll
    const bool isComputable = arePreConditionsMet();
    m_wasBroken = wasBroken;
    return isComputable;
}

bool TaAlgorithm::arePreConditionsMet() const
{
    try {
        return checkPreConditionsInit() && checkPreConditions();
    } catch (CException* failure) {
        delete failure;
    } catch (...) {
        return false; // what it was, nobody has asked for
    }
    return false;
}

void TaAlgorithm::SetBreakEvent(const TaAlgorithm& other)
{
    m_breakEvent = other.m_breakEvent;
    m_progressSink = other.m_progressSink;
    m_progressFrom = other.m_progressFrom;
    m_progressTo = other.m_progressTo;
}

void TaAlgorithm::SetProgressRange(double from, double to)
{
    const double start = m_progressFrom;
    const double length = m_progressTo - m_progressFrom;
    m_progressFrom = start + length * from;
    m_progressTo = start + length * to;
}

void TaAlgorithm::setProgress(double fraction, const CString& text)
{
    m_progress = fraction;
    m_progressText = text;
}

bool TaAlgorithm::isBreak() const
{
    if (m_progressSink != nullptr) {
        const double part = m_progress > 0.0 ? std::min(m_progress, 1.0) : 0.0; // also for NaN
        m_progressSink->onProgress(
            m_progressFrom + (m_progressTo - m_progressFrom) * part, m_progressText);
    }
    const bool isSet = m_breakEvent != nullptr && m_breakEvent->IsSet();
    m_wasBroken = m_wasBroken || isSet;
    return isSet;
}

void TaAlgorithm::checkOutputData() const
{
    if (!m_isCalculated) {
        throw TaExceptionNoOutputData(kSource, kLineNoOutputData);
    }
}

CString TaAlgorithm::GetUnitTestDirectory() const
{
    return TaFileSystem::GetSpecialDirectory(TaFileSystem::eSD_UnitTests) + GetClassName() + u"\\";
}

void TaAlgorithm::Serialize(TuStreamWriteBinary& stream) const
{
    serializeUnitTestInput(stream);
    serializeUnitTestOutput(stream);
}

void TaAlgorithm::Serialize(TuStreamReadBinary& stream)
{
    serializeUnitTestInput(stream);
    serializeUnitTestOutput(stream);
}

TaUnitTest::EResult TaAlgorithm::runUnitTest([[maybe_unused]] unsigned int subtest)
{
    if (!Compute(eCF_Top)) {
        return eR_Failed;
    }
    return compareUnitTestResult() ? eR_Passed : eR_Different;
}

void TaAlgorithm::serializeUnitTestInput(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(kVersion);
}

void TaAlgorithm::serializeUnitTestInput(TuStreamReadBinary& stream)
{
    const unsigned int version = stream.ReadAndCompareVersion(kVersion);
    unsigned int skipped = 0;
    if (version >= 2 && version <= 4) {
        stream >> skipped >> skipped;
    }
    if (version == 3) {
        stream >> skipped;
    }
    if (version < 3) {
        unsigned int flags = 0;
        stream >> flags;
        onReadOldFlags(flags);
    }
}

void TaAlgorithm::serializeUnitTestOutput(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(kVersion);
}

void TaAlgorithm::serializeUnitTestOutput(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(kVersion);
}

/// A class that describes its interface (TaAAlgorithm) answers for it.
const IExtensionInterface* TaAlgorithm::GetExtension(const char* name, bool mustExist) const
{
    if (TuIsExtension<IAlgorithm>(name)) {
        if (const auto* described = dynamic_cast<const IAlgorithm*>(this)) {
            return described;
        }
    }
    return TaUnitTest::GetExtension(name, mustExist);
}

IExtensionInterface* TaAlgorithm::GetExtension(const char* name, bool mustExist)
{
    return const_cast<IExtensionInterface*>(
        static_cast<const TaAlgorithm*>(this)->GetExtension(name, mustExist));
}

TaAlgorithm::TaExceptionNoOutputData::TaExceptionNoOutputData(
    const CString& file, unsigned int line)
    : TuException(file, line, RTTI)
{
}

TaAlgorithm::TaExceptionNoOutputData::TaExceptionNoOutputData(
    const CString& file, unsigned int line, const CString& message)
    : TuException(file, line, message, RTTI)
{
}

IObject* TaAlgorithm::TaExceptionNoOutputData::CloneByFactory(const IObject& object)
{
    return new TaExceptionNoOutputData(TuCheckedCast<TaExceptionNoOutputData>(object));
}
