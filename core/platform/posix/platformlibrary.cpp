#include "platform/platformlibrary.h"

#include "platform/platformtext.h"

#include <dlfcn.h>

#include <string>
#include <utility>

namespace platform {

bool SharedLibrary::Load(std::u16string_view path)
{
    Unload();
    m_handle = dlopen(ToUtf8(path).c_str(), RTLD_NOW | RTLD_LOCAL);
    return IsLoaded();
}

void SharedLibrary::Unload()
{
    if (IsLoaded()) {
        dlclose(std::exchange(m_handle, nullptr));
    }
}

void* SharedLibrary::FindFunction(const char* name) const
{
    return IsLoaded() ? dlsym(m_handle, name) : nullptr;
}

void* SharedLibrary::FindFunction(unsigned int ordinal) const
{
    return FindFunction(("ordinal_" + std::to_string(ordinal)).c_str());
}

} // namespace platform
