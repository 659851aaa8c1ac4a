#include "support/samplealgorithm.h"

#include "groundwork/tuboxed.h"
#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"

#include <numeric>

TU_DEFINE_RTTI(SampleAlgorithm, TaAlgorithm, &SampleAlgorithm::CreateByFactory, nullptr);

void SampleAlgorithm::SetRange(int first, int last)
{
    m_first = first;
    m_last = last;
    setInputChanged();
}

long long SampleAlgorithm::GetSum() const
{
    checkOutputData();
    return m_sum;
}

void SampleAlgorithm::describeInterface() const
{
    InterfaceDescription& description = createInterfaceDescription(*this);
    description.DefineFlagType(u"Recording", TuMake<FlagUtil>(const_cast<SampleAlgorithm&>(*this)));
    description.DefineFlag(u"Record each run", eF_RecordUnitTest);
    description.DefineFlag(u"Unused", 0x8000'0000u);
    description.DefineInputType(u"Range");
    description.DefineInput(u"First", TuInt32::RTTI);
    description.DefineInput(u"Last", TuInt32::RTTI);
    description.DefineInputType(u"Nothing");
    description.DefineParameter(u"Power", TuUInt32::RTTI);
    onStage(eS_Describe);
    description.DefineOutput(u"Sum", TuInt64::RTTI);
}

void SampleAlgorithm::compute()
{
    onStage(eS_Compute);
    const double length = double(m_last) - m_first + 1;
    m_squares.clear();
    for (int number = m_first; number <= m_last; ++number) {
        setProgress((number - m_first) / length, u"squares");
        if (isBreak()) {
            return;
        }
        m_squares.push_back(static_cast<long long>(number) * number);
    }
    m_sum = std::accumulate(m_squares.begin(), m_squares.end(), 0LL);
}

void SampleAlgorithm::serializeUnitTestInput(TuStreamWriteBinary& stream) const
{
    TaAlgorithm::serializeUnitTestInput(stream);
    stream << m_first;
    onStage(eS_WriteInput);
    stream << m_last;
}

void SampleAlgorithm::serializeUnitTestInput(TuStreamReadBinary& stream)
{
    TaAlgorithm::serializeUnitTestInput(stream);
    stream >> m_first >> m_last;
    setInputChanged();
}

void SampleAlgorithm::serializeUnitTestOutput(TuStreamWriteBinary& stream) const
{
    TaAlgorithm::serializeUnitTestOutput(stream);
    onStage(eS_WriteOutput);
    stream << m_sum;
}

void SampleAlgorithm::serializeUnitTestOutput(TuStreamReadBinary& stream)
{
    TaAlgorithm::serializeUnitTestOutput(stream);
    stream >> m_recordedSum;
}
