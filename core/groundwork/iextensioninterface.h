#pragma once

#include "groundwork/groundworkapi.h"

#include <string_view>

/// The root of the interfaces that an object can be asked for by name.
///
/// A name has the form library, point, interface: "Groundwork.Serializable". Each extension
/// interface holds its own as `kExtensionName`.
///
/// Failure: TuExceptionUnknownExtension, with the place of the class asked, when the object does
///          not implement the interface and `mustExist` is true; otherwise the answer is then null.
class GROUNDWORK_API IExtensionInterface
{
public:
    virtual ~IExtensionInterface() = default;

    virtual const IExtensionInterface* GetExtension(const char* name, bool mustExist) const = 0;
    virtual IExtensionInterface* GetExtension(const char* name, bool mustExist) = 0;

protected:
    IExtensionInterface() = default;
    IExtensionInterface(const IExtensionInterface&) = default;
    IExtensionInterface& operator=(const IExtensionInterface&) = default;
};

/// Declares, in the public part of a class, that it answers for its extension interfaces.
#define TU_DECLARE_EXTENSIONS                                                                      \
    const IExtensionInterface* GetExtension(const char* name, bool mustExist) const override;      \
    IExtensionInterface* GetExtension(const char* name, bool mustExist) override

/// Defines it in the class's source, for one interface. (A class with several writes the two
/// functions out, with TuIsExtension for each.)
#define TU_DEFINE_EXTENSIONS(Class, Interface)                                                     \
    const IExtensionInterface* Class::GetExtension(const char* name, bool mustExist) const         \
    {                                                                                              \
        if (TuIsExtension<Interface>(name)) {                                                      \
            return static_cast<const Interface*>(this);                                            \
        }                                                                                          \
        if (mustExist) {                                                                           \
            throw TuExceptionUnknownExtension(TU_HERE);                                            \
        }                                                                                          \
        return nullptr;                                                                            \
    }                                                                                              \
    IExtensionInterface* Class::GetExtension(const char* name, bool mustExist)                     \
    {                                                                                              \
        return const_cast<IExtensionInterface*>(                                                   \
            static_cast<const Class*>(this)->GetExtension(name, mustExist));                       \
    }

template <class Interface> bool TuIsExtension(const char* name)
{
    return name != nullptr && std::string_view(name) == Interface::kExtensionName;
}
