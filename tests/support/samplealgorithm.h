#pragma once

#include "tabase/taaalgorithm.h"
#include "tabase/taalgorithm.h"

#include <functional>
#include <vector>

/// Adds up the squares of the numbers from First to Last. It polls before each, records, describes
/// itself, and can be made by name; a test can step in wherever the base class calls it.
class SampleAlgorithm : public TaAlgorithm, public TaAAlgorithm
{
    TU_DECLARE_RTTI

public:
    enum EStage
    {
        eS_PreConditionsInit,
        eS_Init,
        eS_PostConditionsInit,
        eS_PreConditions,
        eS_WriteInput,
        eS_Compute,
        eS_PostConditions,
        eS_WriteOutput,
        eS_Describe,
        eS_Prepare,
    };

    void SetRange(int first, int last);
    int GetFirst() const { return m_first; }
    int GetLast() const { return m_last; }
    long long GetSum() const;

    const IObject* GetParameter(unsigned int) const override { return nullptr; }
    void SetParameter(unsigned int, const IObject&) override { }
    const IObject* GetInput(unsigned int, unsigned int) const override { return nullptr; }
    void SetInput(unsigned int, unsigned int, const IObject*) override { }
    const IObject* GetOutput(unsigned int) const override { return nullptr; }

    using TaAlgorithm::hasBreakEvent;
    using TaAlgorithm::isBreak;
    using TaAlgorithm::setInputChanged;
    using TaAlgorithm::setUninitialized;

    /// Is called at each stage; the answer false of a condition refuses. Copies share it.
    std::function<bool(EStage)> onStage = [](EStage) { return true; };
    unsigned long oldFlags = 0;

protected:
    void describeInterface() const override;

    bool checkPreConditionsInit() const override { return onStage(eS_PreConditionsInit); }
    void init() override { onStage(eS_Init); }
    bool checkPostConditionsInit() const override { return onStage(eS_PostConditionsInit); }
    bool checkPreConditions() const override { return onStage(eS_PreConditions); }
    void compute() override;
    bool checkPostConditions() const override { return onStage(eS_PostConditions) && !wasBroken(); }
    void prepareUnitTest() override { onStage(eS_Prepare); }
    void onReadOldFlags(unsigned long flags) override { oldFlags = flags; }

    void serializeUnitTestInput(TuStreamWriteBinary& stream) const override;
    void serializeUnitTestInput(TuStreamReadBinary& stream) override;
    void serializeUnitTestOutput(TuStreamWriteBinary& stream) const override;
    void serializeUnitTestOutput(TuStreamReadBinary& stream) override;
    bool compareUnitTestResult() const override { return m_sum == m_recordedSum; }

private:
    static IObject* CreateByFactory() { return new SampleAlgorithm; }

    int m_first = 0;
    int m_last = 0;
    std::vector<long long> m_squares;
    long long m_sum = 0;
    long long m_recordedSum = 0;
};
