#pragma once

#include "groundwork/iextensioninterface.h"
#include "tabase/tabaseapi.h"

class IObject;
class TuRTTI;

/// What generic code (a tool, a script, a user interface) can ask of an algorithm that describes
/// itself: which flags, parameters, inputs and outputs it has, of which types, and what they are.
///
///     if (const auto* described = dynamic_cast<const IAlgorithm*>(
///             algorithm.GetExtension(IAlgorithm::kExtensionName, false)))
///         for (unsigned int i = 0; i < described->GetParameterCount(); ++i)
///             Show(described->GetParameterName(i));
///
/// Inputs come in groups, the input types; flags in groups, too, the flag types. Names live as long
/// as the algorithm. TaAAlgorithm implements all but the values.
///
/// Threads: queries of what there is may run on any thread; values as the algorithm.
/// Failure: TuException for an index out of range.
class TABASE_API IAlgorithm : public virtual IExtensionInterface
{
public:
    static constexpr const char* kExtensionName = "TaBase.Algorithm";

    virtual unsigned int GetFlagTypeCount() const = 0;
    virtual const char16_t* GetFlagTypeName(unsigned int type) const = 0;
    virtual unsigned int GetFlagCount(unsigned int type) const = 0;
    virtual const char16_t* GetFlagName(unsigned int type, unsigned int flag) const = 0;
    virtual bool IsFlagSet(unsigned int type, unsigned int flag) const = 0;
    virtual void SetFlag(unsigned int type, unsigned int flag, bool on) = 0;

    virtual unsigned int GetParameterCount() const = 0;
    virtual const char16_t* GetParameterName(unsigned int parameter) const = 0;
    virtual const TuRTTI& GetParameterRTTI(unsigned int parameter) const = 0;
    /// The value belongs to the algorithm, and is an object of the type stated.
    virtual const IObject* GetParameter(unsigned int parameter) const = 0;
    /// Takes a copy of the value. TuException for an object of another type.
    virtual void SetParameter(unsigned int parameter, const IObject& value) = 0;

    virtual unsigned int GetInputTypeCount() const = 0;
    virtual const char16_t* GetInputTypeName(unsigned int type) const = 0;
    virtual unsigned int GetInputCount(unsigned int type) const = 0;
    virtual const char16_t* GetInputName(unsigned int type, unsigned int input) const = 0;
    virtual const TuRTTI& GetInputRTTI(unsigned int type, unsigned int input) const = 0;
    /// Null where none has been set.
    virtual const IObject* GetInput(unsigned int type, unsigned int input) const = 0;
    /// The object stays the caller's; it outlives the computation, unless the algorithm says that
    /// it takes a copy. Null for none. TuException for an object of another type.
    virtual void SetInput(unsigned int type, unsigned int input, const IObject* value) = 0;

    virtual unsigned int GetOutputCount() const = 0;
    virtual const char16_t* GetOutputName(unsigned int output) const = 0;
    virtual const TuRTTI& GetOutputRTTI(unsigned int output) const = 0;
    /// The object belongs to the algorithm. Throws TaExceptionNoOutputData where there is no
    /// result.
    virtual const IObject* GetOutput(unsigned int output) const = 0;
};
