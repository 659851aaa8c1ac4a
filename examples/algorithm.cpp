// An algorithm: smooths a row of heights, step by step, and can be watched and stopped.
//
// It shows what a derived class supplies: preconditions, the computation with its polls, the check
// that it came to its end, a guarded getter, and the description by which a tool that knows nothing
// of heights can set its parameter and its flag. Its settings come from a parameter set.

#include "groundwork/tuboxed.h"
#include "groundwork/tucheckedcast.h"
#include "tabase/taaalgorithm.h"
#include "tabase/taalgorithmfamilies.h"
#include "tabase/taparameterset.h"
#include "tabase/tataskalgorithm.h"

#include <cstdlib>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace {

class Smoothing final : public TaFtAlgorithm, public TaAAlgorithm
{
    TU_DECLARE_RTTI

public:
    static constexpr auto kKeepEnds = static_cast<EFlags>(0x100); // the base has the lowest one

    void SetHeights(const std::vector<double>& heights)
    {
        m_heights = heights;
        setInputChanged();
    }
    void SetSteps(int steps)
    {
        m_steps.SetValue(steps);
        setInputChanged();
    }
    const std::vector<double>& GetSmoothed() const
    {
        checkOutputData(); // throws where there is nothing to give
        return m_smoothed;
    }

    const IObject* GetParameter([[maybe_unused]] unsigned int parameter) const override
    {
        return &m_steps;
    }
    void SetParameter([[maybe_unused]] unsigned int parameter, const IObject& value) override
    {
        SetSteps(TuCheckedCast<TuInt32>(value));
    }
    // Rows of heights are no objects with a type record: they are not among what is described.
    const IObject* GetInput(unsigned int, unsigned int) const override { return nullptr; }
    void SetInput(unsigned int, unsigned int, const IObject*) override { }
    const IObject* GetOutput(unsigned int) const override { return nullptr; }

protected:
    bool checkPreConditions() const override { return m_heights.size() > 2; }
    bool checkPostConditions() const override { return !wasBroken(); }

    void compute() override
    {
        std::vector<double> row = m_heights;
        for (int step = 0; step < m_steps; ++step) {
            setProgress(static_cast<double>(step) / m_steps, u"smoothing");
            if (isBreak()) {
                return;
            }
            smoothOnce(row);
        }
        m_smoothed = std::move(row);
    }

    void describeInterface() const override
    {
        InterfaceDescription& description = createInterfaceDescription(*this);
        description.DefineParameter(u"Steps", TuInt32::RTTI);
        description.DefineFlagType(u"Borders", new FlagUtil(description.GetAlgorithm()));
        description.DefineFlag(u"Keep the ends", kKeepEnds);
    }

private:
    void smoothOnce(std::vector<double>& row) const
    {
        const std::vector<double> before = row;
        for (std::size_t i = 1; i + 1 < before.size(); ++i) {
            row[i] = (before[i - 1] + before[i] + before[i + 1]) / 3;
        }
        if (!IsFlagsSet(kKeepEnds)) {
            row.front() = (before[0] + before[1]) / 2;
            row.back() = (before[before.size() - 1] + before[before.size() - 2]) / 2;
        }
    }

    std::vector<double> m_heights;
    TuInt32 m_steps{ 1 };
    std::vector<double> m_smoothed;
};

TU_DEFINE_RTTI(Smoothing, TaFtAlgorithm, nullptr, nullptr);

/// Presses "cancel" when half is done.
class Impatience final : public TaProgressSink
{
public:
    explicit Impatience(TuEvent& cancel)
        : m_cancel(cancel)
    {
    }
    void onProgress(double fraction, const CString& text) override
    {
        std::cout << text.ToUtf8() << ": " << static_cast<int>(fraction * 100) << " %\n";
        if (fraction >= 0.5) {
            m_cancel.Set();
        }
    }

private:
    TuEvent& m_cancel;
};

void check(bool holds, const char* what)
{
    if (!holds) {
        std::cerr << "not so: " << what << '\n';
        std::exit(1);
    }
}

} // namespace

int main()
{
    TaParameterSet settings;
    settings.SetConstraint(u"steps", TaParameterSet::eConstraintMaximum, 100);
    settings.SetParameter(u"steps", 4);

    Smoothing smoothing;
    check(!smoothing.Compute(TaAlgorithm::eCF_None), "without heights there is nothing to compute");
    std::cout << "kept: " << smoothing.GetException()->what() << '\n';

    TuVariant steps;
    settings.GetParameter(u"steps", 1, steps);
    smoothing.SetHeights({ 0, 0, 9, 0, 0 });
    smoothing.SetSteps(steps.ToInt());
    smoothing.SetFlag(0, 0, true); // by its description, as a dialog would
    check(smoothing.IsFlagsSet(Smoothing::kKeepEnds),
        "the description sets the algorithm's own flags");

    TuEvent cancel(true);
    Impatience sink(cancel);
    smoothing.SetBreakEvent(cancel);
    smoothing.SetProgressSink(&sink);
    check(!smoothing.Compute(TaAlgorithm::eCF_None) && !smoothing.IsCalculated(),
        "what was cancelled is no result");

    cancel.Reset();
    smoothing.SetProgressSink(nullptr);
    TaTaskAlgorithm task(smoothing); // as a queue of tasks would run it
    check(task.Execute(), "the task succeeds with the computation");
    for (const double height : smoothing.GetSmoothed()) {
        std::cout << height << ' ';
    }
    std::cout << '\n';
    return 0;
}
