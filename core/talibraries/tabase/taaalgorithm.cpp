#include "tabase/taaalgorithm.h"

#include "groundwork/tucondition.h"

#include <utility>

namespace {

constexpr const char16_t* kSource = u"core/talibraries/tabase/taaalgorithm";

/// The lines of the queries, for the first and, where there is one, the second index.
constexpr unsigned int kLineSetFlag[] = { 103, 104 };
constexpr unsigned int kLineIsFlagSet[] = { 125, 126 };
constexpr unsigned int kLineGetFlagTypeName = 160;
constexpr unsigned int kLineGetFlagCount = 176;
constexpr unsigned int kLineGetFlagName[] = { 195, 196 };
constexpr unsigned int kLineGetParameterName = 226;
constexpr unsigned int kLineGetParameterRTTI = 242;
constexpr unsigned int kLineGetInputTypeName = 272;
constexpr unsigned int kLineGetInputCount = 290;
constexpr unsigned int kLineGetInputName[] = { 307, 308 };
constexpr unsigned int kLineGetInputRTTI[] = { 325, 326 };
constexpr unsigned int kLineGetOutputName = 374;
constexpr unsigned int kLineGetOutputRTTI = 390;

template <class T>
const T& elementAt(const TuArrayManaged<T>& array, unsigned int index, unsigned int line)
{
    if (index >= array.GetSize()) {
        throw TuException(kSource, line);
    }
    return array[index];
}

} // namespace

TaAAlgorithm::TaAAlgorithm() = default;

TaAAlgorithm::TaAAlgorithm(const TaAAlgorithm& other)
    : IExtensionInterface(other)
    , IAlgorithm(other)
{
}

/// The description stays: it is of the class, and refers to this object.
TaAAlgorithm& TaAAlgorithm::operator=([[maybe_unused]] const TaAAlgorithm& other) { return *this; }

TaAAlgorithm::~TaAAlgorithm() = default;

unsigned int TaAAlgorithm::GetFlagTypeCount() const { return getDescription().flagTypes.GetSize(); }

const char16_t* TaAAlgorithm::GetFlagTypeName(unsigned int type) const
{
    return elementAt(getDescription().flagTypes, type, kLineGetFlagTypeName).name;
}

unsigned int TaAAlgorithm::GetFlagCount(unsigned int type) const
{
    return elementAt(getDescription().flagTypes, type, kLineGetFlagCount).flags.GetSize();
}

const char16_t* TaAAlgorithm::GetFlagName(unsigned int type, unsigned int flag) const
{
    const SFlagType& group = elementAt(getDescription().flagTypes, type, kLineGetFlagName[0]);
    return elementAt(group.flags, flag, kLineGetFlagName[1]).name;
}

bool TaAAlgorithm::IsFlagSet(unsigned int type, unsigned int flag) const
{
    const SFlagType& group = elementAt(getDescription().flagTypes, type, kLineIsFlagSet[0]);
    return group.accessor->IsSet(elementAt(group.flags, flag, kLineIsFlagSet[1]).value);
}

void TaAAlgorithm::SetFlag(unsigned int type, unsigned int flag, bool on)
{
    const SFlagType& group = elementAt(getDescription().flagTypes, type, kLineSetFlag[0]);
    group.accessor->Set(elementAt(group.flags, flag, kLineSetFlag[1]).value, on);
}

unsigned int TaAAlgorithm::GetParameterCount() const
{
    return getDescription().parameters.GetSize();
}

const char16_t* TaAAlgorithm::GetParameterName(unsigned int parameter) const
{
    return elementAt(getDescription().parameters, parameter, kLineGetParameterName).name;
}

const TuRTTI& TaAAlgorithm::GetParameterRTTI(unsigned int parameter) const
{
    return elementAt(getDescription().parameters, parameter, kLineGetParameterRTTI).type;
}

unsigned int TaAAlgorithm::GetInputTypeCount() const
{
    return getDescription().inputTypes.GetSize();
}

const char16_t* TaAAlgorithm::GetInputTypeName(unsigned int type) const
{
    return elementAt(getDescription().inputTypes, type, kLineGetInputTypeName).name;
}

unsigned int TaAAlgorithm::GetInputCount(unsigned int type) const
{
    return elementAt(getDescription().inputTypes, type, kLineGetInputCount).inputs.GetSize();
}

const char16_t* TaAAlgorithm::GetInputName(unsigned int type, unsigned int input) const
{
    const SInputType& group = elementAt(getDescription().inputTypes, type, kLineGetInputName[0]);
    return elementAt(group.inputs, input, kLineGetInputName[1]).name;
}

const TuRTTI& TaAAlgorithm::GetInputRTTI(unsigned int type, unsigned int input) const
{
    const SInputType& group = elementAt(getDescription().inputTypes, type, kLineGetInputRTTI[0]);
    return elementAt(group.inputs, input, kLineGetInputRTTI[1]).type;
}

unsigned int TaAAlgorithm::GetOutputCount() const { return getDescription().outputs.GetSize(); }

const char16_t* TaAAlgorithm::GetOutputName(unsigned int output) const
{
    return elementAt(getDescription().outputs, output, kLineGetOutputName).name;
}

const TuRTTI& TaAAlgorithm::GetOutputRTTI(unsigned int output) const
{
    return elementAt(getDescription().outputs, output, kLineGetOutputRTTI).type;
}

const TaAAlgorithm::InterfaceDescription& TaAAlgorithm::getDescription() const
{
    assertInterfaceIsInitialized();
    return *m_description;
}

void TaAAlgorithm::assertInterfaceIsInitialized() const
{
    if (m_isMade.load(std::memory_order_acquire)) {
        return;
    }
    const TuCriticalSectionAuto guard(m_lock);
    if (!m_isBeingMade && !m_isMade.load(std::memory_order_relaxed)) {
        m_isBeingMade = true;
        try {
            describeInterface();
        } catch (...) {
            m_isBeingMade = false;
            m_description.reset();
            throw;
        }
        m_isBeingMade = false;
    }
    TuPreCondition<2>(u"describeInterface calls createInterfaceDescription, and that before it asks"
                      u" for anything",
        TU_HERE, [this] { return m_description != nullptr; });
    m_isMade.store(!m_isBeingMade, std::memory_order_release);
}

TaAAlgorithm::InterfaceDescription& TaAAlgorithm::createInterfaceDescription(
    const TaAlgorithm& algorithm) const
{
    // The description refers to the algorithm to set its flags, which a query does not do.
    m_description = std::make_unique<InterfaceDescription>(const_cast<TaAlgorithm&>(algorithm));
    return *m_description;
}

void TaAAlgorithm::FlagUtil::Set(unsigned int value, bool on)
{
    const auto flags = static_cast<TaAlgorithm::EFlags>(value);
    if (on) {
        m_algorithm.AddFlags(flags);
    } else {
        m_algorithm.RemoveFlags(flags);
    }
}

bool TaAAlgorithm::FlagUtil::IsSet(unsigned int value) const
{
    return m_algorithm.IsFlagsSet(static_cast<TaAlgorithm::EFlags>(value));
}

TaAAlgorithm::InterfaceDescription::InterfaceDescription(TaAlgorithm& algorithm)
    : m_algorithm(algorithm)
{
}

void TaAAlgorithm::InterfaceDescription::DefineInputType(const char16_t* name)
{
    inputTypes.Add(SInputType{ name, {} });
}

void TaAAlgorithm::InterfaceDescription::DefineInput(const char16_t* name, const TuRTTI& type)
{
    TuPreCondition<2>(u"an input type has been defined before its inputs", TU_HERE,
        [this] { return !inputTypes.IsEmpty(); });
    inputTypes[inputTypes.GetSize() - 1].inputs.Add(STypeAndName{ name, type });
}

void TaAAlgorithm::InterfaceDescription::DefineParameter(const char16_t* name, const TuRTTI& type)
{
    parameters.Add(STypeAndName{ name, type });
}

void TaAAlgorithm::InterfaceDescription::DefineOutput(const char16_t* name, const TuRTTI& type)
{
    outputs.Add(STypeAndName{ name, type });
}

void TaAAlgorithm::InterfaceDescription::DefineFlagType(
    const char16_t* name, TuSmartPointer<FlagUtilBase> accessor)
{
    TuPreCondition<2>(u"a group of flags has something to set them with", TU_HERE,
        [&accessor] { return !accessor.IsNull(); });
    flagTypes.Add(SFlagType{ name, std::move(accessor), {} });
}

void TaAAlgorithm::InterfaceDescription::DefineFlag(const char16_t* name, unsigned int value)
{
    TuPreCondition<2>(u"a flag type has been defined before its flags", TU_HERE,
        [this] { return !flagTypes.IsEmpty(); });
    flagTypes[flagTypes.GetSize() - 1].flags.Add(SFlag{ name, value });
}
