#pragma once

#include "groundwork/tuevent.h"
#include "groundwork/tuexception.h"
#include "groundwork/tuflags.h"
#include "groundwork/tusmartpointer.h"
#include "tabase/taprogresssink.h"
#include "tabase/taunittest.h"

class TaAlgorithmRecording;

/// A computation: every filter, fit or search derives from it.
///
/// A derived class states what it needs (checkPreConditions), computes (compute), and calls
/// setInputChanged() from its input setters and checkOutputData() from its output getters. One that
/// has something to prepare calls setUninitialized(), too, and does it in init(): a new algorithm
/// counts as initialised. docs/algorithms.md shows one.
///
///     fit.SetPoints(points);
///     fit.SetBreakEvent(cancel);
///     if (!fit.Compute(TaAlgorithm::eCF_None))
///         Report(fit.GetException()->what());
///
/// States: (initialised, not calculated) when new; calculated after a Compute that succeeded, until
/// the input changes or a Compute fails. Results are computed once per input: a second Compute
/// without new input is refused, on purpose, and like every failure clears "calculated", so that
/// the third succeeds.
///
/// Ownership: as TuReferenceCounted. It refers to a break event and a progress sink, which outlive
///            their last use; a copy refers to the same ones.
/// Threads:   one at a time. Any thread may set the break event meanwhile. A kept exception may be
///            handed to another thread.
/// Failure:   of Init and Compute: with eCF_Throw a TuException, otherwise the answer false, and
///            the failure is kept for GetException(). Where there is no memory to make a
///            TuException of a failure, std::bad_alloc.
class TABASE_API TaAlgorithm : public TaUnitTest
{
    TU_DECLARE_RTTI

public:
    class TaExceptionNoOutputData;

    enum EFlags : unsigned int
    {
        eF_RecordUnitTest = 0x1, // each Compute writes a recording; see docs/algorithms.md
    };
    /// Other bits are for derived classes.
    enum EComputeFlags : unsigned int
    {
        eCF_None = 0,
        eCF_Top = 0x1, // passed by unit tests and tasks; means nothing to this class
        eCF_Throw = 0x10, // throw failures instead of keeping them
        eCF_Nested = 0x100, // passed by Compute to Init; means nothing to this class
    };
    friend constexpr EComputeFlags operator|(EComputeFlags a, EComputeFlags b)
    {
        return static_cast<EComputeFlags>(static_cast<unsigned int>(a) | b);
    }

    TaAlgorithm() = default;
    TaAlgorithm(const TaAlgorithm&) = default;
    TaAlgorithm& operator=(const TaAlgorithm&) = default;
    ~TaAlgorithm() override = default;

    /// Prepares, unless that has been done.
    bool Init(EComputeFlags flags);
    /// Initialises, checks, computes, checks.
    bool Compute(EComputeFlags flags);

    bool IsInitialized() const { return m_isInitialized; }
    bool IsCalculated() const { return m_isCalculated; }
    /// Whether the preconditions hold. One that throws does not.
    bool IsComputable() const;
    /// The failure of the last Init or Compute where it was kept; null otherwise. It lives until
    /// the next one really starts: Init of what is initialised leaves it alone.
    TuSmartPointer<const TuException> GetException() const { return m_exception; }

    void SetFlags(EFlags flags) { m_flags.Set(flags); }
    void AddFlags(EFlags flags) { m_flags.Add(flags); }
    void RemoveFlags(EFlags flags) { m_flags.Remove(flags); }
    bool IsFlagsSet(EFlags mask) const { return m_flags.IsSet(mask); }
    bool IsOneFlagSet(EFlags mask) const { return m_flags.IsOneSet(mask); }
    EFlags GetFlags() const { return static_cast<EFlags>(m_flags.GetBits()); }

    /// Whoever sets the event ends the computation at its next poll. Let it be one that stays set:
    /// an automatic one is cleared by the first poll that sees it.
    void SetBreakEvent(const TuEvent& event) { m_breakEvent = &event; }
    /// Takes the event of the other algorithm over, as it is now, and its progress sink and range:
    /// a sub-algorithm stops with its caller.
    void SetBreakEvent(const TaAlgorithm& other);
    void ClearBreakEvent() { m_breakEvent = nullptr; }

    /// Null for none.
    void SetProgressSink(TaProgressSink* sink) { m_progressSink = sink; }
    /// Which part of the whole this computation is: what it reports is laid into [from, to], two
    /// fractions of the range that it has now. To be called after SetBreakEvent(caller).
    void SetProgressRange(double from, double to);

    /// The name of the next recording; otherwise it gets that of a new identifier.
    void SetUniqueID(const CString& id) { m_uniqueID = id; }
    /// Where recordings go: it must exist. The folder of this class in the special directory of
    /// TaFileSystem for unit tests, with "\" at its end on every system.
    CString GetUnitTestDirectory() const;

    /// The input of a unit test, then its output.
    void Serialize(TuStreamWriteBinary& stream) const;
    void Serialize(TuStreamReadBinary& stream);
    /// Whether the result is the one that was read.
    bool CompareResult() const { return compareUnitTestResult(); }

    TU_DECLARE_EXTENSIONS;

protected:
    /// Throws TaExceptionNoOutputData where there is no result.
    void checkOutputData() const;
    void setInputChanged() { m_isCalculated = false; }
    void setUninitialized() { m_isInitialized = false; }

    bool hasBreakEvent() const { return m_breakEvent != nullptr; }
    /// A poll: tells the progress sink where the computation stands, then asks whether it is to
    /// stop. A long loop polls every few milliseconds at least, returns early, and answers
    /// !wasBroken() from checkPostConditions: what the break ended is no result.
    bool isBreak() const;
    /// Whether a poll of this Compute has answered true.
    bool wasBroken() const { return m_wasBroken; }
    /// What the polls from now on tell the sink: the part that is done, from 0 to 1.
    void setProgress(double fraction) { m_progress = fraction; }
    void setProgress(double fraction, const CString& text);

    /// Compute with eCF_Top, then CompareResult.
    EResult runUnitTest(unsigned int subtest) override;
    /// Version 5, and nothing else. A derived class calls it first.
    void serializeUnitTestInput(TuStreamWriteBinary& stream) const override;
    void serializeUnitTestInput(TuStreamReadBinary& stream) override;
    void serializeUnitTestOutput(TuStreamWriteBinary& stream) const override;
    void serializeUnitTestOutput(TuStreamReadBinary& stream) override;

    virtual bool checkPreConditionsInit() const { return true; }
    virtual void init() { }
    virtual bool checkPostConditionsInit() const { return true; }
    /// Whether all is there that the computation needs.
    virtual bool checkPreConditions() const = 0;
    virtual void compute() = 0;
    virtual bool checkPostConditions() const { return true; }
    /// The flags of a recording that is older than version 3.
    virtual void onReadOldFlags([[maybe_unused]] unsigned long flags) { }
    virtual bool compareUnitTestResult() const { return false; }

private:
    struct SFailureLines;

    bool arePreConditionsMet() const;
    void initialize();
    void run(TaAlgorithmRecording& recording);
    bool takeFailure(EComputeFlags flags, const SFailureLines& lines);
    template <class Make> void keep(Make&& make) noexcept;

    TuFlags<EFlags> m_flags;
    bool m_isInitialized = true;
    bool m_isCalculated = false;
    TuSmartPointer<const TuException> m_exception;
    const TuEvent* m_breakEvent = nullptr;
    CString m_uniqueID;

    mutable bool m_wasBroken = false;
    TaProgressSink* m_progressSink = nullptr;
    double m_progressFrom = 0.0;
    double m_progressTo = 1.0;
    double m_progress = 0.0;
    CString m_progressText;
};

/// An output was asked for that has not been computed.
class TABASE_API TaAlgorithm::TaExceptionNoOutputData : public TuException
{
    TU_DECLARE_RTTI

public:
    TaExceptionNoOutputData(const CString& file, unsigned int line);
    TaExceptionNoOutputData(const CString& file, unsigned int line, const CString& message);

private:
    static IObject* CloneByFactory(const IObject& object);
};
