#pragma once

#include "groundwork/tuarraymanaged.h"
#include "groundwork/tucriticalsection.h"
#include "groundwork/tureferencecounted.h"
#include "groundwork/tusmartpointer.h"
#include "tabase/ialgorithm.h"
#include "tabase/taalgorithm.h"

#include <atomic>
#include <memory>

/// The base, beside TaAlgorithm, of an algorithm that describes its interface. The description is
/// made when it is first asked for:
///
///     void Smoothing::describeInterface() const
///     {
///         InterfaceDescription& description = createInterfaceDescription(*this);
///         description.DefineParameter(u"Steps", TuInt32::RTTI);
///         description.DefineInputType(u"Geometry");
///         description.DefineInput(u"Points", PointList::RTTI);
///         description.DefineOutput(u"Smoothed points", PointList::RTTI);
///     }
///
/// Names are not copied: pass literals.
///
/// Ownership: owns the description. A copy makes one of its own: it describes another algorithm.
/// Threads:   queries may run on any thread; the description is made once, under a lock, which
///            describeInterface must not wait for another thread's query with.
/// Failure:   TuException with the line of the query for an index out of range. What
///            describeInterface throws passes on, and the next query tries again.
class TABASE_API TaAAlgorithm : public IAlgorithm
{
public:
    class FlagUtilBase;
    class FlagUtil;
    struct STypeAndName
    {
        const char16_t* name;
        const TuRTTI& type;
    };
    struct SInputType
    {
        const char16_t* name = nullptr;
        TuArrayManaged<STypeAndName> inputs;
    };
    struct SFlag
    {
        const char16_t* name = nullptr;
        unsigned int value = 0;
    };
    struct SFlagType
    {
        const char16_t* name = nullptr;
        TuSmartPointer<FlagUtilBase> accessor;
        TuArrayManaged<SFlag> flags;
    };
    class InterfaceDescription;

    TaAAlgorithm();
    TaAAlgorithm(const TaAAlgorithm& other);
    TaAAlgorithm& operator=(const TaAAlgorithm& other);
    ~TaAAlgorithm() override;

    unsigned int GetFlagTypeCount() const override;
    const char16_t* GetFlagTypeName(unsigned int type) const override;
    unsigned int GetFlagCount(unsigned int type) const override;
    const char16_t* GetFlagName(unsigned int type, unsigned int flag) const override;
    bool IsFlagSet(unsigned int type, unsigned int flag) const override;
    void SetFlag(unsigned int type, unsigned int flag, bool on) override;

    unsigned int GetParameterCount() const override;
    const char16_t* GetParameterName(unsigned int parameter) const override;
    const TuRTTI& GetParameterRTTI(unsigned int parameter) const override;

    unsigned int GetInputTypeCount() const override;
    const char16_t* GetInputTypeName(unsigned int type) const override;
    unsigned int GetInputCount(unsigned int type) const override;
    const char16_t* GetInputName(unsigned int type, unsigned int input) const override;
    const TuRTTI& GetInputRTTI(unsigned int type, unsigned int input) const override;

    unsigned int GetOutputCount() const override;
    const char16_t* GetOutputName(unsigned int output) const override;
    const TuRTTI& GetOutputRTTI(unsigned int output) const override;

protected:
    /// Calls createInterfaceDescription, and defines in it what there is.
    virtual void describeInterface() const = 0;
    /// Called by every query: makes the description unless it is there. A query in the course of
    /// describeInterface sees what has been defined so far.
    virtual void assertInterfaceIsInitialized() const;
    /// A new, empty description in the place of what is there.
    virtual InterfaceDescription& createInterfaceDescription(const TaAlgorithm& algorithm) const;

private:
    const InterfaceDescription& getDescription() const;

    mutable TuCriticalSection m_lock; // while the description is made
    mutable std::unique_ptr<InterfaceDescription> m_description;
    mutable bool m_isBeingMade TU_GUARDED_BY(m_lock) = false;
    /// Stored with release when the description is complete; whoever loads true, with acquire, may
    /// read it without the lock.
    mutable std::atomic<bool> m_isMade{ false };
};

/// Connects a group of flags to wherever they are kept.
class TABASE_API TaAAlgorithm::FlagUtilBase : public TuReferenceCounted
{
public:
    virtual void Set(unsigned int value, bool on) = 0;
    virtual bool IsSet(unsigned int value) const = 0;
};

/// Flags that are kept in the algorithm's own.
class TABASE_API TaAAlgorithm::FlagUtil final : public TaAAlgorithm::FlagUtilBase
{
public:
    /// The algorithm outlives it.
    explicit FlagUtil(TaAlgorithm& algorithm)
        : m_algorithm(algorithm)
    {
    }
    void Set(unsigned int value, bool on) override;
    bool IsSet(unsigned int value) const override;

private:
    TaAlgorithm& m_algorithm;
};

/// What there is, in the order of its declaration, which is that of the indices.
class TABASE_API TaAAlgorithm::InterfaceDescription
{
public:
    explicit InterfaceDescription(TaAlgorithm& algorithm);
    InterfaceDescription(const InterfaceDescription&) = default;
    InterfaceDescription& operator=(const InterfaceDescription&) = delete;
    ~InterfaceDescription() = default;

    void DefineInputType(const char16_t* name);
    /// An input of the type defined last. TuExceptionPreconditionViolation where there is none.
    void DefineInput(const char16_t* name, const TuRTTI& type);
    void DefineParameter(const char16_t* name, const TuRTTI& type);
    void DefineOutput(const char16_t* name, const TuRTTI& type);
    void DefineFlagType(const char16_t* name, TuSmartPointer<FlagUtilBase> accessor);
    /// A flag of the type defined last. TuExceptionPreconditionViolation where there is none.
    void DefineFlag(const char16_t* name, unsigned int value);

    TaAlgorithm& GetAlgorithm() const { return m_algorithm; }

    TuArrayManaged<SInputType> inputTypes;
    TuArrayManaged<STypeAndName> parameters;
    TuArrayManaged<SFlagType> flagTypes;
    TuArrayManaged<STypeAndName> outputs;

private:
    TaAlgorithm& m_algorithm;
};
