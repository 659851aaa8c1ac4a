#include "support/samplealgorithm.h"

#include "groundwork/tucheckedcast.h"
#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"

#include <numeric>

TU_DEFINE_RTTI(SampleAlgorithm, TaAlgorithm, &SampleAlgorithm::CreateByFactory, nullptr);

void SampleAlgorithm::SetRange(int first, int last)
{
    m_first.SetValue(first);
    m_last.SetValue(last);
    setInputChanged();
}

long long SampleAlgorithm::GetSum() const
{
    checkOutputData();
    return m_sum.GetValue();
}

const IObject* SampleAlgorithm::GetInput(unsigned int, unsigned int input) const
{
    return input == 0 ? &m_first : &m_last;
}

void SampleAlgorithm::SetInput(unsigned int, unsigned int input, const IObject* value)
{
    (input == 0 ? m_first : m_last) = TuCheckedCast<TuInt32>(*value);
    setInputChanged();
}

const IObject* SampleAlgorithm::GetOutput(unsigned int) const
{
    checkOutputData();
    return &m_sum;
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
    const double length = double(GetLast()) - GetFirst() + 1;
    m_squares.clear();
    for (int number = GetFirst(); number <= GetLast(); ++number) {
        setProgress((number - GetFirst()) / length, u"squares");
        if (isBreak()) {
            return;
        }
        m_squares.push_back(static_cast<long long>(number) * number);
    }
    m_sum.SetValue(std::accumulate(m_squares.begin(), m_squares.end(), 0LL));
}

void SampleAlgorithm::serializeUnitTestInput(TuStreamWriteBinary& stream) const
{
    TaAlgorithm::serializeUnitTestInput(stream);
    stream << GetFirst();
    onStage(eS_WriteInput);
    stream << GetLast();
}

void SampleAlgorithm::serializeUnitTestInput(TuStreamReadBinary& stream)
{
    TaAlgorithm::serializeUnitTestInput(stream);
    int first = 0;
    int last = 0;
    stream >> first >> last;
    SetRange(first, last);
}

void SampleAlgorithm::serializeUnitTestOutput(TuStreamWriteBinary& stream) const
{
    TaAlgorithm::serializeUnitTestOutput(stream);
    onStage(eS_WriteOutput);
    m_sum.Serialize(stream);
}

void SampleAlgorithm::serializeUnitTestOutput(TuStreamReadBinary& stream)
{
    TaAlgorithm::serializeUnitTestOutput(stream);
    m_recordedSum.Serialize(stream);
}
